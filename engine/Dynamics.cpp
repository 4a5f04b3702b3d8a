#include "engine/Dynamics.h"

#include <algorithm>

#include "base/Math.h"
#include "engine/dsp/FastMath.h"

namespace synth {
namespace {

using namespace dsp;

constexpr double attackSeconds = 0.012;
constexpr float halfKnee = 3, decibelsPerOctave = 6.0205999f, octavesPerDecibel = 0.16609640f;

}  // namespace

void MasterDynamics::prepare(double rate) {
  rate_ = rate;
  attackKeep_ = float(math::exp(-1 / (rate * attackSeconds)));
}

void MasterDynamics::set(float saturation, float amount, float release) {
  if (saturation != saturation_) {
    saturation_ = saturation;
    curve_ = drive::curve(drive::Tube, 0.6f * saturation);
  }
  if (release != release_) {
    release_ = release;
    releaseKeep_ = float(math::exp(-1 / (rate_ * double(release))));
  }
  level_ = flushed(level_);
  if (amount == amount_) return;
  amount_ = amount;
  threshold_ = -4 - 22 * amount;
  inverseRatio_ = 1 / (3 * amount + 1.5f);
  makeup_ = float(math::fromDb(double((1 - inverseRatio_) * threshold_ * -0.45f)));
  // The gentlest setting still compresses: it comes in over the first hundredths.
  blend_ = std::clamp(amount / 0.02f, 0.0f, 1.0f);
}

void MasterDynamics::compress(Block& left, Block& right, int n) {
  Block envelope;
  for (int i = 0; i < n; i++) {
    const float peak = std::max(std::fabs(left[i]), std::fabs(right[i]));
    const float keep = peak > level_ ? attackKeep_ : releaseKeep_;
    envelope[i] = level_ = level_ * keep + peak * (1 - keep);
  }
  for (int i = n; i < segment; i++) envelope[i] = level_;
  const f4 slope = splat(1 - inverseRatio_), knee = splat(halfKnee), none = splat(0);
  f4 smallest = splat(smallest_);
  for (int q = 0; q < quads(n); q++) {
    const f4 over =
        splat(decibelsPerOctave) * log2Fast(max(envelope.at(q), splat(1e-6f))) - splat(threshold_);
    const f4 soft = (over + knee) * (over + knee) * slope * splat(1 / 12.0f);
    const f4 reduction = select(over > knee, slope * over, select(over > -knee, soft, none));
    const f4 gain = exp2Fast(splat(-octavesPerDecibel) * reduction);
    smallest = min(smallest, gain);
    const f4 all = splat(1 - blend_) + splat(blend_ * makeup_) * gain;
    left.put(q, left.at(q) * all);
    right.put(q, right.at(q) * all);
  }
  smallest_ = std::min({smallest[0], smallest[1], smallest[2], smallest[3]});
}

void MasterDynamics::process(Block& left, Block& right, int n, const float* sine) {
  if (saturation_ > 0)
    for (int q = 0; q < quads(n); q++) {
      left.put(q, drive::shape(curve_, sine, left.at(q)));
      right.put(q, drive::shape(curve_, sine, right.at(q)));
    }
  if (amount_ > 0) compress(left, right, n);
}

float MasterDynamics::takeSmallestGain() {
  const float gain = amount_ > 0 ? smallest_ : 1;
  smallest_ = 1;
  return gain;
}

}  // namespace synth
