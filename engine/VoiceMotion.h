// What moves in a voice over a segment: its pitch, its envelopes and its engine values. Everything that
// approaches a target is queued and run side by side for all voices.
#pragma once

#include "engine/EngineCore.h"
#include "engine/dsp/Approach.h"

namespace synth {

// One voice's movement over a segment.
struct VoiceMotion {
  dsp::Block inc, amp, timbre, ratio;
  bool incFlat = true, timbreFlat = true;
  bool ampRuns = false, timbreRuns = false, filterRuns = false, ratioRuns = false;  // queued
  float ampBefore = 0;
  int end = dsp::segment;  // the sample at which the voice has died away
  float timbreBefore = 0, filterBefore = 0;
};

struct MotionQueue {
  static constexpr int mostPerVoice = 5;
  dsp::Approach all[voiceCount * mostPerVoice];
  int count = 0;

  void add(float& value, float target, float keep, dsp::Block* out) {
    all[count++] = {&value, target, keep, out};
  }
};

// Before the queue runs: what stands still or is in a stage of its own is done at once.
void beginMotion(const EngineCore& core, Voice& voice, VoiceMotion& motion, MotionQueue& queue);
// After it: stages that ended within the segment, the phase step of each sample. A voice that has died
// away is given back.
void finishMotion(const EngineCore& core, Voice& voice, VoiceMotion& motion);

// engine1..engine4 of each sample, with LFO offsets and the timbre envelope.
void engineValues(const EngineCore& core, Voice& voice, const VoiceMotion& motion, dsp::Block (&e)[4],
                  bool (&flat)[4]);

// Moves `value` towards `target` once a sample. True when it stood still all the while.
bool smooth(float& value, float target, float c, dsp::Block& out, int n);

}  // namespace synth
