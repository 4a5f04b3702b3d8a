// What Locks and Lanes can move, by number: 46 values of a Track, 98 of the buses, sixteen Macros, and the
// twelve Performance effects of the master rows. Stored bytes are the number plus 1, 0 meaning none.
#pragma once

#include <string>
#include <string_view>

#include "core/params/Registry.h"

namespace synth::automation {

// The Track targets, in their stored order. Those the Engine asks for by name have a name here.
enum Target : int {
  ENGINE_1,
  ENGINE_2,
  ENGINE_3,
  ENGINE_4,
  CUTOFF,
  RESONANCE,
  LEVEL,
  PAN,
  SEND_1,
  SEND_2,
  FILTER_ENV,
  PITCH,
  DRIVE,
  MOD_MIX,
  LFO_DEPTH,
  LFO2_DEPTH,
  HIGHPASS,
  DECAY,
  WIDTH,
  GLIDE,
  LFO_RATE,
  LFO2_RATE,
  MOD_RATE,
  MOD_DEPTH,
  MOD_FEEDBACK,
  PITCH_ENV,
  PITCH_ENV_TIME,
  ATTACK,
  RELEASE,
  LOWPASS,
  NOISE_MIX,
  CRUSH_BITS,
  CRUSH_RATE,
  EQ_LOW,
  EQ_MID,
  EQ_MID_FREQ,
  EQ_HIGH,
  MOD_TONE,
  TRIM,
  MONO_BELOW,
  DUCK_AMOUNT,
  DUCK_RELEASE,
  ROOM_SIZE,
  ROOM_DECAY,
  ROOM_DAMP,
  ROOM_MIX,
};

inline constexpr int trackTargets = 46;
inline constexpr int firstBusTarget = 64, busTargets = 98, lastBusTarget = firstBusTarget + busTargets - 1;
inline constexpr int firstMacroTarget = 176, lastMacroTarget = 191;
inline constexpr int performanceEffects = 12;
inline constexpr float pitchLaneRange = 48;  // semitones from one end of a PITCH Lane to the other

inline bool isTrackTarget(int target) { return target >= 0 && target < trackTargets; }
inline bool isBusTarget(int target) { return target >= firstBusTarget && target <= lastBusTarget; }
inline bool isMacroTarget(int target) { return target >= firstMacroTarget && target <= lastMacroTarget; }

// The name of a target: "CUTOFF", "FX1_RETURN", "MACRO_1"; "" for a number that is none.
std::string targetName(int target);
// The row of a target; null for PITCH, Macros and numbers that are none.
const param::Info* targetInfo(int target);
// The target of a row, or -1.
int targetOf(const param::Info& info);
// The Track or Macro target of a name in any case, by its name or its row's key; -1 for none.
int trackTargetNamed(std::string_view name);
// The bus target of a name in any case on that bus, with or without the Send's prefix; -1 for none.
int busTargetNamed(int bus, std::string_view name);
// The bus that a bus target belongs to.
int busOf(int target);

// Whether a Note may pin the target, on a melodic Track or on a kit.
bool lockable(int target, bool drums);
// Whether a Track of that kind may move the target by a Lane.
bool laneable(int target, bool drums);

// What the user reads: "CUTOFF", the Engine's own word or "ENGINE 1", a Macro's name or "MACRO 1".
std::string targetLabel(const Project& project, int track, int target);
// A bus value's label without its effect.
std::string busLabel(const param::Info& info);
// Whether the bus has the value now: the Master its chain, a Send its type, return and loaded effect.
bool busHolds(const Project& project, int bus, const param::Info& info);
// The target of a value that the bus holds, or -1.
int busTarget(const Project& project, int bus, const param::Info& info);
// "SEND I · DELAY", "SEND II · HALL" or "MASTER".
std::string busName(const Project& project, int bus);

// LOWPASS .. CRUSH; "" outside 0..11.
const char* performanceEffectName(int index);
int performanceEffectNamed(std::string_view name);
const char* performanceEffectMeaning(int index);
// The value 0..1 of a master Lane when no point rules.
float masterBaseline(int index);

// The 0..1 value a Lane shows with no points.
float targetBaseline(const Project& project, int track, int target);
// An Engine parameter 0..3 as a Lane shows it.
float baseline(const Track& track, int index);

}  // namespace synth::automation
