#include "core/sounds/Solo.h"

#include "core/model/Lanes.h"
#include "core/params/Targets.h"
#include "core/sounds/MacroEdit.h"

namespace synth {

void soloTrack(Project& project, int track) {
  for (int t = 0; t < limits::tracks; t++) project.tracks[t].solo = t == track;
  project.tracks[track].mute = 0;
}

void soloPad(Project& project, int track, int pad) {
  soloTrack(project, track);
  const param::Info& level = *param::find("pad_level");
  for (int other = 0; other < limits::pads; other++) {
    if (other == pad) continue;
    project.tracks[track].pad_level[other] = 0;
    for (int slot = 0; slot < project.tracks[track].macroCount; slot++)
      macros::unmap(project, track, slot, level, other);
  }
}

void silenceSends(Project& project) {
  for (const char* key : {"fx1_return", "fx2_return"}) {
    const param::Info& info = *param::find(key);
    info.set(0, project);
    for (int t = 0; t < limits::tracks; t++)
      for (int slot = 0; slot < project.tracks[t].macroCount; slot++)
        macros::unmap(project, t, slot, info, -1);
    for (int row = laneRow(busOwner(0), 0); row < limits::firstMasterLane; row++)
      if (project.lanes[row].target == automation::targetOf(info) + 1) project.lanes[row].enabled = 0;
  }
}

}  // namespace synth
