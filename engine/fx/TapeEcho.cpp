// TAPE ECHO: one tape, up to three heads, a worn path back onto it, and a spring tank.
#include <algorithm>
#include <cmath>

#include "engine/dsp/Random.h"
#include "engine/dsp/Saturate.h"
#include "engine/fx/SendEffect.h"
#include "engine/fx/Spring.h"

namespace synth::fx {
namespace {

using namespace dsp;

constexpr double lineSize = 262144;
constexpr double freeSpacing = 0.168;  // seconds between heads at rate 1
constexpr float audible = 0.0001f;
// The heads of each option: bit k is head k + 1.
constexpr int headsOf[] = {1, 2, 4, 3, 5, 6, 7};
constexpr float toLeft[3] = {0.85f, 0.4f, 0.65f}, toRight[3] = {0.4f, 0.85f, 0.65f};

class TapeEcho final : public SendEffect {
 public:
  explicit TapeEcho(double rate) : rate_(rate), c_(dsp::share(0.02, rate)) {
    line_.prepare(lineSize - segment - 4);
    wander_.prepare(rate);
    spring_.prepare(rate);
    lowCut_.highAt(120, rate);
    tilt_.set(800, rate);
    attack_ = dsp::share(0.005, rate);
    release_ = dsp::share(0.2, rate);
  }
  std::size_t bytes() const override { return line_.bytes() + spring_.bytes(); }
  double longestDelay() const override { return 3 * wanted_ / rate_ + 0.1; }

  void clear() override {
    clock_.clear();
    lowCut_.clear();
    highCut_.clear();
    tilt_.y = 0;
    env_ = 0;
    spring_.clear();
  }

  void setUp(const SendFx& fx, double bpm, bool snap) override {
    const double most = (line_.longest() / rate_ - 0.05) / 3,
                 speed = std::clamp(double(fx.tape_rate), 0.5, 2.0);
    const double seconds = fx.tape_sync ? syncedSeconds(fx.tape_sync, bpm, most) : freeSpacing / speed;
    wanted_ = std::min(seconds, most) * rate_;
    const int heads = headsOf[std::min<int>(fx.tape_heads, 6)];
    for (int k = 0; k < 3; k++)
      level_[k] = heads >> k & 1 ? 1.0f / float(__builtin_popcount(unsigned(heads))) : 0;
    intensity_ = fx.tape_intensity;
    wow_ = fx.tape_wow;
    springLevel_ = fx.tape_spring;
    if (springLevel_ > audible || springNow_.now > audible) springTail_ = u32(4 * rate_);
    if (springOn_ && springTail_ == 0) spring_.clear();
    springOn_ = springTail_ > 0;
    if (fx.tape_age != age_) {
      age_ = fx.tape_age;
      highCut_.lowAt(9000 * math::pow(0.3, double(age_)), rate_);
      drive_ = 2.5f * age_ + 0.5f;
      bias_ = 0.08f * age_;
      hiss_ = 0.0012f * age_;
    }
    if (fx.tape_tone != tone_) {
      tone_ = fx.tape_tone;
      // Six decibels each way, and never above unity: the tilt lies in the loop.
      const double boost = 6 * std::fabs(double(tone_));
      lowGain_ = float(math::fromDb(-6 * double(tone_) - boost));
      highGain_ = float(math::fromDb(6 * double(tone_) - boost));
    }
    lowCut_.state.flush();
    highCut_.state.flush();
    tilt_.y = flushed(tilt_.y);
    env_ = flushed(env_);
    if (!snap) return;
    spacing_ = wanted_;
    for (int k = 0; k < 3; k++) levelNow_[k].now = level_[k];
    intensityNow_.now = intensity_;
    wowNow_.now = wow_;
    springNow_.now = springLevel_;
  }

  void run(const Stereo& in, Stereo& out, int n, u64 clock) override {
    Block intensity, wow, spring, levels[3];
    intensityNow_.run(intensity_, c_, intensity, n);
    wowNow_.run(wow_, c_, wow, n);
    springNow_.run(springLevel_, c_, spring, n);
    for (int k = 0; k < 3; k++) levelNow_[k].run(level_[k], c_, levels[k], n);
    double place[3][segment];
    const double nearest = plan(place, wow, n);
    const int reach = std::clamp(int(nearest) - 2, 1, n);
    Block sum;
    for (int done = 0; done < n; done += reach)
      piece(in, out, intensity, levels, place, sum, done, std::min(reach, n - done));
    addSpring(in, out, sum, spring, n, clock);
  }

