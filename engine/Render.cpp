#include "engine/Render.h"

#include <algorithm>
#include <cmath>

#include "engine/Lfo.h"
#include "engine/MasterChain.h"
#include "engine/Publish.h"
#include "engine/Resolve.h"
#include "engine/Sequencer.h"
#include "engine/TrackChain.h"
#include "engine/Transport.h"
#include "engine/Voices.h"

namespace synth {
namespace {

constexpr double stepOver = 0.9999999999;

// What falls on this very sample, in its order: the Step boundary, scheduled Notes, gate ends, audition.
void runEvents(EngineCore& core) {
  Transport& t = core.transport;
  const bool boundary = t.playing && t.stepPhase >= stepOver;
  const bool due = t.playing && t.songTime() >= core.nextEvent;
  const bool audition = core.auditionPlay.armed && core.auditionWait == 0;
  if (!boundary && !due && !audition) return;
  evaluateNow(core);
  passStepBoundary(core);
  const double pending = firePending(core);
  core.nextEvent = std::min(pending, endGates(core));
  if (core.auditionPlay.armed && core.auditionWait == 0) core.auditionWait = playAudition(core);
}

// How far the segment reaches: to the next event, the next multiple of sixteen samples, or `most`.
void planSegment(EngineCore& core, int most) {
  const Transport& t = core.transport;
  SegmentClock& c = core.clock;
  const double increment = t.playing ? 1 / stepSamples(core) : 0;
  const int limit = std::min(most, dsp::segment - int(core.sampleClock & 15));
  double phase = t.stepPhase;
  int n = 0;
  for (; n < limit; n++) {
    const double time = double(t.position) + phase;
    if (n > 0 && t.playing && (phase >= stepOver || time >= core.nextEvent)) break;
    c.phase[n] = phase;
    c.songTime[n] = time;
    c.laneTime[n] = (t.ended ? t.endPosition : t.step + phase) * 16;
    phase += increment;
  }
  c.phase[n] = phase;
  c.n = n;
}

void refresh(EngineCore& core, bool force) {
  const u64 clock = core.sampleClock;
  if ((clock & 31) == 0) mergeLocks(core);
  prepareTracks(core);
  if ((clock & 15) == 0 || force) prepareBuses(core);
  if ((clock & 15) == 0) tickMaster(core);
  if ((clock & 31) == 0 || force) refreshTracks(core, clock == 0);
}

}  // namespace

void renderBlock(EngineCore& core, float* left, float* right, unsigned frames) {
  core.commandsRan |= drainCommands(core);
  for (unsigned done = 0; done < frames;) {
    runEvents(core);
    u64 most = frames - done;
    if (core.auditionPlay.armed) most = std::min(most, core.auditionWait);
    if (core.nextTelemetry > core.sampleClock) most = std::min(most, core.nextTelemetry - core.sampleClock);
    planSegment(core, int(std::min<u64>(most, dsp::segment)));
    readLanes(core);
    refresh(core, core.commandsRan);
    core.commandsRan = false;
    renderVoices(core);
    renderTracks(core);
    renderMaster(core);

    const unsigned n = unsigned(core.clock.n);
    std::copy_n(core.mix.out.l.v, n, left + done);
    std::copy_n(core.mix.out.r.v, n, right + done);
    lfo::advanceOffsets(core, int(n));
    core.transport.stepPhase = core.clock.phase[n];
    core.sampleClock += n;
    if (core.auditionPlay.armed) {
      core.auditionPlay.samples += n;
      core.auditionWait -= n;
    }
    done += n;
    if (core.sampleClock >= core.nextTelemetry) {
      publishTelemetry(core);
      core.nextTelemetry = core.sampleClock + u64(core.rates.rate / 60);
    }
  }
  publishTelemetry(core);
}

}  // namespace synth
