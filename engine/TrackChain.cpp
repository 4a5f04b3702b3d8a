#include "engine/TrackChain.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/Math.h"
#include "engine/Lfo.h"
#include "engine/TrackEq.h"
#include "engine/TrackMeters.h"

namespace synth {
namespace {

using namespace dsp;
using namespace automation;

constexpr float levelSlew = 0.004f, trackFilterK = 1.706f;
constexpr float highpassOff = 20.5f, lowpassOff = 19999;

// A target over the segment: one number, or one for each sample while its Lane moves.
class Value {
 public:
  Value(const EngineCore& core, int t, int target)
      : flat_(core.prepared[t].value[target]),
        block_(core.prepared[t].moving >> target & 1 ? core.prepared[t].lane[target] : nullptr) {}
  bool moves() const { return block_; }
  float operator[](int i) const { return block_ ? (*block_)[i] : flat_; }
  f4 four(int quad) const { return block_ ? block_->at(quad) : splat(flat_); }
  float first() const { return (*this)[0]; }
  // Whether any sample of it passes the test.
  template <class Test>
  bool any(int n, Test test) const {
    if (!block_) return test(flat_);
    for (int i = 0; i < n; i++)
      if (test((*block_)[i])) return true;
    return false;
  }

 private:
  float flat_;
  const Block* block_;
};

float decibels(float db) { return db == 0 ? 1 : float(math::fromDb(double(db))); }

// ---- Level and pan: mid and side become left and right.

float gainTarget(TrackState& s, float level, float trim) {
  if (s.trim != trim) {
    s.trim = trim;
    s.trimGain = decibels(trim);
  }
  return s.audible ? level * s.trimGain : 0;
}

struct Pan {
  float left, right;
};
Pan panTarget(TrackState& s, float pan) {
  if (s.pan != pan) {
    s.pan = pan;
    const double angle = (double(pan) + 1) * math::pi * 0.25;
    s.panTargetL = float(math::cos(angle));
    s.panTargetR = float(math::sin(angle));
  }
  return {s.panTargetL, s.panTargetR};
}

bool settled(float now, float target) { return now + (target - now) * levelSlew == now; }

void levelTrack(EngineCore& core, int t, Block& mid, Block& side, bool silentInput, int n) {
  TrackState& s = core.tracks[t];
  const Value level(core, t, LEVEL), trim(core, t, TRIM);
  if (!level.moves() && !trim.moves() && settled(s.gainNow, gainTarget(s, level.first(), trim.first()))) {
    if (silentInput) return;
    const f4 g = splat(s.gainNow);
    for (int q = 0; q < quads(n); q++) {
      const f4 m = mid.at(q) * g, x = side.at(q) * g;
      mid.put(q, m + x);
      side.put(q, m - x);
    }
    return;
  }
  for (int i = 0; i < n; i++) {
    s.gainNow = flushed(s.gainNow + (gainTarget(s, level[i], trim[i]) - s.gainNow) * levelSlew);
    if (silentInput) continue;
    const float m = mid[i] * s.gainNow, x = side[i] * s.gainNow;
    mid[i] = m + x;
    side[i] = m - x;
  }
}

bool panStands(EngineCore& core, int t) {
  TrackState& s = core.tracks[t];
  const Value pan(core, t, PAN);
  const Pan now = panTarget(s, pan.first());
  return !pan.moves() && settled(s.panL, now.left) && settled(s.panR, now.right);
}

// The pan gains of each sample.
void panGains(EngineCore& core, int t, Block& gl, Block& gr, int n) {
  TrackState& s = core.tracks[t];
  if (panStands(core, t)) {
    gl.fill(s.panL);
    gr.fill(s.panR);
    return;
  }
  const Value pan(core, t, PAN);
  for (int i = 0; i < n; i++) {
    const Pan target = panTarget(s, pan[i]);
    gl[i] = s.panL = flushed(s.panL + (target.left - s.panL) * levelSlew);
    gr[i] = s.panR = flushed(s.panR + (target.right - s.panR) * levelSlew);
  }
}

void movePan(EngineCore& core, int t, int n) {
  Block gl, gr;
  if (!panStands(core, t)) panGains(core, t, gl, gr, n);
}

// ---- High and low pass.

// Where a filter comes in it is blended with what it filters, so that a Lane through that place does not
// click.
SvfSetting blended(SvfSetting s, float share) {
  const float w = std::clamp(share, 0.0f, 1.0f);
  return {s.f, 1 - w + w * s.inputMix, w * s.bandMix, w * s.lowMix};
}
SvfSetting highpassAt(float hz, double rate) {
  return blended(SvfSetting::high(Svf::at(svfG(hz, rate), trackFilterK)), (hz - highpassOff) / 10);
}
SvfSetting lowpassAt(float hz, double rate) {
  return blended(SvfSetting::low(Svf::at(svfG(hz, rate), trackFilterK)), (lowpassOff - hz) / 3000);
}

bool highpassOn(float hz) { return hz > highpassOff; }
bool lowpassOn(float hz) { return hz < lowpassOff; }

// A filter whose frequency moves within the segment, sample by sample.
template <class On, class Setting>
void movingFilter(const Value& hz, double rate, Block& signal, SvfState& state, int n, bool tick, On on,
                  Setting setting) {
  if (tick) state.flush();
  for (int i = 0; i < n; i++) {
    if (!on(hz[i])) {
      state = SvfState{};
      continue;
    }
    const SvfSetting s = setting(hz[i], rate);
    const float x = signal[i];
    const SvfOut o = state.step(s.f, x);
    signal[i] = s.inputMix * x + s.bandMix * o.band + s.lowMix * o.low;
  }
}

struct FilterQueue {
  SvfChannel channels[2 * limits::tracks];
  int count = 0;

