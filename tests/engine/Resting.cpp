// Effects that rest while silence goes into them cost nothing and lose nothing: the next sound comes out as
// if they had run all the time.
#include <gtest/gtest.h>

#include "engine/ModFx.h"
#include "engine/TrackRoom.h"
#include "engine/dsp/Random.h"

namespace synth::test {
namespace {

constexpr double rate = 48000;
using dsp::Block, dsp::segment;

struct Signal {
  Block l, r;
};

// A segment of noise, or of silence.
Signal input(u32& seed, bool sounds) {
  Signal x;
  for (int i = 0; i < segment; i++) {
    x.l[i] = sounds ? dsp::white(seed) : 0;
    x.r[i] = sounds ? dsp::white(seed) : 0;
  }
  return x;
}

// Noise, then silence until well after it has died away, then noise again.
constexpr int noiseSegments = 600, silentSegments = 60000, segments = 2 * noiseSegments + silentSegments;
bool sounds(int at) { return at < noiseSegments || at >= noiseSegments + silentSegments; }

// Runs two effects side by side, of which one rests when it can; returns how many segments it rested.
template <class Effect, class Tick, class Rests>
int rested(Effect& runs, Effect& rests, Tick tick, Rests canRest) {
  u32 seed = 7;
  int count = 0;
  for (int at = 0; at < segments; at++) {
    const Signal in = input(seed, sounds(at));
    Signal a = in, b = in;
    tick(runs, at);
    runs.process(a.l, a.r, segment);
    tick(rests, at);
    if (!sounds(at) && canRest(rests)) {
      rests.pass(segment);
      count++;
    } else {
      rests.process(b.l, b.r, segment);
      if (!sounds(at)) rests.listen();
    }
    for (int i = 0; i < segment; i++)
      if (a.l[i] != b.l[i] || a.r[i] != b.r[i]) {
        ADD_FAILURE() << "differs in segment " << at << ", rested " << count;
        return -1;
      }
  }
  return count;
}

// Two ticks a segment.
struct TrackModFx : ModFx {
  Setting setting;

  explicit TrackModFx(int type) {
    prepare(rate);
    setting.type = type;
    setting.feedback = type == VinylType ? 0.5f : -0.8f;
  }
  void process(Block& l, Block& r, int n) {
    half([&](int at) { ModFx::process(l.v + at, r.v + at, n / 2); });
  }
  void pass(int n) {
    half([&](int) { ModFx::pass(n / 2); });
  }

 private:
  bool first_ = true;
  template <class Play>
  void half(Play play) {
    for (int at : {0, segment / 2}) {
      tick(setting, first_);
      first_ = false;
      play(at);
    }
  }
};

TEST(Resting, ModulationEffectsComeBackAsIfTheyHadRun) {
  for (int type : {ModFx::ChorusType, ModFx::EnsembleType, ModFx::FlangerType, ModFx::PhaserType}) {
    SCOPED_TRACE(type);
    TrackModFx runs(type), rests(type);
    const int count = rested(
        runs, rests,
        [](TrackModFx& fx, int at) {
          fx.setting.rate = 0.3f + 0.001f * float(at % 900);
          fx.setting.depth = float(at % 700) / 700;
        },
        [type](const TrackModFx& fx) { return fx.rests(type); });
    EXPECT_GT(count, silentSegments / 2);
  }
  TrackModFx runs(ModFx::VinylType), rests(ModFx::VinylType);
  const int count = rested(
      runs, rests, [](TrackModFx&, int) {}, [](const TrackModFx& fx) { return fx.rests(ModFx::VinylType); });
  EXPECT_EQ(count, 0) << "it sounds by itself";
}

TEST(Resting, ARoomComesBackAsIfItHadRun) {
  TrackRoom runs, rests;
  runs.prepare(rate);
  rests.prepare(rate);
  const int count = rested(
      runs, rests,
      [](TrackRoom& room, int at) {
        const float turn = float(at % 5000) / 5000;
        room.tick({0.2f + 0.6f * turn, 0.6f, 0.3f, 0.2f + 0.5f * turn}, at == 0);
      },
      [](const TrackRoom& room) { return room.rests(); });
  EXPECT_GT(count, silentSegments / 2);
}

}  // namespace
}  // namespace synth::test
