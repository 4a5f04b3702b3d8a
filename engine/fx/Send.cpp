#include "engine/fx/Send.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp/FastMath.h"

namespace synth::fx {
namespace {

using namespace dsp;

constexpr float hearing = 1e-7f, delayLevel = 0.6f;
constexpr double crossfadeSeconds = 0.02, tailSeconds = 0.5;

// The first of n samples that is to be heard, or n.
int firstLoud(const Stereo& x, int from, int n) {
  for (int i = from; i < n; i++)
    if (std::fabs(x.l[i]) >= hearing || std::fabs(x.r[i]) >= hearing) return i;
  return n;
}

}  // namespace

std::unique_ptr<SendEffect> makeSendEffect(int type, double rate) {
  switch (type) {
    case FX_DELAY: return makeDelay(rate);
    case FX_TAPE: return makeTapeEcho(rate);
    case FX_HALL: return makeHall(rate);
    case FX_PLATE: return makePlate(rate);
    case FX_SHIMMER: return makeShimmer(rate);
    case FX_CHORUS: return makeChorus(rate);
    default: return nullptr;
  }
}

void Send::prepare(double rate) {
  rate_ = rate;
  for (int type = 0; type < FX_OFF; type++) effects_[type] = makeSendEffect(type, rate);
  gainStep_ = float(1 / (rate * crossfadeSeconds));
  returnShare_ = dsp::share(0.02, rate);
  attack_ = dsp::share(0.005, rate);
  release_ = dsp::share(0.2, rate);
}

std::size_t Send::bytes() const {
  std::size_t sum = 0;
  for (const auto& e : effects_) sum += e->bytes();
  return sum;
}

// The effect's own gain of up to n samples, until it changes; returns how many those are.
int Send::fade(float* gains, int n) {
  for (int i = 0; i < n; i++) {
    gain_ = type_ != wanted_ ? std::max(gain_ - gainStep_, 0.0f) : std::min(gain_ + gainStep_, 1.0f);
    gains[i] = gain_;
    if (gain_ == 0) return i + 1;
  }
  return n;
}

void Send::start(const SendFx& fx, double bpm) {
  type_ = wanted_;
  effect_ = type_ < FX_OFF ? effects_[type_].get() : nullptr;
  if (!effect_) return;
  effect_->clear();
  effect_->setUp(fx, bpm, true);
  env_ = 0;
}

void Send::run(const SendFx& fx, double bpm, const Stereo& in, Stereo& out, int n, u64 now, bool rests) {
  wanted_ = std::min<int>(fx.type, FX_OFF);
  if (!begun_) {
    begun_ = true;
    return_.now = fx.returnLevel;
    gain_ = 1;
    start(fx, bpm);
  }
  const bool tick = (now & 15) == 0;
  if (tick && rests && effect_) sleeping_ |= quiet_ >= u32((effect_->longestDelay() + tailSeconds) * rate_);
  out.l.fill(0);
  out.r.fill(0);
  Block level;
  return_.run(fx.returnLevel, returnShare_, level, n);
  int from = 0;
  if (sleeping_ && type_ == wanted_) {
    from = effect_ ? firstLoud(in, 0, n) : n;
    if (from < n) {
      // It wakes on the very sample that it is to hear.
      sleeping_ = false;
      quiet_ = 0;
      effect_->setUp(fx, bpm, true);
    }
  } else if (tick && effect_) {
    effect_->setUp(fx, bpm, false);
  }
  if (from < n) piece(fx, bpm, in, out, from, n - from, now);
  for (int q = 0; q < quads(n); q++) {
    out.l.put(q, out.l.at(q) * level.at(q));
    out.r.put(q, out.r.at(q) * level.at(q));
  }
  if (sleeping_ && outPeak_[0] + outPeak_[1] + inPeak_ == 0) return;
  meter(in, out, n);
}

// n samples of the segment from `from` on, in as many stretches as the effect changes.
void Send::piece(const SendFx& fx, double bpm, const Stereo& in, Stereo& out, int from, int n, u64 now) {
  const int end = from + n;
  while (from < end) {
    Block gains = {};
    int part = end - from;
    if (type_ == wanted_ && gain_ == 1)
      gains.fill(1);
    else if (effect_)
      part = fade(gains.v, part);
    else
      gain_ = 0;
    if (effect_) {
      Stereo x, wet;
      // What goes in fades too: a line that began in the middle of a wave would give its edge back later.
      for (int i = 0; i < part; i++) {
        x.l[i] = in.l[from + i] * gains[i];
        x.r[i] = in.r[from + i] * gains[i];
      }
      std::fill(x.l.v + part, x.l.v + segment, 0.0f);
      std::fill(x.r.v + part, x.r.v + segment, 0.0f);
      effect_->run(x, wet, part, now + u64(from));
      if (type_ == FX_DELAY) duck(fx, x, wet, part);
      for (int i = 0; i < part; i++) {
        out.l[from + i] = wet.l[i] * gains[i];
        out.r[from + i] = wet.r[i] * gains[i];
      }
      const int still =
          std::min(quietSince(x.l, x.r, hearing, part), quietSince(wet.l, wet.r, hearing, part));
      quiet_ = counted(still == part ? quiet_ : 0, still);
      from += part;
    }
    if (type_ == wanted_) {
      if (!effect_) return;
      continue;
    }
    if (gain_ > 0) continue;
    // The old effect has gone; the new one starts empty.
    start(fx, bpm);
    quiet_ = 0;
    sleeping_ = false;
    if (!effect_) {
      sleeping_ = true;
      return;
    }
  }
}

// DELAY gives way to the dry sound while that plays.
void Send::duck(const SendFx& fx, const Stereo& in, Stereo& out, int n) {
  const float amount = std::clamp(fx.delay_duck, 0.0f, 1.0f);
  for (int i = 0; i < n; i++) {
    const float peak = std::max(std::fabs(in.l[i]), std::fabs(in.r[i]));
    env_ = flushed(env_ + (peak > env_ ? attack_ : release_) * (peak - env_));
    float gain = delayLevel;
    if (amount > 0) gain *= exp2Fast(-2.9897353f * amount * std::min(20 * env_, 1.0f));  // 18 dB at most
    out.l[i] *= gain;
    out.r[i] *= gain;
  }
}

void Send::meter(const Stereo& in, const Stereo& out, int n) {
  const float fall = exp2Fast(float(n) * -0.00072152817f);  // 0.9995^n
  inPeak_ = flushed(std::max({inPeak_ * fall, peakOf(in.l, n), peakOf(in.r, n)}));
  outPeak_[0] = flushed(std::max(outPeak_[0] * fall, peakOf(out.l, n)));
  outPeak_[1] = flushed(std::max(outPeak_[1] * fall, peakOf(out.r, n)));
}

}  // namespace synth::fx
