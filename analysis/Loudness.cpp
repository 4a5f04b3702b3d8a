#include "analysis/Loudness.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr size_t hop = 4800;
constexpr size_t momentary = 4, shortTerm = 30;  // lengths of blocks, in hops: 0.4 s and 3 s

// One biquad in direct form 1; b and a of a filter with a0 = 1.
struct Biquad {
  double b0, b1, b2, a1, a2;
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

  double run(double x) {
    const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return y;
  }
  // Ends a tail before it becomes too small for the processor to be quick with.
  void settle() {
    for (double* state : {&x1, &x2, &y1, &y2})
      if (std::fabs(*state) < 1e-100) *state = 0;
  }
};

// The K weighting at 48 kHz.
struct Weighting {
  Biquad shelf{1.53512485958697, -2.69169619938640, 1.19839281085285, -1.69065929318241, 0.73248077421585};
  Biquad highPass{1, -2, 1, -1.99004745483398, 0.99007225036621};

  double run(double x) { return highPass.run(shelf.run(x)); }
  void settle() {
    shelf.settle();
    highPass.settle();
  }
};

// Energies of whole hops, weighted: of both channels together, and of their mean counted as both.
struct Hops {
  std::vector<double> stereo, mono;
};

Hops weigh(const Audio& audio) {
  Hops hops;
  hops.stereo.reserve(audio.size() / hop);
  hops.mono.reserve(audio.size() / hop);
  Weighting left, right;
  for (size_t at = 0; at + hop <= audio.size(); at += hop) {
    double both = 0, middle = 0;
    for (size_t i = at; i < at + hop; i++) {
      const double l = left.run(double(audio.left[i])), r = right.run(double(audio.right[i]));
      both += l * l + r * r;
      middle += (l + r) * (l + r);
    }
    hops.stereo.push_back(both);
    hops.mono.push_back(middle / 2);
    left.settle();
    right.settle();
  }
  return hops;
}

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

}  // namespace

Loudness loudnessOf(const Audio& audio) {
  const Hops hops = weigh(audio);
  Loudness out;
  out.lufs = integrated(hops.stereo);
  out.lraLu = range(hops.stereo);
  if (out.lufs > -70) out.monoLossDb = std::max(integrated(hops.mono) - out.lufs, -60.0);
  return out;
}

double integratedLufs(const Audio& audio) { return integrated(weigh(audio).stereo); }

}  // namespace synth::analysis
