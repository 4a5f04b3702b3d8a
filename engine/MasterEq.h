// The Master's ten-band equalizer: its design, and how one design goes over into the next.
#pragma once

#include "core/Project.h"
#include "engine/dsp/Block.h"

namespace synth {

inline constexpr int masterBands = 10;

struct MasterEqDesign {
  // b0, b1, b2, a1, a2 of each band, in double precision: inner gains reach 36 dB.
  double band[masterBands][5] = {{1}, {1}, {1}, {1}, {1}, {1}, {1}, {1}, {1}, {1}};
  bool flat = true;
  double gain[masterBands] = {};  // of the bands' own filters, in dB
};

// Ten peaking filters whose sum meets the gains (dB) at 31.25 Hz * 2^band: neighbours overlap, so the
// bands' own gains are solved for (after Valimaki and Reiss, All About Audio Equalization, 2016).
MasterEqDesign designMasterEq(const float (&gains)[masterBands], double rate);
// The frequency of a band, kept to where a filter at that rate can stand.
double masterBandHz(int band, double rate);

class MasterEq {
 public:
  // Takes a design at once, or goes over to it in 1024 samples.
  void install(const MasterEqDesign& design, bool reset);
  bool active() const { return active_; }
  void process(dsp::Block& left, dsp::Block& right, int n, bool tick);

  // The gains that the last design of a moved value was made for.
  float remembered[masterBands];
  void forget() {
    for (float& g : remembered) g = 1e9f;
  }

 private:
  typedef double d2 __attribute__((vector_size(16)));  // left and right

  MasterEqDesign target_;
  double now_[masterBands][5] = {}, step_[masterBands][5] = {};
  d2 z1_[masterBands] = {}, z2_[masterBands] = {};
  int fading_ = 0;
  bool active_ = false;
};

}  // namespace synth
