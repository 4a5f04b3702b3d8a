// Known signals at 48 kHz for tests of what listens.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "analysis/Audio.h"

namespace synth::test {

using Signal = std::vector<float>;

inline size_t samplesOf(double seconds) { return size_t(std::lround(seconds * 48000)); }
inline double amplitudeOf(double db) { return std::pow(10, db / 20); }

inline Signal silence(double seconds) { return Signal(samplesOf(seconds)); }

inline Signal sine(double hz, double amplitude, double seconds, double phase = 0) {
  Signal x(samplesOf(seconds));
  for (size_t i = 0; i < x.size(); i++)
    x[i] = float(amplitude * std::sin(2 * std::numbers::pi * hz * double(i) / 48000 + phase));
  return x;
}

// White, uniform, the same for each seed.
inline Signal noise(double amplitude, double seconds, uint32_t seed = 1) {
  Signal x(samplesOf(seconds));
  for (float& v : x) {
    seed = seed * 1664525u + 1013904223u;
    v = float(amplitude * (double(seed >> 8) / 8388608.0 - 1));
  }
  return x;
}

inline void append(Signal& x, const Signal& more) { x.insert(x.end(), more.begin(), more.end()); }

// Adds a signal at a place, growing what it is added to.
inline void addAt(Signal& x, double seconds, const Signal& more, double gain = 1) {
  const size_t at = samplesOf(seconds);
  if (x.size() < at + more.size()) x.resize(at + more.size());
  for (size_t i = 0; i < more.size(); i++) x[at + i] += float(gain) * more[i];
}

// Falls by 60 dB in `t60` seconds after a rise of `attack` seconds.
inline Signal shaped(Signal x, double t60, double attack = 0) {
  for (size_t i = 0; i < x.size(); i++) {
    const double t = double(i) / 48000;
    x[i] *= float(std::pow(10, -3 * t / t60) * (t < attack ? t / attack : 1));
  }
  return x;
}

inline analysis::Audio stereo(const Signal& x) { return {x, x}; }

}  // namespace synth::test
