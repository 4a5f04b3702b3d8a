// The short-time transform of the middle and the side, and what each frame alone tells: every measure that
// needs a whole spectrum is taken here, while it is at hand.
#pragma once

#include <array>
#include <vector>

#include "analysis/Features.h"

namespace synth::analysis {

struct FrameMeasures {
  double energy;  // of the middle, over bins 1..1024
  std::array<double, bandCount> bands;
  std::array<double, thirdOctaveCount> thirdOctaves;
  std::array<double, 3> mid, side;  // CoarseBands
  double centroidHz, centroidHighHz, spreadHz, rolloffHz, flatness;
  std::array<double, 13> mfcc;
};

class Spectra {
 public:
  // Makes room in `features` for its arrays of a value a frame.
  Spectra(const Audio& audio, Features& features);

  int frames() const { return int(measures_.size()); }
  // Measures frames from..to-1; ranges may be measured side by side.
  void measure(int from, int to);

  const FrameMeasures& operator[](int frame) const { return measures_[size_t(frame)]; }
  // Above both 1e-12 and a millionth of the loudest frame. Asks for all frames to be measured.
  bool active(int frame) const { return measures_[size_t(frame)].energy > floor_; }

  // Puts together what the frames tell of the whole.
  void summarize();

 private:
  void take(int frame, const double* mid, const double* side, double* amplitude);

  const Audio& audio_;
  Features& features_;
  std::vector<FrameMeasures> measures_;
  double floor_ = 0;
};

}  // namespace synth::analysis
