// The bridge from a knob on the panel to what it moves: a Lane target, a Lock, or the value itself.
#pragma once

#include <span>

#include "core/edit/Result.h"
#include "core/params/Registry.h"

namespace synth::knobs {

// Knob codes: 1000 and up are a row's id plus 1000, 80..95 the Macros, 60..63 the Engine's four, the others a
// fixed table.
inline constexpr int firstParameter = 1000, firstMacro = 80, firstEngine = 60;

// The row behind a code, or null.
const param::Info* infoOf(int code);
// The Lane target of a knob on a Track 0..15 or a bus row 16..18, or -1.
int target(const Project& project, int code, int track);

// A target's value as a Lane holds it, and back. PITCH is in semitones.
float toLane(int target, float value);
float fromLane(int target, float normalized);

// The live value of a knob; 0 for one without. A Macro's knob turns from 0 to 1 as its Lanes and Locks do, a
// bipolar one's centre being 0.5.
float trackValue(const Project& project, int code, int track, int pad);
bool setTrackValue(Project& project, int code, int track, int pad, float value);

// A recorded gesture becomes a line in the knob's Lane.
edit::Result record(Project& project, int code, int track, double t0, double t1, double v0, double v1);
edit::Result clearAutomation(Project& project, int code, int track);
// The Lane row of the knob, or -1.
int automationLane(const Project& project, int code, int track);
// Whether a Lane that is switched on and drawn moves the knob.
bool lane(const Project& project, int code, int track);

// ---- Locks.

enum LockKind : int { NoLock, PitchLock, NormalizedLock, ParameterLock };
LockKind lockKind(const Project& project, int code, int track);
int lockTarget(const Project& project, int code, int track);
// 0..1 as a Lock stores it; a pitch Lock spans -24..24 semitones.
float lockNormalized(LockKind kind, int target, float value);
float lockValueOf(LockKind kind, int target, float normalized);

// A selected Note.
struct NoteAt {
  int pattern = 0, step = 0, pitch = 0;
};
// What the knob shows for the selected Notes: their values' range, when any of them is locked.
struct LockView {
  bool any = false, all = false;
  float lowest = 0, highest = 0;
};
LockView lockView(const Project& project, int code, int track, std::span<const NoteAt> notes);
// Sets a Lock on every selected Note, measured from `before`, so that a drag is one step of Undo.
edit::Result setLocks(Project& project, const Project& before, int code, int track,
                      std::span<const NoteAt> notes, float value);
edit::Result clearLocks(Project& project, int code, int track, std::span<const NoteAt> notes);
// Whether any Note of the Track locks the knob's target, and the way to clear all those Locks.
bool anyLocked(const Project& project, int code, int track);
edit::Result clearAllLocks(Project& project, int code, int track);
// Whether any Note of the Pattern locks the knob's target.
bool patternLocked(const Project& project, int code, int track, int pattern);

// ---- Recording a knob over a loop.

struct Transport {
  bool playing = false;
  double position = 0, loopStart = 0;  // in Steps
};
// Whether the Song has begun a pass anew between two looks at it.
bool cycleStart(const Transport& last, const Transport& now);

class Recorder {
 public:
  enum Event : int { Nothing, Start, Stop, Restart };
  Event advance(bool recording, bool held, const Transport& transport);
  bool armed() const { return armed_; }

 private:
  bool armed_ = false;
  Transport last_;
};

// The light on a knob with a Lane: a quick rise at each bar and a slow fall to just above half.
double pulse(double beats);

}  // namespace synth::knobs
