#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/params/Options.h"
#include "core/params/Registry.h"

namespace synth {

std::string duckSourceName(const Project& project, int source) {
  source = std::clamp(source, 0, 143);
  const int track = source / 9, pad = source % 9;
  std::string name(nameText(project.tracks[track].name));
  if (name.empty()) name = starterTrackName(track);
  return pad > 0 ? name + " PAD " + std::to_string(pad) : name;
}

bool duckSourceValid(const Project& project, int source) {
  if (source < 0 || source > 143 || source / 9 >= project.track_count) return false;
  return source % 9 == 0 || isDrums(project.tracks[source / 9]);
}

int stepDuckSource(const Project& project, int source, int direction) {
  if (!direction) return source;
  for (int next = source + direction; next >= 0 && next <= 143; next += direction)
    if (duckSourceValid(project, next)) return next;
  return source;
}

namespace param {
namespace {

bool keyIs(const Info& info, const char* key) { return std::strcmp(info.key, key) == 0; }
bool keyBegins(const Info& info, const char* prefix) {
  return std::strncmp(info.key, prefix, std::strlen(prefix)) == 0;
}

bool namesEngineControl(const Info& info, const char* label) {
  return std::strncmp(label, "ENGINE ", 7) == 0 &&
         (keyIs(info, "lfo_target") || keyIs(info, "lfo2_target") || keyIs(info, "timbre_target"));
}

__attribute__((format(printf, 3, 4))) void print(char* buffer, int size, const char* pattern, ...) {
  std::va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(buffer, size_t(size), pattern, arguments);
  va_end(arguments);
}

}  // namespace

std::string optionLabel(const Info& info, int index, const Project* project, int track) {
  if (index < 0 || !info.options || index >= info.optionCount) return "";
  const char* label = info.options[index];
  if (project && track >= 0 && track < limits::tracks && namesEngineControl(info, label)) {
    const Track& t = project->tracks[track];
    if (!isDrums(t)) return engineParamName(t.engine, label[7] - '1');
  }
  return label;
}

void format(const Info& info, f32 value, char* buffer, int size, const Project* project, int track) {
  if (!buffer || size < 1) return;
  // Adding 0 makes a negative zero positive.
  const double v = std::isfinite(value) ? double(value) + 0.0 : 0;
  const char* blank = info.unit[0] ? " " : "";
  auto unitIs = [&](const char* unit) { return std::strcmp(info.unit, unit) == 0; };

  if (project && keyIs(info, "duck_source")) {
    print(buffer, size, "%s", duckSourceName(*project, int(std::lround(v))).c_str());
  } else if (keyIs(info, "osc_b_shape")) {
    if (v < 0)
      print(buffer, size, "MIRROR A");
    else
      print(buffer, size, "%.0f %%", v * 100);
  } else if (keyBegins(info, "master_eq_")) {
    const double x = std::round(v * 10) / 10;
    if (x == 0)
      print(buffer, size, "0.0 dB");
    else
      print(buffer, size, "%+.1f dB", x);
  } else if (info.curve == Enumeration && info.options) {
    const int index = int(std::clamp(std::round(v), 0.0, double(info.optionCount - 1)));
    print(buffer, size, "%s", optionLabel(info, index, project, track).c_str());
  } else if (unitIs("s")) {
    if (v < 1)
      print(buffer, size, "%.0f ms", v * 1000);
    else
      print(buffer, size, "%.2f s", v);
  } else if (unitIs("×")) {
    if (std::fabs(v - 1) <= 1e-9)
      print(buffer, size, "1×");
    else
      print(buffer, size, "%.2f×", std::round(std::clamp(v, 0.25, 4.0) * 100) / 100);
  } else if (unitIs("%")) {
    print(buffer, size, "%.0f %%", v * 100);
  } else if (unitIs("Hz")) {
    if (v >= 1000)
      print(buffer, size, "%.2f kHz", v / 1000);
    else
      print(buffer, size, "%.0f Hz", v);
  } else if (unitIs("note")) {
    const int note = int(std::clamp(std::round(v), 0.0, 127.0));
    print(buffer, size, "%s%d", options::keyRoot[note % 12 + 2], note / 12 - 1);
  } else if (info.curve == Integer) {
    print(buffer, size, "%d%s%s", int(std::clamp(std::round(v), -1e9, 1e9)), blank, info.unit);
  } else {
    print(buffer, size, "%.2f%s%s", v, blank, info.unit);
  }
}

std::string formatted(const Info& info, f32 value, const Project* project, int track) {
  char buffer[64];
  format(info, value, buffer, sizeof buffer, project, track);
  return buffer;
}

}  // namespace param
}  // namespace synth
