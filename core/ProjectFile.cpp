#include "core/ProjectFile.h"

#include <cstring>

#include "base/AtomicFile.h"
#include "base/Crc32.h"
#include "base/ReadFile.h"
#include "core/Names.h"
#include "core/ProjectFormat.h"
#include "core/model/Lanes.h"
#include "core/model/Patterns.h"
#include "core/model/Validate.h"
#include "core/params/Registry.h"

namespace synth {
namespace {

class Writer {
 public:
  std::string bytes;

  template <class T>
  void put(T value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void text(std::string_view s) {
    put(u8(s.size()));
    bytes += s;
  }
  void pins(const PinList& list) {
    put(list.custom ? list.count : format::defaultPins);
    for (int i = 0; list.custom && i < list.count; i++) put(list.ids[i]);
  }
};

void writeParameters(Writer& w, const Project& p) {
  u32 count = 0;
  for (const param::Info& info : param::all()) count += u32(info.instances());
  w.put(count);
  for (const param::Info& info : param::all()) {
    for (int i = 0; i < info.instances(); i++) {
      w.put(info.id);
      w.put(u8(i));
      w.put(info.scope == param::ScopePad ? info.get(p, i / limits::pads, i % limits::pads) : info.get(p, i));
    }
  }
}

void writeTracks(Writer& w, const Project& p) {
  for (const Track& t : p.tracks) {
    w.text(nameText(t.name));
    w.put(t.origin);
  }
  for (const Track& t : p.tracks) w.text(nameText(t.preset_name));
  for (const Track& t : p.tracks) w.pins(t.pins);
  for (const PinList& list : p.busPins) w.pins(list);
  for (const Track& t : p.tracks) {
    const bool present =
        std::string_view(reinterpret_cast<const char*>(t.sample_hash), 32).find_first_not_of('\0') !=
        std::string_view::npos;
    w.put(u8(present));
    if (!present) continue;
    w.bytes.append(reinterpret_cast<const char*>(t.sample_hash), sizeof t.sample_hash);
    w.text(nameText(t.sample_name));
  }
}

void writeNotes(Writer& w, const Project& p) {
  w.put(u32(p.noteCount));
  int row = -1;
  for (int i = 0; i < p.noteCount; i++) {
    const NoteRec& n = p.notes[i];
    if (row < 0 || p.patterns[row].track != n.track || p.patterns[row].id != n.pattern)
      row = patternIndex(p, n.track, n.pattern);
    const int locks = n.note().lockCount();
    w.put(u16(row));
    w.put(n.step);
    w.put(n.slot);
    w.put(n.pitch);
    w.put(n.velocity);
    w.put(n.length);
    w.put(n.nudge);
    w.put(n.flags);
    w.put(u8(locks));
    for (int k = 0; k < locks; k++) {
      w.put(n.locks[k].target);
      w.put(n.locks[k].value);
    }
  }
}

void writeArrangement(Writer& w, const Project& p) {
  w.put(p.patternCount);
  for (int i = 0; i < p.patternCount; i++) {
    const PatternRec& r = p.patterns[i];
    w.put(r.track);
    w.put(r.id);
    w.put(r.length);
    w.put(r.isFront);
    w.put(r.frontId);
  }
  writeNotes(w, p);
  w.put(p.clipCount);
  for (int i = 0; i < p.clipCount; i++) {
    const ClipRec& c = p.clips[i];
    w.put(c.track);
    w.put(u16(patternIndex(p, c.track, c.pattern)));
    w.put(c.start);
    w.put(c.length);
    w.put(c.offset);
    w.put(c.repeats);
  }
}

void writeLanes(Writer& w, const Project& p) {
  u8 rows = 0;
  for (const LaneRow& row : p.lanes) rows = u8(rows + laneInUse(row));
  w.put(rows);
  for (int r = 0; r < limits::lanes; r++) {
    const LaneRow& row = p.lanes[r];
    if (!laneInUse(row)) continue;
    const bool master = r >= limits::firstMasterLane;
    w.put(master ? format::masterOwner : u8(r / limits::lanesPerOwner));
    w.put(u8(master ? r - limits::firstMasterLane : r % limits::lanesPerOwner));
    w.put(row.enabled);
    w.put(row.target);
    w.put(row.count);
    for (const LanePoint& point : lanePoints(p, r)) {
      w.put(point.position);
      w.put(point.value);
      w.put(point.rest);
    }
  }
}

void writeRest(Writer& w, const Project& p) {
  w.put(p.markerCount);
  for (int i = 0; i < p.markerCount; i++) {
    w.put(p.markers[i].step);
    w.text(nameText(p.markers[i].name));
  }
  w.put(p.loopStart);
  w.put(p.loopEnd);
  for (const Track& t : p.tracks) {
    w.put(t.macroCount);
    for (int m = 0; m < t.macroCount; m++) {
      const MacroRec& macro = t.macros[m];
      w.text(nameText(macro.name));
      w.put(macro.polarity);
      w.put(macro.value);
      w.put(macro.targetCount);
      for (int k = 0; k < macro.targetCount; k++) {
        const MacroTarget& target = macro.targets[k];
        w.put(target.param);
        w.put(target.pad);
        for (f32 v : {target.amount, target.amount_down, target.window_from, target.window_to}) w.put(v);
      }
    }
  }
}

}  // namespace

std::string projectBytes(const Project& p) {
  Writer w;
  w.bytes.reserve(65536);
  w.text(projectName(p));
  writeParameters(w, p);
  writeTracks(w, p);
  writeArrangement(w, p);
  writeLanes(w, p);
  writeRest(w, p);
  return std::move(w.bytes);
}

std::string projectImage(const Project& p) {
  const std::string payload = projectBytes(p);
  Writer w;
  w.bytes.reserve(payload.size() + format::headerSize);
  w.bytes.append(format::magic, sizeof format::magic);
  w.put(projectFormatVersion);
  w.put(u32(payload.size()));
  w.put(crc32(payload.data(), payload.size()));
  w.bytes += payload;
  return std::move(w.bytes);
}

bool saveProject(const Project& p, const std::string& path, std::string& error) {
  if (!std::memchr(p.name, 0, sizeof p.name)) {
    error = "Project name must fit in 63 bytes";
    return false;
  }
  return validateProject(p, error) && writeAtomically(path, projectImage(p), error);
}

bool loadProject(const std::string& path, Project& project, std::string& error) {
  if (path.empty() || path.find('\0') != path.npos) {
    error = "Invalid project path";
    return false;
  }
  std::string image, system;
  switch (readFile(path, projectFileLimit, image, system)) {
    case ReadResult::CannotOpen: error = "Cannot open project: " + system; return false;
    // The wording is older than the limit and stays as users know it.
    case ReadResult::TooLarge: error = "Project exceeds 512 KiB limit"; return false;
    case ReadResult::Failed: error = "Project read failed"; return false;
    case ReadResult::Ok: break;
  }
  return readProjectImage(image, project, error);
}

}  // namespace synth
