#include "analysis/Features.h"
#include "analysis/Measure.h"
#include "base/Text.h"
#include "core/PitchNames.h"

namespace synth::analysis {
namespace {

using json::Json;

Json number(double value, int decimals) { return rounded(value, decimals); }

Json timbreJson(const Features& f) {
  return Json::object()
      .add("centroid_hz", number(f.centroidHz, 0))
      .add("centroid_iqr_hz", Json::array().push(number(f.centroidQ1Hz, 0)).push(number(f.centroidQ3Hz, 0)))
      .add("rolloff_hz", number(f.rolloffHz, 0))
      .add("flatness_db", number(powerDb(f.flatness), 1))
      .add("spread_hz", number(f.spreadHz, 0))
      .add("roughness", number(f.roughness, 3))
      .add("inharmonicity", number(f.inharmonicity, 3))
      .add("harmonic_to_noise_db", number(f.harmonicToNoiseDb, 1));
}

Json stereoJson(const Features& f) {
  Json byBand = Json::object();
  for (size_t b = 0; b < 3; b++) byBand.add(CoarseBands[b].name, number(f.sideMidByBandDb[b], 1));
  return Json::object()
      .add("side_mid_db", number(f.sideMidDb, 1))
      .add("correlation", number(f.correlation, 2))
      .add("mono_loss_db", number(f.monoLossDb, 1))
      .add("side_mid_db_by_band", std::move(byBand));
}

Json envelopeJson(const Features& f) {
  Json out = Json::object();
  out.add("attack_ms", number(f.attackMs, 1))
      .add("decay_ms", number(f.decayMs, 0))
      .add("measured_hits", f.measuredHits)
      .add("onset_share_db", number(f.onsetShareDb, 1))
      .add("decay_40_ms", number(f.decay40Ms, 0))
      .add("decay_60_ms", number(f.decay60Ms, 0))
      .add("measured_decays", f.measuredDecays);
  if (f.measuredTails > 0)
    out.add("tail_40_ms", number(f.tail40Ms, 0))
        .add("tail_60_ms", number(f.tail60Ms, 0))
        .add("measured_tails", f.measuredTails);
  return out;
}

Json pitchJson(const Features& f) {
  Json chroma = Json::object();
  for (size_t c = 0; c < 12; c++) chroma.add(pitchClassNames[c], number(f.chroma[c], 2));
  return Json::object()
      .add("key", f.key)
      .add("key_strength", number(f.keyStrength, 2))
      .add("chroma", std::move(chroma));
}

// One window of the timeline, frames from..to-1.
Json timelineRow(const Features& f, double start, int from, int to) {
  double level = 0;
  std::array<double, 3> bands{};
  std::vector<double> centroids;
  for (int i = from; i < to; i++) {
    const size_t at = size_t(i);
    level += dbPower(double(f.levelDb[at]));
    for (size_t b = 0; b < 3; b++) bands[b] += dbPower(double(f.bandLevelsDb[at][b]));
    if (f.centroidFrames[at] > 0) centroids.push_back(double(f.centroidFrames[at]));
  }
  const double count = to - from;
  // The mean of frames that all lie at the floor is the floor.
  auto mean = [&](double power) { return number(std::max(powerDb(power / count), silentDb), 1); };
  int onsets = 0;
  for (int frame : f.onsetFrames) onsets += frame >= from && frame < to;
  return Json::array()
      .push(number(start, 2))
      .push(mean(level))
      .push(number(median(std::move(centroids)), 0))
      .push(mean(bands[0]))
      .push(mean(bands[1]))
      .push(mean(bands[2]))
      .push(onsets);
}

Json timelineJson(const Features& f, double bpm) {
  constexpr int mostRows = 32;
  double window = bpm > 0 ? std::min(240 / bpm, 1e6) : 2;
  while (f.seconds / window > mostRows) window *= 2;
  Json rows = Json::array();
  const double span = std::max(window * framesPerSecond, 1.0);
  for (int k = 0;; k++) {
    const int from = int(k * span), to = std::min(int((k + 1) * span), f.frames());
    // The last frame stands on the end of audio that fills its windows, and opens none.
    if (from >= f.frames() || (k > 0 && k * span >= f.seconds * framesPerSecond)) break;
    rows.push(timelineRow(f, k * span / framesPerSecond, from, to));
  }
  return Json::object()
      .add("columns", "start_s, level_db, centroid_hz, low_db (<250 Hz), mid_db, high_db (>4 kHz), onsets")
      .add("window_s", number(window, 4))
      .add("rows", std::move(rows));
}

}  // namespace

json::Json featuresJson(const Features& f, double bpm, bool detail) {
  Json bands = Json::object();
  for (size_t b = 0; b < Bands.size(); b++) bands.add(Bands[b].name, number(f.bandsDb[b], 1));
  Json out = Json::object();
  out.add("seconds", number(f.seconds, 2))
      .add("loudness", Json::object()
                           .add("lufs", number(f.lufs, 1))
                           .add("lra_lu", number(f.lraLu, 1))
                           .add("peak_dbfs", number(f.peakDbfs, 1))
                           .add("crest_db", number(f.crestDb, 1)))
      .add("bands_db", std::move(bands))
      .add("timbre", timbreJson(f))
      .add("motion", Json::object()
                         .add("centroid_variation_oct", number(f.centroidVariationOct, 3))
                         .add("level_variation_db", number(f.levelVariationDb, 2))
                         .add("flux_db", number(f.fluxDb, 2))
                         .add("held_s", number(f.heldS, 2)))
      .add("stereo", stereoJson(f))
      .add("space", Json::object().add("late_energy_db", number(f.lateEnergyDb, 1)))
      .add("rhythm", Json::object()
                         .add("onsets", int(f.onsets.size()))
                         .add("onsets_per_s", number(f.onsetsPerS, 2))
                         .add("tempo_bpm", number(f.tempoBpm, 1))
                         .add("tempo_confidence", number(f.tempoConfidence, 2)))
      .add("envelope", envelopeJson(f))
      .add("pitch", pitchJson(f))
      .add("timeline", timelineJson(f, bpm));
  if (!detail) return out;
  Json thirds = Json::object(), times = Json::array();
  for (size_t b = 0; b < f.thirdOctaveDb.size(); b++)
    thirds.add(text::number(ThirdOctaves[b], false), number(f.thirdOctaveDb[b], 1));
  for (double onset : f.onsets) times.push(number(onset, 3));
  out.add("third_octave_db", std::move(thirds)).add("onset_times_s", std::move(times));
  return out;
}

}  // namespace synth::analysis
