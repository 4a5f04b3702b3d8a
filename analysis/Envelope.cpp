#include "analysis/Envelope.h"

#include "analysis/Measure.h"

namespace synth::analysis {
namespace {

constexpr int samplesAMs = sampleRate / 1000;

double ratioDb(double part, double whole) { return powerDb(part / whole); }

// The energy of samples from..to-1, cut to the signal.
double energyOf(const std::vector<double>& running, long from, long to) {
  const long n = long(running.size()) - 1;
  from = std::clamp(from, 0L, n);
  to = std::clamp(to, from, n);
  return running[size_t(to)] - running[size_t(from)];
}

// The first index of from..to-1 whose value is at most `level`, -1 without.
long firstUnder(const std::vector<double>& curve, long from, long to, double level) {
  for (long i = from; i < std::min(to, long(curve.size())); i++)
    if (curve[size_t(i)] <= level) return i;
  return -1;
}

struct Falls {
  std::vector<double> by20, by40, by60;
};

class Hits {
 public:
  Hits(const std::vector<double>& fast, const std::vector<double>& slow, std::vector<Moment> hits, bool known)
      : fast_(fast), slow_(slow), hits_(std::move(hits)), known_(known) {}

  // The first hit after a millisecond, else the end.
  long next(long ms) const {
    const auto later = [](long at, const Moment& hit) { return at < hit.ms; };
    const auto found = std::upper_bound(hits_.begin(), hits_.end(), ms, later);
    return found != hits_.end() ? found->ms : long(slow_.size());
  }

  void measure(size_t index, std::vector<double>& attacks, Falls& falls) const {
    const long size = long(fast_.size()), t = hits_[index].ms;
    long from = t - 10, to = t + 60;
    if (known_) {
      from = t;
      to = t + 1000;
      if (index + 1 < hits_.size()) to = t + std::min(hits_[index + 1].ms - t - 1, 1000L);
    }
    from = std::max(from, 0L);
    to = std::min(to, size - 1);
    if (from > to) return;
    const long peakAt = std::max_element(fast_.begin() + from, fast_.begin() + to + 1) - fast_.begin();
    const double peak = fast_[size_t(peakAt)];
    const double floor = *std::min_element(fast_.begin() + std::max(t - 30, 0L), fast_.begin() + peakAt + 1);
    if (!(peak > 0) || peak < 2 * floor) return;
    auto down = [&](double share, long least) {
      long i = peakAt;
      while (i > least && fast_[size_t(i)] > floor + share * (peak - floor)) i--;
      return i;
    };
    const long at10 = down(0.1, 0), at90 = down(0.9, at10);
    attacks.push_back(double(at90 - at10 + 1));

    const long last = std::min(peakAt + 40, size - 1);
    const long strongest = std::max_element(slow_.begin() + peakAt, slow_.begin() + last + 1) - slow_.begin();
    const double level = slow_[size_t(strongest)];
    auto note = [&](long found, std::vector<double>& list) {
      if (found >= 0) list.push_back(double(found - peakAt));
      return found;
    };
    note(firstUnder(slow_, strongest, strongest + 1501, 0.1 * level), falls.by20);
    const long limit = next(peakAt + 30);
    const long at40 = note(firstUnder(slow_, strongest, limit, 0.01 * level), falls.by40);
    if (at40 >= 0) note(firstUnder(slow_, at40, limit, 0.001 * level), falls.by60);
  }

