// One sounding Note on one Track, and the pool of 32 that there are.
#pragma once

#include "core/params/Targets.h"
#include "engine/VoiceCoefficients.h"
#include "engine/drums/Hit.h"
#include "engine/dsp/LaneFilters.h"
#include "engine/dsp/Phase.h"
#include "engine/kinds/State.h"

namespace synth {

enum class Stage : u8 { Idle, Attack, Decay, Sustain, Release };

struct Envelope {
  float level = 0;
  Stage stage = Stage::Attack;
};

struct Voice {
  // Identity.
  bool active = false, live = false, releasing = false, stolen = false, isPad = false, gatePassed = false;
  bool endsEarly = false;  // by All notes off: gone as soon as it is very quiet
  u8 track = 0, note = 0, pad = 0, kind = 0;
  u64 serial = 0, sampleStart = 0;
  double gateEnd = 0;  // in Song time
  int leader = -1;     // a unison ghost follows this voice while its serial is leaderSerial
  u64 leaderSerial = 0;

  // Pitch.
  float frequency = 440;  // of the note, gliding
  double glideFrequency = 440, glideRatio = 1, targetFrequency = 440;
  int glideLeft = 0;
  float pitchRatio = 1, pitchTarget = 1;
  float pitchEnv = 0, pitchEnvTime = 1;
  float detuneRatio = 1, unisonPan = 0, unisonGain = 1;
  float keyHz = 0, keyOctaves = 0;  // octaves from middle C, and of which frequency

  // Level.
  float velocity = 1, targetVelocity = 1;
  float amp = 0;
  Stage ampStage = Stage::Attack;
  float contour = 0;  // attack-decay curve of the filter; negative once it falls
  Envelope timbre, filterEnv;
  float engine[4] = {};  // smoothed engine1..engine4

  // What the control tick leaves for the samples that follow.
  struct Control {
    float attackStep = 1, dCoef = 0, rCoef = 0, aDecay = 0, contourStep = 1, sustain = 1;
    float timbreAttack = 1, timbreDecay = 0, timbreRelease = 0, timbreSustain = 0, timbreAmount = 0;
    float filterAttack = 1, filterDecay = 0, filterRelease = 0, filterSustain = 0;
    int timbreTarget = 0;
    float engineTarget[4] = {}, engineOffset[4] = {};
    float soft = 1, noise = 0, velocityAmp = 1;
    float lfoGain = 1, lfoPan = 0;
    int filterType = 0;
    bool ownFilterEnv = false;
  } control;
  VoiceCoefficients coefficients;
  dsp::LadderSetting ladder;
  dsp::SvfSetting svf;
  float svfDrive = 0;
  float cutoff = 20000;
  float lfoGain1 = 1, lfoGain2 = 1, lfoPan1 = 0, lfoPan2 = 0;  // two one-poles each
  float lfoValue[2] = {};
  double lfoOffsetAtStart[2] = {};

  // Filters, mid and side.
  dsp::LadderState ladderState[2];
  dsp::SvfState svfState[2];

  // Sources around the engine.
  u32 seed = 1, clickSeed = 1;  // of their own, since they are drawn in different passes
  dsp::Phase subPhase = 0, clickPhase = 0;
  float clickLevel = 0;
  KindState state;

  // A Pad's hit, or PERC's.
  drums::Hit hit;
  i32 hitGateLeft = -1;  // samples until the Pad's gate ends it, -1 for none
  bool hitHigh = false, hitLow = false;
  dsp::Svf hitFilter[2];
  float hitLevel = 0, hitPan = 0;  // read live, at each tick

  // Locks of the Note: its own values by target, and values of Macros.
  u64 lockMask = 0;
  float lockValues[automation::trackTargets] = {};
  u16 macroLockMask = 0;
  float macroLocks[limits::macros] = {};
  // What Macros make of the targets for this voice alone, where it has Locks.
  u64 macroMask = 0;
  float macroValues[automation::trackTargets] = {};
  u32 macroVersion = ~0u, macroSerial = 0;
  u32 lockCounter = 0;

  // Declick: a voice that is cut short fades its last output over 64 samples.
  int fadeLeft = 0;
  float fadeMid = 0, fadeSide = 0, lastMid = 0, lastSide = 0;

  bool ghost() const { return leader >= 0; }
  bool sounding() const { return active && !releasing; }
};

inline constexpr int voiceCount = 32;
inline constexpr int declickSamples = 64;

}  // namespace synth
