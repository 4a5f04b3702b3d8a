// What an analysis waits for before it can listen.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "analysis/reading/ReadAudio.h"
#include "analysis/reading/Resample.h"
#include "engine/AudioFormats.h"

namespace {

using namespace synth;

constexpr int seconds = 10;

std::vector<float> sound(int rate) {
  std::vector<float> x(size_t(rate) * seconds);
  for (size_t i = 0; i < x.size(); i++) x[i] = 0.5f * float(std::sin(double(i) * 0.03));
  return x;
}

// Ten seconds of stereo from the given rate.
void resampling(benchmark::State& state) {
  const int rate = int(state.range(0));
  const std::vector<float> side = sound(rate);
  const float* const sides[] = {side.data(), side.data()};
  for (auto _ : state) {
    analysis::Resampler resampler(rate, analysis::sampleRate, 2);
    resampler.expect(side.size());
    for (size_t at = 0; at < side.size(); at += analysis::blockFrames) {
      const float* const block[] = {sides[0] + at, sides[1] + at};
      resampler.push(block, std::min(analysis::blockFrames, side.size() - at));
    }
    resampler.finish();
    benchmark::DoNotOptimize(resampler.take(0));
  }
  state.counters["times_real_time"] =
      benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(resampling)
    ->Arg(44100)
    ->Arg(22050)
    ->Arg(96000)
    ->Arg(192000)
    ->Arg(44099)
    ->Unit(benchmark::kMillisecond);

// Ten seconds of stereo from a file of each format, at 44.1 kHz.
void readingAudio(benchmark::State& state) {
  const AudioFormat format = AudioFormat(state.range(0));
  const std::string label = audioFormatInfo(format).label;
  if (missingFor(format)) {
    state.SkipWithError("this system cannot write the format");
    return;
  }
  std::string folder = (std::filesystem::temp_directory_path() / "quorel-bench.XXXXXX").string();
  if (!::mkdtemp(folder.data())) {
    state.SkipWithError("no temporary folder");
    return;
  }
  const std::string path = folder + "/sound." + audioFormatInfo(format).extension;
  const std::vector<float> side = sound(44100);
  const auto sink = makeFileSink(format, path);
  sink->begin(44100, side.size());
  for (size_t at = 0; at < side.size(); at += 256)
    sink->write(&side[at], &side[at], unsigned(std::min<size_t>(256, side.size() - at)));
  sink->finish();
  for (auto _ : state) benchmark::DoNotOptimize(analysis::readAudio(path));
  std::filesystem::remove_all(folder);
  state.SetLabel(label);
  state.counters["times_real_time"] =
      benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(readingAudio)->DenseRange(0, 4)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
