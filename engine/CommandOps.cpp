// What each command does when the audio thread takes it.
#include <algorithm>
#include <cmath>

#include "core/sounds/Macros.h"
#include "engine/Lfo.h"
#include "engine/Render.h"
#include "engine/Resolve.h"
#include "engine/Sequencer.h"
#include "engine/Transport.h"
#include "engine/Voices.h"

namespace synth {
namespace {

// Kinds that carry on as one another; a drum or Sample voice has nothing to go on with.
bool continuesAs(int from, int to) { return from == to || (from <= RIFT && to <= RIFT); }

void dropTracksFrom(EngineCore& core, int count) {
  if (core.auditionPlay.armed && int(core.auditionPlay.what.track) >= count) stopAudition(core);
  for (int t = count; t < limits::tracks; t++) {
    for (HeldKey& key : core.held[t]) key = HeldKey{};
    for (KeyStamp& key : core.keys[t]) key = KeyStamp{};
    core.mono[t] = MonoSlot{};
  }
  for (Voice& v : core.voices)
    if (v.active && v.track >= count) abandonVoice(core, v);
}

void takeProject(EngineCore& core, u32 slot) {
  const u32 old = core.activeSlot;
  const Project* before = core.project;
  core.activeSlot = slot;
  core.project = &core.projects[int(slot)].project;
  core.index = &core.projects[int(slot)].index;
  for (int t = 0; t < limits::tracks; t++) {
    const int from = before->tracks[t].voice_mode, to = core.track(t).voice_mode;
    if (from != to && (isMonoMode(from) || isMonoMode(to))) monoCollapse(core, t);
  }
  core.projects.release(int(old));
  dropTracksFrom(core, core.trackCount());
  for (Voice& v : core.voices) {
    if (!v.active || v.track >= core.trackCount()) continue;
    const Track& track = core.track(v.track);
    if (v.isPad != isDrums(track) || (!v.isPad && !continuesAs(v.kind, track.engine))) abandonVoice(core, v);
  }
  if (!core.index->locks)
    for (int t = 0; t < limits::tracks; t++) {
      core.overrides.lockMask[t] = 0;
      for (float& v : core.overrides.lock[t]) v = noValue;
    }
  bindLanes(core);
  resetMacros(core);
  core.master.eq.install(core.projects[int(slot)].masterEq, core.sampleClock == 0);
  core.master.eq.forget();
  core.busDirty = true;
  for (Prepared& p : core.prepared) p.dirty = true;
  Transport& tr = core.transport;
  if (!validMarker(core, tr.heldMarker)) tr.heldMarker = -1;
  if (!validMarker(core, tr.pendingMarker)) tr.pendingMarker = -1;
  core.nextEvent = 0;
  core.auditionWait = 0;
}

void touchBus(EngineCore& core, int target, bool on, float value) {
  const int row = target - automation::firstBusTarget;
  core.overrides.busLane[row] = noValue;
  core.overrides.busTouch[row] = on ? param::fromNormalized(*automation::targetInfo(target), value) : noValue;
  core.busDirty = true;
}

void touch(EngineCore& core, int t, int target, bool on, float value) {
  if (t >= limits::tracks) {
    if (automation::isBusTarget(target)) touchBus(core, target, on, value);
    return;
  }
  core.prepared[t].dirty = true;
  core.macros[t].version++;  // a touch stands above a Note's Lock even where both have the same value
  if (automation::isMacroTarget(target)) {
    const int m = target - automation::firstMacroTarget;
    const Track& track = core.track(t);
    core.overrides.macroTouch[t][m] =
        on && m < track.macroCount ? macros::fromNormalized(track.macros[m].polarity, value) : noValue;
  } else if (automation::isTrackTarget(target)) {
    core.overrides.touch[t][target] = on ? targetValue(target, value) : noValue;
    const u64 bit = u64(1) << target;
    core.overrides.touchMask[t] = on ? core.overrides.touchMask[t] | bit : core.overrides.touchMask[t] & ~bit;
  }
}

// A slot is given back only when no Track names its Sample.
void retire(EngineCore& core, int slot) {
  u8 hash[32];
  if (!core.samples.hashOf(slot, hash)) return;
  for (const Track& track : core.project->tracks)
    if (std::equal(std::begin(hash), std::end(hash), track.sample_hash)) return;
  core.samples.free(slot);
}

void execute(EngineCore& core, const EngineCommand& c, bool silencing) {
  Transport& t = core.transport;
  switch (c.op) {
    case Op::Submit: takeProject(core, c.a); break;
    case Op::SetPlaying: setPlaying(core, c.a); break;
    case Op::StopPlayback: stopPlayback(core); break;
    case Op::SetRecording: setRecording(core, c.a); break;
    case Op::SetMetronome: t.metronomeOn = c.a; break;
    case Op::SetCountIn: t.countInOn = c.a; break;
    case Op::JumpTo: jumpTo(core, i32(c.a)); break;
    case Op::NoteOn:
      if (!silencing) keyDown(core, int(c.a), int(c.b), int(c.c));
      break;
    case Op::NoteOff: keyUp(core, int(c.a), int(c.b)); break;
    case Op::SetTouch: touch(core, int(c.a), int(c.b), c.c, float(c.value)); break;
    case Op::SetAutomationPlayback:
      t.automationPlayback = c.a;
      if (!t.automationPlayback) clearLanes(core);
      core.busDirty = true;
      break;
    case Op::RestorePaused: restorePaused(core, c.value); break;
    case Op::HoldMarker: holdMarker(core, i32(c.a), c.b); break;
    case Op::SetLoop:
      t.loopOn = c.a;
      t.loopStart = i32(c.b);
      t.loopEnd = i32(c.c);
      break;
    case Op::PlayFrom: playFrom(core, i32(c.a)); break;
    case Op::RetireSample: retire(core, int(c.a)); break;
    case Op::CountIn:
      t.oneShotCountIn = i32(c.a);
      t.oneShotSilent = c.b;
      break;
    case Op::SetTick: t.tickOn = c.a; break;
    case Op::StopAt: t.pendingStopStep = i32(c.a) > 0 ? std::min(i32(c.a), 0xFFFFF) : -1; break;
    case Op::Audition:
      startAudition(core, int(c.a));
      core.auditionWait = 0;
      break;
    case Op::StopAudition: stopAudition(core); break;
  }
}

}  // namespace

bool drainCommands(EngineCore& core) {
  const u32 flags = core.flushFlags.exchange(0, std::memory_order_acq_rel);
  bool any = flags != 0;
  EngineCommand command;
  for (int i = 0; i < 256 && core.commands.pop(command); i++) {
    // Events that start voices read the values as they stand.
    evaluateNow(core);
    execute(core, command, flags != 0);
    any = true;
  }
  if (flags) {
    allNotesOff(core);
    if (flags & EngineCore::stopFlag) haltTransport(core);
  }
  if (any) core.nextEvent = 0;
  return any;
}

}  // namespace synth
