#include <algorithm>
#include <cstring>

#include "base/Crc32.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/ProjectFormat.h"
#include "core/model/Validate.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"

namespace synth {
namespace {

// Thrown and caught in this file alone.
struct Refused {
  std::string text;
};

void require(bool ok, const char* text) {
  if (!ok) throw Refused{text};
}

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  template <class T>
  T get() {
    T value;
    std::memcpy(&value, take(sizeof(T)).data(), sizeof(T));
    return value;
  }
  std::string_view take(size_t size) {
    require(bytes_.size() >= size, "Truncated project");
    auto out = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return out;
  }
  // A number of a Macro, where -0 is no value; older Presets brought it into files.
  f32 plainZero() { return get<f32>() + 0.0f; }
  u8 boolean() {
    const u8 b = get<u8>();
    require(b <= 1, "Invalid boolean");
    return b;
  }
  std::string_view text(size_t most, const char* tooLong, const char* badCharacter) {
    const u8 length = get<u8>();
    require(length <= most, tooLong);
    auto s = take(length);
    require(std::all_of(s.begin(), s.end(), [](char c) { return c >= 32 && c <= 126; }), badCharacter);
    return s;
  }
  template <size_t N>
  void shortName(char (&into)[N]) {
    auto s = text(limits::shortName, "Name too long", "Invalid character in a name");
    std::copy(s.begin(), s.end(), into);
  }
  bool atEnd() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
};

void readName(Reader& r, Project& p) {
  const u8 length = r.get<u8>();
  require(length <= limits::projectName, "Project name exceeds 63 bytes");
  auto s = r.take(length);
  require(s.find('\0') == s.npos, "Embedded null in project name");
  setProjectName(p, s);
}

void readParameters(Reader& r, Project& p) {
  const u32 count = r.get<u32>();
  require(count <= 100000, "Too many parameters");
  const param::Info* info = nullptr;
  for (u32 n = 0; n < count; n++) {
    const u16 id = r.get<u16>();
    const u8 index = r.get<u8>();
    const f32 value = r.get<f32>();
    if (!info || info->id != id) info = param::find(id);
    if (!info) throw Refused{"Unknown parameter id " + std::to_string(id)};
    require(index < info->instances(), "Parameter index out of range");
    if (!param::inRange(*info, value)) throw Refused{std::string("Parameter out of range: ") + info->key};
    if (info->scope == param::ScopePad)
      info->set(value, p, index / limits::pads, index % limits::pads);
    else
      info->set(value, p, index);
  }
}

void readPins(Reader& r, PinList& list, bool ofTrack) {
  const u8 count = r.get<u8>();
  if (count == format::defaultPins) return;
  require(count <= limits::pins, "Too many Pins");
  list.custom = 1;
  list.count = count;
  for (int i = 0; i < count; i++) {
    const u16 id = r.get<u16>();
    const bool macro = ofTrack && id >= limits::firstMacroPin && id < limits::firstMacroPin + limits::macros;
    if (!macro && !param::find(id)) throw Refused{"Unknown Pin id " + std::to_string(id)};
    list.ids[i] = id;
  }
}

void readTracks(Reader& r, Project& p) {
  for (Track& t : p.tracks) {
    r.shortName(t.name);
    t.origin = r.get<u8>();
  }
  for (Track& t : p.tracks) {
    auto s = r.text(limits::presetName, "Preset name too long", "Invalid character in a Preset name");
    std::copy(s.begin(), s.end(), t.preset_name);
  }
  for (Track& t : p.tracks) readPins(r, t.pins, true);
  for (PinList& list : p.busPins) readPins(r, list, false);
  for (Track& t : p.tracks) {
    if (!r.boolean()) continue;
    auto hash = r.take(sizeof t.sample_hash);
    require(hash.find_first_not_of('\0') != hash.npos, "Stored empty sample reference");
    std::memcpy(t.sample_hash, hash.data(), hash.size());
    r.shortName(t.sample_name);
  }
}

void readPatterns(Reader& r, Project& p) {
  p.patternCount = r.get<u16>();
  require(p.patternCount <= limits::patterns, "Too many Patterns");
  for (int i = 0; i < p.patternCount; i++) {
    PatternRec& row = p.patterns[i];
    row.track = r.get<u8>();
    row.id = r.get<u16>();
    row.length = r.get<u16>();
    row.isFront = r.boolean();
    row.frontId = r.get<u16>();
    require(row.track < limits::tracks, "Pattern track out of range");
    require(row.length >= 1 && row.length <= limits::patternLength, "Pattern length out of range");
  }
}

void readNotes(Reader& r, Project& p) {
  const u32 count = r.get<u32>();
  require(count <= limits::notes, "Too many notes");
  p.noteCount = u16(count);
  for (u32 i = 0; i < count; i++) {
    NoteRec& n = p.notes[i];
    const u16 pattern = r.get<u16>();
    require(pattern < p.patternCount, "Note of a missing Pattern");
    n.track = p.patterns[pattern].track;
    n.pattern = p.patterns[pattern].id;
    n.step = r.get<u16>();
    n.slot = r.get<u8>();
    n.pitch = r.get<u8>();
    n.velocity = r.get<u8>();
    n.length = r.get<u16>();
    n.nudge = r.get<i8>();
    n.flags = r.get<u8>();
    const u8 locks = r.get<u8>();
    require(n.step < limits::patternLength, "Step out of range");
    require(n.slot < limits::slots, "Note slot out of range");
    require(n.velocity != 0, "Stored empty note");
    require(locks <= limits::locks, "Too many locks");
    for (int k = 0; k < locks; k++) {
      n.locks[k].target = r.get<u8>();
      n.locks[k].value = r.get<u16>();
      require(n.locks[k].target != 0, "Stored empty lock");
    }
  }
}

void readClips(Reader& r, Project& p) {
  p.clipCount = r.get<u16>();
  require(p.clipCount <= limits::clips, "Too many Clips");
  for (int i = 0; i < p.clipCount; i++) {
    ClipRec& c = p.clips[i];
    c.track = r.get<u8>();
    const u16 pattern = r.get<u16>();
    require(pattern < p.patternCount && p.patterns[pattern].track == c.track, "Clip of a missing Pattern");
    c.pattern = p.patterns[pattern].id;
    c.start = r.get<u32>();
    c.length = r.get<u32>();
    c.offset = r.get<u16>();
    c.repeats = r.get<u8>();
    require(c.repeats <= 1, "Invalid Repeats");
    require(c.length != 0 && u64(c.start) + c.length <= limits::songSteps, "Clip outside the Song");
  }
}

int readLaneRow(Reader& r) {
  const u8 owner = r.get<u8>(), slot = r.get<u8>();
  if (owner == format::masterOwner) {
    require(slot < limits::masterLanes, "Master lane out of range");
    return limits::firstMasterLane + slot;
  }
  require(owner < limits::laneOwners && slot < limits::lanesPerOwner, "Lane out of range");
  return owner * limits::lanesPerOwner + slot;
}

void readLanes(Reader& r, Project& p) {
  const u8 rows = r.get<u8>();
  int last = -1;
  u32 points = 0;
  for (int i = 0; i < rows; i++) {
    const int row = readLaneRow(r);
    require(row > last, "Lanes out of order");
    last = row;
    LaneRow& lane = p.lanes[row];
    lane.enabled = r.boolean();
    lane.target = r.get<u8>();
    lane.count = r.get<u16>();
    require(points + lane.count <= limits::lanePoints, "Too many lane points");
    for (int k = 0; k < lane.count; k++) {
      LanePoint& point = p.lanePoints[points++];
      point.position = r.get<u32>();
      point.value = r.get<u16>();
      point.rest = r.boolean();
    }
  }
  p.lanePointCount = u16(points);
  u16 next = 0;
  for (LaneRow& lane : p.lanes) {
    lane.first = next;
    next = u16(next + lane.count);
  }
}

void readMarkersAndLoop(Reader& r, Project& p) {
  p.markerCount = r.get<u8>();
  require(p.markerCount <= limits::markers, "Too many Markers");
  for (int i = 0; i < p.markerCount; i++) {
    p.markers[i].step = r.get<u32>();
    r.shortName(p.markers[i].name);
  }
  p.loopStart = r.get<u32>();
  p.loopEnd = r.get<u32>();
}

void readMacros(Reader& r, Project& p) {
  for (Track& t : p.tracks) {
    t.macroCount = r.get<u8>();
    require(t.macroCount <= limits::macros, "Too many Macros");
    for (int m = 0; m < t.macroCount; m++) {
      MacroRec& macro = t.macros[m];
      r.shortName(macro.name);
      macro.polarity = r.boolean();
      macro.value = r.plainZero();
      macro.targetCount = r.get<u8>();
      require(macro.targetCount <= limits::macroTargets, "Too many Macro targets");
      for (int k = 0; k < macro.targetCount; k++) {
        MacroTarget& target = macro.targets[k];
        target.param = r.get<u16>();
        target.pad = r.get<u8>();
        target.amount = r.plainZero();
        target.amount_down = r.plainZero();
        target.window_from = r.plainZero();
        target.window_to = r.plainZero();
      }
    }
  }
}

std::string_view payloadOf(std::string_view image) {
  // The wording is older than the limit and stays as users know it.
  require(image.size() <= projectFileLimit, "Project exceeds 512 KiB limit");
  require(image.size() >= sizeof format::magic, "Truncated project");
  require(std::memcmp(image.data(), format::magic, sizeof format::magic) == 0, "Invalid project signature");
  Reader header(image.substr(sizeof format::magic));
  const u32 version = header.get<u32>(), length = header.get<u32>(), checksum = header.get<u32>();
  require(version == projectFormatVersion, "Unsupported project version (made by another build)");
  auto payload = image.substr(format::headerSize);
  require(payload.size() == length, "Project payload length mismatch");
  require(crc32(payload.data(), payload.size()) == checksum, "Project checksum mismatch");
  return payload;
}

}  // namespace

bool readProjectImage(std::string_view image, Project& project, std::string& error) {
  try {
    Reader r(payloadOf(image));
    auto fresh = newProject();
    readName(r, *fresh);
    readParameters(r, *fresh);
    readTracks(r, *fresh);
    readPatterns(r, *fresh);
    readNotes(r, *fresh);
    readClips(r, *fresh);
    readLanes(r, *fresh);
    readMarkersAndLoop(r, *fresh);
    readMacros(r, *fresh);
    require(r.atEnd(), "Unexpected trailing project data");
    if (!validateProject(*fresh, error)) return false;
    std::memcpy(static_cast<void*>(&project), fresh.get(), sizeof(Project));
    return true;
  } catch (const Refused& refused) {
    error = refused.text;
    return false;
  }
}

}  // namespace synth