 private:
  const std::vector<double>&fast_, &slow_;
  std::vector<Moment> hits_;
  bool known_;
};

void measureTails(const std::vector<double>& energy, const std::vector<double>& slow, const Hits& hits,
                  const Score& score, Features& f) {
  std::vector<double> by40, by60;
  for (const Moment& off : momentsOf(score.noteOff)) {
    if (off.ms < 20 || off.ms >= long(slow.size())) continue;
    const double level = std::sqrt(energyOf(energy, off.sample - 960, off.sample) / 960);
    if (!(level > 0)) continue;
    const long limit = hits.next(off.ms + 10);
    const long at40 = firstUnder(slow, off.ms, limit, 0.01 * level);
    if (at40 < 0) continue;
    by40.push_back(double(at40 - off.ms));
    const long at60 = firstUnder(slow, at40, limit, 0.001 * level);
    if (at60 >= 0) by60.push_back(double(at60 - off.ms));
  }
  f.measuredTails = int(by40.size());
  f.tail40Ms = median(std::move(by40));
  f.tail60Ms = median(std::move(by60));
}

// How much of a hit lies in its first moments, and how much rings on after it.
void measureShares(const std::vector<double>& energy, const std::vector<Moment>& hits, Features& f) {
  constexpr long onset = 480, body = 3840, early = 7200, late = 144000;
  constexpr double least = 1e-12;
  const long n = long(energy.size()) - 1;
  std::vector<double> shares, tails;
  for (size_t i = 0; i < hits.size(); i++) {
    const long at = hits[i].sample;
    const double whole = energyOf(energy, at, at + body);
    if (at + onset <= n && whole > least) shares.push_back(ratioDb(energyOf(energy, at, at + onset), whole));
    const long end = std::min(i + 1 < hits.size() ? hits[i + 1].sample : n, at + late);
    const double first = energyOf(energy, at, at + early);
    // A hit that the next one follows at once has no time to ring.
    if (end > at + early && first > least) tails.push_back(ratioDb(energyOf(energy, at + early, end), first));
  }
  if (!shares.empty()) f.onsetShareDb = median(std::move(shares));
  if (!tails.empty()) f.lateEnergyDb = median(std::move(tails));
}

}  // namespace

std::vector<Moment> momentsOf(const std::vector<double>& seconds) {
  std::vector<Moment> moments;
  // A thousandth of a sample for times that a decimal cannot say exactly.
  for (double s : seconds)
    if (s >= 0 && s < 1e6) moments.push_back({long(s * 1000 + 1e-6), long(s * sampleRate + 1e-3)});
  std::sort(moments.begin(), moments.end(),
            [](const Moment& a, const Moment& b) { return a.sample < b.sample; });
  return moments;
}

std::vector<Moment> hitsOf(const Features& f, const Score& score) {
  std::vector<Moment> hits;
  if (!score.noteOn.empty()) {
    hits = momentsOf(score.noteOn);
    const long end = long(std::lround(f.seconds * sampleRate));
    while (!hits.empty() && hits.back().sample >= end) hits.pop_back();
    return hits;
  }
  for (int frame : f.onsetFrames) hits.push_back({long(frame) * 10, long(frame) * frameHop});
  return hits;
}

std::vector<double> runningEnergy(const Audio& audio) {
  std::vector<double> running(audio.size() + 1);
  for (size_t i = 0; i < audio.size(); i++) {
    const double x = 0.5 * (double(audio.left[i]) + double(audio.right[i]));
    running[i + 1] = running[i] + x * x;
  }
  return running;
}

std::vector<double> envelopeOf(const std::vector<double>& energy, int reach) {
  const long n = long(energy.size()) - 1;
  std::vector<double> curve(size_t(n / samplesAMs));
  for (long m = 0; m < long(curve.size()); m++) {
    const long centre = m * samplesAMs + samplesAMs / 2;
    const long from = std::max(centre - reach, 0L), to = std::min(centre + reach, n);
    curve[size_t(m)] = std::sqrt(energyOf(energy, from, to) / double(to - from));
  }
  return curve;
}

void measureEnvelope(const std::vector<double>& energy, const Score& score, Features& f) {
  if (f.envelopeMs.empty()) return;
  const std::vector<double> slow = envelopeOf(energy, 480);
  const std::vector<Moment> moments = hitsOf(f, score);
  const Hits hits(f.envelopeMs, slow, moments, !score.noteOn.empty());
  std::vector<double> attacks;
  Falls falls;
  for (size_t i = 0; i < moments.size(); i++) hits.measure(i, attacks, falls);
  f.measuredHits = int(attacks.size());
  f.measuredDecays = int(falls.by40.size());
  f.attackMs = median(std::move(attacks));
  f.decayMs = median(std::move(falls.by20));
  f.decay40Ms = median(std::move(falls.by40));
  f.decay60Ms = median(std::move(falls.by60));
  measureTails(energy, slow, hits, score, f);
  measureShares(energy, moments, f);
}

}  // namespace synth::analysis
