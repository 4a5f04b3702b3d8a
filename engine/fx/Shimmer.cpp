// SHIMMER: a tank whose tail is shifted in pitch on its way back.
#include <algorithm>
#include <cmath>

#include "engine/dsp/FastMath.h"
#include "engine/fx/SendEffect.h"

namespace synth::fx {
namespace {

using namespace dsp;

constexpr double lineSeconds[8] = {0.0437, 0.0503, 0.0571, 0.0649, 0.0737, 0.0833, 0.0931, 0.1043};
constexpr double diffuserSeconds[2][4] = {{0.0117, 0.0173, 0.0239, 0.0311}, {0.0129, 0.0161, 0.0257, 0.0293}};
constexpr double windowSeconds[2] = {0.083, 0.091};
constexpr double swingSeconds = 0.00035;
constexpr double lfoHz[8] = {0.29, 0.37, 0.41, 0.53, 0.59, 0.71, 0.79, 0.97};
constexpr float inputSign[8] = {1, 1, 1, -1, -1, 1, -1, -1};
constexpr float semitonesOf[] = {12, 7, 19, 24, -12};
// How much of the shifted tail goes back at most: small intervals and falling ones keep more of their energy
// at each turn.
constexpr float shareOf[] = {0.42f, 0.36f, 0.42f, 0.42f, 0.36f};

// Two read heads half a window apart that run against the writer and take turns (Puckette, 2007).
class Shifter {
 public:
  void prepare(double window, double rate) {
    window_ = float(window * rate);
    line_.prepare(double(window_) + 4);
  }
  std::size_t bytes() const { return line_.bytes(); }
  void setRatio(double ratio) { step_ = phaseShift(float((1 - ratio) / double(window_))); }

  void run(Block& x, const LineClock& clock, int n) {
    line_.put(clock.now + 1, x.v, n);
    const f4 least = splat(1), half = splat(0.5f), window = splat(window_);
    for (int q = 0; q < quads(n); q++) {
      const Phase from = phase_ + u32(4 * q) * step_;
      const u4 p = {from, from + step_, from + 2 * step_, from + 3 * step_}, other = p + 0x80000000u;
      const u4 at = clock.after(q);
      // Hann weights of both heads, which add up to 1.
      const f4 weight = half - half * sinePoly(p + quarterTurn);
      x.put(q, weight * line_.read(at, least + unit(p) * window) +
                   (splat(1) - weight) * line_.read(at, least + unit(other) * window));
    }
    phase_ += u32(n) * step_;
  }

 private:
  DelayLine line_;
  float window_ = 4000;
  Phase phase_ = 0, step_ = 0;
};

class Shimmer final : public SendEffect {
 public:
  explicit Shimmer(double rate) : rate_(rate), perTick_(dsp::share(0.06, rate, segment)) {
    tank_.prepare(lineSeconds, swingSeconds, rate);
    for (int ch = 0; ch < 2; ch++) {
      shifter_[ch].prepare(windowSeconds[ch], rate);
      for (int k = 0; k < 4; k++) diffuser_[ch][k].prepare(diffuserSeconds[ch][k], rate);
    }
    OnePole p;
    p.set(12000, rate);
    openShare_ = p.share;
    for (int i = 0; i < 8; i++) lfo_[i] = Phase(i) << 29;
  }
  std::size_t bytes() const override {
    std::size_t sum = tank_.bytes();
    for (int ch = 0; ch < 2; ch++) {
      sum += shifter_[ch].bytes();
      for (const Diffuser& d : diffuser_[ch]) sum += d.bytes();
    }
    return sum;
  }
  double longestDelay() const override { return 0.4; }

  void clear() override {
    clock_.clear();
    tank_.clear();
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].clear();
      loopCut_[ch].clear();
      tone_[ch].clear();
    }
  }

  void setUp(const SendFx& fx, double, bool snap) override {
    const float c = snap ? 1 : perTick_;
    freeze_ += (std::clamp(fx.shimmer_freeze, 0.0f, 1.0f) - freeze_) * c;
    swing_ += (std::clamp(fx.shimmer_mod, 0.0f, 1.0f) - swing_) * c;
    const float amount = std::clamp(fx.shimmer_amount, 0.0f, 1.0f);
    const int pitch = std::min<int>(fx.shimmer_pitch, int(std::size(semitonesOf)) - 1);
    amount_.aim(shareOf[pitch] * amount * (1 - freeze_), snap);
    open_.aim(1 - freeze_, snap);
    bloom_ = 0.35f + 0.4f * std::clamp(fx.shimmer_bloom, 0.0f, 1.0f);
    if (pitch != pitch_) {
      pitch_ = pitch;
      for (Shifter& s : shifter_) s.setRatio(math::exp2(double(semitonesOf[pitch]) / 12));
    }
    for (int ch = 0; ch < 2; ch++) {
      if (fx.shimmer_tone != toneValue_) tone_[ch].lowAt(2000 * math::pow(6, double(fx.shimmer_tone)), rate_);
      if (fx.shimmer_low_cut != lowHz_) {
        lowCut_[ch].highAt(fx.shimmer_low_cut, rate_);
        // Without it lows creep up through the loop.
        loopCut_[ch].highAt(std::max(fx.shimmer_low_cut, 90.0f), rate_);
      }
      for (TwoPole* f : {&tone_[ch], &lowCut_[ch], &loopCut_[ch]}) f->state.flush();
    }
    toneValue_ = fx.shimmer_tone;
    lowHz_ = fx.shimmer_low_cut;
    moveLines(snap, fx.shimmer_decay);
    tank_.flush();
  }

