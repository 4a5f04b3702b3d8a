#include "spec/Diff.h"

#include <bit>
#include <cstring>
#include <map>
#include <tuple>

#include "core/Names.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Patterns.h"
#include "core/params/Registry.h"
#include "spec/Arrangement.h"
#include "spec/Rows.h"

namespace synth::spec {
namespace {

class Diff {
 public:
  Diff(const Project& before, const Project& after) : a(before), b(after) {}

  Json run() {
    value("name", projectName(a), projectName(b), projectName(a) != projectName(b));
    parameters(param::ScopeProject, "project", 0, 0);
    if (a.loopStart != b.loopStart || a.loopEnd != b.loopEnd) value("project.loop", loop(a), loop(b), true);
    for (int t = 0; t < limits::tracks; t++) track(t);
    patterns();
    clips();
    for (int row = 0; row < limits::lanes; row++) lane(row);
    markers();
    for (int bus : {SendI, SendII, MasterBus})
      value(std::string("buses.") + busKey(bus), pinsSpec(a.busPins[bus], nullptr),
            pinsSpec(b.busPins[bus], nullptr), !sameBytes(a.busPins[bus], b.busPins[bus]));
    return std::move(records);
  }

 private:
  const Project &a, &b;
  Json records = Json::array();

  void value(const std::string& path, Json from, Json to, bool differs, const std::string& shown = {}) {
    if (!differs) return;
    Json record = Json::object();
    record.add("path", path).add("from", std::move(from)).add("to", std::move(to));
    if (!shown.empty()) record.add("shown", shown);
    records.push(std::move(record));
  }

  void row(const std::string& path, const char* what, Json content) {
    Json record = Json::object();
    record.add("path", path).add(what, std::move(content));
    records.push(std::move(record));
  }

  // Whether two parts read the same: bytes that name a Macro by its place may differ all the same.
  static bool sameText(const Json& x, const Json& y) { return json::compact(x) == json::compact(y); }

  static Json loop(const Project& p) {
    if (!p.loopStart && !p.loopEnd) return {};
    return Json::array().push(double(p.loopStart)).push(double(p.loopEnd));
  }

  void parameters(param::Scope scope, const std::string& path, int t, int pad) {
    for (const param::Info& info : param::all()) {
      if (info.scope != scope) continue;
      const f32 from = info.get(a, t, pad), to = info.get(b, t, pad);
      if (std::bit_cast<u32>(from) != std::bit_cast<u32>(to))
        value(path + "." + info.key, from, to, true, param::formatted(info, to, &b, t));
    }
  }

  void track(int t) {
    const Track &x = a.tracks[t], &y = b.tracks[t];
    if (sameBytes(x, y)) return;
    const std::string path = placeOf("tracks", size_t(t));
    value(path + ".name", nameText(x.name), nameText(y.name), nameText(x.name) != nameText(y.name));
    value(path + ".origin", int(x.origin), int(y.origin), x.origin != y.origin);
    value(path + ".macros", macrosSpec(x), macrosSpec(y),
          x.macroCount != y.macroCount || std::memcmp(x.macros, y.macros, sizeof x.macros) != 0);
    parameters(param::ScopeTrack, path, t, 0);
    value(path + ".sample", sampleSpec(x), sampleSpec(y),
          std::memcmp(x.sample_hash, y.sample_hash, sizeof x.sample_hash) != 0 ||
              nameText(x.sample_name) != nameText(y.sample_name));
    value(path + ".preset_name", nameText(x.preset_name), nameText(y.preset_name),
          nameText(x.preset_name) != nameText(y.preset_name));
    Json from = pinsSpec(x.pins, &x), to = pinsSpec(y.pins, &y);
    const bool otherPins = !sameBytes(x.pins, y.pins) && !sameText(from, to);
    value(path + ".pins", std::move(from), std::move(to), otherPins);
    for (int pad = 0; pad < limits::pads; pad++)
      parameters(param::ScopePad, path + placeOf(".pads", size_t(pad)), t, pad);
  }

  // Rows of two sorted lists side by side: calls both(x, y) for the same key, else one(row, onlyInB).
  template <class Row, class Key, class One, class Both>
  static void merge(const Row* x, int nx, const Row* y, int ny, Key key, One one, Both both) {
    int i = 0, j = 0;
    while (i < nx || j < ny) {
      if (j >= ny || (i < nx && key(x[i]) < key(y[j])))
        one(x[i++], false);
      else if (i >= nx || key(y[j]) < key(x[i]))
        one(y[j++], true);
      else
        both(x[i++], y[j++]);
    }
  }

