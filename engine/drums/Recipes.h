// The thirteen drum models over the common frame of a hit.
#pragma once

#include "engine/drums/Hit.h"

namespace synth::drums {

// What differs in the common frame: the model's own pitch, its decay against the common scale, and how far
// and how fast a full sweep falls.
struct Traits {
  float hz, decay, sweep, sweepSeconds;
  bool pitched;
};
const Traits& traitsOf(int model);

struct Recipes {
  // At the hit's start: decays and fixed filters.
  static void setUp(Hit& h);
  // Every sixteen samples: what follows the pitch ratio `r`.
  static void tick(Hit& h, float r);
  static void render(Hit& h, const Hit::Stretch& s, dsp::Block& out);

 private:
  struct Mix;
  static void kick(Hit& h, const Mix& m);
  static void snare(Hit& h, const Mix& m);
  static void clap(Hit& h, const Mix& m);
  static void hat(Hit& h, const Mix& m);
  static void tom(Hit& h, const Mix& m);
  static void rim(Hit& h, const Mix& m);
  static void cowbell(Hit& h, const Mix& m);
  static void shaker(Hit& h, const Mix& m);
  static void cymbal(Hit& h, const Mix& m);
  static void zap(Hit& h, const Mix& m);
  static void conga(Hit& h, const Mix& m);
  static void noise(Hit& h, const Mix& m);
};

}  // namespace synth::drums
