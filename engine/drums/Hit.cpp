#include "engine/drums/Hit.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/drums/Recipes.h"
#include "engine/dsp/Random.h"

namespace synth::drums {

using dsp::Block;
using dsp::f4;
using dsp::splat;

namespace {

constexpr float silence = 1e-5f, clickSilence = 1e-4f;
constexpr double ln1000 = 6.90775527898213705;

double sixtyDb(double seconds, double rate) { return math::exp(-ln1000 / (rate * seconds)); }

}  // namespace

void Hit::start(const Setting& setting, u64 serial, double rate) {
  *this = Hit{};
  s_ = setting;
  if (s_.model < 0 || s_.model >= models) s_.model = KICK;
  rate_ = std::isfinite(rate) ? std::clamp(rate, 8000.0, 384000.0) : 48000;
  const u32 low = u32(serial);
  seed_ = low == 0x9E3779B9u ? 0x6D2B79F5u : low ^ 0x9E3779B9u;
  for (int i = 0; i < 4; i++) dsp::white(seed_);
  done_ = false;

  const Traits& traits = traitsOf(s_.model);
  f0_ = s_.baseHz > 0 && traits.pitched ? s_.baseHz : traits.hz;
  envCoefficient_ = float(sixtyDb(traits.decay * 0.01 * math::pow(500, double(s_.decay)), rate_));
  holdLeft_ = i32(s_.hold * rate_);
  attackStep_ = float(1 / (rate_ * (0.00015 + 0.0025 * (1 - s_.snap))));
  sweepAmount_ = traits.sweep * s_.sweep * s_.sweep;
  sweepHoldLeft_ = int(s_.sweepHold * rate_);
  const double tau = traits.sweepSeconds * math::pow(8, double(s_.sweepTime));
  sweep_.coefficient = float(math::exp(-1 / (rate_ * tau)));
  drive_ = drive::curve(drive::Soft, s_.drive);
  Recipes::setUp(*this);
}

float Hit::semitonesAt(double t) const {
  double st = s_.pitch + s_.tailDrift * (1 - math::exp(-t / std::max(0.01, double(s_.tailTime))));
  if (s_.drop > 0 && t > s_.dropTime) st -= 36 * s_.drop * (1 - math::exp(-(t - s_.dropTime) / 0.12));
  return float(st);
}

// Every sixteen samples of the hit: the slow part of the pitch, which moves on a line between ticks.
void Hit::tick(float ratio) {
  const double t = age_ / rate_;
  for (Decay& d : decay_) d.value = dsp::flushed(d.value);
  for (OnePole& p : pole_) p.y = dsp::flushed(p.y);
  for (dsp::SvfState& s : state_) s.flush();
  sweep_.value = dsp::flushed(sweep_.value);
  env_ = dsp::flushed(env_);
  gate_ = dsp::flushed(gate_);
  const bool first = age_ == 0;
  if (s_.tailDrift != 0 || s_.drop > 0 || first) {
    base_ = float(math::exp2(semitonesAt(t) / 12.0));
    baseStep_ = float((math::exp2(semitonesAt(t + 16 / rate_) / 12.0) - base_) / 16);
  }
  Recipes::tick(*this, base_ * ratio * (1 + sweepAmount_ * sweep_.value));
}

void Hit::fill(Stretch& s, const float* ratios) {
  s.age = age_;
  s.held = std::min(s.n, holdLeft_);
  holdLeft_ -= s.held;
  const int swept = std::min(s.n, sweepHoldLeft_);
  sweepHoldLeft_ -= swept;
  Block sweep;
  for (int i = 0; i < s.n; i++) {
    s.A[i] = env_;
    if (i >= s.held) env_ *= envCoefficient_;
    sweep[i] = sweep_.value;
    if (i >= swept) sweep_.value *= sweep_.coefficient;
    s.noise[i] = dsp::white(seed_);
  }
  for (int i = s.n; i < dsp::segment; i++) s.A[i] = sweep[i] = s.noise[i] = 0;
  const f4 count = {0, 1, 2, 3};
  for (int q = 0; q < dsp::quads(s.n); q++) {
    const f4 at = count + splat(float(4 * q)), sinceTick = at + splat(float(age_ & 15));
    s.at.put(q, dsp::min(splat(1), (at + splat(float(age_))) * splat(attackStep_)));
    f4 r = (splat(base_) + splat(baseStep_) * sinceTick) * (splat(1) + splat(sweepAmount_) * sweep.at(q));
    if (ratios) r *= dsp::load(ratios + 4 * q);
    s.r.put(q, r);
  }
  age_ += u32(s.n);
}

// Samples within one tick.
void Hit::renderStretch(float* out, int n, const float* ratios) {
  alignas(16) float ratio[dsp::segment];
  if (ratios) {
    std::copy_n(ratios, n, ratio);
    std::fill(ratio + n, ratio + dsp::segment, 1.0f);
  }
  if ((age_ & 15) == 0) tick(ratios ? ratio[0] : 1);
  Stretch s;
  s.n = n;
  fill(s, ratios ? ratio : nullptr);
  Block x;
  Recipes::render(*this, s, x);
  if (drive_.blend > 0)
    for (int q = 0; q < dsp::quads(n); q++) x.put(q, drive::shape(drive_, dsp::sineTable(), x.at(q)));
  for (int i = 0; gateCoefficient_ < 1 && i < n; i++) {
    x[i] *= gate_;
    gate_ *= gateCoefficient_;
  }
  std::copy_n(x.v, n, out);
}

// Whether nothing of the hit is to be heard any more: neither its body nor a click that outlives it.
bool Hit::spent() const {
  if (env_ * gate_ >= silence) return false;
  for (const Decay& d : decay_)
    if (d.coefficient > 0 && d.value * gate_ >= clickSilence) return false;
  return true;
}

int Hit::render(float* out, int n, const float* ratios) {
  int i = 0;
  while (i < n && !done_) {
    // It ends with a tick, wherever a call may have been cut.
    if ((age_ & 15) == 0 && spent()) {
      done_ = true;
      break;
    }
    const int part = std::min(n - i, 16 - int(age_ & 15));
    renderStretch(out + i, part, ratios ? ratios + i : nullptr);
    i += part;
  }
  std::fill(out + i, out + n, 0.0f);
  return i;
}

int Hit::fade(float* x, int n) {
  if (fadeLeft_ < 0) return n;
  const int lives = std::min(n, fadeLeft_);
  for (int i = 0; i < lives; i++) x[i] *= float(fadeLeft_--) / float(fadeTotal_);
  if (fadeLeft_ == 0) done_ = true;
  std::fill(x + lives, x + n, 0.0f);
  return lives;
}

void Hit::release(double seconds) {
  const float wanted = float(sixtyDb(seconds, rate_));
  if (holdLeft_ > 0 || wanted < envCoefficient_) gateCoefficient_ = std::min(gateCoefficient_, wanted);
}

void Hit::fadeOut(int samples) {
  if (fadeLeft_ >= 0 && fadeLeft_ < samples) return;
  const float now = fadeLeft_ >= 0 ? float(fadeLeft_) / float(fadeTotal_) : 1;
  fadeTotal_ = std::max(1, int(float(samples) / std::max(now, 0.01f)));
  fadeLeft_ = std::max(1, samples);
}

float Hit::level() const {
  return done_ ? 0 : env_ * gate_ * (fadeLeft_ >= 0 ? float(fadeLeft_) / float(fadeTotal_) : 1);
}

}  // namespace synth::drums
