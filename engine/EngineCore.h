// Everything an Engine owns, in one heap block: what the two threads exchange, and the audio thread's
// state. The parts of the Engine are free functions over it, one concern a file.
#pragma once

#include <atomic>
#include <limits>

#include "core/params/Targets.h"
#include "engine/Commands.h"
#include "engine/Dynamics.h"
#include "engine/Engine.h"
#include "engine/Exchange.h"
#include "engine/MacroApply.h"
#include "engine/MasterEq.h"
#include "engine/Moves.h"
#include "engine/SampleSlots.h"
#include "engine/Telemetry.h"
#include "engine/TrackState.h"
#include "engine/Voice.h"
#include "engine/fx/Send.h"

namespace synth {

inline constexpr float noValue = std::numeric_limits<float>::quiet_NaN();
inline bool hasValue(float v) { return v == v; }

// What the audio thread looks up in a Project without scanning it.
struct SongIndex {
  u32 songEnd = 0;
  u16 reserved = 0;
  u16 firstClip[limits::tracks + 1] = {};
  bool locks = false;  // whether any Note has Locks
};

struct ProjectSlot {
  Project project;
  SongIndex index;
  MasterEqDesign masterEq;
  macros::Plan plans[limits::tracks];
};

// Numbers that follow from the sample rate alone.
struct Rates {
  double rate = 48000, period = 1 / 48000.0;
  float paramSmooth = 0, modSmooth = 0, sendSmooth = 0, fastRelease = 0, clickDecay = 0, keyClick = 0;
};

struct Transport {
  bool playing = false, paused = true, stopped = true, startPinned = false, ended = false;
  bool recording = false, metronomeOn = false, countInOn = false, tickOn = false;
  bool automationPlayback = true;
  i32 step = 0, startStep = 0;
  u64 position = 0;
  double stepPhase = 0;
  i32 countInLeft = 0, countInTarget = 0;
  bool countInSilent = false, oneShotSilent = false;
  i32 oneShotCountIn = 0;
  i32 pendingMarker = -1, heldMarker = -1;
  i32 stopStep = -1, pendingStopStep = -1;
  bool loopOn = false;
  i32 loopStart = 0, loopEnd = 0;
  double endPosition = 0;
  u32 songEndCount = 0;

  double songTime() const { return double(position) + stepPhase; }
};

struct PendingNote {
  bool active = false;
  u8 track = 0;
  double time = 0;
  Note note;
};

// A sequenced Note that holds the voice of a mono Track.
struct MonoSlot {
  Note note;
  bool sounding = false;
  double endTime = 0;
};

struct KeyStamp {
  u64 stamp = 0;  // 0 is up
  u8 velocity = 0;
};

// A key held while recording.
struct HeldKey {
  bool held = false;
  i32 step = 0, maxLength = 0;
  u8 velocity = 0;
  double start = 0;
};

struct AuditionPlay {
  bool armed = false;
  Engine::Audition what;
  u8 state[64] = {};  // 0 waiting, 1 sounding, 2 done
  u64 samples = 0;
  double nextTime = 0;  // in Steps
};

struct Metronome {
  float amplitude = 0, phase = 0, frequency = 1200, lastNoise = 0;
  u32 seed = 7;
  bool tick = false;
};

// Values that stand over the Track's own, NaN for none. The order of precedence is that of the fields.
struct Overrides {
  float macro[limits::tracks][automation::trackTargets];
  u64 macroMask[limits::tracks] = {};
  float touch[limits::tracks][automation::trackTargets];
  u64 touchMask[limits::tracks] = {};
  float lock[limits::tracks][automation::trackTargets];
  u64 lockMask[limits::tracks] = {};
  float macroTouch[limits::tracks][limits::macros];
  float busTouch[automation::busTargets];
  float busLane[automation::busTargets];
};

// How a Lane's normalised value becomes its target's, where that can be told without the registry.
struct LaneScale {
  enum Kind : u8 { Linear, Logarithmic, ByRegistry } kind = ByRegistry;
  float low = 0, high = 1, octaves = 0;
};

// One bound Lane row as it reads over a segment.
struct LaneReader {
  u16 row = 0;
  int target = 0;  // a Track, Macro or bus target, or the Move's index
  LaneScale scale;
  u16 segment = 0;                         // points that lie before the position
  float input = noValue, value = noValue;  // the last reading and its value in the target's unit
  bool moving = false;
  dsp::Block block;
};

struct LaneBindings {
  LaneReader track[limits::tracks][limits::lanesPerOwner];
  u8 trackCount[limits::tracks] = {};
  LaneReader bus[3][limits::lanesPerOwner];
  u8 busCount[3] = {};
  LaneReader move[limits::masterLanes];
  u8 moveCount = 0;
  float macro[limits::tracks][limits::macros];  // Macro Lanes, normalised
  float moves[automation::performanceEffects];  // NaN for none
  bool moveBound[automation::performanceEffects] = {};
};

// A Track's values as they stand now, rebuilt when something under them changes.
struct Prepared {
  float value[automation::trackTargets] = {};
  float standing[automation::trackTargets] = {};  // without Lanes
  u64 overridden = 0;                             // targets at which a Lane is not heard
  u64 moving = 0;  // targets whose Lane moves in this segment: read `lane` for those
  const dsp::Block* lane[automation::trackTargets] = {};
  bool dirty = true, lanesDirty = true;  // `standing` is to be rebuilt; `value` is
  u32 version = 0;                       // counts the rebuilds
};

// The times of a segment's samples, by the same repeated addition as sample by sample.
struct SegmentClock {
  int n = 0;
  double phase[dsp::segment + 1];
  double songTime[dsp::segment + 1];
  double laneTime[dsp::segment + 1];  // in Lane ticks of 1/16 Step
};

// Sums and scratch of one segment.
struct SegmentMix {
  dsp::Block voiceMid[voiceCount], voiceSide[voiceCount];
  dsp::Block trackL[limits::tracks], trackR[limits::tracks];  // mid and side first, then left and right
  bool trackUsed[limits::tracks];
  fx::Stereo dry, send[2], wet, out;
};

struct Master {
  float smooth = 0;
  bool sleeping = false;
  u32 quiet = 0;
  // Limiter.
  static constexpr int ringSize = 512;
  float delayL[ringSize] = {}, delayR[ringSize] = {};
  u32 write = 0;
  int lookahead = 72;
  float gain = 1, releaseCoefficient = 0, ceiling = 0.95f;
  // The running maximum: peaks that fall, each with its place.
  float peaks[ringSize];
  u32 places[ringSize];
  u32 peakHead = 0, peakTail = 0;
  // DC blocker.
  float x1[2] = {}, y1[2] = {};
  float outputPeak[2] = {};
  MasterEq eq;
  MasterDynamics dynamics;
  dsp::Slew chain;  // how much of Send I goes into Send II
};

struct EngineCore {
  explicit EngineCore(double sampleRate);

