#include "spec/OldBase.h"

#include "core/model/Defaults.h"
#include "core/params/Registry.h"
#include "core/sounds/Factory.h"

namespace synth::spec {
namespace {

struct OldValue {
  const char* key;
  f32 value;
};

constexpr OldValue oldValues[] = {
    {"master", 0.8f},
    {"comp_amount", 0.25f},
    {"comp_release", 0.2f},
    {"limiter_ceiling", 0.97f},
    {"saturation", 0.1f},
    {"fx1_delay_feedback", 0.35f},
    {"fx1_delay_high_cut", 5200},
    {"fx2_hall_decay", 0.6f},
    {"fx2_hall_damping", 0.5f},
};

}  // namespace

void applyOldBase(Project& p) {
  for (const OldValue& row : oldValues) param::find(row.key)->set(row.value, p);
  p.tracks[1] = oldTrack(1);
}

Track oldTrack(int slot) {
  Track track = starterTrack(slot);
  if (slot == 1) preset::applyFactory(track, "FOUNDATION");
  return track;
}

}  // namespace synth::spec
