// The Send effects and the Track room: how long they ring, how they begin and end, and that they stay
// bounded at every extreme.
#include <gtest/gtest.h>

#include <cmath>

#include "base/Math.h"
#include "core/model/Defaults.h"
#include "engine/TrackRoom.h"
#include "engine/dsp/Random.h"
#include "engine/fx/Send.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

constexpr double rate = 48000;
constexpr int segment = dsp::segment;

// What a Send gives for an input of `in` and then silence.
Audio response(const SendFx& fx, const std::vector<float>& in, double seconds, double bpm = 120,
               bool left = true, bool right = true) {
  fx::Send send;
  send.prepare(rate);
  Audio out;
  const size_t frames = size_t(seconds * rate) / segment * segment;
  for (size_t at = 0; at < frames; at += segment) {
    fx::Stereo x, y;
    for (int i = 0; i < segment; i++) {
      const float v = at + size_t(i) < in.size() ? in[at + size_t(i)] : 0;
      x.l[i] = left ? v : 0;
      x.r[i] = right ? v : 0;
    }
    send.run(fx, bpm, x, y, segment, at, true);
    out.left.insert(out.left.end(), y.l.v, y.l.v + segment);
    out.right.insert(out.right.end(), y.r.v, y.r.v + segment);
  }
  return out;
}

std::vector<float> burst(double seconds, float level = 0.5f) {
  std::vector<float> x(size_t(seconds * rate));
  u32 seed = 12345;
  for (float& v : x) v = level * dsp::white(seed);
  return x;
}
std::vector<float> click() { return {1.0f}; }

// The time in which the tail falls by 60 dB, by backward integration (Schroeder, 1965) from -5 to -35 dB.
double rt60(const std::vector<float>& x, size_t from) {
  std::vector<double> left(x.size() + 1);
  for (size_t i = x.size(); i-- > from;) left[i] = left[i + 1] + double(x[i]) * x[i];
  auto reach = [&](double db) {
    size_t i = from;
    while (i < x.size() && left[i] > left[from] * std::pow(10, db / 10)) i++;
    return double(i - from) / rate;
  };
  return 2 * (reach(-35) - reach(-5));
}

SendFx effect(FxType type) {
  SendFx fx;
  fx.type = type;
  return fx;
}

TEST(Sends, ReverbsRingAsLongAsTheirDecaySays) {
  for (float decay : {0.2f, 0.5f, 0.75f}) {
    SendFx fx = effect(FX_HALL);
    fx.hall_decay = decay;
    fx.hall_damping = 0;
    fx.hall_high_cut = 20000;
    const double wanted = 0.4 * std::pow(50, decay);
    EXPECT_NEAR(rt60(response(fx, burst(0.1), wanted * 1.3 + 0.3).left, 7200) / wanted, 1, 0.2)
        << "hall " << decay;
  }
  for (float decay : {1.0f, 2.5f, 8.0f}) {
    SendFx fx = effect(FX_PLATE);
    fx.plate_decay = decay;
    fx.plate_damping = 0;
    EXPECT_NEAR(rt60(response(fx, burst(0.1), decay * 1.3 + 0.3).left, 7200) / decay, 1, 0.2)
        << "plate " << decay;
  }
  for (float decay : {2.0f, 6.0f}) {
    SendFx fx = effect(FX_SHIMMER);
    fx.shimmer_decay = decay;
    fx.shimmer_amount = 0;
    EXPECT_NEAR(rt60(response(fx, burst(0.1), decay * 1.3 + 0.3).left, 7200) / decay, 1, 0.25)
        << "shimmer " << decay;
  }
  for (float decay : {0.1f, 0.4f, 2.0f}) {
    TrackRoom room;
    room.prepare(rate);
    std::vector<float> out;
    const auto in = burst(0.05);
    for (size_t at = 0; at < size_t((decay * 1.5 + 0.3) * rate); at += segment) {
      room.tick({0.4f, decay, 0, 1}, at == 0);
      dsp::Block l, r;
      for (int i = 0; i < segment; i++) l[i] = r[i] = at + size_t(i) < in.size() ? in[at + size_t(i)] : 0;
      if (room.runs()) room.process(l, r, segment);
      out.insert(out.end(), l.v, l.v + segment);
    }
    EXPECT_NEAR(rt60(out, 2600) / decay, 1, 0.3) << "room " << decay;
  }
}

