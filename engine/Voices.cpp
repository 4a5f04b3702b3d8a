#include "engine/Voices.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "core/sounds/Macros.h"
#include "engine/Drums.h"
#include "engine/Resolve.h"
#include "engine/VoicePool.h"

namespace synth {
namespace {

enum Mode : int { Poly, Retrigger, Legato, PolyLegato };

Voice* newest(EngineCore& core, int track) {
  Voice* best = nullptr;
  for (Voice& v : core.voices)
    if (v.active && v.track == track && !v.ghost() && !v.stolen && (!best || v.serial > best->serial))
      best = &v;
  return best;
}

// A new Note on a voice that goes on sounding, with a glide where the Track asks for one.
void takeOver(EngineCore& core, Voice& leader, const Note& note, bool live, double gateEnd) {
  for (Voice& v : core.voices) {
    if (&v != &leader && !pool::follows(v, leader, core)) continue;
    v.note = note.pitch;
    v.live = live;
    v.gateEnd = gateEnd;
    v.gatePassed = false;
    v.targetVelocity = float(note.velocity) / 127.0f;
    pool::decodeLocks(core, v, note);
    pool::glideTo(core, v, pool::frequencyOf(note.pitch));
    if (core.track(v.track).key_sync) v.state.phaseA = v.state.phaseB = v.state.phaseC = v.state.phaseD = 0;
  }
}

void revive(Voice& v) {
  if (!v.releasing) return;
  v.releasing = v.endsEarly = false;
  v.ampStage = Stage::Decay;
  v.contour = -std::max(std::fabs(v.contour), 1e-6f);
  v.timbre.stage = v.filterEnv.stage = Stage::Decay;
}

// Holds the same Note on: a POLY LEGATO voice that plays the pitch already.
void holdOn(EngineCore& core, Voice& leader, const Note& note, bool live, double gateEnd) {
  for (Voice& v : core.voices) {
    if (&v != &leader && !pool::follows(v, leader, core)) continue;
    v.live = live;
    v.gateEnd = gateEnd;
    v.targetVelocity = float(note.velocity) / 127.0f;
    pool::decodeLocks(core, v, note);
    revive(v);
    if (core.track(v.track).key_sync) v.state.phaseA = v.state.phaseB = v.state.phaseC = v.state.phaseD = 0;
  }
}

void startMono(EngineCore& core, int t, const Note& note, bool live, bool again, double gateEnd) {
  const double now = core.transport.songTime();
  if (!live) {
    core.mono[t] = {note, true, gateEnd};
    if (anyKeyHeld(core, t)) return;
  }
  Voice* v = newest(core, t);
  const bool continues = v && !v->releasing && (v->live || v->gateEnd > now + 1e-9);
  const bool connects = core.track(t).voice_mode == Legato || note.slide();
  if (continues && !again && connects) {
    takeOver(core, *v, note, live, gateEnd);
    return;
  }
  if (v) {
    releaseVoice(core, *v);
    for (Voice& other : core.voices)
      if (&other == v || pool::follows(other, *v, core)) other.stolen = true;
  }
  pool::start(core, t, note, live, gateEnd);
}

void startPolyLegato(EngineCore& core, int t, const Note& note, bool live, double gateEnd) {
  const double now = core.transport.songTime();
  for (Voice& v : core.voices)
    if (v.active && v.track == t && !v.ghost() && !v.releasing && !v.live && v.gateEnd <= now)
      releaseVoice(core, v);
  Voice* same = nullptr;
  for (Voice& v : core.voices)
    if (v.active && v.track == t && !v.ghost() && !v.stolen && v.note == note.pitch &&
        (!same || v.serial > same->serial))
      same = &v;
  if (same)
    holdOn(core, *same, note, live, gateEnd);
  else
    pool::start(core, t, note, live, gateEnd);
}

void start(EngineCore& core, int t, const Note& note, bool live, bool again, double time) {
  const Track& track = core.track(t);
  const double gateEnd = (time < 0 ? core.transport.songTime() : time) + note.length / 256.0;
  TrackState& state = core.tracks[t];
  state.noteSerial++;
  state.lastNote = note.pitch;
  state.lastVelocity = note.velocity;
  if (isDrums(track)) {
    if (note.pitch < limits::pads) startHit(core, t, note, live, gateEnd);
  } else if (isMonoMode(track.voice_mode)) {
    startMono(core, t, note, live, again, gateEnd);
  } else if (track.voice_mode == PolyLegato) {
    startPolyLegato(core, t, note, live, gateEnd);
  } else {
    pool::start(core, t, note, live, gateEnd);
  }
}

}  // namespace

bool playsMono(const EngineCore& core, int t) {
  const Track& track = core.track(t);
  return !isDrums(track) && isMonoMode(track.voice_mode);
}

void startVoice(EngineCore& core, int t, const Note& note, bool live, double time) {
  if (t < 0 || t >= core.trackCount()) return;
  start(core, t, note, live, false, time);
  core.nextEvent = 0;
}

void preparePolyLegato(EngineCore& core, int t, const NoteRec* const (&notes)[limits::slots]) {
  const Track& track = core.track(t);
  auto onStep = [&](int pitch) {
    for (const NoteRec* n : notes)
      if (n && n->pitch == pitch) return true;
    return false;
  };
  auto usable = [&](const Voice& v) { return v.sounding() && v.track == t && !v.ghost() && !v.stolen; };
  auto played = [&](int pitch) {
    for (const Voice& v : core.voices)
      if (usable(v) && v.note == pitch) return true;
    return false;
  };
  for (const NoteRec* n : notes) {
    if (!n || !(core.prepared[t].value[automation::GLIDE] > 0)) continue;
    if (played(n->pitch) || (track.poly_glide_mode == 1 && !(n->flags & Note::slideBit))) continue;
    Voice* nearest = nullptr;
    for (Voice& v : core.voices) {
      if (!usable(v) || onStep(v.note)) continue;
      const int distance = std::abs(v.note - n->pitch);
      if (distance < 13 && (!nearest || distance < std::abs(nearest->note - n->pitch))) nearest = &v;
    }
    if (nearest) takeOver(core, *nearest, n->note(), false, core.transport.songTime() + n->length / 256.0);
  }
  int excess = -track.polyphony;
  for (const Voice& v : core.voices) excess += usable(v);
  for (int k = 0; k < limits::slots; k++) {
    if (!notes[k] || played(notes[k]->pitch)) continue;
    bool repeated = false;
    for (int j = 0; j < k; j++) repeated |= notes[j] && notes[j]->pitch == notes[k]->pitch;
    excess += !repeated;
  }
  for (; excess > 0; excess--) {
    Voice* oldest = nullptr;
    for (Voice& v : core.voices)
      if (usable(v) && !v.live && !onStep(v.note) && (!oldest || v.serial < oldest->serial)) oldest = &v;
    if (!oldest) return;
    releaseVoice(core, *oldest);
  }
}

void releaseVoice(EngineCore& core, Voice& leader) {
  for (Voice& v : core.voices) {
    if (&v != &leader && !pool::follows(v, leader, core)) continue;
    if (!v.active || v.releasing) continue;
    v.releasing = true;
    v.live = false;
    v.ampStage = Stage::Release;
    v.contour = -std::max(std::fabs(v.contour), 1e-6f);
    v.timbre.stage = v.filterEnv.stage = Stage::Release;
  }
}

void abandonVoice(EngineCore& core, Voice& v) {
  if (!v.active) return;
  if (v.isPad) v.hit.release(std::max(core.track(v.track).release, 0.02f));
  releaseVoice(core, v);
}

void allNotesOff(EngineCore& core) {
  for (int t = 0; t < limits::tracks; t++) {
    core.mono[t] = MonoSlot{};
    for (KeyStamp& key : core.keys[t]) key = KeyStamp{};
    for (int note = 0; note < 128; note++) pool::endRecordedKey(core, t, note);
  }
  for (Voice& v : core.voices) {
    if (!v.active) continue;
    if (v.isPad) v.hit.fadeOut(std::max(1, int(core.rates.rate * 0.03)));
    releaseVoice(core, v);
    v.endsEarly = true;
  }
  for (PendingNote& p : core.pending) p.active = false;
  core.pendingCount = 0;
}

void monoCollapse(EngineCore& core, int t) {
  core.mono[t] = MonoSlot{};
  if (isDrums(core.track(t))) return;
  Voice* survivor = newest(core, t);
  if (survivor && survivor->fadeLeft == 0) survivor->fadeMid = survivor->fadeSide = 0;
  for (Voice& v : core.voices) {
    if (!v.active || v.track != t || &v == survivor || v.isPad) continue;
    if (survivor) {
      survivor->fadeMid += v.lastMid;
      survivor->fadeSide += v.lastSide;
    }
    v.active = false;
  }
  if (!survivor) return;
  survivor->fadeMid += survivor->lastMid;
  survivor->fadeSide += survivor->lastSide;
  survivor->fadeLeft = declickSamples;
  releaseVoice(core, *survivor);
  survivor->endsEarly = true;
}

bool anyKeyHeld(const EngineCore& core, int t) {
  for (const KeyStamp& key : core.keys[t])
    if (key.stamp) return true;
  return false;
}

void keyDown(EngineCore& core, int t, int note, int velocity) {
  if (t >= core.trackCount()) return;
  pool::endRecordedKey(core, t, note);
  const bool again = core.keys[t][note].stamp != 0;
  core.keys[t][note] = {++core.keyCounter, u8(velocity)};
  Note n;
  n.pitch = u8(note);
  n.velocity = u8(velocity);
  start(core, t, n, true, again, -1);
  core.nextEvent = 0;
  pool::beginRecordedKey(core, t, note, velocity);
}

void keyUp(EngineCore& core, int t, int note) {
  if (t >= limits::tracks) return;
  pool::endRecordedKey(core, t, note);
  core.keys[t][note] = KeyStamp{};
  if (t < core.trackCount() && playsMono(core, t)) {
    int next = -1;
    for (int k = 0; k < 128; k++)
      if (core.keys[t][k].stamp && (next < 0 || core.keys[t][k].stamp > core.keys[t][next].stamp)) next = k;
    Voice* v = newest(core, t);
    if (!v || v->releasing) return;
    if (next >= 0) {
      if (v->note == next) return;
      Note n;
      n.pitch = u8(next);
      n.velocity = core.keys[t][next].velocity;
      takeOver(core, *v, n, true, v->gateEnd);
    } else if (v->live) {
      if (core.mono[t].sounding)
        takeOver(core, *v, core.mono[t].note, false, core.mono[t].endTime);
      else
        releaseVoice(core, *v);
    }
    core.nextEvent = 0;
    return;
  }
  for (Voice& v : core.voices)
    if (v.active && v.live && v.track == t && v.note == note && !v.ghost() && !v.isPad) releaseVoice(core, v);
}

double endGates(EngineCore& core) {
  double next = std::numeric_limits<double>::infinity();
  if (!core.transport.playing) return next;
  const double now = core.transport.songTime();
  for (int t = 0; t < core.trackCount(); t++) {
    MonoSlot& slot = core.mono[t];
    if (!slot.sounding) continue;
    if (now < slot.endTime - 1e-10) {
      next = std::min(next, slot.endTime - 1e-10);
      continue;
    }
    slot.sounding = false;
    Voice* v = newest(core, t);
    if (v && !v->live && !anyKeyHeld(core, t)) releaseVoice(core, *v);
  }
  for (Voice& v : core.voices) {
    if (!v.sounding() || v.live || v.isPad || v.ghost() || v.gatePassed || playsMono(core, v.track)) continue;
    if (now >= v.gateEnd - 1e-10)
      releaseVoice(core, v);
    else
      next = std::min(next, v.gateEnd - 1e-10);
  }
  return next;
}

}  // namespace synth
