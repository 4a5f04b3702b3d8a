#include "analysis/Loudness.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr size_t hop = 4800;
constexpr size_t momentary = 4, shortTerm = 30;  // lengths of blocks, in hops: 0.4 s and 3 s

double loudnessDb(double meanSquare) { return -0.691 + 10 * math::log10(std::max(meanSquare, 1e-30)); }

// Mean squares of the blocks of so many hops, one a hop.
std::vector<double> blocksOf(const std::vector<double>& hops, size_t length) {
  std::vector<double> blocks;
  for (size_t i = 0; i + length <= hops.size(); i++)
    blocks.push_back(sum(hops.data() + i, int(length)) / double(length * hop));
  return blocks;
}

// Blocks above -70, then those above the loudness of their mean minus `below` LU.
std::vector<double> gated(const std::vector<double>& blocks, double under) {
  std::vector<double> kept, above;
  for (double b : blocks)
    if (loudnessDb(b) > -70) kept.push_back(b);
  if (kept.empty()) return {};
  const double gate = loudnessDb(sum(kept.data(), int(kept.size())) / double(kept.size())) - under;
  for (double b : kept)
    if (loudnessDb(b) > gate) above.push_back(b);
  return above;
}

double integrated(const std::vector<double>& hops) {
  const std::vector<double> blocks = gated(blocksOf(hops, momentary), 10);
  if (blocks.empty()) return -70;
  return loudnessDb(sum(blocks.data(), int(blocks.size())) / double(blocks.size()));
}

double range(const std::vector<double>& hops) {
  std::vector<double> blocks = gated(blocksOf(hops, shortTerm), 20);
  if (blocks.empty()) return 0;
  sortNumbers(blocks);
  const double last = double(blocks.size() - 1);
  return loudnessDb(blocks[size_t(last * 0.95)]) - loudnessDb(blocks[size_t(last * 0.1)]);
}

LoudnessMeter metered(const Audio& audio) {
  LoudnessMeter meter;
  meter.add(audio.left.data(), audio.right.data(), audio.size());
  return meter;
}

}  // namespace

double KWeighting::run(double x) { return highPass_.run(shelf_.run(x)); }

void KWeighting::settle() {
  shelf_.settle();
  highPass_.settle();
}

double KWeighting::Biquad::run(double x) {
  const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
  x2 = x1;
  x1 = x;
  y2 = y1;
  y1 = y;
  return y;
}

void KWeighting::Biquad::settle() {
  for (double* state : {&x1, &x2, &y1, &y2})
    if (std::fabs(*state) < 1e-100) *state = 0;
}

void LoudnessMeter::add(const float* left, const float* right, size_t frames) {
  for (size_t done = 0; done < frames;) {
    const size_t end = std::min(frames, done + hop - inHop_);
    inHop_ += end - done;
    for (; done < end; done++) {
      const double l = left_.run(double(left[done])), r = right_.run(double(right[done]));
      both_ += l * l + r * r;
      middle_ += (l + r) * (l + r);
    }
    if (inHop_ < hop) return;
    stereo_.push_back(both_);
    mono_.push_back(middle_ / 2);
    both_ = middle_ = 0;
    inHop_ = 0;
    left_.settle();
    right_.settle();
  }
}

double LoudnessMeter::lufs() const { return integrated(stereo_); }

Loudness LoudnessMeter::loudness() const {
  Loudness out;
  out.lufs = lufs();
  out.lraLu = range(stereo_);
  if (out.lufs > -70) out.monoLossDb = std::max(integrated(mono_) - out.lufs, -60.0);
  return out;
}

Loudness loudnessOf(const Audio& audio) { return metered(audio).loudness(); }

double integratedLufs(const Audio& audio) { return metered(audio).lufs(); }

}  // namespace synth::analysis