  void patterns() {
    auto key = [](const PatternRec& r) { return std::tuple(r.track, r.id); };
    auto path = [](const PatternRec& r) {
      return "patterns[" + std::to_string(r.track) + "/" + std::to_string(r.id) + "]";
    };
    merge(
        a.patterns, a.patternCount, b.patterns, b.patternCount, key,
        [&](const PatternRec& r, bool added) {
          const Project& p = added ? b : a;
          row(path(r), added ? "added" : "removed", patternSpec(p, patternIndex(p, r.track, r.id)));
        },
        [&](const PatternRec& x, const PatternRec& y) {
          value(path(x) + ".length", int(x.length), int(y.length), x.length != y.length);
          auto front = [](const PatternRec& r) { return r.frontId ? Json(r.frontId - 1) : Json(); };
          value(path(x) + ".front", front(x), front(y), x.frontId != y.frontId);
          notes(path(x) + ".notes", x);
        });
  }

  void notes(const std::string& path, const PatternRec& r) {
    auto from = patternNotes(a, r.track, r.id), to = patternNotes(b, r.track, r.id);
    auto key = [](const NoteRec& n) { return std::tuple(n.step, n.slot); };
    merge(
        from.data(), int(from.size()), to.data(), int(to.size()), key,
        [&](const NoteRec& n, bool added) {
          row(path, added ? "added" : "removed", noteSpec(added ? b : a, n, false));
        },
        [&](const NoteRec& x, const NoteRec& y) {
          if (sameBytes(x, y)) return;
          Json before = noteSpec(a, x, false), after = noteSpec(b, y, false);
          if (sameText(before, after)) return;
          row(path, "removed", std::move(before));
          row(path, "added", std::move(after));
        });
  }

  void clips() {
    auto key = [](const ClipRec& c) { return std::tuple(c.track, c.start); };
    auto path = [](const ClipRec& c) {
      return "clips[" + std::to_string(c.track) + "@" + std::to_string(c.start) + "]";
    };
    merge(
        a.clips, a.clipCount, b.clips, b.clipCount, key,
        [&](const ClipRec& c, bool added) {
          row(path(c), added ? "added" : "removed", clipSpec(added ? b : a, c));
        },
        [&](const ClipRec& x, const ClipRec& y) {
          value(path(x) + ".pattern", int(x.pattern), int(y.pattern), x.pattern != y.pattern);
          value(path(x) + ".length", double(x.length), double(y.length), x.length != y.length);
          value(path(x) + ".offset", int(x.offset), int(y.offset), x.offset != y.offset);
          value(path(x) + ".repeats", bool(x.repeats), bool(y.repeats), x.repeats != y.repeats);
        });
  }

  void lane(int r) {
    const LaneRow &x = a.lanes[r], &y = b.lanes[r];
    auto from = lanePoints(a, r), to = lanePoints(b, r);
    const bool samePoints = from.size() == to.size() &&
                            (from.empty() || std::memcmp(from.data(), to.data(), from.size_bytes()) == 0);
    if (samePoints && x.enabled == y.enabled &&
        (x.target == y.target || sameText(laneSpec(a, r), laneSpec(b, r))))
      return;
    const int owner = r / limits::lanesPerOwner;
    std::string path;
    if (r >= limits::firstMasterLane)
      path = "master[" + std::to_string(r - limits::firstMasterLane) + "]";
    else
      path = "lanes[" +
             (owner < limits::tracks ? std::to_string(owner) : std::string(busKey(owner - limits::tracks))) +
             "/" + std::to_string(r % limits::lanesPerOwner) + "]";
    if (!laneInUse(x))
      row(path, "added", laneSpec(b, r));
    else if (!laneInUse(y))
      row(path, "removed", laneSpec(a, r));
    else
      value(path, laneSpec(a, r), laneSpec(b, r), true);
  }

  void markers() {
    auto key = [](const MarkerRec& m) { return m.step; };
    auto path = [](const MarkerRec& m) { return "markers[" + std::to_string(m.step) + "]"; };
    merge(
        a.markers, a.markerCount, b.markers, b.markerCount, key,
        [&](const MarkerRec& m, bool added) { row(path(m), added ? "added" : "removed", markerSpec(m)); },
        [&](const MarkerRec& x, const MarkerRec& y) {
          value(path(x) + ".name", nameText(x.name), nameText(y.name), nameText(x.name) != nameText(y.name));
        });
  }
};

}  // namespace

Json diffProjects(const Project& a, const Project& b) { return Diff(a, b).run(); }

}  // namespace synth::spec
