// What the Engine shows of itself: a plain snapshot, published sixty times a second and after each render.
#pragma once

#include "core/Project.h"

namespace synth {

#pragma pack(push, 4)

struct VoiceView {
  u8 active, track, note, pad, kind, flags, velocity, unison;
  f32 amp, filterEnv, timbre, frequency, phase, pan, engine[4], lfo[2], age;

  static constexpr u8 liveFlag = 1, releasingFlag = 2, padFlag = 4, ghostFlag = 8;
};

struct PadView {
  u8 sounding, hits, velocity, model;  // hits counts 0..9 and starts over
  f32 level, env, pitch;
};

struct TrackView {
  f32 peakL, peakR, energy, edge, duck, gain, cutoff, engine[4];
  u32 noteSerial;
  u8 voices, lastNote, lastVelocity, flags;

  static constexpr u8 audibleFlag = 1, sleepingFlag = 2;
};

struct SendView {
  u8 type, sleeping, preset, reserved;
  f32 inPeak, outL, outR, phase[4], gate;
};

struct Telemetry {
  u64 sampleClock;   // samples rendered since construction
  double seconds;    // sampleClock / rate
  double stepPhase;  // 0..1 within the current Step
  double position;   // step + stepPhase
  u32 droppedTotal;  // commands and recorded Notes lost to full rings
  i32 step, countInLeft, countInQuarters, startStep;
  u8 playing, recording, paused, stopped;
  f32 trackPeak[16], trackLevel[16], outputPeak[2];
  f32 bpm;
  u32 songEnd, songEndCount;
  i32 pendingMarker, heldMarker, sectionStart, sectionEnd, marker;
  VoiceView voices[32];
  PadView pads[16][8];
  TrackView tracks[16];
  SendView sends[2];
  f32 compGain, limiterGain, masterGain, moves[12];
  u32 movesActive;
  f32 resolved[16][46];  // each Track target's value at this moment, in its unit
  u32 heldKeys[16][4];   // bit sets of 128 notes
  u32 scopeWrite;
  f32 scope[16][120];
  u32 reserved[4];
};

#pragma pack(pop)

static_assert(sizeof(VoiceView) == 60 && sizeof(PadView) == 16 && sizeof(TrackView) == 52 &&
              sizeof(SendView) == 36);
static_assert(sizeof(Telemetry) == 16060);

}  // namespace synth
