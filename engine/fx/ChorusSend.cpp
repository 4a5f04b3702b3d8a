// CHORUS: one moving voice a side, or three of a string ensemble; wet alone.
#include <algorithm>

#include "engine/fx/SendEffect.h"

namespace synth::fx {
namespace {

using namespace dsp;

enum Mode : int { ChorusMode, EnsembleMode };
constexpr double longestDelay_ = 0.012;

class Chorus final : public SendEffect {
 public:
  explicit Chorus(double rate) : rate_(rate), c_(dsp::share(0.02, rate)) {
    for (DelayLine& l : line_) l.prepare(longestDelay_ * rate);
  }
  std::size_t bytes() const override { return line_[0].bytes() + line_[1].bytes(); }
  double longestDelay() const override { return longestDelay_; }

  void clear() override {
    clock_.clear();
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].clear();
      high_[ch].y = 0;
    }
  }

  void setUp(const SendFx& fx, double, bool snap) override {
    wantedDepth_ = std::clamp(fx.chorus_depth, 0.0f, 1.0f);
    wantedMode_ = fx.chorus_mode == EnsembleMode ? 1 : 0;
    if (snap) {
      depth_.now = wantedDepth_;
      mode_.now = wantedMode_;
    }
    hz_ = fx.chorus_rate;
    width_.aim(std::clamp(fx.chorus_width, 0.0f, 1.0f), snap);
    for (int ch = 0; ch < 2; ch++) {
      if (fx.chorus_low_cut != lowHz_) lowCut_[ch].highAt(fx.chorus_low_cut, rate_);
      if (fx.chorus_tone != tone_) high_[ch].set(2500 * math::pow(6.4, double(fx.chorus_tone)), rate_);
      lowCut_[ch].state.flush();
      high_[ch].flush();
    }
    lowHz_ = fx.chorus_low_cut;
    tone_ = fx.chorus_tone;
  }

  void run(const Stereo& in, Stereo& out, int n, u64) override {
    Stereo x = in;
    Block* const sides[2] = {&x.l, &x.r};
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].run(*sides[ch], n);
      high_[ch].low(*sides[ch], n);
      line_[ch].put(clock_.now + 1, sides[ch]->v, n);
    }
    Block depth, mode;
    depth_.run(wantedDepth_, c_, depth, n);
    mode_.run(wantedMode_, c_, mode, n);
    const Phase step = lfoStep(double(hz_), rate_),
                fastStep = lfoStep(std::min(11 * double(hz_), 7.0), rate_);
    for (int q = 0; q < quads(n); q++) {
      const u4 at = clock_.after(q), p = stepped(slow_, step, q), fast = stepped(fast_, fastStep, q);
      f4 l = splat(0), r = splat(0);
      const f4 share = mode.at(q);
      if (any(share < splat(1))) chorus(at, p, depth.at(q), l, r);
      if (any(share > splat(0))) {
        f4 wideL, wideR;
        ensemble(at, p, fast, depth.at(q), wideL, wideR);
        l += share * (wideL - l);
        r += share * (wideR - r);
      }
      const f4 middle = splat(0.5f) * (l + r), side = splat(0.5f) * (l - r) * width_.four(q);
      out.l.put(q, middle + side);
      out.r.put(q, middle - side);
    }
    slow_ += u32(n) * step;
    fast_ += u32(n) * fastStep;
    width_.advance(n);
    clock_.advance(n);
  }

 private:
  static u4 stepped(Phase first, Phase step, int quad) {
    const Phase p = first + u32(4 * quad) * step;
    return u4{p, p + step, p + 2 * step, p + 3 * step};
  }
  f4 ms() const { return splat(float(rate_ / 1000)); }

  void chorus(u4 at, u4 p, f4 depth, f4& l, f4& r) const {
    const f4 swing = splat(3.6f) * depth * sinePoly(p);
    l = line_[0].read(at, ms() * (splat(6.5f) + swing));
    r = line_[1].read(at, ms() * (splat(6.5f) - swing));
  }

  void ensemble(u4 at, u4 p, u4 fast, f4 depth, f4& l, f4& r) const {
    constexpr Phase third = 0x55555555u;
    f4 tap[2][3];
    for (int k = 0; k < 3; k++) {
      const f4 delay = ms() * (splat(7) + depth * (splat(2.4f) * sinePoly(p + u32(k) * third) +
                                                   splat(0.22f) * sinePoly(fast + u32(k) * third)));
      for (int ch = 0; ch < 2; ch++)
        if (k == 1 || (k == 0) == (ch == 0)) tap[ch][k] = line_[ch].read(at, delay);
    }
    l = splat(0.6f) * (tap[0][0] + splat(0.7f) * tap[0][1]);
    r = splat(0.6f) * (tap[1][2] + splat(0.7f) * tap[1][1]);
  }

  double rate_;
  float c_;
  DelayLine line_[2];
  LineClock clock_;
  TwoPole lowCut_[2];
  OnePole high_[2];
  Slew depth_, mode_;
  Ramp width_;
  Phase slow_ = 0, fast_ = 0;
  float wantedDepth_ = 0, wantedMode_ = 0, hz_ = 0.5f, lowHz_ = -1, tone_ = -1;
};

}  // namespace

std::unique_ptr<SendEffect> makeChorus(double rate) { return std::make_unique<Chorus>(rate); }

}  // namespace synth::fx
