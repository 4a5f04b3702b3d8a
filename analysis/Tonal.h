// Pitch classes, key, and how harmonic a sound is, from a transform four times as long as the frames'.
#pragma once

#include <vector>

#include "analysis/Spectra.h"

namespace synth::analysis {

class Tonal {
 public:
  // Makes room in `features` for its chroma frames.
  Tonal(const Audio& audio, const Spectra& spectra, Features& features);

  // Windows come in pairs, each centred on every fourth frame. Pairs from..to-1 may be measured side by
  // side; all frames must have been measured before `summarize`.
  int pairs() const { return int(windows_.size() + 1) / 2; }
  void measure(int from, int to);
  void summarize();

 private:
  struct Window {
    double largest = 0;
    std::array<double, 12> chroma{};
    double peakEnergy = 0, totalEnergy = 0, deviation = 0;
    bool deviates = false;
  };
  void take(Window& window, const double* power);

  const Audio& audio_;
  const Spectra& spectra_;
  Features& features_;
  std::vector<Window> windows_;
};

struct Key {
  int tonic = 0;  // a pitch class
  bool minor = false;
  double strength = 0;
};
// The key whose profile (Krumhansl and Kessler, 1982) correlates best with the chroma; C major, 0 without.
Key keyOf(const std::array<double, 12>& chroma);

}  // namespace synth::analysis
