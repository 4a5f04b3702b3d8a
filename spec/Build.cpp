#include "spec/Build.h"

#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/model/Tracks.h"
#include "spec/Arrangement.h"
#include "spec/OldBase.h"
#include "spec/Patterns.h"
#include "spec/Sounds.h"
#include "spec/Tracks.h"
#include "spec/Values.h"

namespace synth::spec {
namespace {

void readName(Project& p, const Json& name) {
  if (!name.isString() || !setProjectName(p, name.string()))
    throw SpecError("\"name\" is a string of up to 63 bytes");
}

// The Song loop stands among the project's values: [from, to] in Steps, null for none.
void readLoop(Project& p, const Json& loop) {
  if (loop.isNull()) return;
  const std::string form = "\"loop\" in project is [from, to] in Song steps, or null";
  const Json::Items& items = list(loop, form);
  if (items.size() != 2) throw SpecError(form);
  const int from = integer(items[0], "The loop's start", 0, int(limits::songSteps) - 1);
  const int to = integer(items[1], "The loop's end", 1, int(limits::songSteps));
  if (from >= to) throw SpecError("The loop ends after its start");
  p.loopStart = u32(from);
  p.loopEnd = u32(to);
}

void readProject(Project& p, const Json& section) {
  requireObject(section, "project");
  for (const Json::Member& member : section.members())
    if (member.key == "loop") readLoop(p, member.value);
  applyValues(p, section, param::ScopeProject, 0, 0, "project", "loop");
}

void readBase(Project& p, const Json& base) {
  if (!base.isString() || base.string() != "v5") throw SpecError("Unknown base (only \"v5\")");
  applyOldBase(p);
}

}  // namespace

ProjectPtr build(const Json& spec) {
  checkKeys(spec, "the spec",
            {"base", "name", "project", "tracks", "pads", "patterns", "clips", "lanes", "master", "markers",
             "buses", "clip_offset"});
  auto project = makeBlank();
  Project& p = *project;
  auto section = [&](const char* key, auto read) {
    if (const Json* value = spec.find(key)) read(*value);
  };
  section("base", [&](const Json& v) { readBase(p, v); });
  section("name", [&](const Json& v) { readName(p, v); });
  section("project", [&](const Json& v) { readProject(p, v); });
  section("tracks", [&](const Json& v) { readTracks(p, v, spec.find("base") != nullptr); });
  section("pads", [&](const Json& v) { readPads(p, v); });
  section("patterns", [&](const Json& v) { readPatterns(p, v); });
  section("clips", [&](const Json& v) { readClips(p, v); });
  requireClips(p);
  section("lanes", [&](const Json& v) { readLanes(p, v); });
  section("master", [&](const Json& v) { readMasterLanes(p, v); });
  section("markers", [&](const Json& v) { readMarkers(p, v); });
  section("buses", [&](const Json& v) { readBuses(p, v); });
  canonical(p);
  return project;
}

}  // namespace synth::spec
