#include "engine/drums/Hit.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "engine/drums/Recipes.h"
#include "engine/dsp/Random.h"

namespace synth::drums {
namespace {

constexpr float silence = 1e-5f;
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
  holdLeft_ = float(s_.hold * rate_);
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
  external_ = ratio;
  for (Decay& d : decay_) d.value = dsp::flushed(d.value);
  sweep_.value = dsp::flushed(sweep_.value);
  base_ = float(math::exp2(semitonesAt(t) / 12.0));
  baseStep_ = float((math::exp2(semitonesAt(t + 16 / rate_) / 12.0) - base_) / 16);
  Recipes::tick(*this, base_ * external_ * (1 + sweepAmount_ * sweep_.value));
}

Hit::Frame Hit::frame() {
  Frame f;
  f.t = float(age_ / rate_);
  f.A = env_;
  f.held = holdLeft_ > 0;
  if (f.held)
    holdLeft_ -= 1;
  else
    env_ *= envCoefficient_;
  f.at = std::min(1.0f, float(age_) * attackStep_);
  f.r = base_ * external_ * (1 + sweepAmount_ * sweep_.value);
  base_ += baseStep_;
  if (sweepHoldLeft_ > 0)
    sweepHoldLeft_--;
  else
    sweep_.value *= sweep_.coefficient;
  f.n = dsp::white(seed_);
  age_++;
  return f;
}

int Hit::render(float* out, int n, float ratio) {
  const float* sine = dsp::sineTable();
  int i = 0;
  for (; i < n && !done_; i++) {
    if ((age_ & 15) == 0) tick(ratio);
    float x = Recipes::sample(*this, frame(), sine);
    if (drive_.blend > 0) x = drive::shape(drive_, sine, x);
    x *= gate_;
    gate_ *= gateCoefficient_;
    if (env_ * gate_ < silence) done_ = true;
    out[i] = std::isfinite(x) ? x : 0;
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
  if (wanted < envCoefficient_) gateCoefficient_ = std::min(gateCoefficient_, wanted);
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
