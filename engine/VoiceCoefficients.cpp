#include "engine/VoiceCoefficients.h"

#include <algorithm>

#include "base/Math.h"
#include "engine/Resolve.h"

namespace synth {
namespace {

// exp(-units / (rate * seconds)): how a one-pole falls by `units` time constants in `seconds`.
float fall(double units, double rate, double seconds) { return float(math::exp(-units / (rate * seconds))); }
float step(double rate, double seconds) { return float(1 / (rate * seconds)); }

}  // namespace

const VoiceCoefficients& coefficientsOf(EngineCore& core, Voice& v) {
  VoiceCoefficients& k = v.coefficients;
  if (k.version == core.prepared[v.track].version && k.locks == v.lockCounter) return k;
  k.version = core.prepared[v.track].version;
  k.locks = v.lockCounter;
  const Track& t = core.track(v.track);
  const double rate = core.rates.rate;
  const float now[VoiceCoefficients::inputs] = {voiceParam(core, v, automation::ATTACK),
                                                voiceParam(core, v, automation::DECAY),
                                                voiceParam(core, v, automation::RELEASE),
                                                t.timbre_attack,
                                                t.timbre_decay,
                                                t.timbre_release,
                                                t.filter_attack,
                                                t.filter_decay,
                                                t.filter_release};
  auto changed = [&](int i) {
    if (k.seconds[i] == now[i]) return false;
    k.seconds[i] = now[i];
    return true;
  };
  if (changed(0)) k.attackStep = step(rate, now[0]);
  // The filter's contour follows the Track's own attack, and never faster than in 30 ms.
  k.contourStep = step(rate, std::max(t.attack, 0.03f));
  if (changed(1)) {
    k.decay = fall(1, rate, now[1]);
    k.contourDecay = fall(3, rate, now[1]);
  }
  if (changed(2)) k.release = fall(7, rate, now[2]);
  if (changed(3)) k.timbreAttack = step(rate, now[3]);
  if (changed(4)) k.timbreDecay = fall(1, rate, now[4]);
  if (changed(5)) k.timbreRelease = fall(7, rate, now[5]);
  if (changed(6)) k.filterAttack = step(rate, now[6]);
  if (changed(7)) k.filterDecay = fall(3, rate, now[7]);
  if (changed(8)) k.filterRelease = fall(5, rate, now[8]);
  return k;
}

}  // namespace synth