  void run(const Stereo& in, Stereo& out, int n, u64) override {
    Stereo x = in;
    Block* const sides[2] = {&x.l, &x.r};
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].run(*sides[ch], n);
      for (int k = 0; k < 4; k++) diffuser_[ch][k].run(*sides[ch], bloom_, clock_, n);
    }
    Block y[8], back[8];
    Stereo shifted;
    tank_.read(y, n);
    const f4 late = splat(0.9f * lateGain_), early = splat(0.15f);
    for (int q = 0; q < quads(n); q++) {
      const f4 left = y[0].at(q) - y[2].at(q) + y[4].at(q) - y[6].at(q);
      const f4 right = y[1].at(q) - y[3].at(q) + y[5].at(q) - y[7].at(q);
      const f4 direct = early * open_.four(q);
      out.l.put(q, late * left + direct * x.l.at(q));
      out.r.put(q, late * right + direct * x.r.at(q));
      shifted.l.put(q, splat(0.5f) * left);
      shifted.r.put(q, splat(0.5f) * right);
    }
    Block* const voices[2] = {&shifted.l, &shifted.r};
    for (int ch = 0; ch < 2; ch++) {
      shifter_[ch].run(*voices[ch], clock_, n);
      tone_[ch].run(*voices[ch], n);
      loopCut_[ch].run(*voices[ch], n);
    }
    for (int q = 0; q < quads(n); q++) {
      f4 v[8];
      for (int i = 0; i < 8; i++) v[i] = y[i].at(q);
      hadamard(v);
      const f4 open = splat(0.5f) * open_.four(q), amount = amount_.four(q);
      for (int i = 0; i < 8; i++) {
        const f4 dry = i % 2 ? x.r.at(q) : x.l.at(q), wet = i % 2 ? shifted.r.at(q) : shifted.l.at(q);
        v[i] += splat(inputSign[i]) * open * dry + splat(i & 2 ? -1 : 1) * amount * wet;
        back[i].put(q, bounded(v[i]));
      }
    }
    tank_.write(back, n);
    open_.advance(n);
    amount_.advance(n);
    clock_.advance(n);
  }

 private:
  // Bent softly where it grows beyond 1, towards 2; untouched below.
  static f4 bounded(f4 x) {
    const f4 size = dsp::abs(x);
    const i4 loud = size > splat(1);
    if (!any(loud)) return x;
    const f4 bent = splat(2) - splat(1) / max(size, splat(1));
    return select(loud, select(x > splat(0), bent, -bent), x);
  }

  void moveLines(bool snap, float decay) {
    float delays[8];
    const float swing = swing_ * float(swingSeconds * rate_);
    for (int i = 0; i < 8; i++) {
      lfo_[i] += lfoStep(lfoHz[i], rate_, segment);
      delays[i] = float(lineSeconds[i] * rate_) + swing * sinePoly(lfo_[i]);
    }
    tank_.aim(delays, snap);
    if (!snap && decay == decay_ && freeze_ == frozen_) return;
    decay_ = decay;
    frozen_ = freeze_;
    float gains[8];
    const double seconds = std::clamp(double(decay), 0.5, 60.0);
    for (int i = 0; i < 8; i++) {
      const float g = decayGain(float(lineSeconds[i] * rate_), seconds, rate_);
      gains[i] = g + (0.99995f - g) * freeze_;
    }
    tank_.setGains(gains);
    // The level follows the decay alone, so that freezing does not turn the tail down.
    float mean = 0;
    for (int i = 0; i < 8; i++) {
      const float g = decayGain(float(lineSeconds[i] * rate_), seconds, rate_);
      mean += g * g / 8;
    }
    lateGain_ = std::sqrt(std::sqrt(1 - mean));
    tank_.setDamping(openShare_ + (1 - openShare_) * freeze_);
  }

  double rate_;
  float perTick_;
  Tank tank_;
  LineClock clock_;
  Diffuser diffuser_[2][4];
  Shifter shifter_[2];
  TwoPole lowCut_[2], loopCut_[2], tone_[2];
  Phase lfo_[8];
  Ramp amount_, open_;
  int pitch_ = -1;
  float freeze_ = 0, frozen_ = -1, swing_ = 0, bloom_ = 0.5f, decay_ = -1, lateGain_ = 1;
  float openShare_ = 1, toneValue_ = -1, lowHz_ = -1;
};

}  // namespace

std::unique_ptr<SendEffect> makeShimmer(double rate) { return std::make_unique<Shimmer>(rate); }

}  // namespace synth::fx
