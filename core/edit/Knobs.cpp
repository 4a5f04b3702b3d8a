#include "core/edit/Knobs.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "core/edit/LaneEdit.h"
#include "core/edit/LockEdit.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"

namespace synth::knobs {
namespace {

using edit::Result;
using namespace automation;

struct Knob {
  int code;
  const char* key;
  int target;    // its Lane target, or -1
  bool melodic;  // the target is there on melodic Tracks alone
};
// The knobs of the panel that have a code of their own.
constexpr Knob knobTable[] = {
    {1, "pad_pitch", -1, false},
    {2, "pad_decay", -1, false},
    {3, "pad_tone", -1, false},
    {4, "pad_level", -1, false},
    {11, "cutoff", CUTOFF, true},
    {12, "resonance", RESONANCE, true},
    {13, "attack", ATTACK, true},
    {14, "decay", DECAY, true},
    {15, "sustain", -1, true},
    {16, "release", RELEASE, true},
    {17, "filter_env", FILTER_ENV, true},
    {18, "lfo_rate", LFO_RATE, true},
    {19, "lfo_depth", LFO_DEPTH, true},
    {40, "level", LEVEL, false},
    {41, "pan", PAN, false},
    {42, "send_1", SEND_1, false},
    {43, "send_2", SEND_2, false},
    {70, "voice_mode", -1, true},
    {71, "velocity_brightness", -1, true},
    {72, "timbre_amount", -1, true},
    {73, "timbre_attack", -1, true},
    {74, "timbre_decay", -1, true},
    {75, "glide", GLIDE, true},
    {76, "timbre_sustain", -1, true},
    {77, "timbre_release", -1, true},
    {60, "engine1", ENGINE_1, true},
    {61, "engine2", ENGINE_2, true},
    {62, "engine3", ENGINE_3, true},
    {63, "engine4", ENGINE_4, true},
};

const Knob* knobOf(int code) {
  for (const Knob& k : knobTable)
    if (k.code == code) return &k;
  return nullptr;
}

int macroOf(int code) {
  return code >= firstMacro && code < firstMacro + limits::macros ? code - firstMacro : -1;
}
bool hasMacro(const Project& p, int track, int macro) {
  return isTrack(track) && macro < p.tracks[track].macroCount;
}

int parameterTarget(const Project& p, const param::Info& info, int track) {
  if (info.scope != param::ScopeTrack) return -1;
  const int found = targetOf(info);
  return found >= 0 && laneable(found, isDrums(p.tracks[track])) ? found : -1;
}

}  // namespace

const param::Info* infoOf(int code) {
  if (code >= firstParameter) return param::find(u16(std::min(code - firstParameter, 65535)));
  const Knob* knob = knobOf(code);
  return knob ? param::find(knob->key) : nullptr;
}

int target(const Project& p, int code, int track) {
  if (track >= limits::tracks && track < limits::tracks + 3) {
    const param::Info* info = infoOf(code);
    return info ? busTarget(p, track - limits::tracks, *info) : -1;
  }
  if (!isTrack(track)) return -1;
  if (const int macro = macroOf(code); macro >= 0)
    return macro < p.tracks[track].macroCount ? firstMacroTarget + macro : -1;
  if (code >= firstParameter) return infoOf(code) ? parameterTarget(p, *infoOf(code), track) : -1;
  const Knob* knob = knobOf(code);
  return knob && (!knob->melodic || !isDrums(p.tracks[track])) ? knob->target : -1;
}

float toLane(int target, float value) {
  if (!std::isfinite(value)) value = 0;
  if (target == PITCH) return std::clamp(value / pitchLaneRange + 0.5f, 0.0f, 1.0f);
  const param::Info* info = targetInfo(target);
  if (isMacroTarget(target) || !info || (target >= ENGINE_1 && target <= ENGINE_4))
    return std::clamp(value, 0.0f, 1.0f);
  return param::toNormalized(*info, std::clamp(value, info->min, info->max));
}

float fromLane(int target, float v) {
  if (!std::isfinite(v)) v = 0;
  if (target == PITCH) return (v - 0.5f) * pitchLaneRange;
  const param::Info* info = targetInfo(target);
  if (isMacroTarget(target) || !info || (target >= ENGINE_1 && target <= ENGINE_4))
    return std::clamp(v, 0.0f, 1.0f);
  return param::fromNormalized(*info, v);
}

float trackValue(const Project& p, int code, int track, int pad) {
  const int macro = macroOf(code);
  if (macro >= 0)
    return hasMacro(p, track, macro) ? macros::toNormalized(p.tracks[track].macros[macro].polarity,
                                                            p.tracks[track].macros[macro].value)
                                     : 0;
  const param::Info* info = infoOf(code);
  if (!info || (info->scope != param::ScopeProject && !isTrack(track))) return 0;
  return info->get(p, std::max(track, 0), std::clamp(pad, 0, limits::pads - 1));
}

bool setTrackValue(Project& p, int code, int track, int pad, float value) {
  if (!std::isfinite(value)) return false;
  if (const int macro = macroOf(code); macro >= 0) {
    if (!hasMacro(p, track, macro)) return false;
    MacroRec& m = p.tracks[track].macros[macro];
    m.value = macros::fromNormalized(m.polarity, value);
    return true;
  }
  const param::Info* info = infoOf(code);
  if (!info || (info->scope != param::ScopeProject && !isTrack(track))) return false;
  if (info->whole()) value = std::round(value);
  info->set(std::clamp(value, info->min, info->max), p, std::max(track, 0),
            std::clamp(pad, 0, limits::pads - 1));
  return true;
}

// ---- Lanes.

Result record(Project& p, int code, int track, double t0, double t1, double v0, double v1) {
  const Result invalid = Result::failed("Invalid recording segment");
  if (!std::isfinite(t0) || !std::isfinite(t1) || !std::isfinite(v0) || !std::isfinite(v1) || t0 < 0 ||
      t0 > t1)
    return invalid;
  const int lane = target(p, code, track);
  if (lane < 0) return Result::failed("No such lane");
  const Result drawn = workspace::drawLane(p, track, lane, t0, v0, t1, v1);
  return std::string_view(drawn.message) == "Invalid lane point" ? invalid : drawn;
}

Result clearAutomation(Project& p, int code, int track) {
  return workspace::clearLane(p, track, target(p, code, track));
}

int automationLane(const Project& p, int code, int track) {
  return workspace::laneFor(p, track, target(p, code, track));
}

bool lane(const Project& p, int code, int track) {
  const int row = automationLane(p, code, track);
  return row >= 0 && p.lanes[row].enabled && p.lanes[row].count;
}

// ---- Locks.

LockKind lockKind(const Project& p, int code, int track) {
  if (!isTrack(track)) return NoLock;
  if (isDrums(p.tracks[track])) {
    const param::Info* info = infoOf(code);
    const std::string_view key = info ? info->key : "";
    return key == "pad_pitch" ? PitchLock : key == "pad_decay" ? NormalizedLock : NoLock;
  }
  const int t = target(p, code, track);
  if (t < 0 || !lockable(t, false)) return NoLock;
  return isMacroTarget(t) || (t >= ENGINE_1 && t <= ENGINE_4) ? NormalizedLock : ParameterLock;
}

int lockTarget(const Project& p, int code, int track) {
  const LockKind kind = lockKind(p, code, track);
  if (kind == NoLock) return -1;
  if (!isDrums(p.tracks[track])) return target(p, code, track);
  return kind == PitchLock ? PITCH : DECAY;
}

float lockNormalized(LockKind kind, int target, float value) {
  if (!std::isfinite(value)) value = 0;
  switch (kind) {
    case PitchLock: return std::clamp((std::round(value) + 24) / 48, 0.0f, 1.0f);
    case NormalizedLock: return std::clamp(value, 0.0f, 1.0f);
    case ParameterLock: return toLane(target, value);
    default: return 0;
  }
}

float lockValueOf(LockKind kind, int target, float normalized) {
  switch (kind) {
    case PitchLock: return std::round(normalized * 48 - 24);
    case NormalizedLock: return normalized;
    case ParameterLock: return fromLane(target, normalized);
    default: return 0;
  }
}

LockView lockView(const Project& p, int code, int track, std::span<const NoteAt> notes) {
  LockView view;
  const LockKind kind = lockKind(p, code, track);
  const int at = lockTarget(p, code, track);
  view.all = kind != NoLock && !notes.empty();
  for (const NoteAt& n : notes) {
    const double stored =
        kind == NoLock ? NAN : workspace::lockValue(p, track, n.pattern, n.step, n.pitch, at);
    if (std::isnan(stored)) {
      view.all = false;
      continue;
    }
    const float value = lockValueOf(kind, at, float(stored));
    view.lowest = view.any ? std::min(view.lowest, value) : value;
    view.highest = view.any ? std::max(view.highest, value) : value;
    view.any = true;
  }
  return view;
}

Result setLocks(Project& p, const Project& before, int code, int track, std::span<const NoteAt> notes,
                float value) {
  const LockKind kind = lockKind(p, code, track);
  if (kind == NoLock) return Result::failed("This knob cannot lock notes");
  if (notes.empty()) return Result::failed("Select notes to lock");
  if (!std::isfinite(value)) return Result::failed("Invalid lock value");
  const int at = lockTarget(p, code, track);
  // All of them or none: what is refused on one Note is taken back on the others.
  auto work = copyOf(before);
  bool changed = false;
  for (const NoteAt& n : notes) {
    const Result one = workspace::setLock(*work, track, n.pattern, n.step, n.pitch, at,
                                          double(lockNormalized(kind, at, value)));
    if (!one) return one;
    changed |= one.changed;
  }
  changed |= !sameBytes(*work, p);
  if (!changed) return Result::nothing();
  std::memcpy(static_cast<void*>(&p), work.get(), sizeof p);
  return Result::done();
}

Result clearLocks(Project& p, int code, int track, std::span<const NoteAt> notes) {
  if (lockKind(p, code, track) == NoLock) return Result::failed("This knob cannot lock notes");
  const int at = lockTarget(p, code, track);
  bool changed = false;
  for (const NoteAt& n : notes) changed |= workspace::clearLock(p, track, n.pattern, n.step, n.pitch, at);
  return changed ? Result::done() : Result::nothing();
}

namespace {

bool locks(const NoteRec& note, int target) {
  return std::any_of(std::begin(note.locks), std::end(note.locks),
                     [&](const LockRec& lock) { return lock.target == target + 1; });
}

}  // namespace

bool anyLocked(const Project& p, int code, int track) {
  const int at = lockTarget(p, code, track);
  return at >= 0 && std::any_of(p.notes, p.notes + p.noteCount,
                                [&](const NoteRec& n) { return n.track == track && locks(n, at); });
}

Result clearAllLocks(Project& p, int code, int track) {
  const int at = lockTarget(p, code, track);
  if (at < 0) return Result::failed("This knob cannot lock notes");
  bool changed = false;
  for (int i = 0; i < p.noteCount; i++) {
    NoteRec& note = p.notes[i];
    if (note.track != track || !locks(note, at)) continue;
    changed = true;
    // The others close up, so that the first empty Lock ends the list.
    const auto kept = std::remove_if(std::begin(note.locks), std::end(note.locks),
                                     [&](const LockRec& lock) { return lock.target == at + 1; });
    std::fill(kept, std::end(note.locks), LockRec{});
  }
  return changed ? Result::done() : Result::failed("This knob has no lock");
}

bool patternLocked(const Project& p, int code, int track, int pattern) {
  const int at = lockTarget(p, code, track);
  if (at < 0) return false;
  const auto notes = patternNotes(p, track, pattern);
  return std::any_of(notes.begin(), notes.end(), [&](const NoteRec& n) { return locks(n, at); });
}

// ---- Recording.

bool cycleStart(const Transport& last, const Transport& now) {
  if (!now.playing) return false;
  if (last.playing) return now.position + 1e-9 < last.position;
  return now.position >= now.loopStart && now.position < now.loopStart + 1;
}

Recorder::Event Recorder::advance(bool recording, bool held, const Transport& now) {
  Event event = Nothing;
  if (!armed_ && recording && now.playing) {
    armed_ = true;
    event = Start;
  } else if (armed_ && (!recording || !now.playing)) {
    armed_ = false;
    event = Stop;
  } else if (armed_ && !held && cycleStart(last_, now)) {
    event = Restart;
  }
  last_ = now;
  return event;
}

double pulse(double beats) {
  const double bars = beats / 4, x = bars - std::floor(bars);
  if (x < 0.05) return (x * 0.9816843611112658 / 0.05 + 0.01831563888873418) * 0.5 + 0.5;
  return math::exp((x - 0.05) * -4 / 0.95) * 0.5 + 0.5;
}

}  // namespace synth::knobs
