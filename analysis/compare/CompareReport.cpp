#include <stdexcept>

#include "analysis/Measure.h"
#include "analysis/compare/Compare.h"
#include "analysis/compare/PerBar.h"
#include "analysis/grid/Grid.h"
#include "base/Text.h"

namespace synth::analysis {
namespace {

using json::Json;

constexpr char lossyNote[] =
    "The reference is band-limited above ~16 kHz (MP3/AAC): the air band is compared up to 12.5 kHz; ignore "
    "16-20 kHz differences.";
constexpr char note[] =
    "Differences are render minus reference after alignment; timbre and stereo are measured at equal "
    "loudness. Scores: 100 identical, 50 at a clearly audible difference. Low alignment confidence means the "
    "music repeats within a second, so the offset may be a beat off (pass --offset). Measurements guide "
    "edits; listening decides.";

Json differencesJson(const Differences& d) {
  Json envelope = Json::object();
  for (size_t b = 0; b < 3; b++) envelope.add(CoarseBands[b].name, rounded(d.envelopeCorrelation[b], 2));
  Json out = Json::object();
  out.add("bands_db", bandDifferencesJson(d))
      .add("third_octave_rms_db", rounded(d.thirdOctaveRmsDb, 1))
      .add("centroid_pct", rounded(d.centroidPct, 1))
      .add("mfcc_distance", rounded(d.mfccDistance, 1))
      .add("flatness_db", rounded(d.flatnessDb, 1))
      .add("envelope_correlation", std::move(envelope))
      .add("attack_ms", rounded(d.attackMs, 1))
      .add("crest_db", rounded(d.crestDb, 1))
      .add("onset_f1", rounded(d.onsetF1, 2))
      .add("onsets_missing", d.onsetsMissing.size())
      .add("onsets_extra", d.onsetsExtra)
      .add("tempo_pct", rounded(d.tempoPct, 1))
      .add("reference_tempo_bpm", rounded(d.referenceTempoBpm, 1))
      .add("chroma_similarity", rounded(d.chromaSimilarity, 2))
      .add("loudness_lu", rounded(d.loudnessLu, 1))
      .add("lra_lu", rounded(d.lraLu, 1))
      .add("side_mid_db", rounded(d.sideMidDb, 1))
      .add("correlation", rounded(d.correlation, 2));
  return out;
}

Json perBarJson(const Comparison& c, const CompareOptions& options) {
  const double bpm = options.bpm > 0 ? options.bpm : c.reference.tempoBpm;
  if (!(bpm > 0)) throw std::runtime_error("No beat grid found for --per-bar");
  double downbeat = options.downbeat;
  if (downbeat < 0) downbeat = fitGrid(c.reference, options.bpm, -1).downbeatS;
  Json out = Json::object();
  out.add("bpm", rounded(bpm, 2)).add("downbeat_s", rounded(downbeat, 3));
  Json table = bandsPerBar(c.reference, c.render, bpm, downbeat);
  for (Json::Member& member : table.members()) out.add(member.key, std::move(member.value));
  return out;
}

}  // namespace

Json alignmentJson(const Alignment& alignment, double secondsCompared) {
  Json out = Json::object();
  out.add("offset_s", rounded(alignment.offsetS, 3))
      .add("automatic", alignment.automatic)
      .add("confidence", rounded(alignment.confidence, 2))
      .add("seconds_compared", rounded(secondsCompared, 2));
  return out;
}

Json scoresJson(const Scores& s) {
  Json out = Json::object();
  out.add("spectral_balance", rounded(s.spectralBalance, 0))
      .add("timbre", rounded(s.timbre, 0))
      .add("envelope", rounded(s.envelope, 0))
      .add("rhythm", rounded(s.rhythm, 0))
      .add("pitch", rounded(s.pitch, 0))
      .add("level_stereo", rounded(s.levelStereo, 0))
      .add("overall", rounded(s.overall, 0));
  return out;
}

Json bandDifferencesJson(const Differences& d) {
  Json out = Json::object();
  for (size_t b = 0; b < bandCount; b++) out.add(Bands[b].name, rounded(d.bandsDb[b], 1));
  return out;
}

Json topIssuesJson(const std::vector<Issue>& issues) {
  constexpr size_t most = 5;
  Json out = Json::array();
  for (size_t i = 0; i < std::min(issues.size(), most); i++) out.push(issues[i].text);
  return out;
}

Json comparisonJson(const Comparison& c, const CompareOptions& options) {
  Json out = Json::object();
  out.add("alignment", alignmentJson(c.alignment, c.reference.seconds))
      .add("scores", scoresJson(c.scores))
      .add("differences", differencesJson(c.differences))
      .add("top_issues", topIssuesJson(c.issues));
  if (c.differences.lossyReference) out.add("lossy_reference", lossyNote);
  out.add("note", note);
  if (options.perBar) out.add("per_bar", perBarJson(c, options));
  if (!options.detail) return out;
  out.add("reference", featuresJson(c.reference, options.bpm, true))
      .add("render", featuresJson(c.render, options.bpm, true));
  Json thirds = Json::object();
  for (size_t i = 0; i < ThirdOctaves.size(); i++)
    thirds.add(text::number(ThirdOctaves[i], false), rounded(c.differences.thirdOctaveDb[i], 1));
  out.add("third_octave_diff_db", std::move(thirds));
  return out;
}

}  // namespace synth::analysis
