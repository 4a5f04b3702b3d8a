#include "analysis/Tonal.h"

#include "analysis/Measure.h"
#include "base/Fft.h"
#include "core/PitchNames.h"

namespace synth::analysis {
namespace {

constexpr int size = 8192, bins = size / 2 + 1, framesAWindow = 4, hop = framesAWindow * frameHop;
constexpr double widthHz = 48000.0 / size;

const std::vector<double>& window() {
  static const std::vector<double> made = [] {
    std::vector<double> w(size);
    for (int i = 0; i < size; i++) w[size_t(i)] = 0.5 - 0.5 * math::cos(2 * math::pi * i / size);
    return w;
  }();
  return made;
}

struct Peak {
  int bin;
  double power, hz;
};

// Bins of first..last that reach `least` and lie below none of their two neighbours on each side, refined
// by a parabola through the logarithms.
std::vector<Peak> peaksOf(const double* power, int first, int last, double least) {
  std::vector<Peak> peaks;
  for (int b = first; b <= last; b++) {
    const double p = power[b];
    if (!(p >= least) || p < power[b - 1] || p < power[b + 1] || p < power[b - 2] || p < power[b + 2])
      continue;
    const double l = math::log(power[b - 1] + 1e-30), c = math::log(p + 1e-30),
                 r = math::log(power[b + 1] + 1e-30);
    const double bend = l - 2 * c + r, offset = bend < 0 ? 0.5 * (l - r) / bend : 0;
    peaks.push_back({b, p, (b + offset) * widthHz});
  }
  return peaks;
}

// How far the strongest peaks lie from multiples of the lowest strong one, 0..0.5; negative when they
// cannot tell.
double deviationOf(std::vector<Peak> peaks, double largest) {
  constexpr size_t most = 24;
  std::stable_sort(peaks.begin(), peaks.end(),
                   [](const Peak& a, const Peak& b) { return a.power > b.power; });
  if (peaks.size() > most) peaks.resize(most);
  double guess = 0;
  for (const Peak& p : peaks)
    if (p.power >= 0.01 * largest && (guess == 0 || p.hz < guess)) guess = p.hz;
  if (!(guess > 0) || peaks.size() < 2) return -1;
  double off = 0, weight = 0;
  for (const Peak& p : peaks) {
    if (p.hz < 0.9 * guess) continue;
    const double ratio = p.hz / guess, w = std::sqrt(p.power);
    off += w * std::fabs(ratio - std::round(ratio));
    weight += w;
  }
  return weight > 0 ? off / weight : -1;
}

}  // namespace

Tonal::Tonal(const Audio& audio, const Spectra& spectra, Features& features)
    : audio_(audio),
      spectra_(spectra),
      features_(features),
      windows_(size_t(spectra.frames() + framesAWindow - 1) / framesAWindow) {
  features.chromaFrames.resize(size_t(spectra.frames()));
}

void Tonal::measure(int from, int to) {
  static const Fft fft(size);
  Fft::Work work(size);
  std::vector<double> first(bins), second(bins);
  const long length = long(audio_.size());
  // Copies a window's middle; false when it is silent.
  auto cut = [&](size_t index, std::vector<double>& into) {
    std::fill(into.begin(), into.end(), 0.0);
    if (index >= windows_.size()) return false;
    const long start = long(index) * hop - size / 2;
    bool sounds = false;
    for (long i = std::max(0L, -start); i < std::min(long(size), length - start); i++) {
      const double x =
          0.5 * (double(audio_.left[size_t(start + i)]) + double(audio_.right[size_t(start + i)]));
      sounds = sounds || x != 0;
      into[size_t(i)] = x * window()[size_t(i)];
    }
    return sounds;
  };
  for (int pair = from; pair < to; pair++) {
    const size_t index = 2 * size_t(pair);
    const bool firstSounds = cut(index, work.re), secondSounds = cut(index + 1, work.im);
    if (!firstSounds && !secondSounds) continue;
    fft.powers(work, first.data(), second.data());
    // A silent window beside a loud one would hold its rounding.
    if (firstSounds) take(windows_[index], first.data());
    if (secondSounds) take(windows_[index + 1], second.data());
  }
}

void Tonal::take(Window& w, const double* power) {
  w.largest = *std::max_element(power + 1, power + bins);
  if (!(w.largest > 0) || !std::isfinite(w.largest)) {
    w.largest = 0;
    return;
  }
  for (const Peak& p : peaksOf(power, 6, 853, 1e-5 * w.largest)) {
    if (!(p.hz > 0)) continue;
    const int note = int(std::lround(12 * math::log2(p.hz / 440))) + 69;
    w.chroma[size_t(((note % 12) + 12) % 12)] += std::sqrt(p.power);
  }
  const std::vector<Peak> peaks = peaksOf(power, 5, 852, 1e-4 * w.largest);
  for (const Peak& p : peaks) w.peakEnergy += sum(power + p.bin - 2, 5);
  w.totalEnergy = sum(power + 5, 852 - 5 + 1);
  const double deviation = deviationOf(peaks, w.largest);
  w.deviates = deviation >= 0;
  w.deviation = deviation;
}

void Tonal::summarize() {
  Features& f = features_;
  double harmonic = 0, noise = 0, deviation = 0, weight = 0;
  for (size_t i = 0; i < windows_.size(); i++) {
    const Window& w = windows_[i];
    const double most = *std::max_element(w.chroma.begin(), w.chroma.end());
    if (most > 0)
      for (size_t k = i * framesAWindow; k < std::min((i + 1) * framesAWindow, f.chromaFrames.size()); k++)
        for (size_t c = 0; c < 12; c++) f.chromaFrames[k][c] = float(w.chroma[c] / most);
    if (!(w.largest > 0) || !spectra_.active(int(i) * framesAWindow)) continue;
    for (size_t c = 0; c < 12; c++) f.chroma[c] += w.chroma[c];
    harmonic += std::min(w.peakEnergy, w.totalEnergy);
    noise += std::max(w.totalEnergy - w.peakEnergy, 0.0);
    if (!w.deviates) continue;
    const double loudness = std::sqrt(w.largest);
    deviation += 2 * loudness * w.deviation;
    weight += loudness;
  }
  if (weight > 0) f.inharmonicity = deviation / weight;
  if (harmonic > 0) f.harmonicToNoiseDb = powerDb(harmonic) - powerDb(std::max(noise, 1e-6 * harmonic));
  const double all = sum(f.chroma.data(), 12);
  if (all > 0)
    for (double& c : f.chroma) c /= all;
  const Key key = keyOf(f.chroma);
  f.key = std::string(pitchClassNames[key.tonic]) + (key.minor ? " minor" : " major");
  f.keyStrength = key.strength;
}

Key keyOf(const std::array<double, 12>& chroma) {
  static constexpr double major[12] = {6.35, 2.23, 3.48, 2.33, 4.38, 4.09,
                                       2.52, 5.19, 2.39, 3.66, 2.29, 2.88};
  static constexpr double minor[12] = {6.33, 2.68, 3.52, 5.38, 2.6, 3.53, 2.54, 4.75, 3.98, 2.69, 3.34, 3.17};
  auto correlation = [&](const double* profile, int tonic) {
    double meanA = sum(chroma.data(), 12) / 12, meanB = sum(profile, 12) / 12;
    double ab = 0, aa = 0, bb = 0;
    for (int c = 0; c < 12; c++) {
      const double a = chroma[size_t((c + tonic) % 12)] - meanA, b = profile[c] - meanB;
      ab += a * b;
      aa += a * a;
      bb += b * b;
    }
    return aa > 1e-30 ? ab / std::sqrt(aa * bb) : 0;
  };
  Key best{0, false, correlation(major, 0)};
  for (int tonic = 0; tonic < 12; tonic++)
    for (bool isMinor : {false, true}) {
      const double r = correlation(isMinor ? minor : major, tonic);
      if (r > best.strength) best = {tonic, isMinor, r};
    }
  return best;
}

}  // namespace synth::analysis
