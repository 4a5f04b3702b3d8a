#include "engine/TrackRoom.h"

#include <algorithm>
#include <cmath>

namespace synth {
namespace {

using namespace dsp;

constexpr double lineSeconds[4] = {0.0143, 0.0187, 0.0239, 0.0299};
constexpr double diffuserSeconds[2][2] = {{0.00183, 0.00527}, {0.00211, 0.00479}};
constexpr float diffusion = 0.6f, early = 0.4f, inputGain = 0.7f, wetGain = 1.4f, dryLoss = 0.35f;
constexpr float hearing = 1e-7f;

}  // namespace

void TrackRoom::prepare(double rate) {
  rate_ = rate;
  perTick_ = share(0.02, rate, segment);
  mixShare_ = share(0.02, rate);
  quiet_ = ~0u;
  for (int k = 0; k < lines; k++) line_[k].prepare(1.25 * lineSeconds[k] * rate + 4);
  for (int ch = 0; ch < 2; ch++)
    for (int k = 0; k < 2; k++) diffuser_[ch][k].prepare(diffuserSeconds[ch][k], rate);
}

std::size_t TrackRoom::bytes() const {
  std::size_t sum = 0;
  for (const DelayLine& l : line_) sum += l.bytes();
  for (auto& side : diffuser_)
    for (const fx::Diffuser& d : side) sum += d.bytes();
  return sum;
}

void TrackRoom::tick(const Setting& s, bool snap) {
  mix_ = std::clamp(s.mix, 0.0f, 1.0f);
  if (snap) mixNow_.now = mix_;
  runs_ = mix_ > 0 || mixNow_.now > 1e-6f || quiet_ < std::uint32_t(0.06 * rate_);
  const bool fresh = snap || !set_;
  set_ = runs_;
  if (!runs_) {
    mixNow_.now = 0;
    return;
  }
  const float c = fresh ? 1 : perTick_, size = size_, decay = decay_;
  size_ += (s.size - size_) * c;
  decay_ += (s.decay - decay_) * c;
  const float scale = (0.25f + size_) * float(rate_);
  for (int k = 0; k < lines; k++) delay_[k].aim(std::round(float(lineSeconds[k]) * scale), fresh);
  if (fresh || size_ != size || decay_ != decay) {
    float mean = 0;
    for (int k = 0; k < lines; k++) {
      gain_[k] = fx::decayGain(float(lineSeconds[k]) * scale, std::max(double(decay_), 0.01), rate_);
      mean += gain_[k] * gain_[k] / lines;
    }
    level_ = std::sqrt(std::sqrt(1 - mean));
  }
  if (s.damp != damp_) {
    damp_ = s.damp;
    fx::OnePole p;
    p.set(14000 * math::pow(0.1, double(damp_)), rate_);
    lowShare_ = p.share;
  }
  for (float& y : low_) y = flushed(y);
}

void TrackRoom::listen() {
  if (silent_) return;
  for (float y : low_)
    if (y != 0) return;
  for (const DelayLine& l : line_)
    if (!l.silent()) return;
  for (auto& side : diffuser_)
    for (const fx::Diffuser& d : side)
      if (!d.line().silent()) return;
  silent_ = true;
}

void TrackRoom::passTime(int n) {
  for (Ramp& d : delay_) d.advance(n);
  clock_.advance(n);
}

void TrackRoom::pass(int n) {
  if (!runs_) return;
  Block mix;
  mixNow_.run(mix_, mixShare_, mix, n);
  passTime(n);
  quiet_ = counted(quiet_, n);
}

void TrackRoom::process(Block& left, Block& right, int n) {
  silent_ = false;
  Block mix;
  mixNow_.run(mix_, mixShare_, mix, n);
  Block diffused[2] = {left, right};
  for (int q = quads(n); q < segment / 4; q++) diffused[0].put(q, splat(0)), diffused[1].put(q, splat(0));
  for (int ch = 0; ch < 2; ch++)
    for (fx::Diffuser& d : diffuser_[ch]) d.run(diffused[ch], diffusion, clock_, n);
  Block back[lines], wet[2];
  for (int q = 0; q < quads(n); q++) {
    const u4 at = clock_.after(q);
    f4 y[lines];
    for (int k = 0; k < lines; k++)
      y[k] = splat(gain_[k]) * (delay_[k].stands() ? line_[k].four(at[0] - std::uint32_t(delay_[k].start))
                                                   : line_[k].read(at, delay_[k].four(q)));
    transpose(y[0], y[1], y[2], y[3]);
    f4 low = load(low_);
    const int count = std::min(4, n - 4 * q);
    for (int i = 0; i < count; i++) y[i] = low += splat(lowShare_) * (y[i] - low);
    store(low_, low);
    transpose(y[0], y[1], y[2], y[3]);
    const f4 half = splat(0.5f) * (y[0] + y[1] + y[2] + y[3]);
    for (int k = 0; k < lines; k++)
      back[k].put(q, y[k] - half + splat(k & 2 ? -inputGain : inputGain) * diffused[k & 1].at(q));
    wet[0].put(q, splat(level_) * (y[0] + y[2]) + splat(early) * diffused[0].at(q));
    wet[1].put(q, splat(level_) * (y[1] + y[3]) + splat(early) * diffused[1].at(q));
  }
  for (int k = 0; k < lines; k++) line_[k].put(clock_.now + 1, back[k].v, n);
  passTime(n);

  countQuiet(quiet_, wet[0], wet[1], hearing, n);
  for (int q = 0; q < quads(n); q++) {
    const f4 m = mix.at(q), dry = splat(1) - splat(dryLoss) * m;
    left.put(q, left.at(q) * dry + splat(wetGain) * m * wet[0].at(q));
    right.put(q, right.at(q) * dry + splat(wetGain) * m * wet[1].at(q));
  }
}

}  // namespace synth