 private:
  double plan(double (&place)[3][segment], const Block& wow, int n) {
    double nearest = place[0][0] = 1e9;
    const Phase slowStep = lfoStep(0.9, rate_), fastStep = lfoStep(9, rate_);
    for (int i = 0; i < n; i++) {
      spacing_ += double(c_) * (wanted_ - spacing_);
      const double m = double(wow[i]) * rate_ *
                       (0.004 * double(0.4f * wander_.next() + 0.6f * sinePoly(slow_)) +
                        0.00025 * double(sinePoly(fast_)));
      for (int k = 0; k < 3; k++) {
        place[k][i] = std::max((k + 1) * spacing_ + (1 + 0.5 * k) * m, 2.0);
        nearest = std::min(nearest, place[k][i]);
      }
      slow_ += slowStep;
      fast_ += fastStep;
    }
    return nearest;
  }

  Block head(const double (&place)[segment], const Block& level, int from, int n) {
    Block h;
    h.fill(0);
    float loudest = 0;
    for (int i = from; i < from + n; i++) loudest = std::max(loudest, level[i]);
    if (loudest < audible) return h;
    for (int q = 0; q < quads(n); q++) {
      u4 number = {};
      f4 fraction = {}, gain = {};
      for (int k = 0; k < 4; k++) {
        const int i = std::min(from + 4 * q + k, from + n - 1);
        const u32 whole = u32(place[i]);
        number[k] = clock_.now + 1 + u32(i - from) - whole;
        fraction[k] = float(place[i] - double(whole));
        gain[k] = level[i] < audible ? 0 : level[i];
      }
      h.put(q, gain * line_.read(number, fraction, clock_.now));
    }
    return h;
  }

  void piece(const Stereo& in, Stereo& out, const Block& intensity, const Block (&levels)[3],
             const double (&place)[3][segment], Block& sum, int from, int n) {
    Block heads[3], back;
    for (int k = 0; k < 3; k++) heads[k] = head(place[k], levels[k], from, n);
    for (int i = 0; i < n; i++) {
      const float h1 = heads[0][i], h2 = heads[1][i], h3 = heads[2][i], s = h1 + h2 + h3;
      sum[from + i] = s;
      out.l[from + i] = toLeft[0] * h1 + toLeft[1] * h2 + toLeft[2] * h3;
      out.r[from + i] = toRight[0] * h1 + toRight[1] * h2 + toRight[2] * h3;
      const float low = tilt_.low(s);
      back[i] = low * lowGain_ + (s - low) * highGain_;
    }
    lowCut_.run(back, n);
    highCut_.run(back, n);
    const float resting = sat(bias_);
    for (int i = 0; i < n; i++) {
      const float size = std::fabs(sum[from + i]);
      env_ += (size > env_ ? attack_ : release_) * (size - env_);
      const float noise = std::min(30 * env_, 1.0f) * hiss_ * white(seed_);
      const float u = 0.5f * (in.l[from + i] + in.r[from + i]) + intensity[from + i] * back[i] + noise;
      const float x = (sat(clip(u * drive_ + bias_, 3)) - resting) / drive_;
      line_.put(clock_.now + 1 + u32(i), flushed(x));
    }
    clock_.advance(n);
  }

  void addSpring(const Stereo& in, Stereo& out, const Block& sum, const Block& level, int n, u64 clock) {
    if (!springOn_) return;
    springTail_ -= std::min(springTail_, u32(n));
    Block x, y;
    for (int i = 0; i < n; i++) x[i] = level[i] * ((in.l[i] + in.r[i]) * 0.25f + 0.5f * sum[i]);
    spring_.run(x, y, n, clock);
    for (int i = 0; i < n; i++) {
      const float wet = 0.6f * level[i] * y[i];
      out.l[i] += wet;
      out.r[i] += wet;
    }
  }

  double rate_;
  float c_;
  DelayLine line_;
  LineClock clock_;
  TwoPole lowCut_, highCut_;
  OnePole tilt_;
  Spring spring_;
  u32 springTail_ = 0;
  bool springOn_ = false;
  double wanted_ = 8000, spacing_ = 8000;
  float level_[3] = {}, intensity_ = 0, wow_ = 0, springLevel_ = 0;
  Slew levelNow_[3], intensityNow_, wowNow_, springNow_;
  float age_ = -1, drive_ = 1, bias_ = 0, hiss_ = 0, tone_ = -2, lowGain_ = 1, highGain_ = 1;
  float env_ = 0, attack_ = 1, release_ = 1;
  u32 seed_ = 0x7A9E5EEDu;
  Phase slow_ = 0, fast_ = 0;
  Wander wander_;
};

}  // namespace

std::unique_ptr<SendEffect> makeTapeEcho(double rate) { return std::make_unique<TapeEcho>(rate); }

}  // namespace synth::fx
