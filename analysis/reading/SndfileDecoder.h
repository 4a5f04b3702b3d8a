// AIFF, FLAC, MP3, Ogg Vorbis, Opus and whatever else libsndfile reads, which is loaded on first use.
#pragma once

#include "analysis/reading/Decoder.h"

namespace synth::analysis {

class SndfileDecoder final : public Decoder {
 public:
  // Null when the library is not there or cannot read the bytes.
  static std::unique_ptr<Decoder> open(std::unique_ptr<ByteSource> bytes);
  ~SndfileDecoder() override;
  SndfileDecoder(const SndfileDecoder&) = delete;

  bool read(StereoBlock& block) override;

 private:
  explicit SndfileDecoder(std::unique_ptr<ByteSource> bytes) : bytes_(std::move(bytes)) {}
  static SndfileDecoder& from(void* user) { return *static_cast<SndfileDecoder*>(user); }

  std::unique_ptr<ByteSource> bytes_;
  std::int64_t position_ = 0;  // where the library reads on
  void* handle_ = nullptr;     // SNDFILE*
  std::size_t channels_ = 0;
  std::uint64_t done_ = 0;
  std::vector<float> interleaved_;
};

}  // namespace synth::analysis
