#include "spec/Arrangement.h"

#include <cmath>

#include "base/Suggest.h"
#include "base/Text.h"
#include "core/edit/Automation.h"
#include "core/model/Clips.h"
#include "core/model/Lanes.h"
#include "core/model/Markers.h"
#include "core/model/Patterns.h"
#include "core/params/Targets.h"
#include "spec/Locks.h"

namespace synth::spec {
namespace {

std::string holds(int count) { return "A Project holds " + std::to_string(count); }

void readClip(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"track", "at", "pattern", "length", "offset", "repeats"});
  ClipRec clip;
  clip.track = u8(requiredInteger(object, "track", where, 0, limits::tracks - 1));
  clip.start = u32(requiredInteger(object, "at", where, 0, limits::songSteps - 1));
  clip.pattern = u16(requiredInteger(object, "pattern", where, 0, 65535));
  const std::string name =
      "Clip at " + std::to_string(clip.start) + " on track " + std::to_string(clip.track);
  const int row = patternIndex(p, clip.track, clip.pattern);
  if (row < 0)
    throw SpecError(
        name + " names pattern " + std::to_string(clip.pattern) + ", which the track does not have",
        "List the track's patterns in \"patterns\"");
  if (p.patterns[row].isFront)
    throw SpecError(
        name + " names pattern " + std::to_string(clip.pattern) + ", which is the front of another",
        "A front has no clip of its own");
  const int loop = p.patterns[row].length;
  clip.offset = u16(integerAt(object, "offset", where, 0, loop - 1, 0));
  clip.length = u32(integerAt(object, "length", where, 1, limits::songSteps, loop - clip.offset));
  const Json* repeats = object.find("repeats");
  if (repeats && !repeats->isBool()) throw SpecError("A clip's \"repeats\" is true or false");
  clip.repeats = repeats ? repeats->boolean() : clip.offset + clip.length > u32(loop);
  if (clip.length > limits::songSteps - clip.start)
    throw SpecError(Fault::OutOfRange, "The Song ends by Step " + std::to_string(limits::songSteps));
  if (p.clipCount >= limits::clips) throw SpecError("Too many clips", holds(limits::clips));
  if (!clip.repeats && clip.offset + clip.length > u32(loop))
    throw SpecError(
        name + " runs past its pattern's loop without \"repeats\"",
        "Leave \"repeats\" out, or make the clip at most " + std::to_string(loop - clip.offset) + " steps");
  if (!addClip(p, clip))
    throw SpecError(name + " overlaps another clip of the track", "Clips of one track never overlap");
}

// [step, value01] with null for a rest, into times and values.
void readPoint(const Json& point, std::vector<double>& times, std::vector<float>& values) {
  if (!point.isArray() || point.items().size() != 2 || !point.items()[0].isNumber() ||
      !(point.items()[1].isNumber() || point.items()[1].isNull()))
    throw SpecError("A lane point is [step, value01]");
  const double step = point.items()[0].number();
  const double position = std::round(step * 16);
  if (!(position >= 0 && position <= limits::lanePosition))
    throw SpecError(Fault::OutOfRange,
                    "Lane points lie on the Song: 0.." + std::to_string(limits::songSteps - 1) + " Steps");
  const Json& value = point.items()[1];
  if (value.isNumber() && !(value.number() >= 0 && value.number() <= 1))
    throw SpecError(Fault::OutOfRange, "Lane values are 0..1 (null: the lane rests)");
  if (!times.empty() && step < times.back()) throw SpecError("Lane points go forward in steps");
  times.push_back(step);
  values.push_back(value.isNull() ? NAN : float(value.number()));
}

void readPoints(Project& p, int row, const Json& object, const std::string& where) {
  const Json* points = object.find("points");
  const std::string form = where + " needs \"points\": [[step, value01], ...] (Song steps)";
  if (!points) throw SpecError(form);
  std::vector<double> times;
  std::vector<float> values;
  for (const Json& point : list(*points, form)) readPoint(point, times, values);
  if (automation::setBreakpoints(p, row, times.data(), values.data(), int(times.size()))) return;
  for (size_t i = 2; i < times.size(); i++)
    if (std::round(times[i] * 16) == std::round(times[i - 2] * 16))
      throw SpecError("Three lane points stand on step " + text::number(times[i], false) + " in " + where,
                      "Two points on one step jump; a third has no meaning");
  throw SpecError("Too many lane points",
                  "The Project holds " + std::to_string(limits::lanePoints) + " in all");
}

void finishLane(Project& p, int row, int target, const Json& object, const std::string& where) {
  clearLane(p, row);
  readPoints(p, row, object, where);
  const Json* enabled = object.find("enabled");
  p.lanes[row].enabled = enabled ? boolean(*enabled, whatOf("enabled", where)) : 1;
  p.lanes[row].target = u8(target + 1);
}

const std::string* targetText(const Json& object, const std::string& where) {
  const Json& target = required(object, "target", where);
  if (target.isNull()) return nullptr;
  if (!target.isString())
    throw SpecError(whatOf("target", where) + " is a target's name",
                    "List them with: quorel targets (null: the Engine's defaults)");
  return &target.string();
}

int busLaneTarget(int bus, const std::string& name) {
  const int target = automation::busTargetNamed(bus, name);
  if (target >= 0) return target;
  std::vector<std::string> names;
  for (int t = automation::firstBusTarget; t <= automation::lastBusTarget; t++)
    if (automation::busOf(t) == bus) names.push_back(automation::targetName(t));
  std::string hint = suggest(name, names);
  throw SpecError(Fault::UnknownTarget, "Unknown bus lane target " + name,
                  hint.empty() ? "List them with: quorel targets" : hint);
}

