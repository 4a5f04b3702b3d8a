#include "engine/ModFx.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/dsp/Sine.h"

namespace synth {
namespace {

constexpr double longestDelay = 0.0115;  // seconds; the Chorus at full depth, and room for the interpolation
constexpr double tailRoom = 0.01;
constexpr float crossfadeSeconds = 0.02f;

}  // namespace

void ModFx::prepare(double rate) {
  rate_ = rate;
  lineSize_ = 1;
  while (lineSize_ < u32((longestDelay + tailRoom) * rate)) lineSize_ *= 2;
  line_.reset(new float[2 * lineSize_]());
  gainStep_ = float(1 / (rate * crossfadeSeconds));
  smooth_ = float(1 - math::exp(-8 / (rate * 0.02)));
}

void ModFx::clear() {
  std::fill(line_.get(), line_.get() + 2 * lineSize_, 0.0f);
  write_ = 0;
}

void ModFx::tick(const Setting& s, bool snap) {
  wanted_ = s.type;
  if (type_ == Off && wanted_ == Off) return;
  const float c = snap || type_ == Off ? 1 : smooth_;
  hz_ += (s.rate - hz_) * c;
  depth_ += (std::clamp(s.depth, 0.0f, 1.0f) - depth_) * c;
  mix_ += (0.5f * std::clamp(s.mix, 0.0f, 1.0f) - mix_) * c;
  sideOnly_ = s.sideOnly;
  if (snap) {
    type_ = wanted_;
    gain_ = type_ == Off ? 0 : 1;
  }
}

// Catmull-Rom through four samples around the read point.
float ModFx::read(int channel, float delay) const {
  const float* line = line_.get() + u32(channel) * lineSize_;
  const float place = std::max(delay, 1.0f);
  const u32 whole = u32(place);
  const float f = place - float(whole);
  const u32 mask = lineSize_ - 1, at = write_ - whole;
  const float a = line[(at + 1) & mask], b = line[at & mask], c = line[(at - 1) & mask],
              d = line[(at - 2) & mask];
  return b +
         f * ((c - a) * 0.5f + f * (a - 2.5f * b + 2 * c - 0.5f * d + f * (1.5f * (b - c) + 0.5f * (d - a))));
}

void ModFx::process(float* left, float* right, int n, const float* sine) {
  const float ms = float(rate_ / 1000), inc = float(hz_ / rate_);
  const float inc2 = float(std::min(14.0 * hz_, 20.0) / rate_);
  for (int i = 0; i < n; i++) {
    if (type_ != wanted_) {
      gain_ = std::max(gain_ - gainStep_, 0.0f);
      if (gain_ == 0) {
        clear();
        type_ = wanted_;
      }
    } else if (type_ != Off) {
      gain_ = std::min(gain_ + gainStep_, 1.0f);
    }
    if (type_ == Off) continue;
    write_++;
    line_[write_ & (lineSize_ - 1)] = left[i];
    line_[lineSize_ + (write_ & (lineSize_ - 1))] = right[i];
    float wet[2];
    for (int ch = 0; ch < 2; ch++) {
      if (type_ == Ensemble) {
        const float at = phase_ + float(ch) / 6;
        float sum = 0;
        for (int tap = 0; tap < 3; tap++) {
          const float third = float(tap) / 3;
          sum += read(ch, ms * (6 + 1.9f * depth_ * dsp::sineOf(sine, at + third) +
                                0.22f * depth_ * dsp::sineOf(sine, phase2_ + third)));
        }
        wet[ch] = 0.5f * sum;
      } else {
        wet[ch] = read(ch, ms * (7 + (3.2f * depth_ + 0.3f) * dsp::sineOf(sine, phase_ + 0.25f * float(ch))));
      }
    }
    phase_ = dsp::wrapped(phase_ + inc);
    phase2_ = dsp::wrapped(phase2_ + inc2);
    const float amount = mix_ * gain_;
    if (sideOnly_) {
      const float middle = (wet[0] + wet[1]) * 0.5f;
      left[i] += amount * (wet[0] - middle);
      right[i] += amount * (wet[1] - middle);
    } else {
      left[i] += amount * (wet[0] - left[i]);
      right[i] += amount * (wet[1] - right[i]);
    }
  }
}

}  // namespace synth
