#include "analysis/compare/Compare.h"

#include <stdexcept>

#include "analysis/Loudness.h"
#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr double silentLufs = -70;
constexpr double shortest = 0.5;
constexpr char tooShort[] = "The reference is shorter than 0.5 s";

// Delayed and cut to lie on the reference, at its loudness; returns by how much it was louder.
double match(const Audio& render, double offsetS, const Audio& reference, double referenceLufs,
             Audio& matched) {
  matched = shifted(render, offsetS, reference.size());
  const double lufs = integratedLufs(matched);
  const double louder = lufs - referenceLufs;
  if (!(lufs > silentLufs)) return louder;
  const float gain = float(dbPower(-louder / 2));
  for (float& x : matched.left) x *= gain;
  for (float& x : matched.right) x *= gain;
  return louder;
}

}  // namespace

Comparison measureAgainst(const Audio& reference, const Features& measured, const Audio& render,
                          const CompareOptions& options, const Watch& watch) {
  if (reference.seconds() < shortest) throw std::runtime_error(tooShort);
  // With a given offset the render is heard only where it was moved to, with silence around it.
  requireAFrame(render);
  // One listening, or two where the offset has to be found.
  const int listenings = options.automatic() ? 2 : 1;
  int heard = 0;
  auto listen = [&](const Audio& audio) {
    Features f = analyze(audio, options.bpm, {}, [&](double share) {
      if (watch) watch((heard + share) / listenings);
    });
    heard++;
    return f;
  };
  Comparison c;
  c.reference = measured;
  c.alignment =
      options.automatic() ? align(c.reference, listen(render)) : Alignment{*options.offset, false, 0};
  const double louder = match(render, c.alignment.offsetS, reference, c.reference.lufs, c.matched);
  c.render = listen(c.matched);
  c.differences = differencesOf(c.reference, c.render, options.bpm, louder);
  c.scores = scoresOf(c.differences);
  const double bpm = options.bpm > 0 ? options.bpm : c.reference.tempoBpm;
  c.issues = issuesOf(c.reference, c.render, c.differences, bpm);
  return c;
}

Comparison measureAgainst(const Audio& reference, const Audio& render, const CompareOptions& options,
                          const Watch& watch) {
  if (reference.seconds() < shortest) throw std::runtime_error(tooShort);
  const double share = options.automatic() ? 1.0 / 3 : 0.5;  // of the first of the listenings
  const Features measured = analyze(reference, options.bpm, {}, [&](double done) {
    if (watch) watch(share * done);
  });
  return measureAgainst(reference, measured, render, options, [&](double done) {
    if (watch) watch(share + (1 - share) * done);
  });
}

json::Json compare(const Audio& reference, const Audio& render, const CompareOptions& options) {
  return comparisonJson(measureAgainst(reference, render, options), options);
}

}  // namespace synth::analysis
