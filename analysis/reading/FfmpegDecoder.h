// AAC and other sound that only the ffmpeg program reads, where it is installed.
#pragma once

#include "analysis/reading/Decoder.h"
#include "base/Process.h"

namespace synth::analysis {

class FfmpegDecoder final : public Decoder {
 public:
  // Null when there is no program, or no sound in the file that it can read.
  static std::unique_ptr<Decoder> open(const std::string& path);
  bool read(StereoBlock& block) override;

 private:
  bool readHeader();
  std::size_t take(unsigned char* to, std::size_t size);

  Process program_;
  std::vector<unsigned char> ahead_;  // read along with the header
  std::size_t channels_ = 0;
  std::vector<float> interleaved_;
};

}  // namespace synth::analysis
