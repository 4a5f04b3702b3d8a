#include "analysis/Spectra.h"

#include "analysis/Measure.h"
#include "base/Fft.h"

namespace synth::analysis {
namespace {

// Tables that depend on nothing but the frame's size.
struct Tables {
  std::array<double, frameSize> window;
  std::array<double, frameBins> hz, hzSquared;
  std::array<std::array<double, melCount>, 13> cosines;
  std::array<BinRange, bandCount> bands;
  std::array<BinRange, 3> coarse;
  std::array<BinRange, thirdOctaveCount> thirds;

  Tables() {
    for (int i = 0; i < frameSize; i++)
      window[size_t(i)] = 0.5 - 0.5 * math::cos(2 * math::pi * i / frameSize);
    for (int k = 0; k < frameBins; k++) {
      hz[size_t(k)] = k * binHz;
      hzSquared[size_t(k)] = hz[size_t(k)] * hz[size_t(k)];
    }
    for (int k = 0; k < 13; k++)
      for (int m = 0; m < melCount; m++)
        cosines[size_t(k)][size_t(m)] = math::cos(k * math::pi * (m + 0.5) / melCount);
    for (int i = 0; i < bandCount; i++)
      bands[size_t(i)] = binsOf(Bands[size_t(i)].low, Bands[size_t(i)].high);
    for (int i = 0; i < 3; i++)
      coarse[size_t(i)] = binsOf(CoarseBands[size_t(i)].low, CoarseBands[size_t(i)].high);
    for (int i = 0; i < thirdOctaveCount; i++) thirds[size_t(i)] = thirdOctaveBins(i);
  }
};

const Tables& tables() {
  static const Tables made;
  return made;
}

double sumOver(const double* power, BinRange range) { return sum(power + range.first, range.count()); }

// The geometric mean over the arithmetic mean of the bins up to 16 kHz.
double flatnessOf(const double* power) {
  static const int last = binAt(16000);
  constexpr double tiny = 1e-20;
  double logs = 0;
  int k = 1;
  // The logarithm of four bins at a time: their product cannot leave the range of a double.
  for (; k + 4 <= last + 1; k += 4)
    logs +=
        math::log((power[k] + tiny) * (power[k + 1] + tiny) * (power[k + 2] + tiny) * (power[k + 3] + tiny));
  for (; k <= last; k++) logs += math::log(power[k] + tiny);
  return math::exp(logs / last) / (sum(power + 1, last) / last + tiny);
}

double rolloffOf(const double* power, double energy) {
  double running = 0;
  for (int k = 1; k < frameBins; k++) {
    running += power[k];
    if (running >= 0.85 * energy) return k * binHz;
  }
  return 0;
}

}  // namespace

Spectra::Spectra(const Audio& audio, Features& features)
    : audio_(audio), features_(features), measures_(audio.size() / frameHop + 1) {
  const size_t n = measures_.size();
  features.levelDb.resize(n);
  features.bandLevelsDb.resize(n);
  features.melDb.resize(n);
  features.centroidFrames.resize(n);
  features.centroidHighFrames.resize(n);
  features.bandPower.resize(n);
}

void Spectra::measure(int from, int to) {
  static const Fft fft(frameSize);
  const Tables& t = tables();
  Fft::Work work(frameSize);
  std::vector<double> mid(frameBins), side(frameBins), amplitude(frameBins);
  const long length = long(audio_.size());
  for (int f = from; f < to; f++) {
    const long start = long(f) * frameHop - frameSize / 2;
    const int first = int(std::max(0L, -start)), last = int(std::min(long(frameSize), length - start));
    std::vector<double>&re = work.re, &im = work.im;
    std::fill(re.begin(), re.end(), 0.0);
    std::fill(im.begin(), im.end(), 0.0);
    const float *l = audio_.left.data() + (start + first), *r = audio_.right.data() + (start + first);
    for (int i = 0; i < last - first; i++) {
      const double w = 0.5 * t.window[size_t(first + i)];
      re[size_t(first + i)] = w * (double(l[i]) + double(r[i]));
      im[size_t(first + i)] = w * (double(l[i]) - double(r[i]));
    }
    fft.powers(work, mid.data(), side.data());
    constexpr double scale = 1.0 / (1 << 20);
    for (auto* spectrum : {&mid, &side})
      for (double& p : *spectrum) {
        p *= scale;
        if (!std::isfinite(p)) p = HUGE_VAL;
      }
    take(f, mid.data(), side.data(), amplitude.data());
  }
}

void Spectra::take(int frame, const double* mid, const double* side, double* amplitude) {
  const Tables& t = tables();
  const size_t at = size_t(frame);
  FrameMeasures& out = measures_[at];
  out.energy = sum(mid + 1, frameBins - 1);
  for (size_t b = 0; b < t.bands.size(); b++) out.bands[b] = sumOver(mid, t.bands[b]);
  for (size_t b = 0; b < t.thirds.size(); b++) out.thirdOctaves[b] = sumOver(mid, t.thirds[b]);
  for (size_t b = 0; b < 3; b++) {
    out.mid[b] = sumOver(mid, t.coarse[b]);
    out.side[b] = sumOver(side, t.coarse[b]);
    features_.bandLevelsDb[at][b] = float(powerDb(out.mid[b]));
  }
  features_.levelDb[at] = float(powerDb(out.energy));
  features_.bandPower[at] = out.bands;

  for (int k = 0; k < frameBins; k++) amplitude[k] = std::sqrt(mid[k]);
  // From 250 Hz on: bins at or above it.
  constexpr int high = int(250 / binHz) + 1;
  const double *a = amplitude + 1, *hz = t.hz.data() + 1;
  const double total = sum(a, frameBins - 1), moment = dot(a, hz, frameBins - 1);
  const double totalHigh = sum(amplitude + high, frameBins - high);
  out.centroidHz = total > 0 ? moment / total : 0;
  out.centroidHighHz =
      totalHigh > 0 ? dot(amplitude + high, t.hz.data() + high, frameBins - high) / totalHigh : 0;
  out.spreadHz = total > 0 ? std::sqrt(std::max(0.0, dot(a, t.hzSquared.data() + 1, frameBins - 1) / total -
                                                         out.centroidHz * out.centroidHz))
                           : 0;
  out.rolloffHz = rolloffOf(mid, out.energy);
  out.flatness = flatnessOf(mid);

  std::array<double, melCount> logs;
  for (size_t m = 0; m < size_t(melCount); m++) {
    const MelFilter& filter = melFilters()[m];
    const double power = dot(mid + filter.firstBin, filter.weights.data(), int(filter.weights.size()));
    features_.melDb[at][m] = float(powerDb(power));
    logs[m] = math::log(power + 1e-12);
  }
  for (size_t k = 0; k < out.mfcc.size(); k++) out.mfcc[k] = dot(logs.data(), t.cosines[k].data(), melCount);
}

void Spectra::summarize() {
  Features& f = features_;
  double loudest = 0, total = 0;
  std::array<double, bandCount> bands{};
  std::array<double, thirdOctaveCount> thirds{};
  std::array<double, 3> mid{}, side{};
  for (const FrameMeasures& m : measures_) {
    loudest = std::max(loudest, m.energy);
    total += m.energy;
    for (size_t b = 0; b < bands.size(); b++) bands[b] += m.bands[b];
    for (size_t b = 0; b < thirds.size(); b++) thirds[b] += m.thirdOctaves[b];
    for (size_t b = 0; b < 3; b++) {
      mid[b] += m.mid[b];
      side[b] += m.side[b];
    }
  }
  floor_ = std::max(1e-6 * loudest, 1e-12);

  total = std::max(total, 1e-30);
  for (size_t b = 0; b < bands.size(); b++) f.bandsDb[b] = powerDb(bands[b] / total);
  for (double band : thirds) f.thirdOctaveDb.push_back(powerDb(band / total));
  // Of silence there is nothing to tell: the defaults stay.
  auto width = [](double s, double m, double& into) {
    if (powerDb(s) > silentDb || powerDb(m) > silentDb) into = std::max(powerDb(s) - powerDb(m), -60.0);
  };
  for (size_t b = 0; b < 3; b++) width(side[b], mid[b], f.sideMidByBandDb[b]);
  width(side[0] + side[1] + side[2], mid[0] + mid[1] + mid[2], f.sideMidDb);

  std::vector<double> centroids, flatnesses, spreads, rolloffs;
  for (int i = 0; i < frames(); i++) {
    if (!active(i)) continue;
    const FrameMeasures& m = measures_[size_t(i)];
    f.centroidFrames[size_t(i)] = float(m.centroidHz);
    f.centroidHighFrames[size_t(i)] = float(m.centroidHighHz);
    centroids.push_back(m.centroidHz);
    flatnesses.push_back(m.flatness);
    spreads.push_back(m.spreadHz);
    rolloffs.push_back(m.rolloffHz);
    for (size_t k = 0; k < f.mfcc.size(); k++) f.mfcc[k] += m.mfcc[k];
  }
  if (centroids.empty()) return;
  const double count = double(centroids.size());
  for (double& c : f.mfcc) c /= count;
  f.flatness = median(std::move(flatnesses));
  f.spreadHz = median(std::move(spreads));
  f.rolloffHz = median(std::move(rolloffs));
  sortNumbers(centroids);
  f.centroidHz = centroids[centroids.size() / 2];
  f.centroidQ1Hz = centroids[(centroids.size() - 1) / 4];
  f.centroidQ3Hz = centroids[size_t((count - 1) * 0.75)];
}

}  // namespace synth::analysis
