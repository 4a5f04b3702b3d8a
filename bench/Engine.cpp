// What a listener waits for: rendering. `x` is how many seconds of sound a second of one core makes.
#include <benchmark/benchmark.h>

#include <limits>
#include <string>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Tracks.h"
#include "core/sounds/MacroEdit.h"
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

// Renders held notes: `voices` of them, spread over the Project's Tracks.
void renderHeld(benchmark::State& state, const Project& p, int voices) {
  Engine engine(rate);
  engine.submitProject(p);
  for (int v = 0; v < voices; v++) engine.noteOn(v % p.track_count, 36 + v * 2 % 48, 100);
  static float l[4800], r[4800];
  for (int i = 0; i < 10; i++) engine.render(l, r, 4800);
  for (auto _ : state) engine.render(l, r, 4800);
  report(state, 0.1);
  state.counters["MB"] = double(engine.memoryBytes()) / 1e6;
}

void turnOnMaster(Project& p) {
  p.fx1.type = FX_DELAY;
  p.fx2.type = FX_HALL;
  p.comp_amount = 0.4f;
  p.saturation = 0.2f;
  for (int band = 0; band < 10; band++) p.master_eq[band] = band % 2 ? 2 : -2;
}

// Six Tracks of six kinds, both Sends, the whole Master.
ProjectPtr typicalSong() {
  auto p = makeProject();
  clearArrangement(*p);
  p->track_count = 6;
  const int kinds[6] = {ANALOG, ANALOG, TINE, FM, ORGAN, WAVETABLE};
  for (int t = 0; t < 6; t++) {
    Track& track = p->tracks[t];
    track = defaultTrack(MELODIC);
    track.engine = u8(kinds[t]);
    track.sustain = 1;
    track.cutoff = 3000;
    track.osc_b_level = 0.5f;
    track.send_1 = track.send_2 = 0.3f;
    track.highpass = 60;
    track.eq_mid = 2;
    track.mod_type = u8(t % 3);
  }
  turnOnMaster(*p);
  return p;
}

void RenderTypicalSong(benchmark::State& state) { renderHeld(state, *typicalSong(), 10); }

// The same with four Macros of eight targets on every Track, first all at rest, then all turned up.
void RenderMacros(benchmark::State& state) {
  auto p = typicalSong();
  const char* targets[] = {"cutoff",    "resonance", "attack",   "release",
                           "lfo_depth", "width",     "highpass", "send_1"};
  const f32 mirror = std::numeric_limits<f32>::quiet_NaN(), turned = state.range(0) ? 0.5f : 0;
  std::string error;
  for (int t = 0; t < 6; t++)
    for (const char* name : {"ONE", "TWO", "THREE", "FOUR"}) {
      const int slot = macros::add(*p, t, name, false, turned, error);
      for (const char* key : targets)
        if (!macros::map(*p, t, slot, *param::find(key), -1, 0.1f, mirror, 0, 1, error))
          state.SkipWithError(error.c_str());
    }
  renderHeld(state, *p, 10);
}

// Everything on: 32 voices on sixteen Tracks, every insert, both Sends, every stage of the Master.
void RenderWorstCase(benchmark::State& state) {
  auto p = makeProject();
  clearArrangement(*p);
  p->track_count = 16;
  for (int t = 0; t < 16; t++) {
    Track& track = p->tracks[t];
    track = defaultTrack(MELODIC);
    track.engine = u8(t % PERC);
    track.sustain = 1;
    track.cutoff = 3000;
    track.osc_b_level = 0.5f;
    track.lfo_depth = track.lfo2_depth = 0.2f;
    track.filter_adsr = 1;
    track.send_1 = track.send_2 = 0.3f;
    track.highpass = 60;
    track.lowpass = 12000;
    track.insert_drive = 0.3f;
    track.crush_bits = 0.1f;
    track.eq_low = track.eq_mid = track.eq_high = 2;
    track.mod_type = u8(1 + t % 5);
    track.room_mix = 0.3f;
    track.width = 1.2f;
    track.mono_below = 100;
  }
  turnOnMaster(*p);
  p->fx1.type = FX_SHIMMER;
  renderHeld(state, *p, 32);
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

// Eight voices of one kind, nothing else.
void RenderKind(benchmark::State& state) {
  auto p = makeProject();
  clearArrangement(*p);
  p->track_count = 1;
  p->tracks[0] = defaultTrack(MELODIC);
  p->tracks[0].engine = u8(state.range(0));
  p->tracks[0].sustain = 1;
  renderHeld(state, *p, 8);
}

// One Send effect fed by a voice.
void RenderSend(benchmark::State& state) {
  auto p = makeProject();
  clearArrangement(*p);
  p->track_count = 1;
  p->tracks[0] = defaultTrack(MELODIC);
  p->tracks[0].sustain = 1;
  p->tracks[0].send_1 = 1;
  p->fx1.type = u8(state.range(0));
  p->fx1.tape_spring = 0.5f;
  p->fx2.type = FX_OFF;
  renderHeld(state, *p, 1);
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
BENCHMARK(RenderTypicalSong)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderMacros)->Arg(0)->Arg(1)->ArgName("turned")->Unit(benchmark::kMillisecond);
BENCHMARK(RenderWorstCase)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderKind)->DenseRange(ANALOG, PERC)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderSend)->DenseRange(FX_DELAY, FX_OFF)->Unit(benchmark::kMillisecond);
BENCHMARK(IdleEngine)->Unit(benchmark::kMillisecond);
BENCHMARK(NewEngine)->Unit(benchmark::kMillisecond);

}  // namespace