  // ---- Exchange.
  Ring<EngineCommand, 256> commands;
  Ring<RecordedNote, 512> recorded;
  alignas(cacheLine) std::atomic<u32> flushFlags{0};
  std::atomic<u32> droppedCommands{0};
  Slots<ProjectSlot, 4> projects;
  Slots<Engine::Audition, 3> auditions;
  SampleSlots samples;
  TripleBuffer<Telemetry> telemetry;

  static constexpr u32 silenceFlag = 1, stopFlag = 2;

  // ---- Audio thread.
  Rates rates;
  const float* sine;
  u32 activeSlot = 0;
  const Project* project;
  const SongIndex* index;
  u32 droppedRecorded = 0;

  Transport transport;
  PendingNote pending[256];
  int pendingCount = 0;
  double nextEvent = 0;  // the earliest Song time at which something may be due
  MonoSlot mono[limits::tracks];
  KeyStamp keys[limits::tracks][128];
  u64 keyCounter = 0;
  HeldKey held[limits::tracks][128];
  AuditionPlay auditionPlay;
  u64 auditionWait = 0;  // samples until its next event
  Metronome click;

  Overrides overrides;
  TrackMacros macros[limits::tracks];
  Track liveTracks[limits::tracks];  // Tracks as their Macros move them, where they do
  LaneBindings lanes;
  Prepared prepared[limits::tracks];
  float busValue[automation::busTargets] = {};
  bool busDirty = true;
  bool commandsRan = false;  // since the last segment: what follows the grid is brought up to date at once
  double lfoOffset[limits::tracks][2] = {};

  Voice voices[voiceCount];
  RiftMemory rift[voiceCount];
  u64 voiceSerial = 0;
  u32 lockCounter = 0;
  TrackState tracks[limits::tracks];
  fx::Send sends[2];
  SendFx sendNow[2];  // their values as they stand, touches and Lanes included
  Moves moves;
  Master master;

  u64 sampleClock = 0, nextTelemetry = 0;
  SegmentClock clock;
  SegmentMix mix;
  Telemetry view{};  // filled and then published; kept for its counters

  // The Track as its readers see it.
  const Track& track(int t) const { return macros[t].live ? liveTracks[t] : project->tracks[t]; }
  // As the Project has it, unmoved by Macros.
  const Track& storedTrack(int t) const { return project->tracks[t]; }
  const macros::Plan& plan(int t) const { return projects[int(activeSlot)].plans[t]; }
  int trackCount() const { return project->track_count; }
};

// Whether the segment starts on the sixteen-sample grid of the sample clock, on which every control rate
// lies: anchored there and not to calls, so that the size of a call changes nothing.
inline bool onGrid(const EngineCore& core) { return (core.sampleClock & 15) == 0; }

}  // namespace synth
