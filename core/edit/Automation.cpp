#include "core/edit/Automation.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/model/Lanes.h"

namespace synth::automation {

bool setBreakpoints(Project& project, int lane, const double* times, const float* values, int count) {
  if (count < 0) return false;
  std::vector<LanePoint> points;
  for (int i = 0; i < count; i++) {
    const double position = std::round(times[i] * 16);
    if (!(position >= 0 && position <= limits::lanePosition)) return false;
    LanePoint point;
    point.position = u32(position);
    point.rest = std::isnan(values[i]);
    if (!point.rest) point.value = u16(std::lround(std::clamp(values[i], 0.0f, 1.0f) * 65535.0));
    points.push_back(point);
  }
  return setLanePoints(project, lane, points.data(), int(points.size()));
}

}  // namespace synth::automation
