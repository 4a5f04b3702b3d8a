#include <atomic>
#include <stdexcept>

#include "analysis/Envelope.h"
#include "analysis/Loudness.h"
#include "analysis/Measure.h"
#include "analysis/Motion.h"
#include "analysis/Rhythm.h"
#include "analysis/Roughness.h"
#include "analysis/Spectra.h"
#include "analysis/Tonal.h"
#include "base/Parallel.h"

namespace synth::analysis {
namespace {

void measureLevels(const Audio& audio, Features& f) {
  double peak = 0, ll = 0, rr = 0, lr = 0;
  for (size_t i = 0; i < audio.size(); i++) {
    const double l = double(audio.left[i]), r = double(audio.right[i]);
    peak = std::max({peak, std::fabs(l), std::fabs(r)});
    ll += l * l;
    rr += r * r;
    lr += l * r;
  }
  f.peakDbfs = powerDb(peak * peak);
  f.rmsDbfs = powerDb((ll + rr) / (2 * double(audio.size())));
  f.crestDb = f.peakDbfs - f.rmsDbfs;
  if (ll > 0 && rr > 0) f.correlation = lr / std::sqrt(ll * rr);
}

void measureLoudness(const Audio& audio, Features& f) {
  const Loudness loudness = loudnessOf(audio);
  f.lufs = loudness.lufs;
  f.lraLu = loudness.lraLu;
  f.monoLossDb = loudness.monoLossDb;
}

// Tasks of about a second of work each, told to whoever watches as they end.
class Plan {
 public:
  explicit Plan(const Watch& watch) : watch_(watch) {}

  void add(std::function<void()> task) {
    tasks_.push_back([this, task = std::move(task)] {
      task();
      if (watch_) watch_(double(++done_) / double(tasks_.size()));
    });
  }
  // `body(from, to)` over pieces of 0..count-1.
  template <class Body>
  void addPieces(int count, int piece, Body body) {
    for (int from = 0; from < count; from += piece)
      add([body, from, to = std::min(from + piece, count)] { body(from, to); });
  }
  void run() { runAll(tasks_); }

 private:
  const Watch& watch_;
  std::vector<std::function<void()>> tasks_;
  std::atomic<size_t> done_{0};
};

}  // namespace

void requireAFrame(const Audio& audio) {
  if (audio.size() < size_t(frameSize)) throw std::runtime_error("Audio shorter than 43 ms");
}

Features analyze(const Audio& audio, double /*tempoHint*/, const Score& score, const Watch& watch) {
  requireAFrame(audio);
  Features f;
  f.seconds = audio.seconds();
  Spectra spectra(audio, f);
  Tonal tonal(audio, spectra, f);
  std::vector<double> energy;

  Plan plan(watch);
  plan.add([&] { f.roughness = roughnessOf(audio); });
  plan.add([&] { measureLoudness(audio, f); });
  plan.add([&] {
    measureLevels(audio, f);
    energy = runningEnergy(audio);
    f.envelopeMs = envelopeOf(energy, 120);
  });
  plan.addPieces(spectra.frames(), 2000, [&](int from, int to) { spectra.measure(from, to); });
  plan.addPieces(tonal.pairs(), 500, [&](int from, int to) { tonal.measure(from, to); });
  plan.run();

  spectra.summarize();
  tonal.summarize();
  measureRhythm(spectra, f);
  measureEnvelope(energy, score, f);
  measureMotion(spectra, score, f);
  return f;
}

double wetShareDb(const Audio& wet, const Audio& dry) {
  double difference = 0, whole = 0;
  for (size_t i = 0; i < std::min(wet.size(), dry.size()); i++) {
    const double l = double(wet.left[i]), r = double(wet.right[i]);
    const double dl = l - double(dry.left[i]), dr = r - double(dry.right[i]);
    difference += dl * dl + dr * dr;
    whole += l * l + r * r;
  }
  if (!(difference > 0) || !(whole > 0)) return -120;
  return std::max(10 * math::log10(difference / whole), -120.0);
}

}  // namespace synth::analysis