TEST(Sends, TailsAreSmoothAndWide) {
  // After 300 ms no mode stands out: no bin of the tail's spectrum rises more than 12 dB over its
  // surroundings.
  for (FxType type : {FX_HALL, FX_PLATE, FX_SHIMMER}) {
    SendFx fx = effect(type);
    fx.shimmer_amount = 0;
    const Audio a = response(fx, burst(0.1), 1.0);
    std::vector<double> level;
    for (double hz = 300; hz < 4000; hz += 4) level.push_back(sineLevel(a.left, hz, rate, 14400, 38400));
    int above = 0;
    for (size_t i = 25; i + 25 < level.size(); i++) {
      double around = 0;
      for (size_t k = i - 25; k <= i + 25; k++) around += level[k] * level[k] / 51;
      above += level[i] > 4 * std::sqrt(around);
    }
    EXPECT_EQ(above, 0) << type;
    double both = 0, l = 0, r = 0;
    for (size_t i = 9600; i < a.size(); i++) {
      both += double(a.left[i]) * a.right[i];
      l += double(a.left[i]) * a.left[i];
      r += double(a.right[i]) * a.right[i];
    }
    EXPECT_LT(std::fabs(both) / std::sqrt(l * r), 0.3) << type;
  }
}

TEST(Sends, EchoesComeInTime) {
  SendFx fx = effect(FX_DELAY);
  fx.delay_sync = 9;  // 1/16 is a quarter of a beat: 125 ms at 120 BPM
  fx.delay_wow = 0;
  fx.delay_ping_pong = 1;
  fx.delay_low_cut = 20;
  fx.delay_high_cut = 20000;
  const Audio a = response(fx, click(), 1.2);
  auto peakAt = [&](const std::vector<float>& x, double seconds) {
    const size_t at = size_t(seconds * rate);
    float most = 0;
    for (size_t i = at - 48; i < at + 96; i++) most = std::max(most, std::fabs(x[i]));
    return most;
  };
  for (int echo = 1; echo <= 6; echo++) {
    const bool left = echo % 2 == 1;
    EXPECT_GT(peakAt(left ? a.left : a.right, 0.125 * echo), 0.02 * std::pow(0.4, echo - 1)) << echo;
    EXPECT_LT(peakAt(left ? a.right : a.left, 0.125 * echo), 1e-3) << echo;
  }
  // Free time in beats; halved until it fits the line.
  fx.delay_sync = 0;
  fx.delay_ping_pong = 0;
  fx.delay_feedback = 0;
  fx.delay_time = 0.5f;
  EXPECT_GT(peakAt(response(fx, click(), 1).left, 0.25), 0.1);
  fx.delay_time = 4;
  EXPECT_GT(peakAt(response(fx, click(), 6, 24).left, 5), 0.1) << "10 s at 24 BPM are halved";
}

TEST(Sends, ATapesHeadsStandInARow) {
  SendFx fx = effect(FX_TAPE);
  fx.tape_wow = fx.tape_age = 0;
  fx.tape_intensity = 0;
  const char* const heads[] = {"100", "010", "001", "110", "101", "011", "111"};
  for (int option = 0; option < 7; option++) {
    fx.tape_heads = u8(option);
    const Audio a = response(fx, click(), 0.7);
    for (int head = 0; head < 3; head++) {
      const size_t at = size_t(0.168 * (head + 1) * rate);
      const double level = rms(a.left, at - 20, at + 60);
      EXPECT_EQ(level > 1e-4, heads[option][head] == '1') << heads[option] << " head " << head + 1;
    }
  }
}

