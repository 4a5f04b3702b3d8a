// What a listener waits for: rendering. `x` is how many seconds of sound a second of one core makes.
#include <benchmark/benchmark.h>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Tracks.h"
#include "engine/Engine.h"
#include "engine/SongRender.h"
#include "spec/Examples.h"

namespace {

using namespace synth;

constexpr double rate = 48000;

void report(benchmark::State& state, double secondsEach) {
  state.counters["x"] =
      benchmark::Counter(secondsEach * double(state.iterations()), benchmark::Counter::kIsRate);
}

// 32 held ANALOG voices: two oscillators, ladder, three envelopes, two LFOs.
void Render32AnalogVoices(benchmark::State& state) {
  auto p = makeProject();
  clearArrangement(*p);
  for (int t = 0; t < 4; t++) {
    Track& track = p->tracks[t];
    track = defaultTrack(MELODIC);
    track.engine1 = 0.7f;
    track.engine2 = 0.6f;
    track.engine4 = 0.3f;
    track.osc_b_level = 0.8f;
    track.cutoff = 2000;
    track.resonance = 0.3f;
    track.filter_env = 0.3f;
    track.filter_adsr = 1;
    track.timbre_amount = 0.2f;
    track.timbre_sustain = 0.3f;
    track.lfo_depth = 0.3f;
    track.lfo2_depth = 0.1f;
    track.sustain = 1;
  }
  Engine engine(rate);
  engine.submitProject(*p);
  for (int t = 0; t < 4; t++)
    for (int v = 0; v < 8; v++) engine.noteOn(t, 40 + v * 5 + t, 100);
  static float l[4800], r[4800];
  engine.render(l, r, 4800);
  for (auto _ : state) engine.render(l, r, 4800);
  report(state, 0.1);
}

class Nothing : public AudioSink {
 public:
  void begin(u32, u64 frames) override { frames_ = frames; }
  void write(const float*, const float*, unsigned) override {}
  void finish() override {}
  u64 frames_ = 0;
};

void RenderExampleSong(benchmark::State& state) {
  auto song = spec::makeExample(0);
  Nothing sink;
  std::string error;
  for (auto _ : state)
    if (!renderSong(*song, 1, sink, error, 0)) state.SkipWithError(error.c_str());
  report(state, double(sink.frames_) / rate);
}

void IdleEngine(benchmark::State& state) {
  Engine engine(rate);
  static float l[4800], r[4800];
  for (int i = 0; i < 30; i++) engine.render(l, r, 4800);
  for (auto _ : state) engine.render(l, r, 4800);
  report(state, 0.1);
}

void NewEngine(benchmark::State& state) {
  for (auto _ : state) {
    Engine engine(rate);
    benchmark::DoNotOptimize(&engine);
  }
}

BENCHMARK(Render32AnalogVoices)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderExampleSong)->Unit(benchmark::kMillisecond);
BENCHMARK(IdleEngine)->Unit(benchmark::kMillisecond);
BENCHMARK(NewEngine)->Unit(benchmark::kMillisecond);

}  // namespace
