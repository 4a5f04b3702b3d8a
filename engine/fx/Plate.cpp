// PLATE: the figure-eight tank of Dattorro (Effect Design, part 1, 1997), its lengths scaled to the rate.
#include <algorithm>
#include <cmath>

#include "engine/fx/SendEffect.h"

namespace synth::fx {
namespace {

using namespace dsp;

constexpr double paperRate = 29761, longestPredelay = 0.25;
constexpr int inputLengths[4] = {142, 107, 379, 277};

// One half of the tank: a modulated all-pass, a delay, a low pass, an all-pass, a delay.
struct HalfLengths {
  int modulated, first, diffuser, second;
};
constexpr HalfLengths lengths[2] = {{672, 4453, 1800, 3720}, {908, 4217, 2656, 3163}};

struct Half {
  DelayLine modulated, first, second;
  Diffuser diffuser;
  OnePole damping;
  u32 firstLength = 0, secondLength = 0;
  float modulatedLength = 0;
  Ramp place;
};

// Where each side listens into the tank: its own half is the other one's for three of seven taps.
struct Tap {
  int half, line, at;  // line: 0 the first delay, 1 the diffuser, 2 the second delay
  float sign;
};
constexpr Tap taps[2][7] = {{{1, 0, 266, 1},
                             {1, 0, 2974, 1},
                             {1, 1, 1913, -1},
                             {1, 2, 1996, 1},
                             {0, 0, 1990, -1},
                             {0, 1, 187, -1},
                             {0, 2, 1066, -1}},
                            {{0, 0, 353, 1},
                             {0, 0, 3627, 1},
                             {0, 1, 1228, -1},
                             {0, 2, 2673, 1},
                             {1, 0, 2111, -1},
                             {1, 1, 335, -1},
                             {1, 2, 121, -1}}};

class Plate final : public SendEffect {
 public:
  explicit Plate(double rate)
      : rate_(rate), scale_(rate / paperRate), perTick_(dsp::share(0.06, rate, segment)) {
    predelay_.prepare(longestPredelay * rate + 4);
    for (int k = 0; k < 4; k++) input_[k].prepare(inputLengths[k] / paperRate, rate);
    for (int h = 0; h < 2; h++) {
      Half& half = half_[h];
      half.modulatedLength = float(lengths[h].modulated * scale_);
      half.firstLength = u32(lengths[h].first * scale_);
      half.secondLength = u32(lengths[h].second * scale_);
      half.modulated.prepare((lengths[h].modulated + 20) * scale_ + 4);
      half.first.prepare(half.firstLength);
      half.second.prepare(half.secondLength);
      half.diffuser.prepare(lengths[h].diffuser / paperRate, rate);
      total_ += double(half.modulatedLength) + half.firstLength + half.secondLength + half.diffuser.length();
    }
    attack_ = dsp::share(0.001, rate);
    release_ = dsp::share(0.015, rate);
  }
  std::size_t bytes() const override {
    std::size_t sum = predelay_.bytes();
    for (const Diffuser& d : input_) sum += d.bytes();
    for (const Half& h : half_)
      sum += h.modulated.bytes() + h.first.bytes() + h.second.bytes() + h.diffuser.bytes();
    return sum;
  }
  double longestDelay() const override { return longestPredelay + 0.4; }

  void clear() override {
    clock_.clear();
    lowCut_.clear();
    for (Half& h : half_) h.damping.y = 0;
    open_ = 0;
    gateLeft_ = 0;
  }

  void setUp(const SendFx& fx, double, bool snap) override {
    const float c = snap ? 1 : perTick_;
    predelaySamples_ +=
        (std::clamp(fx.plate_predelay, 0.0f, float(longestPredelay)) * float(rate_) - predelaySamples_) * c;
    place_.aim(std::max(predelaySamples_, 1.0f), snap);
    width_.aim(std::clamp(fx.plate_width, 0.0f, 1.0f), snap);
    const float diffusion = std::clamp(fx.plate_diffusion, 0.1f, 0.85f);
    inputGain_[0] = inputGain_[1] = diffusion;
    inputGain_[2] = inputGain_[3] = 0.833f * diffusion;
    modulatedGain_ = -std::min(0.7f, 0.93f * diffusion);
    tankGain_ = std::min(0.5f, 0.667f * diffusion);
    if (fx.plate_decay != decay_) {
      decay_ = fx.plate_decay;
      const double seconds = std::clamp(double(decay_), 0.1, 30.0);
      wantedGain_ = float(math::exp2(-9.96578428 * (total_ / 2 / rate_) / seconds));
    }
    gain_.aim(wantedGain_, snap);
    if (fx.plate_damping != damping_) {
      damping_ = fx.plate_damping;
      for (Half& h : half_) h.damping.set(16000 * math::pow(0.05, double(damping_)), rate_);
    }
    if (fx.plate_low_cut != lowHz_) {
      lowHz_ = fx.plate_low_cut;
      lowCut_.highAt(lowHz_, rate_);
    }
    lowCut_.state.flush();
    lfo_ += lfoStep(0.9, rate_, segment);
    swing_ += (std::clamp(fx.plate_mod, 0.0f, 1.0f) * float(16 * scale_) - swing_) * c;
    for (int h = 0; h < 2; h++) {
      half_[h].damping.flush();
      half_[h].place.aim(half_[h].modulatedLength + swing_ * sinePoly(lfo_ + u32(h) * quarterTurn), snap);
    }
    gateHold_ = fx.plate_gate > 0 ? i32(rate_ * double(std::clamp(fx.plate_gate, 0.04f, 0.6f))) : -1;
    if (snap) open_ = gateHold_ < 0 ? 1 : 0;
  }

