#include "engine/Publish.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/Sequencer.h"

namespace synth {
namespace {

void showTransport(const EngineCore& core, Telemetry& v) {
  const Transport& t = core.transport;
  v.sampleClock = core.sampleClock;
  v.seconds = double(core.sampleClock) / core.rates.rate;
  v.stepPhase = t.stepPhase;
  v.position = t.step + t.stepPhase;
  v.droppedTotal = core.droppedCommands.load(std::memory_order_relaxed) + core.droppedRecorded;
  v.step = t.step;
  v.countInLeft = t.countInLeft;
  v.countInQuarters = (t.countInLeft + 3) / 4;
  v.startStep = t.startStep;
  v.playing = t.playing;
  v.recording = t.recording;
  v.paused = t.paused;
  v.stopped = t.stopped;
  v.bpm = core.project->bpm;
  v.songEnd = core.index->songEnd;
  v.songEndCount = t.songEndCount;
  v.pendingMarker = t.pendingMarker;
  v.heldMarker = t.heldMarker;
  sectionAround(core, t.step, v.sectionStart, v.sectionEnd);
  v.marker = -1;
  for (int i = 0; i < core.project->markerCount; i++)
    if (i32(core.project->markers[i].step) == v.sectionStart) v.marker = i;
}

void showVoice(const EngineCore& core, const Voice& voice, VoiceView& v) {
  v = VoiceView{};
  if (!voice.active) return;
  v.active = 1;
  v.track = voice.track;
  v.note = voice.note;
  v.pad = voice.pad;
  v.kind = voice.kind;
  v.flags = u8((voice.live ? VoiceView::liveFlag : 0) | (voice.releasing ? VoiceView::releasingFlag : 0) |
               (voice.isPad ? VoiceView::padFlag : 0) | (voice.ghost() ? VoiceView::ghostFlag : 0));
  v.velocity = u8(std::clamp(voice.velocity * 127, 0.0f, 127.0f));
  v.unison = core.track(voice.track).unison;
  v.amp = voice.amp;
  v.filterEnv = voice.control.ownFilterEnv ? voice.filterEnv.level : std::fabs(voice.contour);
  v.timbre = voice.timbre.level;
  v.frequency = voice.frequency * voice.pitchRatio;
  v.phase = dsp::unit(voice.state.phaseA);
  v.pan = voice.isPad ? voice.hitPan : voice.lfoPan2 + voice.unisonPan;
  for (int k = 0; k < 4; k++) v.engine[k] = voice.engine[k];
  for (int k = 0; k < 2; k++) v.lfo[k] = voice.lfoValue[k];
  v.age = float(double(core.sampleClock - voice.sampleStart) / core.rates.rate);
}

void showPads(const EngineCore& core, Telemetry& v) {
  for (int t = 0; t < limits::tracks; t++)
    for (int pad = 0; pad < limits::pads; pad++) {
      PadView& p = v.pads[t][pad];
      p = PadView{};
      p.hits = core.tracks[t].padHits[pad];
      p.velocity = core.tracks[t].padVelocity[pad];
      p.model = core.track(t).pad_model[pad];
    }
  for (const Voice& voice : core.voices) {
    if (!voice.active || !voice.isPad) continue;
    PadView& p = v.pads[voice.track][voice.pad];
    p.sounding = 1;
    p.env = std::max(p.env, voice.hit.level());
    p.level = std::max(p.level, std::fabs(voice.lastMid));
    p.pitch = voice.hit.pitchRatio();
  }
}

void showTrack(const EngineCore& core, int t, Telemetry& v) {
  const TrackState& s = core.tracks[t];
  TrackView& view = v.tracks[t];
  view.peakL = s.peakL;
  view.peakR = s.peakR;
  view.energy = s.energy;
  view.edge = s.edge;
  view.duck = s.duck;
  view.gain = s.gainNow;
  view.cutoff = core.prepared[t].value[automation::CUTOFF];
  for (int k = 0; k < 4; k++) view.engine[k] = core.prepared[t].value[automation::ENGINE_1 + k];
  view.noteSerial = s.noteSerial;
  view.voices = 0;
  view.lastNote = s.lastNote;
  view.lastVelocity = s.lastVelocity;
  view.flags = u8((s.audible ? TrackView::audibleFlag : 0) | (s.sleeping ? TrackView::sleepingFlag : 0));
  v.trackPeak[t] = std::max(s.peakL, s.peakR);
  v.trackLevel[t] = std::sqrt(std::max(s.energy, 0.0f));
  std::memcpy(v.resolved[t], core.prepared[t].value, sizeof v.resolved[t]);
  for (u32& bits : v.heldKeys[t]) bits = 0;
  if (!core.keyCounter) return;
  for (int note = 0; note < 128; note++)
    if (core.keys[t][note].stamp) v.heldKeys[t][note / 32] |= 1u << (note % 32);
}

}  // namespace

void publishTelemetry(EngineCore& core) {
  Telemetry& v = core.view;
  showTransport(core, v);
  for (int t = 0; t < limits::tracks; t++) showTrack(core, t, v);
  for (int i = 0; i < voiceCount; i++) {
    showVoice(core, core.voices[i], v.voices[i]);
    if (core.voices[i].active) v.tracks[core.voices[i].track].voices++;
  }
  showPads(core, v);
  for (int bus : {SendI, SendII}) {
    const fx::Send& send = core.sends[bus];
    SendView& view = v.sends[bus];
    view.type = u8(send.type());
    view.sleeping = send.sleeping();
    view.inPeak = send.inPeak();
    view.outL = send.outPeak(0);
    view.outR = send.outPeak(1);
  }
  v.outputPeak[0] = core.master.outputPeak[0];
  v.outputPeak[1] = core.master.outputPeak[1];
  v.compGain = core.master.dynamics.takeSmallestGain();
  v.limiterGain = core.master.gain;
  v.masterGain = core.master.smooth;
  v.movesActive = 0;
  for (int i = 0; i < automation::performanceEffects; i++) {
    v.moves[i] = core.lanes.moves[i];
    if (core.lanes.moveBound[i]) v.movesActive |= 1u << i;
  }
  v.scopeWrite = u32((core.sampleClock >> 3) % 120);
  core.telemetry.publish(v);
}

}  // namespace synth
