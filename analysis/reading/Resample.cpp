#include "analysis/reading/Resample.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

#include "base/Math.h"

namespace synth::analysis {
namespace {

constexpr double crossings = 24, relativeCutoff = 0.94;
constexpr double mostRowWeights = 5e5;
// Rows of the grid for a crossing of the sinc: so dense that a straight line between two stays within 1e-7.
constexpr double gridDensity = 4096;
constexpr double largestWholeRate = 4294967295.0;
constexpr std::size_t pieceFrames = 65536;

bool isWhole(double rate) { return rate >= 1 && rate <= largestWholeRate && rate == std::floor(rate); }

typedef float f4 __attribute__((vector_size(16)));

f4 at(const float* p) {
  f4 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

// In floats as long as they are exact enough, in doubles across.
double dot(const float* a, const float* b, std::size_t count) {
  constexpr std::size_t stretch = 256;
  double total = 0;
  for (std::size_t i = 0; i < count;) {
    const std::size_t end = std::min(count, i + stretch);
    f4 s0{}, s1{}, s2{}, s3{};
    for (; i + 16 <= end; i += 16) {
      s0 += at(a + i) * at(b + i);
      s1 += at(a + i + 4) * at(b + i + 4);
      s2 += at(a + i + 8) * at(b + i + 8);
      s3 += at(a + i + 12) * at(b + i + 12);
    }
    for (; i + 4 <= end; i += 4) s0 += at(a + i) * at(b + i);
    for (; i < end; i++) s1[0] += a[i] * b[i];
    const f4 s = (s0 + s1) + (s2 + s3);
    total += double((s[0] + s[1]) + (s[2] + s[3]));
  }
  return total;
}

// A cosine and a sine that walk along in equal steps of their angle.
struct Rotation {
  double c, s, stepC, stepS;

  Rotation(double start, double step)
      : c(math::cos(start)), s(math::sin(start)), stepC(math::cos(step)), stepS(math::sin(step)) {}
  void advance() {
    const double next = c * stepC - s * stepS;
    s = s * stepC + c * stepS;
    c = next;
  }
};

// sin(x) / x; near 0 the walking sine is not exact enough for its quotient.
double sinc(double x, double sine) {
  const double square = x * x;
  return square < 1e-4 ? 1 - square / 6 * (1 - square / 20) : sine / x;
}

}  // namespace

Resampler::Resampler(double fromRate, double toRate, int channels)
    : ratio_(toRate / fromRate), channels_(std::size_t(channels)) {
  const double c = std::min(ratio_, 1.0);
  halfWidth_ = crossings / c;
  cutoff_ = c * relativeCutoff;
  if (!isWhole(fromRate) || !isWhole(toRate)) return;
  const u64 common = std::gcd(u64(fromRate), u64(toRate));
  phases_ = u64(toRate) / common;
  stride_ = u64(fromRate) / common;
  exactRows_ = double(phases_) * (2 * halfWidth_ + 1) <= mostRowWeights;
}

Resampler::u64 Resampler::outputs(u64 inputs) const {
  if (phases_ == 0) return u64(ratio_ * double(inputs));
  return inputs / stride_ * phases_ + inputs % stride_ * phases_ / stride_;
}

void Resampler::expect(u64 count) {
  for (Channel& channel : channels_) channel.output.reserve(outputs(count));
}

void Resampler::push(std::span<const float* const> channels, std::size_t count) {
  for (std::size_t k = 0; k < channels_.size(); k++) {
    std::vector<float>& to = ratio_ == 1 ? channels_[k].output : channels_[k].input;
    to.insert(to.end(), channels[k], channels[k] + count);
  }
  received_ += count;
  if (ratio_ == 1) {
    done_ = received_;
    return;
  }
  Taps next = taps(done_);
  for (; next.last() < i64(received_); next = taps(done_)) emit(next);
  dropUsed(next.first);
}

void Resampler::finish() {
  for (const u64 total = outputs(received_); done_ < total;) emit(taps(done_));
}

std::vector<float> Resampler::take(int channel) {
  return std::exchange(channels_[std::size_t(channel)].output, {});
}

// Exact for whole rates.
Resampler::Place Resampler::place(u64 output) const {
  if (phases_ > 0) {
    const u64 inside = output % phases_ * stride_;
    return {i64(output / phases_ * stride_ + inside / phases_), double(inside % phases_) / double(phases_)};
  }
  const double t = double(output) / ratio_, whole = std::floor(t);
  return {i64(whole), t - whole};
}

Resampler::Taps Resampler::taps(u64 output) {
  if (exactRows_) return rowTaps(output);
  const Place p = place(output);
  const double from = std::floor(p.part - halfWidth_), to = std::floor(p.part + halfWidth_);
  return {p.whole + i64(from), std::size_t(to - from) + 1, p.part};
}

Resampler::Taps Resampler::rowTaps(u64 output) {
  const u64 phase = output % phases_;
  if (phase == rows_.size()) {
    const Place p = place(phase);
    const double from = std::floor(p.part - halfWidth_);
    computeWeights(p.part, from, std::floor(p.part + halfWidth_));
    double sum = 0;
    for (const double w : scratch_) sum += w;
    const double scale = sum > 0 ? 1 / sum : 0;
    rows_.push_back({p.whole + i64(from), table_.size()});
    for (const double w : scratch_) table_.push_back(float(w * scale));
  }
  const Row& row = rows_[phase];
  const std::size_t end = phase + 1 < rows_.size() ? rows_[phase + 1].at : table_.size();
  return {row.first + i64(output / phases_ * stride_), end - row.at, 0, table_.data() + row.at};
}

// Every row of the grid has weights from the first input sample that any place needs to the last.
void Resampler::makeGrid() {
  const double steps = std::ceil(gridDensity * std::min(ratio_, 1.0));
  for (double step = 0; step <= steps; step++) {
    computeWeights(step / steps, std::floor(-halfWidth_), std::floor(1 + halfWidth_));
    double sum = 0;
    for (const double w : scratch_) {
      table_.push_back(float(w * cutoff_));
      sum += double(table_.back());
    }
    gridSums_.push_back(sum);
  }
}

void Resampler::weighByGrid(Taps& taps) {
  if (gridSums_.empty()) makeGrid();
  const double at = taps.part * double(gridSums_.size() - 1);
  // A part just below 1 can round up to the last row, which has none behind it.
  const std::size_t row = std::min(std::size_t(at), gridSums_.size() - 2);
  const std::size_t width = table_.size() / gridSums_.size();
  const float *near = table_.data() + row * width, *far = near + width;
  taps.mix = at - double(row);
  auto mixed = [&](double a, double b) { return a + taps.mix * (b - a); };
  taps.sum = mixed(gridSums_[row], gridSums_[row + 1]);
  // A row may have one weight too many at either end for this very place.
  const std::size_t before = std::size_t(std::floor(taps.part - halfWidth_) - std::floor(-halfWidth_));
  for (std::size_t k = 0; k < width; k++) {
    if (k == before) k += taps.count;
    if (k < width) taps.sum -= mixed(double(near[k]), double(far[k]));
  }
  taps.near = near + before;
  taps.far = far + before;
}

// The formula's weights for a place `part` behind an input sample, of the input samples `from` to `to` around
// it.
void Resampler::computeWeights(double part, double from, double to) {
  const double start = from - part;
  const double angle = math::pi * cutoff_, windowAngle = math::pi / halfWidth_;
  Rotation wave(angle * start, angle), window(windowAngle * start, windowAngle);
  scratch_.resize(std::size_t(to - from) + 1);
  for (std::size_t k = 0; k < scratch_.size(); k++) {
    // 0.42 + 0.5 cos(a) + 0.08 cos(2 a)
    const double blackman = 0.34 + window.c * (0.5 + 0.16 * window.c);
    scratch_[k] = sinc(angle * (start + double(k)), wave.s) * blackman;
    wave.advance();
    window.advance();
  }
}

// At the ends only what there is of the input counts, and weighs more for it.
void Resampler::emit(Taps taps) {
  if (!exactRows_) weighByGrid(taps);
  const i64 first = std::max<i64>(taps.first, 0), last = std::min(taps.last(), i64(received_) - 1);
  const std::size_t skipped = std::size_t(first - taps.first), count = std::size_t(last - first + 1);
  const float *near = taps.near + skipped, *far = taps.far ? taps.far + skipped : nullptr;
  auto mixed = [&](auto of) {
    const double a = of(near);
    return far ? a + taps.mix * (of(far) - a) : a;
  };
  double sum = taps.sum;
  if (count < taps.count)
    sum = mixed([&](const float* weights) { return std::accumulate(weights, weights + count, 0.0); });
  const double scale = sum > 0 ? 1 / sum : 0;
  for (Channel& channel : channels_) {
    const float* input = channel.input.data() + (first - base_);
    const double value = mixed([&](const float* weights) { return dot(weights, input, count); });
    channel.output.push_back(sum > 0 ? float(value * scale) : 0);
  }
  done_++;
}

// Forgets the input before the sample `next`, when it is worth the move.
void Resampler::dropUsed(i64 next) {
  const i64 used = std::min(next, i64(received_)) - base_;
  if (used < i64(pieceFrames) || used < i64(received_) - base_ - used) return;
  for (Channel& channel : channels_) channel.input.erase(channel.input.begin(), channel.input.begin() + used);
  base_ += used;
}

std::vector<float> resample(std::span<const float> samples, double fromRate, double toRate) {
  Resampler resampler(fromRate, toRate, 1);
  resampler.expect(samples.size());
  while (!samples.empty()) {
    const auto piece = samples.first(std::min(samples.size(), pieceFrames));
    const float* const channels[] = {piece.data()};
    resampler.push(channels, piece.size());
    samples = samples.subspan(piece.size());
  }
  resampler.finish();
  return resampler.take(0);
}

}  // namespace synth::analysis
