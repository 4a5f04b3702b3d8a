// The discrete Fourier transform of power-of-two sizes in double precision: twiddles made once, no
// allocation afterwards. One Fft serves any number of threads, each with a Work of its own.
#pragma once

#include <vector>

namespace synth {

class Fft {
 public:
  // The signal of one transform: `size` real and imaginary parts, which every transform replaces by its
  // result. The vectors trade places with scratch memory, so take their data() anew after each transform.
  struct Work {
    explicit Work(int size) : re(size), im(size), scratchRe(size), scratchIm(size) {}
    std::vector<double> re, im, scratchRe, scratchIm;
  };

  // A power of two from 2 on; throws std::invalid_argument for any other size.
  explicit Fft(int size);

  int size() const { return size_; }

  // X[k] = sum x[n] exp(-2 pi i n k / size), unscaled.
  void forward(Work& work) const;
  // The same with exp(+2 pi i n k / size): size times the inverse of `forward`.
  void inverse(Work& work) const;

  // Two real signals in one transform: with a in `re` and b in `im`, transforms and writes the powers
  // |A|^2 and |B|^2 of bins 0..size/2, size/2 + 1 values each.
  void powers(Work& work, double* a, double* b) const { powers(work, 0, size_ / 2, a, b); }
  // The same of bins first..last alone, `a` and `b` starting at the first.
  void powers(Work& work, int first, int last, double* a, double* b) const;

 private:
  int size_;
  // exp(-2 pi i j p / size) for j = 1, 2, 3 and p below size / 4.
  std::vector<double> twiddleRe_[3], twiddleIm_[3];
};

}  // namespace synth
