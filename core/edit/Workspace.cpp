#include "core/edit/Workspace.h"

#include <cstring>

#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Tracks.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"

namespace synth {
namespace {

bool isDefaultName(std::string_view name) {
  // A number behind it makes no difference: "DRUMS 2", "SYNTH A 2".
  const size_t blank = name.rfind(' ');
  const bool numbered = blank != name.npos && blank + 1 < name.size() &&
                        name.find_first_not_of("0123456789", blank + 1) == name.npos;
  if (numbered) name = name.substr(0, blank);
  for (int i = 0; i < limits::tracks; i++)
    if (name == starterTrackName(i)) return true;
  return name.empty();
}

// "DRUMS", "DRUMS 2" ...; a melodic Track takes the first free of "SYNTH A" .. "SYNTH N".
std::string freeDefaultName(const Project& p, int kind) {
  if (kind == DRUMS) return freeTrackName(p, "DRUMS");
  for (int i = 2; i < limits::tracks; i++)
    if (freeTrackName(p, starterTrackName(i)) == starterTrackName(i)) return starterTrackName(i);
  return freeTrackName(p, "SYNTH A");
}

void dropForeignLanes(Project& p, int track) {
  for (int s = 0; s < limits::lanesPerOwner; s++) {
    const int row = laneRow(track, s), target = p.lanes[row].target - 1;
    // The new sound has no Macros, and a kit takes fewer targets.
    if (p.lanes[row].target &&
        (automation::isMacroTarget(target) || !automation::laneable(target, isDrums(p.tracks[track]))))
      clearLane(p, row);
  }
}

}  // namespace

bool switchTrackKind(Project& p, int track, int kind) {
  if (track < 0 || track >= limits::tracks || kind < MELODIC || kind > DRUMS ||
      p.tracks[track].track_kind == kind)
    return false;
  const std::string name(nameText(p.tracks[track].name));
  clearTrack(p, track, false);
  p.tracks[track] = defaultTrack(TrackKind(kind));
  if (isDefaultName(name))
    setName(p.tracks[track].name, freeDefaultName(p, kind));
  else
    setName(p.tracks[track].name, name);
  dropForeignLanes(p, track);
  return true;
}

}  // namespace synth
