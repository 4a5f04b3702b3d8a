#include "base/Fft.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include "base/Math.h"

namespace synth {
namespace {

// Two doubles side by side: what every 64-bit processor has, so one result on all of them.
typedef double Pair __attribute__((vector_size(16)));

// The same anywhere in an array of doubles.
typedef double LoosePair __attribute__((vector_size(16), aligned(8), may_alias));

Pair load(const double* at) { return *reinterpret_cast<const LoosePair*>(at); }
void store(double* at, Pair value) { *reinterpret_cast<LoosePair*>(at) = value; }

template <class T>
T read(const double* at) {
  if constexpr (sizeof(T) == sizeof(double))
    return *at;
  else
    return load(at);
}
template <class T>
void write(double* at, T value) {
  if constexpr (sizeof(T) == sizeof(double))
    *at = value;
  else
    store(at, value);
}

template <class T>
struct Complex {
  T re, im;
};

template <class T>
Complex<T> operator+(Complex<T> a, Complex<T> b) {
  return {a.re + b.re, a.im + b.im};
}
template <class T>
Complex<T> operator-(Complex<T> a, Complex<T> b) {
  return {a.re - b.re, a.im - b.im};
}
template <class T, class W>
Complex<T> times(Complex<T> a, Complex<W> w) {
  return {a.re * w.re - a.im * w.im, a.re * w.im + a.im * w.re};
}

template <class T>
struct Four {
  Complex<T> a, b, c, d;
};

// The four-point transform of points that lie `step` apart.
template <class T>
[[gnu::always_inline]] inline Four<T> butterfly(const double* re, const double* im, std::size_t step) {
  const Complex<T> a{read<T>(re), read<T>(im)};
  const Complex<T> b{read<T>(re + step), read<T>(im + step)};
  const Complex<T> c{read<T>(re + 2 * step), read<T>(im + 2 * step)};
  const Complex<T> d{read<T>(re + 3 * step), read<T>(im + 3 * step)};
  const Complex<T> ac = a + c, a_c = a - c, bd = b + d, b_d = b - d;
  return {ac + bd, {a_c.re + b_d.im, a_c.im - b_d.re}, ac - bd, {a_c.re - b_d.im, a_c.im + b_d.re}};
}

struct Span {
  const double *re, *im;
  double *toRe, *toIm;
};

struct Twiddles {
  const double *re[3], *im[3];
  template <class T>
  Complex<T> at(int j, std::size_t p) const {
    return {read<T>(re[j] + p), read<T>(im[j] + p)};
  }
};

void storeCrossed(double* at, Pair a, Pair b, Pair c, Pair d) {
  store(at, Pair{a[0], b[0]});
  store(at + 2, Pair{c[0], d[0]});
  store(at + 4, Pair{a[1], b[1]});
  store(at + 6, Pair{c[1], d[1]});
}

// The first pass: neighbours in p share an instruction, and their results are interleaved on the way out.
void firstPass(const Span& x, const Twiddles& w, std::size_t quarter) {
  for (std::size_t p = 0; p < quarter; p += 2) {
    const Four<Pair> y = butterfly<Pair>(x.re + p, x.im + p, quarter);
    const Complex<Pair> b = times(y.b, w.at<Pair>(0, p));
    const Complex<Pair> c = times(y.c, w.at<Pair>(1, p));
    const Complex<Pair> d = times(y.d, w.at<Pair>(2, p));
    storeCrossed(x.toRe + 4 * p, y.a.re, b.re, c.re, d.re);
    storeCrossed(x.toIm + 4 * p, y.a.im, b.im, c.im, d.im);
  }
}

template <class T>
void put(const Span& x, std::size_t at, Complex<T> value) {
  write<T>(x.toRe + at, value.re);
  write<T>(x.toIm + at, value.im);
}

// A later pass over `stride` interleaved transforms of 4 x `quarter` points.
template <class T>
void pass(const Span& x, const Twiddles& w, std::size_t quarter, std::size_t stride) {
  constexpr std::size_t lanes = sizeof(T) / sizeof(double);
  const std::size_t step = quarter * stride;
  for (std::size_t q = 0; q < stride; q += lanes) {
    const Four<T> y = butterfly<T>(x.re + q, x.im + q, step);
    put(x, q, y.a);
    put(x, q + stride, y.b);
    put(x, q + 2 * stride, y.c);
    put(x, q + 3 * stride, y.d);
  }
  for (std::size_t p = 1; p < quarter; ++p) {
    const std::size_t from = p * stride, to = 4 * p * stride;
    const Complex<double> w1 = w.at<double>(0, from), w2 = w.at<double>(1, from), w3 = w.at<double>(2, from);
    for (std::size_t q = 0; q < stride; q += lanes) {
      const Four<T> y = butterfly<T>(x.re + from + q, x.im + from + q, step);
      put(x, to + q, y.a);
      put(x, to + q + stride, times(y.b, w1));
      put(x, to + q + 2 * stride, times(y.c, w2));
      put(x, to + q + 3 * stride, times(y.d, w3));
    }
  }
}

// What is left of a size that is no power of four.
template <class T>
void lastPair(const Span& x, std::size_t half) {
  for (std::size_t q = 0; q < half; q += sizeof(T) / sizeof(double)) {
    const Complex<T> a{read<T>(x.re + q), read<T>(x.im + q)};
    const Complex<T> b{read<T>(x.re + q + half), read<T>(x.im + q + half)};
    put(x, q, a + b);
    put(x, q + half, a - b);
  }
}

}  // namespace

Fft::Fft(int size) : size_(size) {
  if (size < 2 || (size & (size - 1)) != 0)
    throw std::invalid_argument("A transform's size is a power of two");
  const int quarter = size / 4;
  std::vector<double> cosine(quarter + 1);
  for (int k = 0; k <= quarter; ++k) cosine[k] = math::cos(2.0 * math::pi * k / size);
  if (quarter > 0) cosine[quarter] = 0.0;
  // exp(-2 pi i k / size) by its quadrant, k below 3 size / 4.
  const auto root = [&](int k) -> Complex<double> {
    const int quadrant = k / quarter, r = k % quarter;
    const double c = cosine[r], s = cosine[quarter - r];
    if (quadrant == 0) return {c, -s};
    if (quadrant == 1) return {-s, -c};
    return {-c, s};
  };
  for (int j = 0; j < 3; ++j) {
    twiddleRe_[j].resize(quarter);
    twiddleIm_[j].resize(quarter);
    for (int p = 0; p < quarter; ++p) {
      const Complex<double> w = root((j + 1) * p);
      twiddleRe_[j][p] = w.re;
      twiddleIm_[j][p] = w.im;
    }
  }
}

// Stockham's autosort scheme in radix 4: every pass reads and writes in order, so no bit reversal.
void Fft::forward(Work& work) const {
  Twiddles w;
  for (int j = 0; j < 3; ++j) {
    w.re[j] = twiddleRe_[j].data();
    w.im[j] = twiddleIm_[j].data();
  }
  std::size_t length = std::size_t(size_), stride = 1;
  while (length > 1) {
    const Span x{work.re.data(), work.im.data(), work.scratchRe.data(), work.scratchIm.data()};
    if (length == 2 && stride == 1)
      lastPair<double>(x, stride);
    else if (length == 2)
      lastPair<Pair>(x, stride);
    else if (stride > 1)
      pass<Pair>(x, w, length / 4, stride);
    else if (length > 4)
      firstPass(x, w, length / 4);
    else
      pass<double>(x, w, 1, 1);
    std::swap(work.re, work.scratchRe);
    std::swap(work.im, work.scratchIm);
    length /= length == 2 ? 2 : 4;
    stride *= 4;
  }
}

void Fft::inverse(Work& work) const {
  std::swap(work.re, work.im);
  forward(work);
  std::swap(work.re, work.im);
}

void Fft::powers(Work& work, int first, int last, double* a, double* b) const {
  forward(work);
  const double *re = work.re.data(), *im = work.im.data();
  for (int k = first; k <= last; ++k) {
    const int mirror = (size_ - k) & (size_ - 1);
    const double sumRe = re[k] + re[mirror], sumIm = im[k] + im[mirror];
    const double differenceRe = re[k] - re[mirror], differenceIm = im[k] - im[mirror];
    a[k - first] = 0.25 * (sumRe * sumRe + differenceIm * differenceIm);
    b[k - first] = 0.25 * (sumIm * sumIm + differenceRe * differenceRe);
  }
}

}  // namespace synth
