// Reading, checking and writing a full Project: 256 Patterns, 16384 Notes, 32768 Lane points.
#include <benchmark/benchmark.h>

#include <cmath>

#include "core/ProjectFile.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Tracks.h"
#include "core/model/Validate.h"
#include "core/params/Targets.h"
#include "spec/Build.h"
#include "spec/Diff.h"
#include "spec/Export.h"

namespace {

using namespace synth;

ProjectPtr fullProject() {
  auto p = makeProject();
  clearArrangement(*p);
  p->track_count = 16;
  for (int t = 0; t < 16; t++)
    for (int k = 0; k < 16; k++) {
      const int id = addLoop(*p, t, 64, u32(k * 64), 0);
      std::vector<Step> steps(64);
      for (int s = 0; s < 64; s++) {
        Note n;
        n.pitch = u8(t == 0 ? s % 8 : 36 + s % 40);
        n.velocity = u8(60 + s);
        steps[size_t(s)].notes[t == 0 ? s % 8 : 0] = n;
      }
      setSteps(*p, t, id, steps.data(), 64);
    }
  for (int row = 0; row < 128; row++) {
    std::vector<LanePoint> points(256);
    for (int i = 0; i < 256; i++) points[size_t(i)] = {u32(i * 64), u16(i * 257), 0, 0};
    setLanePoints(*p, row, points.data(), 256);
    p->lanes[row].enabled = 1;
    p->lanes[row].target = u8(row % 8 + 5);
  }
  return p;
}

std::string fullSpec() { return json::pretty(spec::toSpec(*fullProject(), false)); }

void LoadAndValidateFullProject(benchmark::State& state) {
  const std::string image = projectImage(*fullProject());
  auto p = newProject();
  std::string error;
  for (auto _ : state)
    if (!readProjectImage(image, *p, error)) state.SkipWithError(error.c_str());
}

void ValidateFullProject(benchmark::State& state) {
  auto p = fullProject();
  std::string error;
  for (auto _ : state)
    if (!validateProject(*p, error)) state.SkipWithError(error.c_str());
}

void WriteFullProject(benchmark::State& state) {
  auto p = fullProject();
  for (auto _ : state) benchmark::DoNotOptimize(projectImage(*p));
}

void SaveFullProject(benchmark::State& state) {
  auto p = fullProject();
  std::string error;
  for (auto _ : state)
    if (!saveProject(*p, "/tmp/quorel-bench.quorel", error)) state.SkipWithError(error.c_str());
}

void BuildFullSpec(benchmark::State& state) {
  const std::string text = fullSpec();
  for (auto _ : state) {
    std::string error;
    const json::Json value = json::parse(text, error);
    auto p = spec::build(value);
    if (!validateProject(*p, error)) state.SkipWithError(error.c_str());
    benchmark::DoNotOptimize(projectImage(*p));
  }
}

// As the command does it, with the proof that the spec builds back.
void ExportFullProject(benchmark::State& state) {
  auto p = fullProject();
  for (auto _ : state) {
    const json::Json value = spec::toSpec(*p, false);
    std::string error;
    if (!spec::rebuilds(*p, value, error)) state.SkipWithError(error.c_str());
    benchmark::DoNotOptimize(json::pretty(value));
  }
}

void DiffFullProjects(benchmark::State& state) {
  auto a = fullProject(), b = copyOf(*a);
  b->notes[9000].velocity = 1;
  for (auto _ : state) benchmark::DoNotOptimize(spec::diffProjects(*a, *b));
}

BENCHMARK(LoadAndValidateFullProject)->Unit(benchmark::kMillisecond);
BENCHMARK(ValidateFullProject)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteFullProject)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveFullProject)->Unit(benchmark::kMillisecond);
BENCHMARK(BuildFullSpec)->Unit(benchmark::kMillisecond);
BENCHMARK(ExportFullProject)->Unit(benchmark::kMillisecond);
BENCHMARK(DiffFullProjects)->Unit(benchmark::kMillisecond);

}  // namespace
