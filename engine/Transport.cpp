#include "engine/Transport.h"

#include <algorithm>
#include <cmath>

#include "engine/Lfo.h"
#include "engine/Metronome.h"
#include "engine/Sequencer.h"
#include "engine/VoicePool.h"
#include "engine/Voices.h"

namespace synth {
namespace {

constexpr double stepOver = 0.9999999999;
constexpr i32 countInSteps = 16;
constexpr i32 lastStep = 0xFFFFE;

// Back to the start Step, standing still.
void rewind(EngineCore& core) {
  Transport& t = core.transport;
  t.step = t.startStep;
  t.stepPhase = 0;
  t.position = u64(std::max(t.startStep, 0));
  t.countInLeft = 0;
  t.pendingMarker = -1;
  lfo::resetOffsets(core);
}

void stopByItself(EngineCore& core) {
  Transport& t = core.transport;
  t.playing = false;
  t.paused = t.stopped = true;
  t.stopStep = -1;
  allNotesOff(core);
  rewind(core);
}

void moveIntoRange(EngineCore& core) {
  Transport& t = core.transport;
  if (validMarker(core, t.heldMarker)) {
    i32 start, end;
    sectionAround(core, i32(core.project->markers[t.heldMarker].step), start, end);
    if (t.step < start || t.step >= end) t.step = start;
  } else if (t.loopOn && t.loopEnd > t.loopStart) {
    if (t.step < t.loopStart || t.step >= t.loopEnd) t.step = t.loopStart;
  } else if (t.step >= std::max<i32>(i32(core.index->songEnd), 16)) {
    t.step = 0;
  }
}

void beginCountIn(EngineCore& core, i32 steps, bool silent) {
  Transport& t = core.transport;
  t.countInLeft = steps;
  t.countInTarget = t.step;
  t.countInSilent = silent;
  if (!silent) armClick(core, (steps & 15) == 0);
}

}  // namespace

double stepSamples(const EngineCore& core) {
  const Transport& t = core.transport;
  const i32 step = t.countInLeft ? 16 - t.countInLeft : t.step;
  const double straight = core.rates.rate * 60 / core.project->bpm / 4;
  return straight * 2 * (step % 2 ? 1 - double(core.project->swing) : double(core.project->swing));
}

void passStepBoundary(EngineCore& core) {
  Transport& t = core.transport;
  if (!t.playing || t.stepPhase < stepOver) return;
  t.stepPhase = std::max(t.stepPhase - 1, 0.0);
  if (t.countInLeft) {
    t.countInLeft--;
    if (t.countInLeft > 0) {
      if (t.countInLeft % 4 == 0 && !t.countInSilent) armClick(core, t.countInLeft % 16 == 0);
      return;
    }
    t.step = t.countInTarget;
    t.position = u64(t.countInTarget);
    stepTrigger(core, true);
    return;
  }
  if (t.stopStep > 0 && t.stopStep <= t.step + 1) {
    t.stopStep = -1;
    stopByItself(core);
    return;
  }
  t.position++;
  bool wrapped = false;
  const i32 next = nextStep(core, wrapped);
  if (next < 0) {
    t.ended = true;
    t.endPosition = double(t.step) + 1 - 1e-6;
    t.songEndCount++;
    stopByItself(core);
    return;
  }
  if (wrapped) t.pendingMarker = -1;
  t.step = next;
  stepTrigger(core, false);
}

void setPlaying(EngineCore& core, bool on) {
  Transport& t = core.transport;
  if (on == t.playing) return;
  if (!on) {
    t.playing = false;
    t.paused = true;
    t.stopped = false;
    allNotesOff(core);
    return;
  }
  stopAudition(core);
  t.playing = true;
  t.ended = false;
  const bool resumes = t.paused && !t.stopped;
  t.paused = t.stopped = false;
  if (resumes) return;
  t.stepPhase = 0;
  t.pendingMarker = -1;
  lfo::resetOffsets(core);
  if (!t.startPinned) {
    moveIntoRange(core);
    t.startStep = t.step;
  }
  t.position = u64(std::max(t.step, 0));
  if (t.recording && t.countInOn)
    beginCountIn(core, countInSteps, false);
  else
    stepTrigger(core, true);
}

void stopPlayback(EngineCore& core) {
  Transport& t = core.transport;
  stopAudition(core);
  if (t.stopped && t.step == t.startStep) {
    t.startStep = 0;
    t.startPinned = false;
  }
  t.playing = false;
  t.paused = t.stopped = true;
  t.stopStep = -1;
  t.ended = false;
  allNotesOff(core);
  rewind(core);
}

void haltTransport(EngineCore& core) {
  Transport& t = core.transport;
  stopAudition(core);
  t.stopStep = -1;
  t.playing = false;
  t.paused = false;
  t.stopped = true;
  rewind(core);
}

void setRecording(EngineCore& core, bool on) {
  if (core.transport.recording && !on)
    for (int t = 0; t < limits::tracks; t++)
      for (int note = 0; note < 128; note++) pool::endRecordedKey(core, t, note);
  core.transport.recording = on;
}

void jumpTo(EngineCore& core, i32 marker) {
  Transport& t = core.transport;
  if (!validMarker(core, marker)) {
    t.pendingMarker = -1;
  } else if (t.playing) {
    t.pendingMarker = marker;
  } else {
    t.step = t.startStep = i32(core.project->markers[marker].step);
    t.stepPhase = 0;
    t.position = u64(t.step);
    t.pendingMarker = -1;
    t.ended = false;
    t.startPinned = t.paused = t.stopped = true;
    lfo::resetOffsets(core);
  }
}

void holdMarker(EngineCore& core, i32 marker, bool on) {
  Transport& t = core.transport;
  if (!validMarker(core, marker)) {
    t.heldMarker = -1;
  } else if (!on) {
    if (t.heldMarker == marker) t.heldMarker = -1;
  } else {
    t.heldMarker = marker;
    i32 start, end;
    sectionAround(core, i32(core.project->markers[marker].step), start, end);
    if (t.playing && (t.step < start || t.step >= end)) t.pendingMarker = marker;
  }
}

void playFrom(EngineCore& core, i32 step) {
  Transport& t = core.transport;
  stopAudition(core);
  allNotesOff(core);
  t.pendingMarker = -1;
  t.countInLeft = 0;
  t.stopStep = t.pendingStopStep;
  t.pendingStopStep = -1;
  t.stepPhase = 0;
  t.playing = t.startPinned = true;
  t.paused = t.stopped = t.ended = false;
  lfo::resetOffsets(core);
  t.step = t.startStep = std::clamp(step, 0, lastStep);
  t.position = u64(t.step);
  if (t.oneShotCountIn > 0) {
    const i32 steps = t.oneShotCountIn;
    t.oneShotCountIn = 0;
    beginCountIn(core, steps, t.oneShotSilent);
  } else {
    stepTrigger(core, true);
  }
}

void restorePaused(EngineCore& core, double position) {
  Transport& t = core.transport;
  t.stopStep = -1;
  t.playing = t.ended = false;
  t.paused = t.stopped = t.startPinned = true;
  allNotesOff(core);
  t.position = u64(position);
  t.stepPhase = position - double(t.position);
  t.step = t.startStep = i32(t.position);
  t.countInLeft = 0;
  t.pendingMarker = -1;
}

void startAudition(EngineCore& core, int slot) {
  stopAudition(core);
  AuditionPlay& play = core.auditionPlay;
  play.what = core.auditions[slot];
  core.auditions.release(slot);
  if (core.transport.playing || i32(play.what.track) >= core.trackCount() || play.what.count < 1) return;
  play.armed = true;
  play.samples = 0;
  std::fill(std::begin(play.state), std::end(play.state), u8(0));
}

void stopAudition(EngineCore& core) {
  AuditionPlay& play = core.auditionPlay;
  if (!play.armed) return;
  play.armed = false;
  for (int i = 0; i < play.what.count; i++)
    if (play.state[i] == 1) keyUp(core, int(play.what.track), play.what.entries[i].note);
}

u64 playAudition(EngineCore& core) {
  constexpr u64 never = ~u64(0);
  AuditionPlay& play = core.auditionPlay;
  if (!play.armed) return never;
  const double stepsPerSample = core.project->bpm / (core.rates.rate * 15);
  const double p = double(play.samples) * stepsPerSample;
  double next = std::numeric_limits<double>::infinity();
  bool left = false;
  for (int i = 0; i < play.what.count; i++) {
    const Engine::Audition::Entry& e = play.what.entries[i];
    const double end = e.step + std::max<int>(e.length, 1) / 256.0;
    if (play.state[i] == 0 && e.step <= p) {
      keyDown(core, int(play.what.track), e.note, std::max<int>(e.velocity, 1));
      play.state[i] = 1;
    }
    if (play.state[i] == 1 && p >= end) {
      keyUp(core, int(play.what.track), e.note);
      play.state[i] = 2;
    }
    if (play.state[i] != 2) {
      left = true;
      next = std::min(next, play.state[i] == 0 ? double(e.step) : end);
    }
  }
  if (!left) {
    play.armed = false;
    return never;
  }
  const double samples = std::ceil((next - p) / stepsPerSample - 1e-9);
  return u64(std::max(samples, 1.0));
}

}  // namespace synth
