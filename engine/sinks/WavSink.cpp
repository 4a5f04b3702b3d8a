#include "engine/sinks/WavSink.h"

#include <cstring>
#include <stdexcept>

namespace synth {
namespace {

constexpr u64 largestData = 0xFFFFFFDC;
constexpr unsigned frameBytes = 6;

void check(bool ok, const std::string& error) {
  if (!ok) throw std::runtime_error(error);
}

}  // namespace

i32 to24Bit(float x) { return i32(x >= 0 ? x * 8388607.0f : x * 8388608.0f); }

void WavSink::begin(u32 sampleRate, u64 totalFrames) {
  const u64 bytes = totalFrames * frameBytes;
  check(bytes < largestData, "WAV exceeds RIFF size limit");
  unsigned char header[44];
  auto text = [&](int at, const char* s) { std::memcpy(header + at, s, 4); };
  auto number = [&](int at, u32 value, int size) { std::memcpy(header + at, &value, size_t(size)); };
  text(0, "RIFF");
  number(4, u32(bytes + 36), 4);
  text(8, "WAVE");
  text(12, "fmt ");
  number(16, 16, 4);
  number(20, 1, 2);
  number(22, 2, 2);
  number(24, sampleRate, 4);
  number(28, sampleRate * frameBytes, 4);
  number(32, frameBytes, 2);
  number(34, 24, 2);
  text(36, "data");
  number(40, u32(bytes), 4);
  std::string error;
  check(file_.open(path_, error), error);
  check(file_.write(header, sizeof header, error), error);
}

void WavSink::write(const float* left, const float* right, unsigned frames) {
  unsigned char bytes[256 * frameBytes];
  for (unsigned done = 0; done < frames;) {
    unsigned char* p = bytes;
    for (; done < frames && p < bytes + sizeof bytes; done++)
      for (float x : {left[done], right[done]}) {
        const i32 v = to24Bit(x);
        *p++ = u8(v);
        *p++ = u8(v >> 8);
        *p++ = u8(v >> 16);
      }
    std::string error;
    check(file_.write(bytes, size_t(p - bytes), error), error);
  }
}

void WavSink::finish() {
  std::string error;
  check(file_.commit(error), error);
}

}  // namespace synth
