#include "analysis/reading/SndfileDecoder.h"

#include <cstdio>
#include <stdexcept>

#include "base/Sndfile.h"

namespace synth::analysis {

std::unique_ptr<Decoder> SndfileDecoder::open(std::unique_ptr<ByteSource> bytes) {
  if (!sndfile().whole()) return nullptr;
  // Through our own reads: by name "-" would be the standard input, and a descriptor that it cannot use the
  // library closes although told not to.
  SF_VIRTUAL_IO io{};
  io.get_filelen = [](void* user) { return sf_count_t(from(user).bytes_->size()); };
  io.tell = [](void* user) { return sf_count_t(from(user).position_); };
  io.seek = [](sf_count_t offset, int whence, void* user) {
    SndfileDecoder& self = from(user);
    if (whence == SEEK_CUR) offset += self.position_;
    if (whence == SEEK_END) offset += sf_count_t(self.bytes_->size());
    if (offset < 0) return sf_count_t(-1);
    return sf_count_t(self.position_ = offset);
  };
  io.read = [](void* to, sf_count_t count, void* user) {
    SndfileDecoder& self = from(user);
    const std::size_t got = self.bytes_->read(std::uint64_t(self.position_), to, std::size_t(count));
    self.position_ += std::int64_t(got);
    return sf_count_t(got);
  };
  std::unique_ptr<SndfileDecoder> decoder(new SndfileDecoder(std::move(bytes)));
  SF_INFO info{};
  decoder->handle_ = sndfile().openVirtual(&io, SFM_READ, &info, decoder.get());
  if (!decoder->handle_ || info.samplerate <= 0 || info.channels <= 0) return nullptr;
  decoder->rate = info.samplerate;
  decoder->channels_ = std::size_t(info.channels);
  if (info.frames > 0 && info.frames < SF_COUNT_MAX) decoder->frames = std::uint64_t(info.frames);
  // An MP3 without an index is measured by its first frames.
  decoder->exact = decoder->frames > 0 && (info.format & SF_FORMAT_TYPEMASK) != SF_FORMAT_MPEG;
  return decoder;
}

SndfileDecoder::~SndfileDecoder() {
  if (handle_) sndfile().close(static_cast<SNDFILE*>(handle_));
}

bool SndfileDecoder::read(StereoBlock& block) {
  auto* handle = static_cast<SNDFILE*>(handle_);
  interleaved_.resize(blockFrames * channels_);
  const sf_count_t got = sndfile().read(handle, interleaved_.data(), sf_count_t(blockFrames));
  if (got > 0) {
    takeStereo(interleaved_.data(), channels_, std::size_t(got), block);
    done_ += std::uint64_t(got);
    return true;
  }
  // Damage shows as an error, as fewer frames than promised, or as an Ogg whose length cannot be found.
  if (sndfile().error(handle) != 0 || (exact ? done_ < frames : done_ == 0))
    throw std::runtime_error(decodingFailed);
  return false;
}

}  // namespace synth::analysis
