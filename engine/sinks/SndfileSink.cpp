#include "engine/sinks/SndfileSink.h"

#include <stdexcept>

#include "base/Sndfile.h"
#include "engine/sinks/WavSink.h"

namespace synth {
namespace {

[[noreturn]] void fail(const char* text, int number) {
  throw std::runtime_error(std::string(text) + " (error " + std::to_string(number) + ")");
}
void check(bool ok, const std::string& error) {
  if (!ok) throw std::runtime_error(error);
}

}  // namespace

bool SndfileSink::available() { return sndfile().whole(); }

SndfileSink::~SndfileSink() {
  if (encoder_) sndfile().close(static_cast<SNDFILE*>(encoder_));
}

void SndfileSink::begin(u32 sampleRate, u64) {
  check(available(), "This system cannot encode the format: libsndfile is not installed");
  std::string error;
  check(file_.open(path_, error), error);
  SF_INFO info{};
  info.samplerate = int(sampleRate);
  info.channels = 2;
  info.format = (format_ == AudioFormat::Flac ? SF_FORMAT_FLAC : SF_FORMAT_AIFF) | SF_FORMAT_PCM_24;
  encoder_ = sndfile().open(file_.temporary().c_str(), SFM_WRITE, &info);
  if (!encoder_) fail("Cannot create the file", sndfile().error(nullptr));
}

void SndfileSink::write(const float* left, const float* right, unsigned frames) {
  int values[2 * 256];
  for (unsigned done = 0; done < frames;) {
    unsigned n = 0;
    // The library keeps the upper 24 of 32 bits: the very samples that a WAV gets.
    for (; done < frames && n < 256; done++, n++) {
      values[2 * n] = int(u32(to24Bit(left[done])) << 8);
      values[2 * n + 1] = int(u32(to24Bit(right[done])) << 8);
    }
    auto* encoder = static_cast<SNDFILE*>(encoder_);
    if (sndfile().write(encoder, values, n) != sf_count_t(n))
      fail("Encoding failed", sndfile().error(encoder));
  }
}

void SndfileSink::finish() {
  const int failed = sndfile().close(static_cast<SNDFILE*>(encoder_));
  encoder_ = nullptr;
  if (failed) fail("Encoding failed", failed);
  std::string error;
  check(file_.commit(error), error);
}

}  // namespace synth