TEST(Sends, FeedbackAtItsMostStaysBounded) {
  for (FxType type : {FX_DELAY, FX_TAPE, FX_HALL, FX_PLATE, FX_SHIMMER, FX_CHORUS}) {
    SendFx fx = effect(type);
    fx.delay_feedback = 0.95f;
    fx.delay_sync = 0;
    fx.delay_time = 0.1f;
    fx.delay_wow = 1;
    fx.tape_intensity = 1.1f;
    fx.tape_age = 1;
    fx.tape_spring = 1;
    fx.tape_wow = 1;
    fx.hall_decay = 1;
    fx.hall_mod = 1;
    fx.hall_damping = 0;
    fx.plate_decay = 30;
    fx.plate_mod = 1;
    fx.plate_diffusion = 0.85f;
    fx.plate_damping = 0;
    fx.shimmer_decay = 60;
    fx.shimmer_amount = 1;
    fx.shimmer_mod = 1;
    for (u8 pitch = 0; pitch < (type == FX_SHIMMER ? 5 : 1); pitch++) {
      fx.shimmer_pitch = pitch;
      const Audio a = response(fx, burst(2, 1), 40);
      EXPECT_TRUE(allFinite(a)) << type;
      EXPECT_LT(peak(a.left), 12) << type << " pitch " << int(pitch);
      // Nothing grows once the input has gone.
      EXPECT_LT(rms(a.left, 30 * 48000), 1.5 * rms(a.left, 2 * 48000, 4 * 48000) + 0.3)
          << type << " " << int(pitch);
    }
  }
}

TEST(Sends, EveryShimmerDiesAway) {
  SendFx fx = effect(FX_SHIMMER);
  fx.shimmer_amount = 1;
  fx.shimmer_decay = 30;
  for (u8 pitch = 0; pitch < 5; pitch++) {
    fx.shimmer_pitch = pitch;
    const Audio a = response(fx, burst(1), 60);
    const double early = rms(a.left, 10 * 48000, 12 * 48000), late = rms(a.left, 57 * 48000);
    EXPECT_LT(toDb(late / early), -12) << "pitch " << int(pitch);
  }
}

TEST(Sends, ParametersThatGoToZeroArriveThere) {
  dsp::Slew s{1};
  dsp::Block b;
  for (int i = 0; i < 20000; i++) s.run(0, 0.01f, b, segment);
  EXPECT_EQ(s.now, 0) << "and do not stay among the numbers that are slow to reckon with";
}

TEST(Sends, AFrozenShimmerStands) {
  SendFx fx = effect(FX_SHIMMER);
  fx::Send send;
  send.prepare(rate);
  const auto in = burst(1);
  std::vector<float> out;
  for (size_t at = 0; at < size_t(20 * rate); at += segment) {
    fx.shimmer_freeze = at > 48000 ? 1 : 0;
    fx::Stereo x, y;
    for (int i = 0; i < segment; i++) x.l[i] = x.r[i] = at + size_t(i) < in.size() ? in[at + size_t(i)] : 0;
    send.run(fx, 120, x, y, segment, at, true);
    out.insert(out.end(), y.l.v, y.l.v + segment);
  }
  EXPECT_NEAR(toDb(rms(out, 19 * 48000) / rms(out, 3 * 48000, 4 * 48000)), 0, 5);
}

TEST(Sends, TypesChangeWithoutAClickAndStartEmpty) {
  fx::Send send;
  send.prepare(rate);
  SendFx fx = effect(FX_HALL);
  std::vector<float> out;
  float phase = 0;
  auto run = [&](double seconds, float level) {
    const size_t frames = size_t(seconds * rate) / segment * segment;
    for (size_t at = 0; at < frames; at += segment) {
      fx::Stereo x, y;
      for (int i = 0; i < segment; i++, phase += 0.02f) x.l[i] = x.r[i] = level * std::sin(phase);
      send.run(fx, 120, x, y, segment, out.size(), true);
      out.insert(out.end(), y.l.v, y.l.v + segment);
    }
  };
  for (int type : {FX_HALL, FX_PLATE, FX_CHORUS, FX_DELAY, FX_SHIMMER, FX_TAPE, FX_OFF, FX_HALL}) {
    fx.type = u8(type);
    run(0.6, 0.3f);
  }
  float step = 0;
  for (size_t i = 1; i < out.size(); i++) step = std::max(step, std::fabs(out[i] - out[i - 1]));
  EXPECT_LT(step, 0.02f);

  run(1, 0.3f);
  fx.type = FX_OFF;
  run(0.1, 0);
  EXPECT_EQ(peak(std::vector<float>(out.end() - 1600, out.end())), 0) << "OFF is silent";
  fx.type = FX_HALL;
  run(0.5, 0);
  EXPECT_EQ(peak(std::vector<float>(out.end() - 9600, out.end())), 0) << "the old tail does not come back";
}

