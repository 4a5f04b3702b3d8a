// HALL: a pre-delay, diffusers (Schroeder, 1962) and a tank of eight modulated lines.
#include <algorithm>
#include <cmath>

#include "engine/fx/SendEffect.h"

namespace synth::fx {
namespace {

using namespace dsp;

constexpr double longestPredelay = 0.25;
constexpr double lineSeconds[8] = {0.0413, 0.0479, 0.0539, 0.0617, 0.0691, 0.0787, 0.0893, 0.1019};
constexpr double diffuserSeconds[2][4] = {{0.00477, 0.0036, 0.01273, 0.00931},
                                          {0.00511, 0.00337, 0.01201, 0.01013}};
constexpr float diffusion[4] = {0.72f, 0.72f, 0.62f, 0.62f};
constexpr double lfoHz[8] = {0.31, 0.37, 0.43, 0.53, 0.61, 0.71, 0.83, 0.97};
constexpr double swingSeconds = 0.00035;
constexpr float inputSign[8] = {1, 1, 1, -1, -1, 1, -1, -1};

class Hall final : public SendEffect {
 public:
  explicit Hall(double rate) : rate_(rate), perTick_(dsp::share(0.06, rate, segment)) {
    tank_.prepare(lineSeconds, swingSeconds, rate);
    for (int ch = 0; ch < 2; ch++) {
      predelay_[ch].prepare(longestPredelay * rate + 4);
      for (int k = 0; k < 4; k++) diffuser_[ch][k].prepare(diffuserSeconds[ch][k], rate);
    }
    for (int i = 0; i < 8; i++) lfo_[i] = Phase(i) << 29;
  }
  std::size_t bytes() const override {
    std::size_t sum = tank_.bytes();
    for (int ch = 0; ch < 2; ch++) {
      sum += predelay_[ch].bytes();
      for (const Diffuser& d : diffuser_[ch]) sum += d.bytes();
    }
    return sum;
  }
  double longestDelay() const override { return longestPredelay + 0.15; }

  void clear() override {
    clock_.clear();
    tank_.clear();
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].clear();
      highCut_[ch].clear();
    }
  }

  void setUp(const SendFx& fx, double, bool snap) override {
    const float c = snap ? 1 : perTick_;
    size_ += (std::clamp(fx.hall_size, 0.0f, 1.0f) - size_) * c;
    swing_ += (std::clamp(fx.hall_mod, 0.0f, 1.0f) - swing_) * c;
    predelaySamples_ +=
        (std::clamp(fx.hall_predelay, 0.0f, float(longestPredelay)) * float(rate_) - predelaySamples_) * c;
    width_.aim(std::clamp(fx.hall_width, 0.0f, 1.0f), snap);
    place_.aim(std::max(predelaySamples_, 1.0f), snap);
    if (fx.hall_decay != decay_) seconds_ = 0.4 * math::pow(50, double(fx.hall_decay));
    if (fx.hall_damping != damping_) tank_.setDamping(dampingShare(fx.hall_damping));
    const bool resized = snap || size_ != sized_ || fx.hall_decay != decay_;
    decay_ = fx.hall_decay;
    damping_ = fx.hall_damping;
    sized_ = size_;
    moveLines(resized, snap);
    for (int ch = 0; ch < 2; ch++) {
      if (fx.hall_low_cut != lowHz_) lowCut_[ch].highAt(fx.hall_low_cut, rate_);
      if (fx.hall_high_cut != highHz_) highCut_[ch].lowAt(fx.hall_high_cut, rate_);
      lowCut_[ch].state.flush();
      highCut_[ch].state.flush();
    }
    lowHz_ = fx.hall_low_cut;
    highHz_ = fx.hall_high_cut;
    tank_.flush();
  }

  void run(const Stereo& in, Stereo& out, int n, u64) override {
    Stereo x = in;
    diffuse(x, n);
    Block y[8], back[8];
    tank_.read(y, n);
    const f4 late = splat(0.9f * lateGain_), early = splat(0.25f), half = splat(0.5f);
    for (int q = 0; q < quads(n); q++) {
      f4 v[8];
      for (int i = 0; i < 8; i++) v[i] = y[i].at(q);
      const f4 l = late * (v[0] - v[2] + v[4] - v[6]) + early * x.l.at(q);
      const f4 r = late * (v[1] - v[3] + v[5] - v[7]) + early * x.r.at(q);
      const f4 middle = half * (l + r), side = half * (l - r) * width_.four(q);
      out.l.put(q, middle + side);
      out.r.put(q, middle - side);
      hadamard(v);
      for (int i = 0; i < 8; i++)
        back[i].put(q, v[i] + splat(0.5f * inputSign[i]) * (i % 2 ? x.r.at(q) : x.l.at(q)));
    }
    tank_.write(back, n);
    width_.advance(n);
  }

 private:
  float dampingShare(float damping) const {
    OnePole p;
    p.set(16000 * math::pow(0.06, double(damping)), rate_);
    return p.share;
  }

  // Where the lines are read sixteen samples from now.
  void moveLines(bool resized, bool snap) {
    float delays[8];
    const float scale = (0.3f + 0.7f * size_) * float(rate_), swing = swing_ * float(swingSeconds * rate_);
    for (int i = 0; i < 8; i++) {
      lfo_[i] += lfoStep(lfoHz[i], rate_, segment);
      delays[i] = float(lineSeconds[i]) * scale + swing * sinePoly(lfo_[i]);
    }
    tank_.aim(delays, snap);
    if (!resized) return;
    float gains[8];
    for (int i = 0; i < 8; i++) gains[i] = decayGain(float(lineSeconds[i]) * scale, seconds_, rate_);
    tank_.setGains(gains);
    lateGain_ = std::sqrt(std::sqrt(1 - tank_.meanSquare()));
  }

  // Pre-delay, cuts and the diffusers of both sides.
  void diffuse(Stereo& x, int n) {
    Block* const sides[2] = {&x.l, &x.r};
    for (int ch = 0; ch < 2; ch++) {
      predelay_[ch].put(clock_.now + 1, sides[ch]->v, n);
      for (int q = 0; q < quads(n); q++)
        sides[ch]->put(q, predelay_[ch].read(clock_.after(q), place_.four(q)));
      lowCut_[ch].run(*sides[ch], n);
      highCut_[ch].run(*sides[ch], n);
      for (int k = 0; k < 4; k++) diffuser_[ch][k].run(*sides[ch], diffusion[k], clock_, n);
    }
    place_.advance(n);
    clock_.advance(n);
  }

  double rate_;
  float perTick_;
  DelayLine predelay_[2];
  LineClock clock_;
  TwoPole lowCut_[2], highCut_[2];
  Diffuser diffuser_[2][4];
  Tank tank_;
  Phase lfo_[8];
  Ramp width_, place_;
  double seconds_ = 2.8;
  float decay_ = -1, damping_ = -1, lowHz_ = -1, highHz_ = -1;
  float size_ = 0.5f, sized_ = -1, swing_ = 0, predelaySamples_ = 1, lateGain_ = 1;
};

}  // namespace

std::unique_ptr<SendEffect> makeHall(double rate) { return std::make_unique<Hall>(rate); }

}  // namespace synth::fx
