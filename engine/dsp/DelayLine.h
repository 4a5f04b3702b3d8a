// A ring of samples that is read between them by four-point cubic interpolation (Catmull-Rom).
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>

#include "engine/dsp/Phase.h"

namespace synth::dsp {

// b + f * ..., for taps a (newest) to d (oldest) around a read point that lies f behind b.
inline f4 catmullRom(f4 a, f4 b, f4 c, f4 d, f4 f) {
  const f4 half = splat(0.5f);
  const f4 cubic = splat(1.5f) * (b - c) + half * (d - a);
  const f4 square = a - splat(2.5f) * b + splat(2) * c - half * d + f * cubic;
  return b + f * ((c - a) * half + f * square);
}

// The callers count the samples: `at` is the number of one, and reads go back from there.
class DelayLine {
 public:
  // Room for delays of up to `longest` samples. The memory is zero pages, which cost nothing until used.
  void prepare(double longest) {
    size_ = 32;
    while (double(size_) < longest + segment + 4) size_ *= 2;
    line_.reset(static_cast<float*>(std::calloc(size_ + guard, sizeof(float))));
    if (!line_) throw std::bad_alloc();
  }
  void clear() { std::memset(line_.get(), 0, bytes()); }
  std::size_t bytes() const { return line_ ? sizeof(float) * (size_ + guard) : 0; }
  std::uint32_t size() const { return size_; }

  void put(std::uint32_t at, float x) {
    const std::uint32_t i = at & (size_ - 1);
    line_[i] = x;
    if (i < guard) line_[size_ + i] = x;  // so that four taps never wrap
  }
  // What lies `whole` samples before `at` and its neighbours, oldest first: d, c, b, a.
  const float* taps(std::uint32_t at, std::uint32_t whole) const {
    return line_.get() + ((at - whole - 2) & (size_ - 1));
  }

  // Four reads, each `delay` >= 1 samples before its `at`.
  f4 read(u4 at, f4 delay) const {
    const i4 whole = truncated(delay);
    const u4 from = at - (u4)whole;
    f4 d = load(taps(from[0], 0)), c = load(taps(from[1], 0)), b = load(taps(from[2], 0)),
       a = load(taps(from[3], 0));
    transpose(d, c, b, a);
    return catmullRom(a, b, c, d, delay - toFloats(whole));
  }

 private:
  struct Free {
    void operator()(float* p) const { std::free(p); }
  };
  static constexpr std::uint32_t guard = 4;

  std::unique_ptr<float[], Free> line_;
  std::uint32_t size_ = 0;
};

}  // namespace synth::dsp
