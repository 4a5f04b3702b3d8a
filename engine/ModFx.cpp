#include "engine/ModFx.h"

#include <algorithm>

#include "base/Math.h"

namespace synth {
namespace {

using namespace dsp;
using modfx::Piece;

constexpr double longestDelay = 0.0115;  // seconds; the Chorus at full depth
constexpr double tailRoom = 0.01;
constexpr float crossfadeSeconds = 0.02f;

}  // namespace

void ModFx::prepare(double rate) {
  params_.rate = float(rate);
  lines_.l.prepare((longestDelay + tailRoom) * rate);
  lines_.r.prepare((longestDelay + tailRoom) * rate);
  gainStep_ = float(1 / (rate * crossfadeSeconds));
  smooth_ = float(1 - math::exp(-modfx::tickLength / (rate * 0.02)));
}

void ModFx::clear() {
  lines_.clock.clear();
  state_ = State{};
}

void ModFx::tick(const Setting& s, bool snap) {
  wanted_ = s.type;
  if (type_ == Off && wanted_ == Off) return;
  const float c = snap || type_ == Off ? 1 : smooth_;
  modfx::Params& p = params_;
  auto follow = [c](float& now, float target) { now = flushed(now + (target - now) * c); };
  follow(p.hz, s.rate);
  follow(p.depth, std::clamp(s.depth, 0.0f, 1.0f));
  follow(p.feedback, std::clamp(s.feedback, -0.95f, 0.95f));
  follow(p.tone, std::clamp(s.tone, 0.0f, 1.0f));
  follow(p.mix, std::clamp(s.mix, 0.0f, 1.0f));
  p.hush = s.hush;
  sideOnly_ = s.sideOnly;
  if (snap) {
    type_ = wanted_;
    gain_ = type_ == Off ? 0 : 1;
  }
  tickEffect();
}

void ModFx::tickEffect() {
  if (type_ == FlangerType) state_.flanger.tick(params_);
  if (type_ == PhaserType) state_.phaser.tick(params_);
}

// The effect's own gain of up to n samples, until the effect changes; returns how many those are.
int ModFx::fade(float* gains, int n) {
  for (int i = 0; i < n; i++) {
    gain_ = type_ != wanted_ ? std::max(gain_ - gainStep_, 0.0f) : std::min(gain_ + gainStep_, 1.0f);
    gains[i] = gain_;
    if (gain_ == 0) return i + 1;
  }
  return n;
}

void ModFx::run(Piece& piece) {
  switch (type_) {
    case ChorusType: return state_.chorus.run(lines_, params_, piece);
    case EnsembleType: return state_.ensemble.run(lines_, params_, piece);
    case FlangerType: return state_.flanger.run(lines_, params_, piece);
    case PhaserType: return state_.phaser.run(params_, piece);
    case VinylType: {
      modfx::Params p = params_;
      if (sideOnly_) p.mix = 1;
      return state_.vinyl.run(lines_, p, piece);
    }
    default: return;
  }
}

void ModFx::listen() {
  if (silent_ || type_ == Off || gain_ != 1) return;
  // Vinyl sounds by itself.
  silent_ = type_ == PhaserType ? state_.phaser.silent()
                                : type_ != VinylType && lines_.silent() && state_.flanger.silent();
}

void ModFx::pass(int n) {
  switch (type_) {
    case ChorusType: state_.chorus.pass(params_, n); break;
    case EnsembleType: state_.ensemble.pass(params_, n); break;
    case FlangerType: state_.flanger.pass(params_, n); break;
    case PhaserType: return state_.phaser.pass(params_, n);
    default: return;
  }
  lines_.clock.advance(n);
}

void ModFx::process(float* left, float* right, int n) {
  if (type_ == Off && wanted_ == Off) return;
  silent_ = false;
  alignas(16) float gains[modfx::tickLength] = {};
  // Vinyl is the whole signal unless only its side is wanted; the others are mixed in, at most by half.
  const f4 mix = splat(type_ == VinylType && !sideOnly_ ? 1 : 0.5f * params_.mix);
  int part = n;
  if (gain_ == 1 && type_ == wanted_)
    std::fill_n(gains, n, 1.0f);
  else if (type_ != Off)
    part = fade(gains, n);
  else
    part = 0;

  if (part > 0) {
    Piece dry{};
    dry.n = part;
    std::copy_n(left, part, dry.l);
    std::copy_n(right, part, dry.r);
    // What goes in fades with what comes out: a line that began in mid-wave would give the edge back later.
    Piece wet = dry;
    for (int i = 0; i < part; i++) {
      wet.l[i] *= gains[i];
      wet.r[i] *= gains[i];
    }
    run(wet);
    for (int q = 0; q < quads(part); q++) {
      const f4 amount = mix * load(gains + 4 * q);
      f4 l = wet.left(q), r = wet.right(q);
      if (sideOnly_) {
        const f4 middle = (l + r) * splat(0.5f);
        l = dry.left(q) + amount * (l - middle);
        r = dry.right(q) + amount * (r - middle);
      } else {
        l = dry.left(q) + amount * (l - dry.left(q));
        r = dry.right(q) + amount * (r - dry.right(q));
      }
      store(dry.l + 4 * q, l);
      store(dry.r + 4 * q, r);
    }
    std::copy_n(dry.l, part, left);
    std::copy_n(dry.r, part, right);
  }
  if (gain_ > 0 || type_ == wanted_) return;
  // The old effect has gone: the new one starts with empty lines.
  clear();
  type_ = wanted_;
  tickEffect();
  if (type_ != Off && part < n) process(left + part, right + part, n - part);
}

}  // namespace synth
