// What a picture of sound takes: its transforms, and the whole of it.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "analysis/picture/Spectrogram.h"
#include "base/Fft.h"

namespace {

using namespace synth;
using namespace synth::analysis;

double noise(std::uint32_t& state) {
  state = state * 1664525u + 1013904223u;
  return double(state) / 4294967296.0 - 0.5;
}

void Transform(benchmark::State& state) {
  const int size = int(state.range(0));
  const Fft fft(size);
  Fft::Work work(size);
  std::uint32_t seed = 1;
  int since = 0;
  for (auto _ : state) {
    // The values grow with every pass; start afresh long before they overflow.
    if (since-- == 0) {
      state.PauseTiming();
      for (int i = 0; i < size; i++) work.re[i] = noise(seed), work.im[i] = noise(seed);
      since = 100;
      state.ResumeTiming();
    }
    fft.forward(work);
    benchmark::DoNotOptimize(work.re.data());
  }
}
BENCHMARK(Transform)->RangeMultiplier(2)->Range(1024, 65536)->Unit(benchmark::kMicrosecond);

Audio noisy(double seconds) {
  Audio audio;
  std::uint32_t seed = 2;
  for (int i = 0; i < int(seconds * sampleRate); i++) {
    audio.left.push_back(float(noise(seed)));
    audio.right.push_back(float(noise(seed)));
  }
  return audio;
}

void draw(benchmark::State& state, double seconds) {
  const Audio audio = noisy(seconds);
  const Audio* const audios[] = {&audio};
  PictureSettings settings;
  settings.bars = BarLines{120, 0};
  settings.threads = int(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(drawSpectrogram(audios, {}, settings));
}

void onOneAndTwoCores(benchmark::internal::Benchmark* drawing) {
  drawing->Arg(1)
      ->Arg(2)
      ->ArgName("threads")
      ->Unit(benchmark::kMillisecond)
      ->MeasureProcessCPUTime()
      ->UseRealTime();
}

void DrawFourBars(benchmark::State& state) { draw(state, 8); }
BENCHMARK(DrawFourBars)->Apply(onOneAndTwoCores);

void DrawThreeMinutes(benchmark::State& state) { draw(state, 180); }
BENCHMARK(DrawThreeMinutes)->Apply(onOneAndTwoCores);

}  // namespace
