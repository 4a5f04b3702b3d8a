#include "engine/Moves.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Math.h"
#include "engine/dsp/Random.h"

namespace synth {
namespace {

using namespace dsp;
using fx::Stereo;

constexpr float trackK = 1.706f, sweepK = 1.51f;
constexpr double ringSeconds = 4, tailSeconds = 0.008;
constexpr float windowLength = 96;
constexpr double repeatSteps[7] = {8, 4, 2, 4.0 / 3, 1, 2.0 / 3, 0.5};
constexpr double gateSteps[5] = {4, 2, 1, 0.5, 0.25};

bool has(float v) { return v == v; }
float unit(float v) { return has(v) ? std::clamp(v, 0.0f, 1.0f) : 0; }

float highOf(const Svf& f, SvfState& s, float x) {
  const SvfOut o = s.step(f, x);
  return x - f.k * o.band - o.low;
}

}  // namespace

void Moves::prepare(double rate) {
  rate_ = rate;
  for (float& v : value_) v = std::numeric_limits<float>::quiet_NaN();
  ramp_ = float(1 / (rate * 0.01));
  noiseShare_ = dsp::share(0.005, rate);
  tailStep_ = float(1 / (rate * tailSeconds));
  ringSize_ = std::uint32_t(ringSeconds * rate);
  for (auto& ring : ring_) {
    ring.reset(static_cast<float*>(std::calloc(ringSize_, sizeof(float))));
    if (!ring) throw std::bad_alloc();
  }
  boost_[0].aim(0, true);
  boost_[1].aim(0, true);
  gain_.aim(1, true);
}

bool Moves::active(int move) const {
  const float v = value_[move];
  switch (move) {
    case Lowpass: return v < 0.995f;
    case Highpass: return v > 0.005f;
    case Repeat:
    case Gate: return v >= 0.05f;
    case TapeStop:
    case SpinBack:
    case Crush: return v > 0.001f;
    default: return has(v);
  }
}

void Moves::tick(const MoveValues& moves, double bpm, double stepSamples, bool snap) {
  std::copy_n(moves.value, 12, value_);
  std::copy_n(moves.bound, 12, bound_);
  bpm_ = bpm;
  stepSamples_ = stepSamples;
  auto set = [&](Filter& filter, double hz, float k) {
    filter.f = Svf::at(svfG(hz, rate_), k);
    for (SvfState& s : filter.state) s.flush();
  };
  // Whether a stage runs until the next tick; one that has faded out forgets what it held.
  auto starts = [](Filter& filter, bool on, float mix) {
    if (on || mix > 0) return true;
    for (SvfState& s : filter.state) s = {};
    return false;
  };
  const float washed = bound_[Washout] ? unit(value_[Washout]) : 0;
  for (int send = 0; send < 2; send++) {
    const float v = value_[BoostI + send];
    boost_[send].aim((has(v) ? v : 0) + washed, snap);
  }
  gain_.aim(has(value_[Gain]) ? 2 * value_[Gain] : 1, snap);
  noiseOn_ = bound_[Noise] || noiseEnv_ > 1e-5f;
  if (noiseOn_) set(noise_, 150 * math::pow(66.666664, double(unit(value_[Noise]))), trackK);
  washoutOn_ = bound_[Washout] || washoutDry_ < 1;
  if (!washoutOn_)
    for (SvfState& state : washout_.state) state = {};
  if (washoutOn_) {
    washoutTarget_ = float(math::cos(double(washed) * math::pi * 0.25));
    set(washout_, 20 * math::pow(15, double(washed)), trackK);
  }
  crushOn_ = starts(crush_, active(Crush), crushMix_);
  if (crushOn_) {
    // One that has ended stays as rough as it was while it fades.
    if (has(value_[Crush])) crushValue_ = unit(value_[Crush]);
    const double v = crushValue_;
    set(crush_, 20 * math::pow(15, v), trackK);
    crushStep_ = float(std::max(math::pow(1 - 0.716 * v, 2.2) * rate_, 400.0) / rate_);
    crushLevels_ = float(math::exp2(16 - 14 * 0.857 * v));
    crushGain_ = float(1 / (0.3 * v + 1));
  }
  // A sweep that has ended stays where it was while it fades: a filter that opened at once would click.
  auto follow = [&](Filter& filter, int move) {
    if (has(value_[move]))
      set(filter, 20 * math::pow(1000, double(unit(value_[move]))), sweepK);
    else
      for (SvfState& s : filter.state) s.flush();
  };
  lowpassOn_ = starts(lowpass_, active(Lowpass), lowpassMix_);
  highpassOn_ = starts(highpass_, active(Highpass), highpassMix_);
  if (lowpassOn_) follow(lowpass_, Lowpass);
  if (highpassOn_) follow(highpass_, Highpass);
  if (active(Repeat)) {
    const int i = std::min(int((value_[Repeat] - 0.05f) / 0.13571428f), 6);
    const double length = repeatSteps[i] * rate_ * 15 / bpm_;
    repeatWanted_ = std::uint32_t(std::clamp(length, 64.0, double(ringSize_ - 1)));
  }
  if (active(TapeStop)) {
    const double s = 1 - std::min(double(value_[TapeStop]), 1.0);
    set(tape_, 19800 * s * s + 200, trackK);
  }
  bufferOn_ = bound_[Repeat] || bound_[TapeStop] || bound_[SpinBack] || activeBuffer() >= 0 ||
              playing_ >= 0 || tailGain_ > 0;
}

// ---- Noise and washout.

void Moves::addNoise(Stereo (&sends)[2], int n) {
  if (!noiseOn_) return;
  const float v = unit(value_[Noise]), target = v * 0.65f * std::sqrt(v);
  for (int i = 0; i < n; i++) {
    noiseEnv_ = flushed(noiseEnv_ + (target - noiseEnv_) * noiseShare_);
    float out[2];
    for (int ch = 0; ch < 2; ch++) {
      const float x = float(std::int32_t(lcg(seed_[ch]))) / 2147483648.0f;
      out[ch] = noiseEnv_ * noise_.f.k * noise_.state[ch].step(noise_.f, x).band;
    }
    riser_.l[i] = out[0];
    riser_.r[i] = out[1];
    for (Stereo& send : sends) {
      send.l[i] += 0.3f * out[0];
      send.r[i] += 0.3f * out[1];
    }
  }
}

void Moves::mix(Stereo& dry, Stereo& wet, Stereo& out, int n) {
  if (washoutOn_)
    for (int i = 0; i < n; i++) {
      washoutDry_ += (washoutTarget_ - washoutDry_) * 0.004f;
      if (washoutTarget_ >= 1 && washoutDry_ >= 0.99999f) washoutDry_ = 1;
      dry.l[i] *= washoutDry_;
      dry.r[i] *= washoutDry_;
      wet.l[i] = highOf(washout_.f, washout_.state[0], wet.l[i]);
      wet.r[i] = highOf(washout_.f, washout_.state[1], wet.r[i]);
    }
  for (int q = 0; q < quads(n); q++) {
    out.l.put(q, dry.l.at(q) + wet.l.at(q));
    out.r.put(q, dry.r.at(q) + wet.r.at(q));
  }
  if (!noiseOn_) return;
  for (int q = 0; q < quads(n); q++) {
    out.l.put(q, out.l.at(q) + riser_.l.at(q));
    out.r.put(q, out.r.at(q) + riser_.r.at(q));
  }
}

// ---- Crush and the filters, which come and go within ten milliseconds.

void Moves::crush(Stereo& x, int n) {
  if (!crushOn_) return;
  const bool on = active(Crush);
  Block* const channels[2] = {&x.l, &x.r};
  for (int i = 0; i < n; i++) {
    crushMix_ = std::clamp(crushMix_ + (on ? ramp_ : -ramp_), 0.0f, 1.0f);
    for (int ch = 0; ch < 2; ch++) {
      float& dry = (*channels[ch])[i];
      crushPhase_[ch] += crushStep_;
      if (crushPhase_[ch] >= 1) {
        crushPhase_[ch] -= 1;
        held_[ch] = dry;
      }
      const float rough = std::trunc(held_[ch] * crushLevels_) / crushLevels_;
      dry += crushMix_ * (crushGain_ * highOf(crush_.f, crush_.state[ch], rough) - dry);
    }
  }
}

void Moves::sweep(Stereo& x, Filter& filter, float& mix, bool rises, bool high, int n) {
  Block* const channels[2] = {&x.l, &x.r};
  for (int i = 0; i < n; i++) {
    mix = std::clamp(mix + (rises ? ramp_ : -ramp_), 0.0f, 1.0f);
    for (int ch = 0; ch < 2; ch++) {
      float& dry = (*channels[ch])[i];
      const SvfOut o = filter.state[ch].step(filter.f, dry);
      dry += mix * ((high ? dry - filter.f.k * o.band - o.low : o.low) - dry);
    }
  }
}

// ---- The buffer: repeat, tape stop, spin back.

int Moves::activeBuffer() const {
  for (int move : {Repeat, TapeStop, SpinBack})
    if (active(move)) return move;
  return -1;
}

// Where the newest sample stands.
double Moves::newest() const { return write_ ? write_ - 1 : ringSize_ - 1; }

void Moves::ringAt(double place, float& l, float& r) const {
  const double below = std::floor(place);
  const float f = float(place - below);
  const std::int64_t size = ringSize_, whole = std::int64_t(below);
  const std::size_t a = std::size_t(((whole % size) + size) % size), b = a + 1 < ringSize_ ? a + 1 : 0;
  l = ring_[0][a] + f * (ring_[0][b] - ring_[0][a]);
  r = ring_[1][a] + f * (ring_[1][b] - ring_[1][a]);
}

void Moves::readRepeat(float& l, float& r) {
  if (repeatLength_ != repeatWanted_) {
    if (repeatLength_) holdLast();
    repeatLength_ = repeatWanted_;
    repeatStart_ = (write_ + ringSize_ - repeatLength_) % ringSize_;
    repeatIndex_ = 0;
  }
  const float window =
      std::min(float(std::min(repeatLength_ - repeatIndex_, repeatIndex_)) / windowLength, 1.0f);
  const std::uint32_t at = (repeatStart_ + repeatIndex_) % ringSize_;
  l = ring_[0][at] * window;
  r = ring_[1][at] * window;
  repeatIndex_ = (repeatIndex_ + 1) % repeatLength_;
}

void Moves::readTape(float& l, float& r) {
  const float speed = 1 - std::min(value_[TapeStop], 1.0f);
  double behind = double(write_) - read_;
  if (behind < 0) behind += ringSize_;
  if (behind > double(ringSize_ - 4)) read_ = newest();
  ringAt(read_, l, r);
  read_ += double(speed);
  if (read_ >= ringSize_) read_ -= ringSize_;
  const float gain = std::min(speed * 1.5f, 1.0f);
  l = tape_.state[0].step(tape_.f, l * gain).low;
  r = tape_.state[1].step(tape_.f, r * gain).low;
}

void Moves::readSpin(float& l, float& r) {
  double behind = double(write_) - read_;
  if (behind < 0) behind += ringSize_;
  const double remaining = ringSize_ - behind, edge = rate_ * 0.05;
  if (remaining < edge) {
    // Four seconds are used up: the spin starts over from now.
    read_ = newest();
    fadeIn_ = 0;
  }
  const float fade = float(std::clamp((remaining - edge) / edge, 0.0, 1.0));
  ringAt(read_, l, r);
  const float gain = (remaining < edge ? 0 : fade) * fadeIn_;
  fadeIn_ = std::min(fadeIn_ + 1 / windowLength, 1.0f);
  l *= gain;
  r *= gain;
  read_ -= std::min(double(value_[SpinBack]), 1.0) * 2.5 + 0.5;
  if (read_ < 0) read_ += ringSize_;
}

// What was heard last fades under what comes now.
void Moves::holdLast() {
  tail_[0] = last_[0];
  tail_[1] = last_[1];
  tailGain_ = 1;
}

void Moves::playBuffer(Stereo& x, int n) {
  if (!bufferOn_) {
    last_[0] = x.l[n - 1];
    last_[1] = x.r[n - 1];
    return;
  }
  const int move = activeBuffer();
  for (int i = 0; i < n; i++) {
    float l = x.l[i], r = x.r[i];
    // While a repeat plays its loop stays as it is.
    if (move != Repeat) {
      ring_[0][write_] = l;
      ring_[1][write_] = r;
      write_ = write_ + 1 < ringSize_ ? write_ + 1 : 0;
    }
    if (move != playing_) {
      playing_ = move;
      holdLast();
      repeatLength_ = 0;
      fadeIn_ = 1;
      read_ = newest();
      for (SvfState& s : tape_.state) s = {};
    }
    if (move == Repeat) readRepeat(l, r);
    if (move == TapeStop) readTape(l, r);
    if (move == SpinBack) readSpin(l, r);
    if (tailGain_ > 0) {
      l += tailGain_ * (tail_[0] - l);
      r += tailGain_ * (tail_[1] - r);
      tailGain_ = std::max(tailGain_ - tailStep_, 0.0f);
    }
    x.l[i] = last_[0] = l;
    x.r[i] = last_[1] = r;
  }
}

// ---- Gate, gain.

void Moves::gate(Stereo& x, const double* songTime, int n) {
  const bool on = active(Gate);
  if (!on && gateSmooth_ == 1) return;
  const double period = on ? gateSteps[std::min(int((value_[Gate] - 0.05f) / 0.19f), 4)] : 1;
  const double width = std::max(rate_ * 0.002 / (stepSamples_ * period), 0.0001);
  for (int i = 0; i < n; i++) {
    double g = 1;
    if (on) {
      const double turns = songTime[i] / period, phase = turns - std::floor(turns);
      g = std::clamp(std::min(phase, 0.5 - phase) / width, 0.0, 1.0);
    }
    gateSmooth_ = flushed(gateSmooth_ + (float(g) - gateSmooth_) * 0.3f);
    if (!on && gateSmooth_ > 0.99999f) gateSmooth_ = 1;
    x.l[i] *= gateSmooth_;
    x.r[i] *= gateSmooth_;
  }
}

void Moves::play(Stereo& x, const double* songTime, int n) {
  crush(x, n);
  if (lowpassOn_) sweep(x, lowpass_, lowpassMix_, active(Lowpass), false, n);
  if (highpassOn_) sweep(x, highpass_, highpassMix_, active(Highpass), true, n);
  playBuffer(x, n);
  gate(x, songTime, n);
  if (gain_.stands() && gain_.target == 1) return;
  for (int q = 0; q < quads(n); q++) {
    const f4 g = gain_.four(q);
    x.l.put(q, x.l.at(q) * g);
    x.r.put(q, x.r.at(q) * g);
  }
}

void Moves::advance(int n) {
  boost_[0].advance(n);
  boost_[1].advance(n);
  gain_.advance(n);
}

}  // namespace synth
