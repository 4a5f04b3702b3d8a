// What Presets play to show themselves, and the key they play in.
#include "core/sounds/Demo.h"

#include <gtest/gtest.h>

#include <set>

#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Notes.h"
#include "core/model/Tracks.h"
#include "core/music/KeyFinder.h"
#include "core/sounds/DemoPatterns.h"
#include "core/sounds/Factory.h"

namespace synth::test {
namespace {

using namespace compose;
using namespace preset;

TEST(Scales, GoOnInBothDirections) {
  EXPECT_EQ(scaleInterval(Scale::Major, -1), -1);
  EXPECT_EQ(scaleInterval(Scale::Major, 7), 12);
  EXPECT_EQ(scaleInterval(Scale::MinorPentatonic, 5), 12);
  EXPECT_EQ(scaleInterval(Scale::MinorPentatonic, -5), -12);
  EXPECT_EQ(scaleInterval(Scale::Auto, 2), scaleInterval(Scale::Minor, 2));
  EXPECT_EQ(scaleMask(0, Scale::Major), 0b101010110101);
  EXPECT_EQ(scaleMask(9, Scale::Minor), scaleMask(0, Scale::Major));
  EXPECT_EQ(scaleName(Scale(12)), std::string("UNKNOWN"));
  EXPECT_EQ(std::tuple(rootNamed("bb"), rootNamed("a#"), rootNamed("H")), std::tuple(10, 10, -1));
  for (int s = 1; s < scales; s++) {
    EXPECT_EQ(scaleNamed(scaleName(Scale(s))), Scale(s));
    for (int degree = -20; degree < 20; degree++) {
      EXPECT_LT(scaleInterval(Scale(s), degree), scaleInterval(Scale(s), degree + 1));
      EXPECT_TRUE(inKey(60 + scaleInterval(Scale(s), degree), 0, Scale(s)));
    }
  }
}

TEST(Scales, StandTheirOwnTriads) {
  auto notes = [](int pitch, int root, Scale scale) {
    const auto t = triadOn(pitch, root, scale);
    return t ? std::tuple(t->notes[0], t->notes[1], t->notes[2]) : std::tuple(0, 0, 0);
  };
  EXPECT_EQ(notes(60, 0, Scale::Major), std::tuple(60, 64, 67));
  EXPECT_EQ(notes(71, 0, Scale::Major), std::tuple(71, 74, 77));
  EXPECT_EQ(notes(43, 3, Scale::Major), std::tuple(43, 46, 50));
  EXPECT_EQ(notes(61, 0, Scale::Major), std::tuple(0, 0, 0));
  EXPECT_EQ(notes(57, 9, Scale::MinorPentatonic), std::tuple(57, 60, 64));
  EXPECT_EQ(notes(62, 0, Scale::MajorPentatonic), std::tuple(62, 67, 69));  // no third: the fourth
}

// A song in a key: its scale up and down over a bass on the key note.
void play(Project& p, int track, int root, Scale scale) {
  Note note;
  note.velocity = 100;
  for (int step = 0; step < 16; step++) {
    note.pitch = u8(60 + root + scaleInterval(scale, step < 8 ? step : 15 - step));
    setNote(p, track, 0, step, 0, note);
    note.pitch = u8(36 + root);
    if (step % 4 == 0) setNote(p, track, 0, step, 1, note);
  }
}

TEST(KeyFinder, FindsTheKeyThatTheNotesAreIn) {
  for (int root = 0; root < 12; root++)
    for (int s = 1; s < scales; s++) {
      auto p = makeProject();
      p->key_root = root % 2;  // AUTO and OFF leave it to the Notes
      play(*p, 2, root, Scale(s));
      int found = -1;
      Scale scale = Scale::Auto;
      projectKey(*p, found, scale, 0xFFFF);
      EXPECT_EQ(found, root) << scaleName(Scale(s));
      EXPECT_EQ(scaleMask(found, scale) & scaleMask(root, Scale(s)), scaleMask(root, Scale(s)))
          << scaleName(Scale(s)) << " read as " << scaleName(scale);
      KeyProfile profile;
      addPattern(profile, *p, 2, 0);
      EXPECT_EQ(profile.best(-1, s).root, root);
      EXPECT_EQ(profile.best(root).root, root);
      EXPECT_NEAR(profile.best(root, s).share, 1, 1e-6);
    }
}

TEST(KeyFinder, TakesASetKeyAndIsSilentOnSilence) {
  auto p = makeProject();
  int root = 5;
  Scale scale = Scale::Lydian;
  projectKey(*p, root, scale, 0xFFFF);
  EXPECT_EQ(std::tuple(root, scale), std::tuple(0, Scale::Minor));
  EXPECT_EQ(KeyProfile().best().confidence, 0);
  play(*p, 1, 2, Scale::Minor);
  projectKey(*p, root, scale, 0xFFFF & ~2);
  EXPECT_EQ(root, 0);  // the Track is not in the mask
  p->key_root = 2 + 9;
  p->key_scale = 2;
  projectKey(*p, root, scale, 0xFFFF);
  EXPECT_EQ(std::tuple(root, scale), std::tuple(9, Scale::Dorian));
}

TEST(KeyFinder, LooksAtWhatIsInTheScope) {
  auto p = makeProject();
  clearArrangement(*p);
  addLoop(*p, 1, 16, 16, 0);
  play(*p, 1, 4, Scale::Major);
  addLoop(*p, 2, 16, 20, 0);
  play(*p, 2, 11, Scale::Minor);
  ASSERT_TRUE(addClip(*p, ClipRec{2, 1, 0, 36, 40, 8, 0}));

  Scope clip{Scope::Clip, 0, 1};
  Analysis found = analyze(*p, clip);
  EXPECT_EQ(std::tuple(found.root, found.scale, found.tracks, found.steps),
            std::tuple(4, Scale::Major, 1, 16));
  EXPECT_EQ(analyze(*p, clip, 9).root, 9);
  EXPECT_EQ(analyze(*p, clip, -1, Scale::Dorian).scale, Scale::Dorian);
  EXPECT_LT(analyze(*p, clip, 10, Scale::Major).share, 0.6f);

  Scope range{Scope::Range, 0, 1, 3, 6};
  EXPECT_EQ(std::tuple(scopeLength(*p, range), scopeTracks(*p, range)), std::tuple(4, 2));
  range.to = 16;
  EXPECT_EQ(std::tuple(scopeLength(*p, range), scopeTracks(*p, range)), std::tuple(0, 0));

  Scope notes{Scope::Notes, 0, 1};
  EXPECT_EQ(analyze(*p, notes).confidence, 0) << "nothing is selected";
  notes.selected[1][0] = 1;
  EXPECT_EQ(analyze(*p, notes).root, 4);

  // A Clip of two Tracks: the second begins four Steps late, and its next Clip is out of sight.
  Scope all{Scope::AllTracks, 0, 1, -1, 0, 6};
  Timeline map;
  timelineMap(*p, all, map);
  EXPECT_EQ(scopeLength(*p, all), 16);
  EXPECT_EQ(std::tuple(map.step[1][3], map.step[2][3], map.step[2][4], map.step[2][15], map.step[2][16]),
            std::tuple(3, -1, 0, 11, -1));
  // Without it the whole Song, in which a Clip goes around.
  all.pattern = -1;
  timelineMap(*p, all, map);
  EXPECT_EQ(scopeLength(*p, all), 76);
  EXPECT_EQ(std::tuple(map.step[2][36], map.step[2][43], map.step[2][44], map.step[2][75]),
            std::tuple(8, 15, 0, 15));
  // However often they play, Notes count once.
  KeyProfile profile;
  for (int t : {1, 2}) addPattern(profile, *p, t, 0);
  EXPECT_EQ(analyze(*p, all).confidence, profile.best().confidence);
}

TEST(Demo, TakesTheKeyOfTheFirstMelodicClipAndWhatPlaysBesideIt) {
  auto p = makeProject();
  clearArrangement(*p);
  int root = -1;
  Scale scale = Scale::Auto;
  demoKey(*p, root, scale);
  EXPECT_EQ(std::tuple(root, scale), std::tuple(0, Scale::Minor));
  addLoop(*p, 0, 16, 0, 0);
  addLoop(*p, 1, 16, 64, 0);
  addLoop(*p, 2, 16, 16, 0);
  addLoop(*p, 3, 16, 20, 0);
  Note hit;
  hit.velocity = 100;
  hit.pitch = 1;
  setNote(*p, 0, 0, 0, 1, hit);
  play(*p, 1, 6, Scale::Major);
  hit.pitch = 62;
  setNote(*p, 2, 0, 0, 0, hit);  // alone it would be in D
  play(*p, 3, 7, Scale::Major);
  demoKey(*p, root, scale);
  EXPECT_EQ(std::tuple(root, scale), std::tuple(7, Scale::Major));
}

TEST(Demo, EveryPatternStaysInItsRegisterItsKeyAndTwoBars) {
  std::set<DemoPattern> seen;
  for (int role = 0; role < roles; role++)
    for (const std::string& family : families(Role(role)))
      for (int s = 1; s < scales; s++)
        for (int root = 0; root < 12; root++) {
          Preset p;
          p.role = Role(role);
          p.family = family;
          p.kind = family == "KIT" ? DRUMS : MELODIC;
          const double tempo = 40 + 200.0 * root / 11;
          const Demo d = demo(p, root, Scale(s), tempo);
          const Range r = range(p);
          seen.insert(d.pattern);
          ASSERT_FALSE(d.notes.empty());
          EXPECT_TRUE(d.steps == 16 || d.steps == 32);
          std::set<std::pair<int, int>> places;
          for (const DemoNote& note : d.notes) {
            const std::string where = std::string(demoPatternName(d.pattern)) + " " + scaleName(Scale(s));
            EXPECT_TRUE(note.pitch >= r.low && note.pitch <= r.high) << where << " " << note.pitch;
            EXPECT_TRUE(p.kind == DRUMS || inKey(note.pitch, root, Scale(s))) << where << " " << note.pitch;
            EXPECT_TRUE(note.length > 0 && note.step * 256 + note.length <= d.steps * 256) << where;
            EXPECT_TRUE(note.velocity > 0 && note.velocity < 128);
            EXPECT_TRUE(places.emplace(note.step, note.pitch).second) << where << " twice at " << note.step;
          }
        }
  EXPECT_EQ(int(seen.size()), demoPatterns);
}

TEST(Demo, ALongNoteLastsAboutFourSecondsAndAKitPlaysAllItsPads) {
  Preset drone;
  drone.role = Role::Texture;
  for (double tempo : {60.0, 90.0, 120.0}) {
    const Demo d = demo(drone, 0, Scale::Minor, tempo);
    EXPECT_NEAR(d.notes[0].length / 256.0 * 15 / tempo, 4, 0.13) << tempo;
  }
  EXPECT_EQ(demo(drone, 0, Scale::Minor, 240).notes[0].length, 32 * 256);
  std::set<int> pads;
  const Preset* kit = findFactory("AFRO KIT");
  ASSERT_TRUE(kit);
  const Demo beat = demo(*kit, *makeProject());
  for (const DemoNote& note : beat.notes) pads.insert(note.pitch);
  EXPECT_EQ(std::tuple(pads.size(), beat.steps), std::tuple(8u, 16));
}

// A slide is heard only out of a note that still sounds.
TEST(Demo, SlidesStartInsideTheNoteBefore) {
  for (int i = 0; i < demoPatterns; i++) {
    const auto rows = demoRows(DemoPattern(i));
    for (size_t k = 1; k < rows.size(); k++)
      if (rows[k].kind == DemoRow::Slide || rows[k].kind == DemoRow::AccentedSlide) {
        EXPECT_GT(rows[k - 1].step + rows[k - 1].length, rows[k].step)
            << demoPatternName(DemoPattern(i)) << k;
      }
  }
}

}  // namespace
}  // namespace synth::test