  void run(const Stereo& in, Stereo& out, int n, u64) override {
    Block x;
    for (int q = 0; q < quads(n); q++) x.put(q, (in.l.at(q) + in.r.at(q)) * splat(0.5f));
    predelay_.put(clock_.now + 1, x.v, n);
    for (int q = 0; q < quads(n); q++) x.put(q, predelay_.read(clock_.after(q), place_.four(q)));
    lowCut_.run(x, n);
    for (int k = 0; k < 4; k++) input_[k].run(x, inputGain_[k], clock_, n);

    // Each half is fed by the other's end as it was before this stretch.
    Block end[2];
    for (int h = 0; h < 2; h++)
      for (int q = 0; q < quads(n); q++)
        end[h].put(q, half_[1 - h].second.four(clock_.now + 1 + u32(4 * q) - half_[1 - h].secondLength));
    for (int h = 0; h < 2; h++) runHalf(half_[h], x, end[h], n);
    listen(out, n);
    if (gateHold_ >= 0 || open_ < 1) gate(in, out, n);
    place_.advance(n);
    width_.advance(n);
    gain_.advance(n);
    clock_.advance(n);
  }

 private:
  void runHalf(Half& half, const Block& in, const Block& fed, int n) {
    Block x;
    const f4 g = splat(modulatedGain_);
    Block line;
    for (int q = 0; q < quads(n); q++) {
      const f4 d = half.modulated.read(clock_.after(q), half.place.four(q));
      const f4 v = in.at(q) + gain_.four(q) * fed.at(q) + g * d;
      line.put(q, v);
      x.put(q, d - g * v);
    }
    half.modulated.put(clock_.now + 1, line.v, n);
    half.place.advance(n);
    half.first.put(clock_.now + 1, x.v, n);
    for (int q = 0; q < quads(n); q++)
      x.put(q, half.first.four(clock_.now + 1 + u32(4 * q) - half.firstLength));
    half.damping.low(x, n);
    half.diffuser.run(x, tankGain_, clock_, n);
    half.second.put(clock_.now + 1, x.v, n);
  }

  f4 listenAt(const Tap& t, int quad) const {
    const Half& h = half_[t.half];
    const DelayLine& line = t.line == 0 ? h.first : t.line == 1 ? h.diffuser.line() : h.second;
    return splat(t.sign) *
           line.four(clock_.now + 1 + u32(4 * quad) - std::max(u32(t.at * scale_), u32(segment)));
  }

  void listen(Stereo& out, int n) {
    for (int q = 0; q < quads(n); q++) {
      f4 side[2] = {splat(0), splat(0)};
      for (int ch = 0; ch < 2; ch++)
        for (const Tap& t : taps[ch]) side[ch] += listenAt(t, q);
      const f4 l = splat(0.6f) * side[0], r = splat(0.6f) * side[1];
      const f4 middle = splat(0.5f) * (l + r), apart = splat(0.5f) * (l - r) * width_.four(q);
      out.l.put(q, middle + apart);
      out.r.put(q, middle - apart);
    }
  }

  // The gate opens with the input and closes some time after it; without one it stays open.
  void gate(const Stereo& in, Stereo& out, int n) {
    for (int i = 0; i < n; i++) {
      if (std::max(std::fabs(in.l[i]), std::fabs(in.r[i])) > 0.01f) gateLeft_ = gateHold_;
      const bool open = gateHold_ < 0 || gateLeft_ > 0;
      if (gateLeft_ > 0) gateLeft_--;
      open_ += (open ? attack_ : release_) * ((open ? 1.0f : 0.0f) - open_);
      if (gateHold_ < 0 && open_ > 0.99999f) open_ = 1;
      if (open_ < 1e-9f) open_ = 0;
      out.l[i] *= open_;
      out.r[i] *= open_;
    }
  }

  double rate_, scale_, total_ = 0;
  float perTick_;
  DelayLine predelay_;
  LineClock clock_;
  TwoPole lowCut_;
  Diffuser input_[4];
  Half half_[2];
  Phase lfo_ = 0;
  Ramp place_, width_, gain_;
  float decay_ = -1, damping_ = -1, lowHz_ = -1, wantedGain_ = 0.5f, swing_ = 0, predelaySamples_ = 1;
  float inputGain_[4] = {}, modulatedGain_ = 0, tankGain_ = 0;
  i32 gateHold_ = -1, gateLeft_ = 0;
  float open_ = 0, attack_ = 1, release_ = 1;
};

}  // namespace

std::unique_ptr<SendEffect> makePlate(double rate) { return std::make_unique<Plate>(rate); }

}  // namespace synth::fx
