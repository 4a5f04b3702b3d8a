// DELAY: two lines that may feed each other, filtered, saturated, and wowing a little.
#include <algorithm>
#include <cmath>

#include "engine/Lfo.h"
#include "engine/dsp/Random.h"
#include "engine/dsp/Saturate.h"
#include "engine/fx/SendEffect.h"

namespace synth::fx {

using namespace dsp;

double syncedSeconds(int sync, double bpm, double most) {
  double seconds = 15 / (bpm * lfo::syncCyclesPerStep(sync));
  while (seconds > most) seconds /= 2;
  return seconds;
}

void Wander::prepare(double rate) {
  share = dsp::share(0.25, rate);
  interval = std::max(1u, u32(rate / 2));
}

float Wander::next() {
  if (left == 0) {
    left = interval;
    target = white(seed);
  }
  left--;
  return value += share * (target - value);
}

namespace {

constexpr double lineSize = 262144;
constexpr float drive = 0.5f, most = 0.95f;

class Delay final : public SendEffect {
 public:
  explicit Delay(double rate) : rate_(rate), c_(dsp::share(0.02, rate)) {
    for (DelayLine& l : line_) l.prepare(lineSize - segment - 4);
    wander_.prepare(rate);
  }
  std::size_t bytes() const override { return line_[0].bytes() + line_[1].bytes(); }
  double longestDelay() const override { return time_ / rate_ + 0.02; }

  void clear() override {
    clock_.clear();
    for (int ch = 0; ch < 2; ch++) {
      lowCut_[ch].clear();
      highCut_[ch].clear();
    }
  }

  void setUp(const SendFx& fx, double bpm, bool snap) override {
    const double longest = (line_[0].longest() - 0.03 * rate_) / rate_;
    double seconds = fx.delay_sync ? syncedSeconds(fx.delay_sync, bpm, longest) : fx.delay_time * 60 / bpm;
    while (seconds > longest) seconds /= 2;
    time_ = std::max(seconds, 0.001) * rate_;
    feedback_ = std::clamp(fx.delay_feedback, 0.0f, most);
    cross_ = std::clamp(fx.delay_ping_pong, 0.0f, 1.0f);
    wow_ = std::clamp(fx.delay_wow, 0.0f, 1.0f);
    for (int ch = 0; ch < 2; ch++) {
      if (fx.delay_low_cut != lowHz_) lowCut_[ch].highAt(fx.delay_low_cut, rate_);
      if (fx.delay_high_cut != highHz_) highCut_[ch].lowAt(fx.delay_high_cut, rate_);
      lowCut_[ch].state.flush();
      highCut_[ch].state.flush();
    }
    lowHz_ = fx.delay_low_cut;
    highHz_ = fx.delay_high_cut;
    if (!snap) return;
    first_ = second_ = time_;
    feedbackNow_.now = feedback_;
    crossNow_.now = cross_;
    wowNow_.now = wow_;
  }

  void run(const Stereo& in, Stereo& out, int n, u64) override {
    Block feedback, cross, wow;
    feedbackNow_.run(feedback_, c_, feedback, n);
    crossNow_.run(cross_, c_, cross, n);
    wowNow_.run(wow_, c_, wow, n);
    double place[2][segment];
    const double nearest = plan(place, cross, wow, n);
    // What is read must have been written: short delays go in shorter pieces.
    const int reach = std::clamp(int(nearest) - 2, 1, n);
    for (int done = 0; done < n; done += reach)
      piece(in, out, feedback, cross, place, done, std::min(reach, n - done));
  }

 private:
  // Where both lines are read, in samples before each sample; returns the shortest.
  double plan(double (&place)[2][segment], const Block& cross, const Block& wow, int n) {
    double nearest = place[0][0] = 1e9;
    const Phase slowStep = lfoStep(0.55, rate_), fastStep = lfoStep(6.3, rate_);
    for (int i = 0; i < n; i++) {
      first_ += double(c_) * (time_ - first_);
      second_ += std::clamp(double(c_) * (first_ - second_), -0.5, 0.5);
      const double shake = 0.0025 * double(0.35f * wander_.next() + 0.65f * sinePoly(slow_)) +
                           0.00012 * double(sinePoly(fast_));
      const double moved = second_ + double(wow[i]) * rate_ * shake;
      place[0][i] = std::max(moved, 2.0);
      place[1][i] = std::max(moved + 0.018 * rate_ * double(wow[i] * (1 - cross[i])), 2.0);
      nearest = std::min(nearest, place[0][i]);
      slow_ += slowStep;
      fast_ += fastStep;
    }
    return nearest;
  }

  void piece(const Stereo& in, Stereo& out, const Block& feedback, const Block& cross,
             const double (&place)[2][segment], int from, int n) {
    Block tap[2];
    for (int ch = 0; ch < 2; ch++) {
      for (int q = 0; q < quads(n); q++) {
        u4 number = {};
        f4 fraction = {};
        for (int k = 0; k < 4; k++) {
          const int i = std::min(from + 4 * q + k, from + n - 1);
          const u32 whole = u32(place[ch][i]);
          number[k] = clock_.now + 1 + u32(i - from) - whole;
          fraction[k] = float(place[ch][i] - double(whole));
        }
        tap[ch].put(q, line_[ch].read(number, fraction, clock_.now));
      }
      lowCut_[ch].run(tap[ch], n);
      highCut_[ch].run(tap[ch], n);
    }
    for (int i = 0; i < n; i++) {
      const float p = cross[from + i], g = feedback[from + i], l = in.l[from + i], r = in.r[from + i];
      const float left = p * (l + r) * 0.5f + (1 - p) * l + g * ((1 - p) * tap[0][i] + p * tap[1][i]);
      const float right = (1 - p) * r + g * (p * tap[0][i] + (1 - p) * tap[1][i]);
      line_[0].put(clock_.now + 1 + u32(i), flushed(saturated(left)));
      line_[1].put(clock_.now + 1 + u32(i), flushed(saturated(right)));
      out.l[from + i] = tap[0][i];
      out.r[from + i] = tap[1][i];
    }
    clock_.advance(n);
  }

  // Unity for small signals, bounded at 2.
  static float saturated(float x) { return sat(clip(x * drive, 3)) / drive; }

  double rate_;
  float c_;
  DelayLine line_[2];
  LineClock clock_;
  TwoPole lowCut_[2], highCut_[2];
  float lowHz_ = -1, highHz_ = -1;
  double time_ = 1000, first_ = 1000, second_ = 1000;  // samples: wanted, and its two followers
  float feedback_ = 0, cross_ = 0, wow_ = 0;
  Slew feedbackNow_, crossNow_, wowNow_;
  Phase slow_ = 0, fast_ = 0;
  Wander wander_;
};

}  // namespace

std::unique_ptr<SendEffect> makeDelay(double rate) { return std::make_unique<Delay>(rate); }

}  // namespace synth::fx
