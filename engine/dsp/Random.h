// The fixed generators of the Engine: nothing random has a global state, so every render repeats.
#pragma once

#include <cstdint>

namespace synth::dsp {

// A 32-bit finaliser with low bias (Wellons, 2018).
inline std::uint32_t hash(std::uint32_t x) {
  x ^= x >> 16;
  x *= 0x7FEB352Du;
  x ^= x >> 15;
  x *= 0x846CA68Bu;
  x ^= x >> 16;
  return x;
}

// 24 well mixed bits of a hash, as whole number.
inline std::uint32_t hash24(std::uint32_t h) { return (h >> 24) ^ (h >> 8); }

// White noise in -1..1 by xorshift (Marsaglia, 2003); the state must not be 0.
inline float white(std::uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return float(state >> 8) / 8388608.0f - 1.0f;
}

inline std::uint32_t lcg(std::uint32_t& state) { return state = state * 1664525u + 1013904223u; }

}  // namespace synth::dsp
