#include "core/model/Markers.h"

#include <algorithm>
#include <string>

#include "core/Names.h"
#include "core/model/Arena.h"
#include "core/model/Clips.h"

namespace synth {

bool addMarker(Project& p, u32 step, std::string_view name) {
  if (step >= limits::songSteps || p.markerCount >= limits::markers) return false;
  auto end = p.markers + p.markerCount;
  auto it = std::partition_point(p.markers, end, [&](const MarkerRec& m) { return m.step < step; });
  if (it != end && it->step == step) return false;
  MarkerRec marker;
  marker.step = step;
  setMarkerName(marker.name, name);
  if (!marker.name[0]) setMarkerName(marker.name, "MARKER " + std::to_string(p.markerCount + 1));
  const size_t at = size_t(it - p.markers);
  arena::open(p.markers, p.markerCount, at, 1);
  p.markers[at] = marker;
  return true;
}

int markerNamed(const Project& p, std::string_view name) {
  for (int i = 0; i < p.markerCount; i++)
    if (nameText(p.markers[i].name) == name) return i;
  return -1;
}

bool sectionAt(const Project& p, u32 step, u32& start, u32& end) {
  auto last = p.markers + p.markerCount;
  auto next = std::partition_point(p.markers, last, [&](const MarkerRec& m) { return m.step <= step; });
  start = next == p.markers ? 0 : (next - 1)->step;
  end = next == last ? songEnd(p) : next->step;
  end = std::max(end, start);
  return end > start;
}

}  // namespace synth
