#include "analysis/Measure.h"
#include "analysis/grid/Grid.h"

namespace synth::analysis {
namespace {

using json::Json;

constexpr int stepsABar = 16;

std::string rowText(const StepHits& hits, int bar, size_t band) {
  std::string row;
  for (int s = 0; s < stepsABar; s++) {
    if (s > 0 && s % 4 == 0) row += ' ';
    const float value = hits.steps[size_t(bar * stepsABar + s)][band];
    row += value > 0.6f ? 'X' : value > 0.3f ? 'x' : '.';
  }
  return row;
}

}  // namespace

StepHits stepHits(const Features& f, const Grid& grid) {
  StepHits out;
  out.bars = int(std::max((f.seconds - grid.downbeatS) / grid.barS() + 0.999, 0.0));
  out.steps.resize(size_t(out.bars * stepsABar));
  const BandNovelty novelty = bandNovelty(f);
  const double reach = framesPerSecond * grid.stepS() / 3;
  for (size_t s = 0; s < out.steps.size(); s++) {
    const double centre = framesPerSecond * (grid.downbeatS + double(s) * grid.stepS());
    const long from = std::max(long(std::ceil(centre - reach)), 0L);
    const long to = std::min(long(std::floor(centre + reach)), long(f.frames()) - 1);
    for (size_t band = 0; band < 3; band++)
      for (long i = from; i <= to; i++)
        out.steps[s][band] = std::max(out.steps[s][band], float(novelty.bands[band][size_t(i)]));
  }
  return out;
}

Json gridJson(const Grid& grid) {
  Json alternatives = Json::array();
  for (const Grid::Alternative& other : grid.alternatives)
    alternatives.push(std::move(Json::object()
                                    .add("bpm", rounded(other.bpm, 2))
                                    .add("relative_score", rounded(other.relativeScore, 2))));
  return Json::object()
      .add("bpm", rounded(grid.bpm, 2))
      .add("tempo_confidence", rounded(grid.tempoConfidence, 2))
      .add("downbeat_s", rounded(grid.downbeatS, 3))
      .add("bar1_confidence", rounded(grid.bar1Confidence, 2))
      .add("bar_s", rounded(grid.barS(), 4))
      .add("step_s", rounded(grid.stepS(), 5))
      .add("triplet_feel", grid.tripletFeel)
      .add("loop_bars", grid.loopBars)
      .add("loop_similarity", rounded(grid.loopSimilarity, 2))
      .add("alternatives", std::move(alternatives));
}

Json stepGridJson(const StepHits& hits, int fromBar, int bars) {
  Json rows = Json::array();
  for (int bar = std::max(fromBar, 1); bar <= std::min(fromBar + bars - 1, hits.bars); bar++)
    rows.push(std::move(Json::object()
                            .add("bar", bar)
                            .add("low", rowText(hits, bar - 1, 0))
                            .add("mid", rowText(hits, bar - 1, 1))
                            .add("high", rowText(hits, bar - 1, 2))));
  return Json::object()
      .add("legend",
           "one character per sixteenth Step from bar 1 of the grid: X strong onset, x soft, . none; "
           "low < 130 Hz (kick, bass), mid 150-700 Hz (snare body, keys), high > 6 kHz (hats, cymbals)")
      .add("bars", std::move(rows));
}

}  // namespace synth::analysis
