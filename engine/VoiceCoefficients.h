// The envelope coefficients of a voice, kept until a value under them changes: most never do.
#pragma once

namespace synth {

struct EngineCore;
struct Voice;

struct VoiceCoefficients {
  // What they were computed for: the Track's values and the Note's Locks.
  unsigned version = ~0u, locks = 0;
  static constexpr int inputs = 9, decaySeconds = 1;
  // Seconds of: attack, decay, release; timbre attack, decay, release; filter attack, decay, release.
  float seconds[inputs] = {};
  float attackStep = 1, decay = 0, release = 0, contourDecay = 0, contourStep = 1;
  float timbreAttack = 1, timbreDecay = 0, timbreRelease = 0;
  float filterAttack = 1, filterDecay = 0, filterRelease = 0;
};

// The voice's coefficients for its values as they stand now.
const VoiceCoefficients& coefficientsOf(EngineCore& core, Voice& voice);

}  // namespace synth
