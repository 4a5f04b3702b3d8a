// A ring of samples that is read between them by four-point cubic interpolation (Catmull-Rom).
#pragma once

#include <cstdlib>
#include <memory>
#include <new>

#include "engine/dsp/Phase.h"

namespace synth::dsp {

// b + f * ..., for taps a (newest) to d (oldest) around a read point that lies f behind b.
template <class F>
F catmullRom(F a, F b, F c, F d, F f) {
  const F cubic = 1.5f * (b - c) + 0.5f * (d - a);
  const F square = a - 2.5f * b + 2.0f * c - 0.5f * d + f * cubic;
  return b + f * ((c - a) * 0.5f + f * square);
}

// The samples are numbered from 1 on by their writers; a number of 0 or below reads as silence, so that a
// line is emptied by starting to count anew.
class DelayLine {
 public:
  // Room for delays of up to `longest` samples. The memory is zero pages, which cost nothing until used.
  void prepare(double longest) {
    size_ = 32;
    while (double(size_) < longest + segment + guard) size_ *= 2;
    line_.reset(static_cast<float*>(std::calloc(size_ + guard, sizeof(float))));
    if (!line_) throw std::bad_alloc();
  }
  std::size_t bytes() const { return line_ ? sizeof(float) * (size_ + guard) : 0; }
  std::uint32_t longest() const { return size_ - segment - guard; }
  // Whether it holds nothing but silence.
  bool silent() const {
    i4 sounds = {};
    for (std::uint32_t i = 0; i < size_ && !any(sounds); i += 4) sounds = load(line_.get() + i) != splat(0);
    return !any(sounds);
  }

  void put(std::uint32_t number, float x) {
    const std::uint32_t i = number & (size_ - 1);
    line_[i] = x;
    if (i < guard) line_[size_ + i] = x;  // so that four taps never wrap
  }
  // n samples from `first` on, tiny ones as 0.
  void put(std::uint32_t first, const float* x, int n) {
    const std::uint32_t i = first & (size_ - 1);
    if (i < guard || i + segment > size_) {
      for (int k = 0; k < n; k++) put(first + std::uint32_t(k), flushed(x[k]));
      return;
    }
    int k = 0;
    for (; k + 4 <= n; k += 4) store(line_.get() + i + k, flushed(load(x + k)));
    for (; k < n; k++) line_[i + std::uint32_t(k)] = flushed(x[k]);
  }

  // Four successive samples, the first of that number.
  f4 four(std::uint32_t number) const {
    const f4 x = load(line_.get() + (number & (size_ - 1)));
    const int from = int(number);
    if (from > 0) return x;
    return onlyWhere(i4{from, from + 1, from + 2, from + 3} > i4{}, x);
  }

  // Four reads, each a `fraction` of a sample before the sample of its number. `newest` is the number of
  // the last sample written.
  f4 read(u4 number, f4 fraction, std::uint32_t newest) const {
    f4 d = taps(number[0]), c = taps(number[1]), b = taps(number[2]), a = taps(number[3]);
    transpose(d, c, b, a);
    if (newest < size_) {
      // The line is not yet full: what lies before its first sample is silence.
      const i4 n = (i4)number;
      a = onlyWhere(n > i4{-1, -1, -1, -1}, a);
      b = onlyWhere(n > i4{0, 0, 0, 0}, b);
      c = onlyWhere(n > i4{1, 1, 1, 1}, c);
      d = onlyWhere(n > i4{2, 2, 2, 2}, d);
    }
    return catmullRom(a, b, c, d, fraction);
  }
  // The same for delays in samples, each >= 1, before the sample of its number.
  f4 read(u4 at, f4 delay) const {
    const i4 whole = truncated(delay);
    return read(at - (u4)whole, delay - toFloats(whole), at[3]);
  }
  // Around the sample of that number: what lies two and one before it, itself, and one after.
  f4 around(std::uint32_t number, std::uint32_t newest) const {
    const int n = int(number);
    return newest < size_ ? onlyWhere(i4{n, n, n, n} > i4{2, 1, 0, -1}, taps(number)) : taps(number);
  }
  // One read, `delay` >= 1 samples before the sample of that number.
  float read(std::uint32_t number, float delay) const {
    const std::uint32_t whole = std::uint32_t(delay);
    const f4 t = around(number - whole, number);
    return catmullRom(t[3], t[2], t[1], t[0], delay - float(whole));
  }

 private:
  struct Free {
    void operator()(float* p) const { std::free(p); }
  };
  static constexpr std::uint32_t guard = 4;

  f4 taps(std::uint32_t number) const { return load(line_.get() + ((number - 2) & (size_ - 1))); }

  std::unique_ptr<float[], Free> line_;
  std::uint32_t size_ = 0;
};

// Counts the samples of a set of lines. The count wraps back before it would look like a fresh start.
struct LineClock {
  std::uint32_t now = 0;  // the number of the newest sample

  // Numbers of four samples of the stretch that follows.
  u4 after(int quad) const {
    const std::uint32_t first = now + 1 + std::uint32_t(4 * quad);
    return u4{first, first + 1, first + 2, first + 3};
  }
  void advance(int n) {
    now += std::uint32_t(n);
    if (now >= 0x60000000u) now -= 0x40000000u;
  }
  void clear() { now = 0; }
};

}  // namespace synth::dsp
