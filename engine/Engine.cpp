#include "engine/Engine.h"

#include <algorithm>
#include <cmath>

#include "base/Math.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"
#include "engine/EngineCore.h"
#include "engine/MasterChain.h"
#include "engine/Render.h"
#include "engine/Resolve.h"
#include "engine/Sequencer.h"
#include "engine/kinds/Kind.h"

namespace synth {
namespace {

double usableRate(double rate) { return std::isfinite(rate) ? std::clamp(rate, 22050.0, 192000.0) : 48000; }

Rates ratesFor(double rate) {
  Rates r;
  r.rate = rate;
  r.period = 1 / rate;
  r.paramSmooth = float(1 - math::exp(-1 / (rate * 0.01)));
  r.sendSmooth = dsp::share(0.02, rate);
  r.modSmooth = float(1 - math::exp(-1 / (rate * 0.001)));
  r.fastRelease = float(math::exp(-7 / (rate * 0.03)));
  r.clickDecay = float(math::exp(-1 / (rate * 0.0015)));
  r.keyClick = float(math::exp(-1 / (rate * 0.0025)));
  return r;
}

MasterEqDesign masterEqOf(const Project& p, double rate) {
  float gains[masterBands];
  for (int band = 0; band < masterBands; band++) gains[band] = param::masterEq(band).get(p);
  return designMasterEq(gains, rate);
}

// What stands beside a Project in its slot.
void derive(ProjectSlot& slot, double rate) {
  buildIndex(slot.project, slot.index);
  slot.masterEq = masterEqOf(slot.project, rate);
  for (int t = 0; t < limits::tracks; t++) macros::buildPlan(slot.project, t, slot.plans[t]);
}

template <class T, std::size_t N>
void forget(T (&values)[N]) {
  std::fill(std::begin(values), std::end(values), noValue);
}

}  // namespace

EngineCore::EngineCore(double sampleRate) : rates(ratesFor(usableRate(sampleRate))), sine(dsp::sineTable()) {
  // The tables are built here, not on the audio thread.
  automation::targetInfo(0);
  kinds::prepare();
  for (auto& row : overrides.macro) forget(row);
  for (auto& row : overrides.touch) forget(row);
  for (auto& row : overrides.lock) forget(row);
  for (auto& row : overrides.macroTouch) forget(row);
  forget(overrides.busTouch);
  forget(overrides.busLane);
  const int slot = projects.take();
  std::memcpy(static_cast<void*>(&projects[slot].project), makeProject().get(), sizeof(Project));
  derive(projects[slot], rates.rate);
  projects.publish(slot);
  project = &projects[slot].project;
  index = &projects[slot].index;
  bindLanes(*this);
  for (TrackState& track : tracks) {
    track.modFx.prepare(rates.rate);
    track.room.prepare(rates.rate);
  }
  for (fx::Send& send : sends) send.prepare(rates.rate);
  moves.prepare(rates.rate);
  prepareMaster(*this);
}

Engine::Engine(double sampleRate) : core_(new EngineCore(sampleRate)) {}
Engine::~Engine() { delete core_; }

bool Engine::send(Op op, u32 a, u32 b, u32 c, double value) {
  EngineCommand command;
  command.op = op;
  command.a = a;
  command.b = b;
  command.c = c;
  command.value = value;
  if (core_->commands.push(command)) return true;
  core_->droppedCommands.fetch_add(1, std::memory_order_relaxed);
  return false;
}

bool Engine::submitProject(const Project& project) {
  std::string error;
  if (!validateProject(project, error)) return false;
  const int slot = core_->projects.take();
  if (slot < 0) return false;
  ProjectSlot& place = core_->projects[slot];
  std::memcpy(static_cast<void*>(&place.project), &project, sizeof(Project));
  derive(place, core_->rates.rate);
  core_->projects.publish(slot);
  if (send(Op::Submit, u32(slot))) return true;
  core_->projects.release(slot);
  return false;
}

void Engine::setPlaying(bool on) {
  if (!send(Op::SetPlaying, on))
    core_->flushFlags.fetch_or(on ? EngineCore::silenceFlag : EngineCore::silenceFlag | EngineCore::stopFlag);
}
void Engine::stopPlayback() {
  if (!send(Op::StopPlayback)) core_->flushFlags.fetch_or(EngineCore::silenceFlag | EngineCore::stopFlag);
}
void Engine::setRecording(bool on) { send(Op::SetRecording, on); }
void Engine::setMetronome(bool on) { send(Op::SetMetronome, on); }
void Engine::setCountIn(bool on) { send(Op::SetCountIn, on); }
void Engine::jumpTo(int marker) { send(Op::JumpTo, u32(marker)); }

void Engine::noteOn(int track, int note, int velocity) {
  if (velocity <= 0) return noteOff(track, note);
  if (track < 0 || track > 15 || note < 0 || note > 127) return;
  send(Op::NoteOn, u32(track), u32(note), u32(std::min(velocity, 127)));
}

void Engine::noteOff(int track, int note) {
  if (track < 0 || track > 15 || note < 0 || note > 127) return;
  if (!send(Op::NoteOff, u32(track), u32(note))) core_->flushFlags.fetch_or(EngineCore::silenceFlag);
}

bool Engine::setTouch(int track, int target, float value, bool on) {
  const bool ofBus = track >= 16 && track <= 18 && automation::isBusTarget(target);
  const bool ofTrack = track >= 0 && track <= 15 &&
                       (automation::isTrackTarget(target) || automation::isMacroTarget(target)) &&
                       value >= 0 && value <= 1;
  if (!ofBus && !ofTrack) return false;
  return send(Op::SetTouch, u32(track), u32(target), on, double(value));
}

bool Engine::setAutomationPlayback(bool on) { return send(Op::SetAutomationPlayback, on); }

void Engine::restorePausedTransport(double position) {
  if (!(position >= 0 && position < limits::songSteps)) return;
  send(Op::RestorePaused, 0, 0, 0, position);
}

void Engine::holdMarker(int marker, bool on) { send(Op::HoldMarker, u32(marker), on); }
void Engine::setLoop(const Loop& loop) {
  send(Op::SetLoop, loop.on != 0, u32(std::clamp(loop.start, 0, 0xFFFFF)),
       u32(std::clamp(loop.end, 0, 0x100000)));
}
void Engine::playFrom(int step) { send(Op::PlayFrom, u32(std::clamp(step, 0, 0xFFFFF))); }
void Engine::retireSample(int slot) {
  if (slot >= 0 && slot < SampleSlots::count) send(Op::RetireSample, u32(slot));
}
void Engine::countIn(int steps, bool tick) { send(Op::CountIn, u32(std::clamp(steps, 0, 64)), !tick); }
void Engine::setTick(bool on) { send(Op::SetTick, on); }
void Engine::stopAt(int step) { send(Op::StopAt, u32(step)); }

bool Engine::audition(const Audition& audition) {
  if (audition.track > 15 || audition.count < 1) return false;
  const int slot = core_->auditions.take();
  if (slot < 0) return false;
  Audition& copy = core_->auditions[slot];
  copy = audition;
  copy.count = std::min(copy.count, 64);
  for (Audition::Entry& e : copy.entries) e.note = std::min<u8>(e.note, 127);
  core_->auditions.publish(slot);
  if (send(Op::Audition, u32(slot))) return true;
  core_->auditions.release(slot);
  return false;
}

void Engine::stopAudition() { send(Op::StopAudition); }
void Engine::panic() { core_->flushFlags.fetch_or(EngineCore::silenceFlag); }

bool Engine::readTelemetry(Telemetry& telemetry) { return core_->telemetry.read(telemetry); }
bool Engine::pollRecorded(RecordedNote& note) { return core_->recorded.pop(note); }

float* Engine::sampleData(int slot, u32 frames) { return core_->samples.data(slot, frames); }
bool Engine::publishSample(int slot, const u8 (&hash)[32], u32 frames) {
  return core_->samples.publish(slot, hash, frames);
}
bool Engine::sampleSlotFree(int slot) const { return core_->samples.isFree(slot); }
bool Engine::sampleSlotHash(int slot, u8 (&hash)[32]) const { return core_->samples.hashOf(slot, hash); }
int Engine::sampleSlot(const u8 (&hash)[32]) const { return core_->samples.find(hash); }

std::size_t Engine::memoryBytes() const {
  std::size_t total = sizeof(EngineCore) + core_->samples.bytes();
  for (const TrackState& track : core_->tracks) total += track.modFx.bytes() + track.room.bytes();
  for (const fx::Send& send : core_->sends) total += send.bytes();
  total += core_->moves.bytes();
  return total;
}

void Engine::render(float* left, float* right, unsigned frames) {
  if (!left || !right) return;
  renderBlock(*core_, left, right, frames);
}

}  // namespace synth
