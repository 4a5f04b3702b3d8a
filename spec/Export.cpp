#include "spec/Export.h"

#include <bit>
#include <cstring>

#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/params/Registry.h"
#include "core/sounds/Pins.h"
#include "spec/Arrangement.h"
#include "spec/Build.h"
#include "spec/ExportTrack.h"
#include "spec/Parked.h"
#include "spec/Rows.h"

namespace synth::spec {
namespace {

Json projectSpec(const Project& p, const Project& blank, bool full) {
  Json params = Json::object();
  for (const param::Info& info : param::all()) {
    if (info.scope != param::ScopeProject) break;
    const f32 value = info.get(p);
    if (full || std::bit_cast<u32>(value) != std::bit_cast<u32>(info.get(blank))) params.add(info.key, value);
  }
  if (p.loopStart || p.loopEnd)
    params.add("loop", Json::array().push(double(p.loopStart)).push(double(p.loopEnd)));
  return params;
}

Json busesSpec(const Project& p, const Project& blank) {
  Json rows = Json::array();
  for (int bus : {SendI, SendII, MasterBus}) {
    const PinList& pins = p.busPins[bus];
    if (sameBytes(pins, blank.busPins[bus])) continue;
    Json row = Json::object();
    row.add("bus", busKey(bus));
    auto listed = copyOf(p);
    if (pins.custom) pins::setBusKeys(*listed, bus, pins::busKeys(p, bus));
    if (sameBytes(listed->busPins[bus], pins))
      row.add("pins", pinsSpec(pins, nullptr));
    else
      row.add("parked", Json::object().add("pins", pinsSpec(pins, nullptr)));
    rows.push(std::move(row));
  }
  return rows;
}

template <class One>
Json rowsOf(int count, One one) {
  Json rows = Json::array();
  for (int i = 0; i < count; i++) rows.push(one(i));
  return rows;
}

Json lanesSpec(const Project& p, int from, int to) {
  Json rows = Json::array();
  for (int row = from; row < to; row++)
    if (laneInUse(p.lanes[row])) rows.push(laneSpec(p, row));
  return rows;
}

bool isEmpty(const Json& value) { return value.isArray() ? value.items().empty() : value.members().empty(); }

}  // namespace

Json toSpec(const Project& p, bool full) {
  const auto blank = makeBlank();
  Json spec = Json::object();
  auto section = [&](const char* key, Json value) {
    if (!isEmpty(value)) spec.add(key, std::move(value));
  };
  if (projectName(p) != projectName(*blank)) spec.add("name", projectName(p));
  section("project", projectSpec(p, *blank, full));
  Json tracks = Json::array(), pads = Json::array();
  TrackExport exporter(p, *blank, full);
  for (int t = 0; t < limits::tracks; t++) exporter.add(t, tracks, pads);
  section("tracks", std::move(tracks));
  section("pads", std::move(pads));
  section("patterns", rowsOf(p.patternCount, [&](int i) { return patternSpec(p, i); }));
  section("clips", rowsOf(p.clipCount, [&](int i) { return clipSpec(p, p.clips[i]); }));
  section("lanes", lanesSpec(p, 0, limits::firstMasterLane));
  section("master", lanesSpec(p, limits::firstMasterLane, limits::lanes));
  section("markers", rowsOf(p.markerCount, [&](int i) { return markerSpec(p.markers[i]); }));
  section("buses", busesSpec(p, *blank));
  return spec;
}

bool rebuilds(const Project& p, const Json& spec, std::string& error) {
  try {
    if (projectBytes(*build(spec)) == projectBytes(p)) return true;
    error = "the spec builds a different project";
  } catch (const SpecError& fault) {
    error = fault.message();
  }
  return false;
}

}  // namespace synth::spec