  void add(Block& l, Block& r, SvfState (&state)[2], const SvfSetting& setting) {
    channels[count++] = {&l, &state[0], &setting};
    channels[count++] = {&r, &state[1], &setting};
  }
};

template <class On, class Setting>
void queueFilter(EngineCore& core, int t, int target, float& lastHz, SvfSetting& setting,
                 SvfState (&state)[2], FilterQueue& queue, On on, Setting make) {
  Block &l = core.mix.trackL[t], &r = core.mix.trackR[t];
  const Value hz(core, t, target);
  if (!hz.any(core.clock.n, on)) {
    state[0] = state[1] = SvfState{};
    lastHz = 0;
    return;
  }
  if (hz.moves()) {
    movingFilter(hz, core.rates.rate, l, state[0], core.clock.n, onGrid(core), on, make);
    movingFilter(hz, core.rates.rate, r, state[1], core.clock.n, onGrid(core), on, make);
    lastHz = 0;
    return;
  }
  if (lastHz != hz.first()) {
    lastHz = hz.first();
    setting = make(lastHz, core.rates.rate);
  }
  queue.add(l, r, state, setting);
}

// The high passes of all Tracks side by side, then their low passes.
void filterTracks(EngineCore& core, const bool (&works)[limits::tracks]) {
  const int n = core.clock.n;
  FilterQueue high, low;
  for (int t = 0; t < limits::tracks; t++) {
    TrackState& s = core.tracks[t];
    if (works[t])
      queueFilter(core, t, HIGHPASS, s.highpassHz, s.highpass, s.highpassState, high, highpassOn, highpassAt);
  }
  runSvfs(high.channels, high.count, n, onGrid(core));
  for (int t = 0; t < limits::tracks; t++) {
    TrackState& s = core.tracks[t];
    if (works[t])
      queueFilter(core, t, LOWPASS, s.lowpassHz, s.lowpass, s.lowpassState, low, lowpassOn, lowpassAt);
  }
  runSvfs(low.channels, low.count, n, onGrid(core));
}

// ---- Drive and crush.

void driveTrack(EngineCore& core, int t, Block& l, Block& r, int n) {
  TrackState& s = core.tracks[t];
  const Value amount(core, t, DRIVE);
  if (!amount.any(n, [](float a) { return a > 0; })) return;
  const int type = core.track(t).insert_drive_type;
  if (amount.moves()) {
    for (int i = 0; i < n; i++) {
      if (!(amount[i] > 0)) continue;
      const drive::Curve c = drive::curve(type, amount[i]);
      l[i] = drive::shape(c, core.sine, l[i]);
      r[i] = drive::shape(c, core.sine, r[i]);
    }
    s.driveAmount = -1;
    return;
  }
  if (s.driveAmount != amount.first() || s.driveType != type) {
    s.driveAmount = amount.first();
    s.driveType = type;
    s.drive = drive::curve(type, s.driveAmount);
  }
  for (int q = 0; q < quads(n); q++) {
    l.put(q, drive::shape(s.drive, core.sine, l.at(q)));
    r.put(q, drive::shape(s.drive, core.sine, r.at(q)));
  }
}

// Holds a sample until its phase comes round.
void hold(float& phase, float& held, float step, float& x) {
  phase += step;
  if (phase >= 1) {
    phase -= 1;
    held = x;
  }
  x = held;
}

void crushTrack(EngineCore& core, int t, Block& l, Block& r, int n) {
  TrackState& s = core.tracks[t];
  const Value bits(core, t, CRUSH_BITS), coarse(core, t, CRUSH_RATE);
  auto on = [](float v) { return v > 0; };
  if (!coarse.any(n, on)) s.crushHeld[0] = s.crushHeld[1] = 0;
  if (!bits.any(n, on) && !coarse.any(n, on)) return;
  const double rate = core.rates.rate;
  auto stepFor = [&](float c) { return float(std::max(rate * math::pow(1 - double(c), 2.2), 400.0) / rate); };
  auto levelsFor = [](float b) { return math::exp2(16 - 14 * b); };
  if (coarse.any(n, on)) {
    float step = stepFor(coarse.first());
    for (int i = 0; i < n; i++) {
      if (coarse.moves()) step = stepFor(coarse[i]);
      if (!(coarse[i] > 0)) {
        s.crushHeld[0] = s.crushHeld[1] = 0;
        continue;
      }
      hold(s.crushPhase[0], s.crushHeld[0], step, l[i]);
      hold(s.crushPhase[1], s.crushHeld[1], step, r[i]);
    }
  }
  if (!bits.any(n, on)) return;
  Block levels;
  levels.fill(levelsFor(bits.first()));
  for (int i = 0; bits.moves() && i < n; i++) levels[i] = levelsFor(bits[i]);
  for (int q = 0; q < quads(n); q++) {
    const f4 q4 = levels.at(q);
    const i4 rough = bits.four(q) > splat(0);
    l.put(q, select(rough, toFloats(truncated(l.at(q) * q4)) / q4, l.at(q)));
    r.put(q, select(rough, toFloats(truncated(r.at(q) * q4)) / q4, r.at(q)));
  }
}

// ---- Modulation.

bool modulates(const EngineCore& core, int t) {
  return core.track(t).mod_type != ModFx::Off || !core.tracks[t].modFx.idle();
}

// The effect's ticks, and `play(from, n)` for what lies between them.
template <class Play>
void betweenTicks(EngineCore& core, int t, int n, Play play) {
  TrackState& s = core.tracks[t];
  const Track& track = core.track(t);
  if (onGrid(core)) s.hushed = s.inputQuiet >= u32(core.rates.rate * 0.5);
  for (int done = 0; done < n;) {
    const u64 clock = core.sampleClock + u64(done);
    const int part = std::min(n - done, 8 - int(clock & 7));
    if ((clock & 7) == 0) {
      ModFx::Setting m;
      m.type = track.mod_type;
      m.rate = track.mod_sync ? float(lfo::syncCyclesPerStep(track.mod_sync) * core.project->bpm * 4 / 60)
                              : Value(core, t, MOD_RATE)[done];
      m.depth = Value(core, t, MOD_DEPTH)[done];
      m.feedback = Value(core, t, MOD_FEEDBACK)[done];
      m.mix = Value(core, t, MOD_MIX)[done];
      m.tone = Value(core, t, MOD_TONE)[done];
      m.sideOnly = track.mod_side;
      m.hush = s.hushed || !s.audible;
      s.modFx.tick(m, clock == 0);
    }
    play(done, part);
    done += part;
  }
}

void modulateTrack(EngineCore& core, int t, Block& l, Block& r, int n) {
  if (!modulates(core, t)) return;
  TrackState& s = core.tracks[t];
  const Block dryL = l, dryR = r;
  betweenTicks(core, t, n, [&](int from, int part) { s.modFx.process(l.v + from, r.v + from, part); });
  if (core.track(t).mod_type == ModFx::VinylType) countQuiet(core, s.inputQuiet, dryL, dryR, n);
}

// ---- Room.

void tickRooms(EngineCore& core) {
  for (int t = 0; t < limits::tracks; t++) {
    TrackState& s = core.tracks[t];
    const float* v = core.prepared[t].value;
    if (!(v[ROOM_MIX] > 0) && !s.room.runs()) continue;
    s.room.tick({v[ROOM_SIZE], v[ROOM_DECAY], v[ROOM_DAMP], v[ROOM_MIX]}, core.sampleClock == 0);
  }
}

// ---- Width, ducking.

// What lies below `hz` is taken out of the side; `hz` at rest leaves it as it is.
void narrowLows(EngineCore& core, TrackState& s, const Value& hz, Block& side, int n) {
  for (int i = 0; i < n; i++) {
    if (!highpassOn(hz[i])) {
      s.monoBelowState = 0;
      continue;
    }
    if (s.monoHz != hz[i]) {
      s.monoHz = hz[i];
      s.monoCoefficient = float(1 - math::exp(-2 * math::pi * double(s.monoHz) / core.rates.rate));
    }
    s.monoBelowState += s.monoCoefficient * (side[i] - s.monoBelowState);
    side[i] -= s.monoBelowState;
  }
}

void widenTrack(EngineCore& core, int t, Block& l, Block& r, int n) {
  TrackState& s = core.tracks[t];
  const Value width(core, t, WIDTH), below(core, t, MONO_BELOW);
  const bool narrows = below.any(n, highpassOn);
  if (onGrid(core)) s.monoBelowState = flushed(s.monoBelowState);
  if (!narrows) {
    s.monoBelowState = 0;
    if (!width.any(n, [](float w) { return w != 1; })) return;
  }
  Block middle, side;
  const f4 half = splat(0.5f);
  for (int q = 0; q < quads(n); q++) {
    middle.put(q, (l.at(q) + r.at(q)) * half);
    side.put(q, width.four(q) * (l.at(q) - r.at(q)) * half);
  }
  if (narrows) narrowLows(core, s, below, side, n);
  // A sample that nothing touches stays what it is, whatever its neighbours in the segment do.
  for (int q = 0; q < quads(n); q++) {
    const i4 untouched = (width.four(q) == splat(1)) & (below.four(q) <= splat(highpassOff));
    l.put(q, select(untouched, l.at(q), middle.at(q) + side.at(q)));
    r.put(q, select(untouched, r.at(q), middle.at(q) - side.at(q)));
  }
}

// The envelope of a duck, one sample on.
void stepDuck(TrackState& s) {
  if (s.duckRising) {
    s.duck += (1 - s.duck) * 0.02f;
    if (s.duck > 0.98f) s.duckRising = false;
  } else {
    // What no longer changes the gain has ended.
    s.duck = s.duck >= 1e-9f ? s.duck * s.duckCoefficient : 0;
  }
}

void duckTrack(EngineCore& core, int t, Block& l, Block& r, bool silentInput, int n) {
  TrackState& s = core.tracks[t];
  const Value amount(core, t, DUCK_AMOUNT), release(core, t, DUCK_RELEASE);
  if (!amount.any(n, [](float d) { return d > 0; })) {
    s.duck = 0;
    s.duckRising = false;
    return;
  }
  if (s.duck == 0 && !s.duckRising) return;
  Block gain;
  gain.fill(1);
  for (int i = 0; i < n; i++) {
    if (!(amount[i] > 0)) {
      s.duck = 0;
      s.duckRising = false;
      continue;
    }
    if (s.duckRelease != release[i]) {
      s.duckRelease = release[i];
      s.duckCoefficient = float(math::exp(-1 / (double(s.duckRelease) * core.rates.rate)));
    }
    stepDuck(s);
    gain[i] = 1 - amount[i] * s.duck;
  }
  if (silentInput) return;
  for (int q = 0; q < quads(n); q++) {
    l.put(q, l.at(q) * gain.at(q));
    r.put(q, r.at(q) * gain.at(q));
  }
}

// ---- Sums.

void addToMix(EngineCore& core, int t, const Block& l, const Block& r, int n) {
  SegmentMix& mix = core.mix;
  for (int q = 0; q < quads(n); q++) {
    mix.dry.l.put(q, mix.dry.l.at(q) + l.at(q));
    mix.dry.r.put(q, mix.dry.r.at(q) + r.at(q));
  }
  for (int send = 0; send < 2; send++) {
    const Value amount(core, t, SEND_1 + send);
    const bool boosted = core.moves.boosts(send);
    if (!amount.moves() && amount.first() == 0 && !boosted) continue;
    fx::Stereo& to = mix.send[send];
    for (int q = 0; q < quads(n); q++) {
      f4 a = amount.four(q);
      if (boosted) a += core.moves.boost(send, q);
      to.l.put(q, to.l.at(q) + l.at(q) * a);
      to.r.put(q, to.r.at(q) + r.at(q) * a);
    }
  }
}

// Whether the chain behind a silent input gives exact silence, and nothing in it changes but the time.
bool rests(const EngineCore& core, int t) {
  const TrackState& s = core.tracks[t];
  for (int ch = 0; ch < 2; ch++) {
    if (!s.highpassState[ch].rests() || !s.lowpassState[ch].rests()) return false;
    for (const auto& band : s.eqState)
      if (!band[ch].rests()) return false;
  }
  return s.room.rests() && s.modFx.rests(core.track(t).mod_type) && s.monoBelowState == 0 &&
         s.crushHeld[0] == 0 && s.crushHeld[1] == 0;
}

// Time goes by for a chain that rests.
void passTrack(EngineCore& core, int t, int n) {
  TrackState& s = core.tracks[t];
  if (Value(core, t, CRUSH_RATE).any(n, [](float rate) { return rate > 0; })) {
    Block silence;
    silence.fill(0);
    Block other = silence;
    crushTrack(core, t, silence, other, n);
  }
  if (modulates(core, t)) betweenTicks(core, t, n, [&](int, int part) { s.modFx.pass(part); });
  s.room.pass(n);
}

// Now and then a chain that silence goes into is asked whether it rests by now.
void listenForRest(EngineCore& core, int t) {
  if (core.sampleClock & 255) return;
  core.tracks[t].modFx.listen();
  core.tracks[t].room.listen();
}

// While the transport stands, a Track without voices that has been quiet for half a second sleeps: what
// still rings below hearing stays frozen. It falls asleep on the sixteen-sample grid and wakes with a voice.
void watchSleep(EngineCore& core, int t) {
  TrackState& s = core.tracks[t];
  if (core.transport.playing || core.mix.trackUsed[t]) {
    s.sleeping = false;
  } else if (onGrid(core)) {
    s.sleeping = s.quiet >= u32(core.rates.rate * 0.5);
  }
}

// The chain behind the equalizers.
void finishTrack(EngineCore& core, int t, bool quietInput, int n) {
  Block &l = core.mix.trackL[t], &r = core.mix.trackR[t];
  TrackState& s = core.tracks[t];
  modulateTrack(core, t, l, r, n);
  if (s.room.runs()) s.room.process(l, r, n);
  if (quietInput) listenForRest(core, t);
  widenTrack(core, t, l, r, n);
  duckTrack(core, t, l, r, false, n);
  countQuiet(core, s.quiet, l, r, n);
  meterEnergy(core, t, l, r);
  Block gl, gr;
  panGains(core, t, gl, gr, n);
  for (int q = 0; q < quads(n); q++) {
    l.put(q, l.at(q) * gl.at(q));
    r.put(q, r.at(q) * gr.at(q));
  }
  meterPeaks(core, t, l, r);
  addToMix(core, t, l, r, n);
}

// What goes on in a Track that is silent and rests or sleeps.
void standStill(EngineCore& core, int t, int n) {
  TrackState& s = core.tracks[t];
  s.quiet = core.transport.playing ? 0 : counted(s.quiet, n);
  if (!s.sleeping) passTrack(core, t, n);
  duckTrack(core, t, core.mix.trackL[t], core.mix.trackR[t], true, n);
  fadeMeters(core, t);
  movePan(core, t, n);
}

}  // namespace

void refreshTracks(EngineCore& core, bool snap) {
  const int count = core.trackCount();
  bool anySolo = false;
  for (int t = 0; t < count; t++) anySolo |= core.track(t).solo != 0;
  for (int t = 0; t < limits::tracks; t++) {
    const Track& track = core.track(t);
    TrackState& s = core.tracks[t];
    const bool auditioned = core.auditionPlay.armed && int(core.auditionPlay.what.track) == t;
    s.audible = t < count && ((!track.mute && (!anySolo || track.solo)) || auditioned);
    if (snap || (s.fresh && t < count)) {
      const Pan pan = panTarget(s, core.prepared[t].value[PAN]);
      s.gainNow = gainTarget(s, core.prepared[t].value[LEVEL], core.prepared[t].value[TRIM]);
      s.panL = pan.left;
      s.panR = pan.right;
    }
    s.fresh = t >= count;
    designTrackEq(core, t);
  }
}

void renderTracks(EngineCore& core) {
  const int n = core.clock.n;
  SegmentMix& mix = core.mix;
  for (fx::Stereo* x : {&mix.dry, &mix.send[0], &mix.send[1]}) {
    x->l.fill(0);
    x->r.fill(0);
  }
  if (onGrid(core)) tickRooms(core);

  bool works[limits::tracks], quietInput[limits::tracks];
  for (int t = 0; t < limits::tracks; t++) {
    Block &l = mix.trackL[t], &r = mix.trackR[t];
    quietInput[t] = !mix.trackUsed[t] || (silent(l, n) && silent(r, n));
    watchSleep(core, t);
    works[t] = !quietInput[t] || (!core.tracks[t].sleeping && !rests(core, t));
    if (!mix.trackUsed[t] && works[t]) {
      l.fill(0);
      r.fill(0);
    }
    levelTrack(core, t, l, r, !works[t], n);
  }
  filterTracks(core, works);
  for (int t = 0; t < limits::tracks; t++) {
    if (!works[t]) continue;
    driveTrack(core, t, mix.trackL[t], mix.trackR[t], n);
    crushTrack(core, t, mix.trackL[t], mix.trackR[t], n);
  }
  runTrackEqs(core, works);
  for (int t = 0; t < limits::tracks; t++) {
    if (works[t])
      finishTrack(core, t, quietInput[t], n);
    else
      standStill(core, t, n);
  }
}

}  // namespace synth