TEST(Sends, ASleepingSendWakesWithItsInputAndLosesNoEcho) {
  SendFx fx = effect(FX_DELAY);
  fx.delay_sync = 0;
  fx.delay_time = 8;  // four seconds at 120 BPM
  fx.delay_feedback = 0.5f;
  fx.delay_wow = 0;
  const Audio a = response(fx, click(), 14);
  for (double at : {4.0, 8.0, 12.0}) {
    const size_t i = size_t(at * rate);
    EXPECT_GT(rms(a.left, i - 100, i + 400), 1e-5) << at;
  }
  fx::Send send;
  send.prepare(rate);
  fx::Stereo x, y;
  x.l.fill(0);
  x.r.fill(0);
  fx.delay_time = 0.25f;
  for (u64 at = 0; at < u64(3 * rate); at += segment) send.run(fx, 120, x, y, segment, at, true);
  EXPECT_TRUE(send.sleeping());
  x.l[7] = 0.5f;
  send.run(fx, 120, x, y, segment, u64(3 * rate), true);
  EXPECT_FALSE(send.sleeping());
}

TEST(Sends, ADuckedDelayGivesWayByEighteenDecibels) {
  SendFx fx = effect(FX_DELAY);
  fx.delay_sync = 0;
  fx.delay_time = 0.1f;
  fx.delay_feedback = 0;
  fx.delay_wow = 0;
  std::vector<float> tone(48000);
  for (size_t i = 0; i < tone.size(); i++)
    tone[i] = 0.3f * float(std::sin(2 * M_PI * 1000 * double(i) / rate));
  const double open = rms(response(fx, tone, 1).left, 24000, 43200);
  fx.delay_duck = 1;
  const double ducked = rms(response(fx, tone, 1).left, 24000, 43200);
  EXPECT_NEAR(toDb(ducked / open), -18, 0.5);
}

TEST(Sends, AGatedPlateIsCutShort) {
  SendFx fx = effect(FX_PLATE);
  fx.plate_decay = 4;
  fx.plate_gate = 0.2f;
  const Audio a = response(fx, burst(0.02), 1);
  EXPECT_GT(rms(a.left, 4800, 9600), 1e-3);
  EXPECT_LT(rms(a.left, 24000), 1e-6);
}

TEST(Sends, TheChainFeedsSendTwoAndReturnsScale) {
  auto p = oneTrack(ANALOG);
  p->tracks[0].send_1 = 1;
  p->tracks[0].level = 0.5f;
  p->fx1.type = FX_CHORUS;
  p->fx2.type = FX_HALL;
  auto tail = [&] {
    Engine engine(rate);
    EXPECT_TRUE(engine.submitProject(*p));
    engine.noteOn(0, 60, 100);
    renderFrames(engine, 24000);
    engine.noteOff(0, 60);
    renderFrames(engine, 24000);
    return rms(renderFrames(engine, 9600).left);
  };
  p->fx_chain = 0;
  const double without = tail();
  p->fx_chain = 1;
  const double with = tail();
  EXPECT_GT(with, 20 * without + 1e-5);
  p->fx2.returnLevel = 0.5f;
  EXPECT_NEAR(tail() / with, 0.5, 0.1);
}

}  // namespace
}  // namespace synth::test
