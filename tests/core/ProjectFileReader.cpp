// What breaks if the reader trusts a byte, misses a section or says the wrong thing about a broken file.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "base/Crc32.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "core/model/Lanes.h"
#include "core/model/Validate.h"
#include "support/RandomProject.h"

namespace synth {
namespace {

template <class T>
std::string raw(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}
std::string b(int v) { return raw(u8(v)); }
std::string w(int v) { return raw(u16(v)); }
std::string d(u32 v) { return raw(v); }
std::string f(f32 v) { return raw(v); }
std::string times(int n, const std::string& s) {
  std::string out;
  for (int i = 0; i < n; i++) out += s;
  return out;
}

// The sections of a payload, written by hand.
enum Section {
  Name,
  Params,
  Names,
  Presets,
  Pins,
  BusPins,
  Samples,
  Patterns,
  Notes,
  Clips,
  Lanes,
  Markers,
  Loop,
  Macros
};
using Payload = std::array<std::string, 14>;

Payload empty() {
  return {b(0),
          d(0),
          times(16, b(0) + b(255)),
          times(16, b(0)),
          times(16, b(255)),
          times(3, b(255)),
          times(16, b(0)),
          w(0),
          d(0),
          w(0),
          b(0),
          b(0),
          d(0) + d(0),
          times(16, b(0))};
}

const std::string note =
    w(0) + w(5) + b(2) + b(61) + b(90) + w(300) + b(-3) + b(1) + b(2) + b(5) + w(77) + b(20) + w(9);
const std::string macro =
    b(4) + "MOVE" + b(1) + f(-0.5f) + b(1) + w(114) + b(0) + f(2) + f(-1) + f(0.25f) + f(1);

// One of everything.
Payload filled() {
  Payload p = empty();
  p[Name] = b(2) + "Hi";
  p[Params] = d(3) + w(1) + b(0) + f(99) + w(110) + b(15) + f(-0.5f) + w(300) + b(15 * 8 + 3) + f(7);
  p[Names] = b(4) + "LEAD" + b(3) + times(15, b(0) + b(255));
  p[Presets] = b(5) + "GLASS" + times(15, b(0));
  p[Pins] = b(2) + w(114) + w(1015) + b(0) + times(14, b(255));
  p[BusPins] = b(1) + w(401) + times(2, b(255));
  p[Samples] = b(1) + std::string(32, '\7') + b(4) + "TAKE" + times(15, b(0));
  p[Patterns] = w(2) + b(0) + w(3) + w(16) + b(0) + w(5) + b(0) + w(4) + w(8) + b(1) + w(0);
  p[Notes] = d(1) + note;
  p[Clips] = w(1) + b(0) + w(0) + d(32) + d(40) + w(2) + b(1);
  p[Lanes] = b(2) + b(17) + b(2) + b(1) + b(122) + w(2) + d(0) + w(9) + b(0) + d(16) + w(0) + b(1) + b(255) +
             b(11) + b(0) + b(3) + w(1) + d(4) + w(5) + b(0);
  p[Markers] = b(1) + d(16) + b(5) + "Verse";
  p[Loop] = d(8) + d(24);
  p[Macros] = b(1) + macro + times(15, b(0));
  return p;
}

std::string imageOf(const std::string& payload) {
  return "SYNTHPRJ" + d(30) + d(u32(payload.size())) + d(crc32(payload.data(), payload.size())) + payload;
}
std::string joined(const Payload& p) {
  std::string all;
  for (auto& section : p) all += section;
  return all;
}
std::string errorOf(const std::string& payload) {
  static const ProjectPtr kept = newProject();
  std::string error;
  const bool ok = readProjectImage(imageOf(payload), *kept, error);
  EXPECT_EQ(ok, error.empty()) << error;
  return error;
}

TEST(ProjectFileReader, ReadsEachSection) {
  auto p = newProject();
  std::string error;
  ASSERT_TRUE(readProjectImage(imageOf(joined(empty())), *p, error)) << error;
  EXPECT_TRUE(sameBytes(*p, defaultProject()));
  ASSERT_TRUE(readProjectImage(imageOf(joined(filled())), *p, error)) << error;
  EXPECT_EQ(projectName(*p), "Hi");
  const Track& t = p->tracks[0];
  EXPECT_EQ(std::tuple(p->bpm, p->tracks[15].pan, p->tracks[15].pad_pitch[3]),
            std::tuple(99.0f, -0.5f, 7.0f));
  EXPECT_EQ(std::tuple(nameText(t.name), nameText(t.preset_name), t.origin), std::tuple("LEAD", "GLASS", 3));
  EXPECT_EQ(std::tuple(t.pins.count, t.pins.ids[1], p->busPins[0].ids[0]), std::tuple(2, 1015, 401));
  EXPECT_EQ(std::tuple(p->tracks[1].pins.custom, p->tracks[2].pins.custom), std::tuple(1, 0));
  EXPECT_EQ(std::tuple(t.sample_hash[31], nameText(t.sample_name)), std::tuple(7, "TAKE"));
  const NoteRec& n = p->notes[0];
  EXPECT_EQ(std::tuple(n.pattern, n.step, n.slot, n.pitch, n.velocity), std::tuple(3, 5, 2, 61, 90));
  EXPECT_EQ(std::tuple(n.length, n.nudge, n.flags, n.locks[1].target, n.locks[0].value),
            std::tuple(300, -3, 1, 20, 77));
  const ClipRec& c = p->clips[0];
  EXPECT_EQ(std::tuple(c.pattern, c.start, c.length, c.offset, c.repeats), std::tuple(3, 32u, 40u, 2, 1));
  EXPECT_EQ(p->patterns[1].isFront, 1);
  const LaneRow& lane = p->lanes[laneRow(17, 2)];
  EXPECT_EQ(std::tuple(lane.enabled, lane.target, lane.count, p->lanes[163].first), std::tuple(1, 122, 2, 2));
  EXPECT_EQ(std::tuple(p->lanePoints[1].rest, p->lanePoints[2].position), std::tuple(1, 4u));
  EXPECT_EQ(std::tuple(p->markers[0].step, nameText(p->markers[0].name)), std::tuple(16u, "Verse"));
  EXPECT_EQ(std::tuple(p->loopStart, p->loopEnd), std::tuple(8u, 24u));
  const MacroTarget& target = t.macros[0].targets[0];
  EXPECT_EQ(std::tuple(target.param, target.amount, target.amount_down, target.window_from),
            std::tuple(114, 2.0f, -1.0f, 0.25f));
  // What follows the parameters is written as it was read.
  std::string rest;
  for (int s = Names; s <= Macros; s++) rest += filled()[size_t(s)];
  const std::string bytes = projectBytes(*p);
  EXPECT_EQ(bytes.substr(bytes.size() - rest.size()), rest);
}

TEST(ProjectFileReader, NamesEachFault) {
  const std::string pattern = b(0) + w(3) + w(16) + b(0) + w(0), zeros(32, '\0');
  const std::string clip = b(0) + w(0) + d(0) + d(16) + w(0) + b(0), point = d(0) + w(0) + b(0);
  auto noteWith = [](size_t at, const std::string& bytes) {
    return d(1) + std::string(note).replace(at, bytes.size(), bytes);
  };
  auto clipWith = [&](size_t at, const std::string& bytes) {
    return w(1) + std::string(clip).replace(at, bytes.size(), bytes);
  };
  const struct {
    const char* message;
    Section section;
    std::string bytes;
  } cases[] = {
      {"Project name exceeds 63 bytes", Name, b(64) + std::string(64, 'x')},
      {"Embedded null in project name", Name, b(3) + std::string("a\0b", 3)},
      {"Too many parameters", Params, d(100001)},
      {"Unknown parameter id 4", Params, d(1) + w(4) + b(0) + f(0)},
      {"Parameter index out of range", Params, d(1) + w(1) + b(1) + f(120)},
      {"Parameter index out of range", Params, d(1) + w(110) + b(16) + f(0)},
      {"Parameter index out of range", Params, d(1) + w(300) + b(128) + f(0)},
      {"Parameter out of range: bpm", Params, d(1) + w(1) + b(0) + f(241)},
      {"Parameter out of range: pan", Params, d(1) + w(110) + b(0) + d(0x7FC00000)},
      {"Parameter out of range: polyphony", Params, d(1) + w(140) + b(0) + f(2.5f)},
      {"Name too long", Names, b(13) + std::string(13, 'X')},
      {"Invalid character in a name", Names, b(1) + "\x7F"},
      {"Preset name too long", Presets, b(21) + std::string(21, 'X')},
      {"Invalid character in a Preset name", Presets, b(2) + "A\n"},
      {"Too many Pins", Pins, b(33)},
      {"Too many Pins", BusPins, b(254)},
      {"Unknown Pin id 1016", Pins, b(1) + w(1016)},
      {"Unknown Pin id 999", Pins, b(1) + w(999)},
      {"Unknown Pin id 1000", BusPins, b(1) + w(1000)},
      {"Invalid boolean", Samples, b(2)},
      {"Stored empty sample reference", Samples, b(1) + zeros},
      {"Name too long", Samples, b(1) + std::string(32, 'h') + b(13) + std::string(13, 'X')},
      {"Too many Patterns", Patterns, w(257)},
      {"Pattern track out of range", Patterns, w(1) + b(16) + w(0) + w(16) + b(0) + w(0)},
      {"Pattern length out of range", Patterns, w(1) + b(0) + w(0) + w(0) + b(0) + w(0)},
      {"Pattern length out of range", Patterns, w(1) + b(0) + w(0) + w(1025) + b(0) + w(0)},
      {"Invalid boolean", Patterns, w(1) + b(0) + w(0) + w(16) + b(2) + w(0)},
      {"Too many notes", Notes, d(16385)},
      {"Note of a missing Pattern", Notes, noteWith(0, w(2))},
      {"Step out of range", Notes, noteWith(2, w(1024))},
      {"Note slot out of range", Notes, noteWith(4, b(8))},
      {"Stored empty note", Notes, noteWith(6, b(0))},
      {"Too many locks", Notes, noteWith(11, b(9))},
      {"Stored empty lock", Notes, noteWith(12, b(0))},
      {"Too many Clips", Clips, w(1025)},
      {"Clip of a missing Pattern", Clips, clipWith(1, w(2))},
      {"Clip of a missing Pattern", Clips, clipWith(0, b(1))},
      {"Invalid Repeats", Clips, clipWith(13, b(2))},
      {"Clip outside the Song", Clips, clipWith(7, d(0))},
      {"Clip outside the Song", Clips, clipWith(3, d(1048561))},
      {"Clip outside the Song", Clips, clipWith(3, d(0xFFFFFFF8))},
      {"Master lane out of range", Lanes, b(1) + b(255) + b(12) + b(0) + b(0) + w(0)},
      {"Lane out of range", Lanes, b(1) + b(19) + b(0) + b(0) + b(0) + w(0)},
      {"Lane out of range", Lanes, b(1) + b(0) + b(8) + b(0) + b(0) + w(0)},
      {"Lanes out of order", Lanes, b(2) + times(2, b(3) + b(0) + b(0) + b(0) + w(0))},
      {"Invalid boolean", Lanes, b(1) + b(0) + b(0) + b(2) + b(0) + w(0)},
      {"Invalid boolean", Lanes, b(1) + b(0) + b(0) + b(0) + b(0) + w(1) + d(0) + w(0) + b(2)},
      {"Too many lane points", Lanes, b(1) + b(0) + b(0) + b(0) + b(0) + w(32769)},
      {"Too many lane points", Lanes,
       b(2) + b(0) + b(0) + b(0) + b(0) + w(20000) + times(20000, point) + b(0) + b(1) + b(0) + b(0) +
           w(12769)},
      {"Too many Markers", Markers, b(65)},
      {"Invalid character in a name", Markers, b(1) + d(0) + b(1) + "\xE9"},
      {"Too many Macros", Macros, b(17)},
      {"Too many Macro targets", Macros, b(1) + b(1) + "A" + b(0) + f(0) + b(17)},
      {"Invalid boolean", Macros, b(1) + b(1) + "A" + b(2) + f(0) + b(0)},
      // What the sections leave to the rule book.
      {"Clip offset outside its Pattern", Clips, clipWith(11, w(16))},
      {"Invalid lock", Notes, noteWith(12, b(21))},
      {"Invalid Macro target of MOVE", Macros,
       b(1) + std::string(macro).replace(11, 2, w(9)) + times(15, b(0))},
      {"Invalid Loop", Loop, d(9) + d(9)},
      {"Unexpected trailing project data", Macros, times(17, b(0))},
      {"Truncated project", Macros, times(15, b(0))},
  };
  EXPECT_EQ(errorOf(joined(filled())), "");
  for (auto& c : cases) {
    Payload p = filled();
    p[c.section] = c.bytes;
    // A section that breaks off is followed by what would otherwise be read.
    EXPECT_EQ(errorOf(joined(p)), c.message) << "section " << c.section;
  }
}

TEST(ProjectFileReader, LetsTheLastOfTwoParametersWin) {
  Payload payload = empty();
  payload[Params] = d(2) + w(1) + b(0) + f(99) + w(1) + b(0) + f(77);
  auto p = newProject();
  std::string error;
  EXPECT_TRUE(readProjectImage(imageOf(joined(payload)), *p, error)) << error;
  EXPECT_EQ(p->bpm, 77);
  EXPECT_EQ(p->track_count, 16);
}

TEST(ProjectFileReader, RefusesAFileCutAtAnyByte) {
  const std::string payload = joined(filled()), image = imageOf(payload);
  auto p = newProject();
  for (size_t n = 0; n < image.size(); n++) {
    std::string error;
    EXPECT_FALSE(readProjectImage(image.substr(0, n), *p, error)) << n;
    EXPECT_FALSE(error.empty());
  }
  for (size_t n = 0; n < payload.size(); n++)
    EXPECT_EQ(errorOf(payload.substr(0, n)), "Truncated project") << n;
  EXPECT_TRUE(sameBytes(*p, defaultProject()));
}

TEST(ProjectFileReader, SurvivesAnyBytes) {
  test::Random r(21);
  auto p = newProject();
  int loaded = 0;
  for (int i = 0; i < 800; i++) {
    std::string payload = i % 3 ? joined(filled()) : projectBytes(*test::randomProject(u32(i % 9)));
    for (int n = r.between(1, 3); n > 0; n--)
      payload[size_t(r.below(int(payload.size())))] = char(r.chance(50) ? r.below(256) : r.below(4));
    std::string error;
    if (!readProjectImage(imageOf(payload), *p, error)) continue;
    loaded++;
    EXPECT_TRUE(validateProject(*p, error)) << error;
    auto back = newProject();
    ASSERT_TRUE(readProjectImage(projectImage(*p), *back, error)) << error;
    ASSERT_TRUE(sameBytes(*p, *back));
  }
  EXPECT_GT(loaded, 50);
}

}  // namespace
}  // namespace synth
