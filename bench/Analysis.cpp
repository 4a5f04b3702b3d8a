// What a listener waits for.
#include <benchmark/benchmark.h>

#include "analysis/Features.h"
#include "support/Signals.h"

using namespace synth;

namespace {

// Half a minute of hits over a moving chord, both sides apart.
const analysis::Audio& music() {
  static const analysis::Audio made = [] {
    analysis::Audio audio;
    for (std::uint32_t seed : {1u, 2u}) {
      test::Signal x = test::silence(30);
      for (int i = 0; i < 60; i++)
        test::addAt(x, i * 0.5, test::shaped(test::noise(0.4, 0.4, seed + 7 * std::uint32_t(i)), 0.3));
      for (int note : {48, 55, 60, 64})
        test::addAt(x, 0, test::sine(440 * std::exp2((note - 69 + 0.01 * seed) / 12.0), 0.1, 30));
      x.resize(test::samplesOf(30));
      (seed == 1 ? audio.left : audio.right) = std::move(x);
    }
    return audio;
  }();
  return made;
}

void Analyze(benchmark::State& state) {
  const analysis::Audio& audio = music();
  for (auto _ : state) benchmark::DoNotOptimize(analysis::analyze(audio, 0, {}).lufs);
  state.counters["times_real_time"] =
      benchmark::Counter(audio.seconds(), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(Analyze)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
