// Loudness after ITU-R BS.1770-4 and loudness range after EBU Tech 3342.
#pragma once

#include "analysis/Audio.h"

namespace synth::analysis {

struct Loudness {
  double lufs = -70;      // gated, integrated
  double lraLu = 0;       // loudness range
  double monoLossDb = 0;  // what folding to mono takes, floored at -60
};

// The weighting of one channel at 48 kHz, sample by sample.
class KWeighting {
 public:
  double run(double x);
  // Ends a tail before it becomes too small for the processor to be quick with.
  void settle();

 private:
  // In direct form 1; b and a of a filter with a0 = 1.
  struct Biquad {
    double b0, b1, b2, a1, a2;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double run(double x);
    void settle();
  };
  Biquad shelf_{1.53512485958697, -2.69169619938640, 1.19839281085285, -1.69065929318241, 0.73248077421585};
  Biquad highPass_{1, -2, 1, -1.99004745483398, 0.99007225036621};
};

// Measures stereo at 48 kHz that arrives piece by piece; it keeps two numbers a tenth of a second.
class LoudnessMeter {
 public:
  void add(const float* left, const float* right, std::size_t frames);
  Loudness loudness() const;
  double lufs() const;  // the integrated loudness alone; -70 under 0.4 s

 private:
  KWeighting left_, right_;
  double both_ = 0, middle_ = 0;  // of the tenth of a second that has begun
  std::size_t inHop_ = 0;
  // Energies of whole tenths: of both channels together, and of their mean counted as both.
  std::vector<double> stereo_, mono_;
};

Loudness loudnessOf(const Audio& audio);

// The integrated loudness alone; -70 under 0.4 s.
double integratedLufs(const Audio& audio);

}  // namespace synth::analysis
