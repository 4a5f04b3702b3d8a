#include "analysis/compare/PerBar.h"

#include "analysis/Measure.h"
#include "base/Text.h"

namespace synth::analysis {
namespace {

using json::Json;
using BarPower = std::array<double, bandCount>;

// The mean power of each band in each bar that has a frame.
std::vector<BarPower> barPowers(const Features& f, double bpm, double downbeat) {
  const double barFrames = 240 / bpm * framesPerSecond, start = downbeat * framesPerSecond;
  std::vector<BarPower> bars;
  int frame = std::clamp(int(std::ceil(start)), 0, f.frames());
  for (int k = 1; frame < f.frames(); k++) {
    const double end = std::min(std::ceil(start + k * barFrames), double(f.frames()));
    BarPower power{};
    const int from = frame;
    for (; frame < int(end); frame++)
      for (size_t b = 0; b < bandCount; b++) power[b] += f.bandPower[size_t(frame)][b];
    if (frame == from) break;
    for (double& p : power) p /= frame - from;
    bars.push_back(power);
  }
  return bars;
}

// Under it a band counts as quiet.
double quietPower(const std::vector<BarPower>& bars) {
  double loudest = 0;
  for (const BarPower& bar : bars) loudest = std::max(loudest, sum(bar.data(), bandCount));
  return 1e-6 * loudest;
}

struct Jump {
  size_t bar, band;
  double db;
};

}  // namespace

json::Json bandsPerBar(const Features& reference, const Features& render, double bpm, double downbeat) {
  const auto wanted = barPowers(reference, bpm, downbeat), played = barPowers(render, bpm, downbeat);
  const double quietWanted = quietPower(wanted), quietPlayed = quietPower(played);
  std::vector<Jump> jumps;
  Json rows = Json::array();
  for (size_t bar = 0; bar < std::min(wanted.size(), played.size()); bar++) {
    Json row = Json::object();
    row.add("bar", bar + 1);
    for (size_t b = 0; b < bandCount; b++) {
      if (wanted[bar][b] <= quietWanted && played[bar][b] <= quietPlayed) {
        row.add(Bands[b].name, Json());
        continue;
      }
      const double db = powerDb(played[bar][b]) - powerDb(wanted[bar][b]);
      if (rounded(db, 1) != 0) jumps.push_back({bar, b, db});
      row.add(Bands[b].name, rounded(db, 1));
    }
    rows.push(std::move(row));
  }
  std::stable_sort(jumps.begin(), jumps.end(),
                   [](const Jump& a, const Jump& b) { return std::fabs(a.db) > std::fabs(b.db); });
  constexpr size_t listed = 5;
  Json largest = Json::array();
  for (size_t i = 0; i < std::min(jumps.size(), listed); i++)
    largest.push(text::print("bar %d %s %+.1f dB", int(jumps[i].bar) + 1, Bands[jumps[i].band].name,
                             rounded(jumps[i].db, 1)));
  Json out = Json::object();
  out.add("about",
          "Render minus reference in dB per bar and band, both loudness-matched; null where both are quiet. "
          "Look for bars where one band jumps: a part missing, too loud, or entering at the wrong bar.")
      .add("rows", std::move(rows))
      .add("largest", std::move(largest));
  return out;
}

}  // namespace synth::analysis
