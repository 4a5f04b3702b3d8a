#include "core/sounds/MacroPlan.h"

#include <algorithm>

namespace synth::macros {
namespace {

int entryFor(Plan& plan, const param::Info& info, u8 pad) {
  for (int i = 0; i < plan.entryCount; i++)
    if (plan.entries[i].info == &info && plan.entries[i].pad == pad) return i;
  Plan::Entry& entry = plan.entries[plan.entryCount];
  entry.info = &info;
  entry.pad = pad;
  entry.target = i16(info.scope == param::ScopeTrack ? automation::targetOf(info) : -1);
  return plan.entryCount++;
}

}  // namespace

void buildPlan(const Project& p, int track, Plan& plan) {
  plan = Plan{};
  if (track < 0 || track >= limits::tracks) return;
  const Track& t = p.tracks[track];
  plan.macroCount = u8(std::min<int>(t.macroCount, limits::macros));
  for (int m = 0; m < plan.macroCount; m++) {
    plan.value[m] = t.macros[m].value;
    plan.bipolar[m] = t.macros[m].polarity != 0;
    for (int i = 0; i < std::min<int>(t.macros[m].targetCount, limits::macroTargets); i++) {
      const MacroTarget& target = t.macros[m].targets[i];
      const param::Info* info = param::find(target.param);
      if (!info) continue;
      const int entry = entryFor(plan, *info, target.pad);
      plan.entries[entry].macros |= u16(1u << m);
      if (const int at = plan.entries[entry].target; at >= 0) plan.targetMacros[at] |= u16(1u << m);
      plan.links[plan.linkCount++] = {u8(m), u8(entry), &target};
    }
  }
}

}  // namespace synth::macros
