// The contract of a Synth kind: a function that renders a voice's raw signal over a segment.
#pragma once

#include "core/Project.h"
#include "engine/Voice.h"
#include "engine/dsp/Block.h"

namespace synth::kinds {

// What a kind is given. `inc` is the phase step in cycles a sample, at most 0.45; `e` are engine1..engine4
// after envelopes, Locks and LFOs.
struct Run {
  int n = 0;
  float rate = 48000;
  const float* sine = nullptr;
  const dsp::Block* inc = nullptr;
  bool incFlat = true;
  const dsp::Block* e = nullptr;  // four
  bool eFlat[4] = {};
  float soft = 1;  // below 1 a soft note loses its harmonics
  const Track* track = nullptr;
  u64 clock = 0;   // the sample clock at the first sample
  u64 serial = 0;  // of the voice
  int note = 60;
  float decay = 0.3f;  // the voice's DECAY, in seconds
  drums::Hit* hit = nullptr;
  RiftMemory* rift = nullptr;
  // Written by the kind; `phase` is that of the fundamental before each sample's step.
  dsp::Block* mid = nullptr;
  dsp::Block* side = nullptr;
  dsp::PhaseBlock* phase = nullptr;
  bool stereo = false;  // whether `side` was written; it reads as silence otherwise
};

using Render = void (*)(KindState& state, Run& run);

// The renderer of a kind, or null where it makes no sound of its own.
Render rendererOf(int kind);
// The kind's level in the mix.
float outputGain(int kind);
// Whether soft notes blend towards a sine.
bool softens(int kind);

void renderAnalog(KindState& state, Run& run);
void renderFm(KindState& state, Run& run);
void renderTine(KindState& state, Run& run);
void renderOrgan(KindState& state, Run& run);
void renderWavetable(KindState& state, Run& run);
void renderSwarm(KindState& state, Run& run);
void renderVoice(KindState& state, Run& run);
void renderMachine(KindState& state, Run& run);
void renderRift(KindState& state, Run& run);
void renderPerc(KindState& state, Run& run);

// Builds what the kinds share, so that no render has to.
void prepare();

// 1 for low notes, 0 near the Nyquist frequency: how much modulation a phase step still bears.
inline float modulationRoom(float inc) {
  const float room = (0.42f - inc) / (8 * inc + 0.06f);
  return room < 0 ? 0 : room > 1 ? 1 : room;
}
inline dsp::f4 modulationRoom(dsp::f4 inc) {
  return dsp::clamp((dsp::splat(0.42f) - inc) / (dsp::splat(8) * inc + dsp::splat(0.06f)), 0, 1);
}

}  // namespace synth::kinds