int freeLane(const Project& p, int owner) {
  for (int slot = 0; slot < limits::lanesPerOwner; slot++)
    if (!laneInUse(p.lanes[laneRow(owner, slot)])) return slot;
  return -1;
}

[[noreturn]] void noFreeLane(const std::string& owner, int rows) {
  throw SpecError(owner + " has no free lane",
                  "It holds " + std::to_string(rows) + "; name the one to replace with \"lane\"");
}

void readLane(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"track", "bus", "lane", "target", "enabled", "points"});
  const Json *track = object.find("track"), *bus = object.find("bus");
  if (!track && !bus) throw SpecError(where + " needs \"track\" or \"bus\"");
  if (track && bus) throw SpecError("A lane has \"track\" or \"bus\", not both, in " + where);
  int owner, busNumber = -1;
  if (track) {
    owner = integer(*track, whatOf("track", where), 0, limits::tracks - 1);
  } else {
    busNumber = bus->isString() ? readBus(bus->string()) : -1;
    if (busNumber < 0) throw SpecError(whatOf("bus", where) + " is \"I\", \"II\" or \"MASTER\"");
    owner = busOwner(busNumber);
  }
  const int slot = integerAt(object, "lane", where, 0, limits::lanesPerOwner - 1, freeLane(p, owner));
  if (slot < 0)
    noFreeLane(track ? "Track " + std::to_string(owner) : std::string("Bus ") + busKey(busNumber),
               limits::lanesPerOwner);
  const std::string* name = targetText(object, where);
  const int target = !name   ? -1
                     : track ? trackTarget(p.tracks[owner], *name)
                             : busLaneTarget(busNumber, *name);
  finishLane(p, laneRow(owner, slot), target, object, where);
}

void readMasterLane(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"lane", "target", "enabled", "points"});
  int slot = 0;
  while (slot < limits::masterLanes && laneInUse(p.lanes[masterLaneRow(slot)])) slot++;
  if (slot == limits::masterLanes) slot = -1;
  slot = integerAt(object, "lane", where, 0, limits::masterLanes - 1, slot);
  if (slot < 0) noFreeLane("The master", limits::masterLanes);
  const std::string* name = targetText(object, where);
  int target = -1;
  if (name) {
    target = automation::performanceEffectNamed(*name);
    if (target < 0) {
      std::vector<std::string> names;
      for (int i = 0; i < automation::performanceEffects; i++)
        names.push_back(automation::performanceEffectName(i));
      const std::string hint = suggest(*name, names);
      throw SpecError(Fault::UnknownTarget, "Unknown master lane target " + *name,
                      hint.empty() ? "List them with: quorel targets" : hint);
    }
  }
  finishLane(p, masterLaneRow(slot), target, object, where);
}

template <class Read>
void readEach(const Json& section, const char* name, Read read) {
  const Json::Items& items = list(section, "\"" + std::string(name) + "\" is an array");
  for (size_t i = 0; i < items.size(); i++)
    inPlace(placeOf(name, i), [&] { read(items[i], placeOf(name, i)); });
}

// A stated name as it is, blanks at its end included.
void keepName(MarkerRec& marker, const std::string& text) {
  std::fill(std::begin(marker.name), std::end(marker.name), char(0));
  std::copy(text.begin(), text.end(), marker.name);
}

}  // namespace

const char* busKey(int bus) {
  constexpr const char* keys[] = {"I", "II", "MASTER"};
  return keys[bus];
}

int readBus(const std::string& key) {
  for (int bus : {SendI, SendII, MasterBus})
    if (text::sameIgnoringCase(key, busKey(bus))) return bus;
  return -1;
}

void readClips(Project& p, const Json& section) {
  readEach(section, "clips", [&](const Json& item, const std::string& where) { readClip(p, item, where); });
}

void requireClips(const Project& p) {
  for (int i = 0; i < p.patternCount; i++) {
    const PatternRec& r = p.patterns[i];
    if (r.isFront) continue;
    bool played = false;
    for (const ClipRec& clip : clipsOf(p, r.track)) played |= clip.pattern == r.id;
    if (!played)
      throw SpecError(
          "Pattern " + std::to_string(r.id) + " of track " + std::to_string(r.track) + " has no clip",
          "Every pattern needs a clip (a pattern no clip plays is gone)");
  }
}

void readLanes(Project& p, const Json& section) {
  readEach(section, "lanes", [&](const Json& item, const std::string& where) { readLane(p, item, where); });
}

void readMasterLanes(Project& p, const Json& section) {
  readEach(section, "master",
           [&](const Json& item, const std::string& where) { readMasterLane(p, item, where); });
}

void readMarkers(Project& p, const Json& section) {
  readEach(section, "markers", [&](const Json& item, const std::string& where) {
    checkKeys(item, where, {"at", "name"});
    const int at = requiredInteger(item, "at", where, 0, limits::songSteps - 1);
    const Json* name = item.find("name");
    if (name && !name->isString()) throw SpecError("A marker name is a string");
    const std::string text = name ? name->string() : "";
    if (text.size() > size_t(limits::shortName) || !isPlainText(text))
      throw SpecError("A marker name is up to 12 characters, letters without accents, digits and signs: " +
                      text);
    if (name && text.empty())
      throw SpecError("A marker name has at least one character",
                      "Leave \"name\" out for a name by its number");
    for (int i = 0; i < p.markerCount; i++)
      if (p.markers[i].step == u32(at)) throw SpecError("Two markers at Step " + std::to_string(at));
    if (!addMarker(p, u32(at), text)) throw SpecError("Too many markers", holds(limits::markers));
    if (!name) return;
    for (int i = 0; i < p.markerCount; i++)
      if (p.markers[i].step == u32(at)) keepName(p.markers[i], text);
  });
}

}  // namespace synth::spec
