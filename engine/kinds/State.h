// What the Synth kinds remember of a voice. All of it begins anew when a voice's kind changes.
#pragma once

#include "engine/dsp/Phase.h"

namespace synth {

struct OrganState {
  float click = 1, contact = 1;  // the key's contact: a knock and its noise
  dsp::Phase horn = 0, drum = 0;
  bool spins = false;  // the rotor has taken its place on the clock
};

struct SwarmState {
  float fast = 0, slow = 0;  // correlated noise
};

// A bank of band passes that share their input, four to a vector.
struct alignas(16) FormantBank {
  float a1[4] = {}, a2[4] = {}, a3[4] = {}, gain[4] = {}, ic1[4] = {}, ic2[4] = {};
};

struct MouthState {
  FormantBank formants;
  float breath = 0;
  float lowA1 = 0, lowA2 = 0, lowA3 = 0, low1 = 0, low2 = 0;  // the growl's filter
  float vowel = -1, bite = -1, step = -1;                     // what the filters stand for
};

// Six modes a channel: the left ones and the right ones in turn.
struct MachineState {
  FormantBank modes[3];
  float friction = 1, grain = 0, grainSize = 0.45f, grainRate = 0.5f, soft[2] = {}, gain = 0;
  float metal = -1, spread = -1, step = -1;  // what the modes stand for
};

struct RiftState {
  int clock = 64, length = 0;
  float tear = 0, tearTarget = 0, slow1 = 0, slow2 = 0;
  float hold = 0, held = 0, place = 0, speed = 1, mix = 0;
  dsp::Phase bend = 0;
  std::uint32_t written = 0;
};
// Its recent past and the slice that is read back; apart from the voice, since it is large.
struct RiftMemory {
  static constexpr int past = 4096, longest = 2047;
  float ring[past], slice[longest + 1];
};

struct KindState {
  dsp::Phase phaseA = 0, phaseB = 0, phaseC = 0, phaseD = 0;
  std::uint32_t seed = 1;  // its own generator: the noise around the engine is drawn in another pass
  float strike = 1;
  float last1 = 0, last2 = 0;  // FM: the modulator's last two outputs
  bool struck = false;         // PERC: the hit has begun
  OrganState organ;
  SwarmState swarm;
  MouthState mouth;
  MachineState machine;
  RiftState rift;
};

}  // namespace synth
