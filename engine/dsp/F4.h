// Four floats side by side, by the vector extensions that GCC and Clang share. Every operation is the
// plain IEEE one in each lane, so a lane's result never depends on its neighbours or its place.
#pragma once

#include <cmath>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace synth::dsp {

typedef float f4 __attribute__((vector_size(16)));
typedef int i4 __attribute__((vector_size(16)));

inline f4 splat(float v) { return f4{v, v, v, v}; }
inline f4 load(const float* p) {
  f4 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
inline void store(float* p, f4 v) { std::memcpy(p, &v, sizeof v); }

inline f4 asFloats(i4 v) { return (f4)v; }
inline i4 asBits(f4 v) { return (i4)v; }
// a where the mask is set, else b.
inline f4 select(i4 mask, f4 a, f4 b) { return asFloats((mask & asBits(a)) | (~mask & asBits(b))); }
inline f4 onlyWhere(i4 mask, f4 a) { return asFloats(mask & asBits(a)); }
inline f4 abs(f4 v) { return asFloats(asBits(v) & i4{0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}); }

inline f4 min(f4 a, f4 b) {
#if defined(__SSE2__)
  return (f4)_mm_min_ps((__m128)a, (__m128)b);
#else
  return select(a < b, a, b);
#endif
}
inline f4 max(f4 a, f4 b) {
#if defined(__SSE2__)
  return (f4)_mm_max_ps((__m128)a, (__m128)b);
#else
  return select(a > b, a, b);
#endif
}
inline f4 clamp(f4 v, float lo, float hi) { return min(max(v, splat(lo)), splat(hi)); }

// Rounds toward zero; for magnitudes below 2^31.
inline i4 truncated(f4 v) {
#if defined(__SSE2__)
  return (i4)_mm_cvttps_epi32((__m128)v);
#else
  return i4{int(v[0]), int(v[1]), int(v[2]), int(v[3])};
#endif
}
inline f4 toFloats(i4 v) { return __builtin_convertvector(v, f4); }

inline bool any(i4 mask) {
#if defined(__SSE2__)
  return _mm_movemask_ps((__m128)mask) != 0;
#else
  return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#endif
}

// Magnitudes below 1e-20 become 0: recursive filters must not sink into denormals.
inline f4 flushed(f4 v) { return onlyWhere(abs(v) >= splat(1e-20f), v); }
inline float flushed(float v) { return std::fabs(v) >= 1e-20f ? v : 0; }

// Rows a..d as columns.
inline void transpose(f4& a, f4& b, f4& c, f4& d) {
  const f4 ab0 = __builtin_shufflevector(a, b, 0, 4, 1, 5), ab1 = __builtin_shufflevector(a, b, 2, 6, 3, 7);
  const f4 cd0 = __builtin_shufflevector(c, d, 0, 4, 1, 5), cd1 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
  a = __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5);
  b = __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7);
  c = __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5);
  d = __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7);
}

}  // namespace synth::dsp
