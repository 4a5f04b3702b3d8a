// The text of a Preset and its way onto a Track: nothing is lost between the two, and what is wrong in a
// text costs only the line it stands on.
#include "core/Preset.h"

#include <gtest/gtest.h>

#include <cfloat>

#include "base/Text.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/model/Clips.h"
#include "core/model/Defaults.h"
#include "core/model/Lanes.h"
#include "core/model/Notes.h"
#include "core/model/Validate.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "support/RandomPreset.h"

namespace synth::test {
namespace {

using namespace preset;

struct Parsed {
  Preset preset;
  std::vector<std::string> warnings;
  std::string error;
  bool ok = false;
};

Parsed read(const std::string& text) {
  Parsed out;
  out.ok = parse(text, out.preset, out.warnings, out.error);
  return out;
}

TEST(PresetText, ReadsBackToTheSameSoundWithoutAWarning) {
  for (u32 seed = 0; seed < 400; seed++) {
    Random r(seed);
    Preset p = seed % 2 ? randomPreset(r) : brokenPreset(r);
    const std::string text = write(p);
    const Parsed back = read(text);
    ASSERT_TRUE(back.ok) << back.error << "\n" << text;
    EXPECT_EQ(text::joined(back.warnings, "\n"), "") << text;
    normalize(p);
    EXPECT_TRUE(back.preset == p) << seed << "\n" << text << "\nbecame\n" << write(back.preset);
    const Preset once = p;
    normalize(p);
    EXPECT_TRUE(p == once) << seed;
    EXPECT_EQ(write(back.preset), text);
  }
}

TEST(PresetText, HasOneCanonicalForm) {
  const Parsed p = read(
      "  Name = two  words \r\nENGINE=analog\r\nmacro = tilt BIPOLAR -0\n\tcutoff -1 +1 0.25..1\n  decay "
      "x0.5\n"
      "  resonance 0.5 -0.25\nrole= bass\npins = TILT cutoff\nfamily = deep\nstyle = pop\ntags = dark LONG\n"
      "trim = -0\ncutoff = 440\ncutoff = 650\nresonance = 0.3\nresonance = 0\nvisual = pile driver");
  EXPECT_EQ(text::joined(p.warnings, "\n"), "");
  EXPECT_EQ(write(p.preset),
            "# Quorel Preset\nname = TWO  WORDS\nrole = BASS\nfamily = DEEP\ntags = DARK LONG\nstyle = POP\n"
            "engine = ANALOG\npins = TILT cutoff\nmacro = TILT bi 0\n  cutoff -1 0.25..1\n  decay ×0.5\n"
            "  resonance +0.5 -0.25\n\ntrim = -0\ncutoff = 650\nvisual = PILE DRIVER\n");
  const Parsed kit =
      read("name = K\nrole = PERC\nengine = DRUMS\npad_model[1] = clap\npad_drive[7] = 0.5\ntrim=3");
  EXPECT_EQ(text::joined(kit.warnings, "\n"), "");
  EXPECT_EQ(write(kit.preset),
            "# Quorel Preset\nname = K\nrole = PERC\nengine = DRUMS\n\ntrim = 3\n\n# Pad 1\npad_model[1] = "
            "CLAP\n\n# Pad 7\npad_drive[7] = 0.5\n");
}

TEST(PresetText, TellsOwnEmptyPinsFromNone) {
  EXPECT_NE(write(read("name = A\nrole = FX\nengine = FM\npins =\n").preset).find("\npins =\n"),
            std::string::npos);
  EXPECT_EQ(write(read("name = A\nrole = FX\nengine = FM\n").preset).find("pins"), std::string::npos);
}

struct Fault {
  const char *lines, *warning;
};

// Each follows "name", "role = LEAD" and "engine = ANALOG" or what stands in `head`, from line 4 on.
void expectWarnings(const std::string& head, std::initializer_list<Fault> faults) {
  for (const Fault& fault : faults) {
    const Parsed p = read(head + fault.lines);
    EXPECT_TRUE(p.ok) << fault.lines << p.error;
    EXPECT_EQ(text::joined(p.warnings, "|"), fault.warning) << fault.lines;
    EXPECT_TRUE(p.preset == read(write(p.preset)).preset) << fault.lines;
  }
}

const std::string lead = "name = A\nrole = LEAD\nengine = ANALOG\n",
                  kit = "name = A\nrole = PERC\nengine = DRUMS\n";

TEST(PresetWarnings, OfTheHeader) {
  expectWarnings(
      lead,
      {{"name = A NAME OF MORE THAN 20 CHARACTERS", "line 4: name longer than 20 characters, cut"},
       {"role = Bas", "line 4: unknown role Bas, LEAD instead"},
       {"free words", "line 4: not \"key = value\", skipped"},
       {"\n# note\n  cutoff +1", "line 6: a Macro target outside a macro, skipped"},
       {"family = Deep",
        "line 4: family Deep is not one of LEAD's (SAW, MONO, SYNC, SOFT, VOX, BRASS, RAVE), dropped"},
       {"family = KIT", "line 4: family KIT is for Drums kits, dropped"},
       {"family =", ""},
       {"tags = DARK Nice dark SOFT WIDE LONG METAL",
        "line 4: tag Nice (DARK, BRIGHT, WARM, CLEAN, DIRTY, AIRY, GLASSY, METAL, SOFT, PUNCHY, SHORT, LONG, "
        "EVOLVING, PULSE, MONO, WIDE, VINTAGE, LOFI), dropped|line 4: tag dark repeats, dropped|line 4: tags "
        "holds at most 4, kept DARK SOFT WIDE LONG"},
       {"style = POP IDM DNB", "line 4: style holds at most 2, kept POP IDM"},
       {"style = JAZZ",
        "line 4: style JAZZ (HOUSE, TECHNO, TRANCE, DNB, DUBSTEP, HIPHOP, POP, SYNTHWAVE, AMBIENT, IDM), "
        "dropped"},
       {"pins = cutoff bpm CUTOFF level",
        "line 4: Pin bpm is not a parameter of ANALOG or a Macro of the Preset, dropped|line 4: Pin CUTOFF "
        "repeats, dropped"},
       {"sample = nothing", "line 4: sample is for SAMPLER Presets, skipped"}});
  expectWarnings(kit, {{"family = KICK", "line 4: a Drums kit's family is KIT, KICK dropped"},
                       {"role = BASS\nfamily = KIT",
                        "line 5: family KIT is not one of BASS's (SUB, DEEP, 808, MONO, PLUCK, ACID, REESE, "
                        "GROWL), dropped"}});
  expectWarnings("name = A\nengine = FM\n", {{"", "no role, LEAD instead"}});
  std::string pins = "pins =";
  int listed = 0;
  for (const param::Info& info : param::all())
    if (pins::valid(MELODIC, ANALOG, info.key) && ++listed <= 33) pins += std::string(" ") + info.key;
  EXPECT_EQ(read(lead + pins).warnings.size(), 1u);
  EXPECT_NE(read(lead + pins).warnings[0].find("pins holds at most 32, "), std::string::npos);
}

TEST(PresetWarnings, OfValues) {
  expectWarnings(
      lead,
      {{"pad_tone[x] = 1", "line 4: bad Pad index in pad_tone[x], skipped"},
       {"cutof = 1", "line 4: unknown parameter cutof, skipped"},
       {"track_kind = DRUMS", "line 4: track_kind comes from the engine line, skipped"},
       {"level = 1", "line 4: level belongs to the mix, not a Preset; skipped"},
       {"bpm = 1", "line 4: bpm belongs to the project, not a Preset; skipped"},
       {"drawbar_1 = 1", "line 4: drawbar_1 is not used by ANALOG, skipped"},
       {"pad_tone[1] = 1", "line 4: pad_tone[1] is not used by a melodic Track, skipped"},
       {"cutoff[1] = 900", "line 4: cutoff takes no Pad index, skipped"},
       {"cutoff = 9,5", "line 4: cannot read cutoff = 9,5, skipped"},
       {"cutoff = nan", "line 4: cannot read cutoff = nan, skipped"},
       {"cutoff = 1e99", "line 4: cannot read cutoff = 1e99, skipped"},
       {"unison = 2.4", "line 4: unison is a whole number; 2.4 rounded"},
       {"unison = 9.4",
        "line 4: unison is a whole number; 9.4 rounded|line 4: unison = 9.4 is outside 1 .. 4, clamped to 4"},
       {"cutoff = 5", "line 4: cutoff = 5 is outside 20 .. 20000, clamped to 20"},
       {"lfo_shape = 99", "line 4: lfo_shape = 99 is outside 0 .. 6, clamped to 6"},
       {"Cutoff = +9.5e2", ""}});
  expectWarnings(
      kit, {{"cutoff = 900", "line 4: cutoff is not used by a Drums kit, skipped"},
            {"pad_tone = 1", "line 4: pad_tone needs a Pad index (pad_tone[0] .. pad_tone[7]), skipped"},
            {"pad_tone[8] = 1", "line 4: pad_tone needs a Pad index (pad_tone[0] .. pad_tone[7]), skipped"}});
}

TEST(PresetWarnings, OfMacros) {
  expectWarnings(
      lead,
      {{"macro = A uni", "line 4: a macro is \"macro = NAME uni|bi VALUE\", skipped"},
       {"macro = CUTOFF uni 0\n cutoff 1",
        "line 4: Macro name CUTOFF is not one word of letters, digits, _ or - (or is a parameter's key), "
        "skipped|line 5: a Macro target outside a macro, skipped"},
       {"macro = A uni 0\nmacro = a bi 0\n cutoff 1",
        "line 5: a second Macro a, skipped|line 6: a Macro target outside a macro, skipped"},
       {"macro = A both 0", "line 4: polarity is uni or bi, both read as uni"},
       {"macro = A uni loud", "line 4: cannot read the value of Macro A, 0 instead"},
       {"macro = A uni -0.5", "line 4: Macro A = -0.5 is outside its range, clamped"},
       {"macro = A bi -0.5", ""},
       {"macro = A uni 0\n cutoff",
        "line 5: a Macro target is \"KEY AMOUNT [AMOUNT AT -100 %] [FROM..TO]\", "
        "skipped"},
       {"macro = A uni 0\n cutof 1", "line 5: unknown parameter cutof in Macro A, skipped"},
       {"macro = A uni 0\n level 1", "line 5: Macro A cannot move level on ANALOG, skipped"},
       {"macro = A uni 0\n cutoff x2", "line 5: cannot read the amount x2 of cutoff, skipped"},
       {"macro = A uni 0\n decay x0", "line 5: cannot read the amount x0 of decay, skipped"},
       {"macro = A uni 0\n decay X2\n attack ×0.5\n release +1", ""},
       {"macro = A uni 0\n cutoff 1 2", "line 5: a unipolar Macro has no amount at -100 %; 2 ignored"},
       {"macro = A bi 0\n cutoff 1 2 3", "line 5: one amount at -100 %; 3 ignored"},
       {"macro = A bi 0\n cutoff 1 2 0.5..0.5", "line 5: a window is FROM..TO within 0..1, 0.5..0.5 ignored"},
       {"macro = A uni 0\n cutoff[2] 1", "line 5: cutoff[2] takes no Pad index, skipped"},
       {"macro = A uni 0\n cutoff 1\n cutoff 2", "line 6: Macro A moves cutoff twice, the second skipped"},
       {"macro = A uni 0\n\n cutoff 1\ncutoff = 900\n trim 1",
        "line 8: a Macro target outside a macro, skipped"}});
  expectWarnings(kit,
                 {{"macro = A uni 0\n pad_tone 0.1", "line 5: pad_tone needs a Pad index, skipped"},
                  {"macro = A uni 0\n pad_tone[z] 0.1", "line 5: bad Pad index in pad_tone[z], skipped"}});
  std::string many, targets = "macro = A uni 0\n";
  for (int i = 0; i < 17; i++) many += "macro = M" + std::to_string(i) + " uni 0\n";
  EXPECT_EQ(text::joined(read(lead + many).warnings, "|"),
            "line 20: a sound holds at most 16 Macros, M16 skipped");
  int count = 0;
  for (const param::Info& info : param::all())
    if (macros::targetable(info, MELODIC, ANALOG) && ++count <= 17)
      targets += "  " + std::string(info.key) + " 1\n";
  ASSERT_EQ(read(lead + targets).warnings.size(), 1u);
  EXPECT_NE(read(lead + targets).warnings[0].find("a Macro moves at most 16 parameters, "),
            std::string::npos);
}

TEST(PresetText, RefusesOnlyWhatIsNoSound) {
  const Fault faults[] = {
      {"engine = FM\nrole = FX", "A Preset needs a name"},
      {"engine = FM\nname = \xC3\xA9", "A Preset needs a name"},
      {"name = A", "A Preset needs an engine (ANALOG … SAMPLER, or DRUMS)"},
      {"name = A\n\nengine = Piano\n", "Unknown engine Piano (line 3)"},
      {"name = A\nengine = SAMPLER\nsample = 00", "A sample is 64 hex characters"},
  };
  for (const Fault& fault : faults) {
    const Parsed p = read(fault.lines);
    EXPECT_FALSE(p.ok);
    EXPECT_EQ(p.error, fault.warning);
  }
}

TEST(PresetRules, HoldWhatTheSoundUses) {
  auto held = [](const char* key, int kind, int engine) { return holds(*param::find(key), kind, engine); };
  EXPECT_TRUE(held("analog_mode", MELODIC, ANALOG) && !held("analog_mode", MELODIC, FM));
  EXPECT_TRUE(held("perc_model", MELODIC, PERC) && !held("perc_model", MELODIC, ANALOG));
  EXPECT_TRUE(held("sample_root", MELODIC, SAMPLER) && !held("sample_root", MELODIC, ORGAN));
  EXPECT_TRUE(held("insert_drive", DRUMS, 0) && held("pad_tone", DRUMS, 0) && !held("cutoff", DRUMS, 0));
  for (const char* never : {"engine", "track_kind", "level", "duck_source", "bpm"})
    EXPECT_FALSE(held(never, MELODIC, ANALOG) || held(never, DRUMS, 0)) << never;

  Preset p = read("name = A\nrole = KEYS\nfamily = EP\ntags = WARM\nstyle = POP\nengine = SAMPLER").preset;
  EXPECT_EQ(searchText(p), "A KEYS EP WARM POP SAMPLER");
  EXPECT_TRUE(settingsOnly(p));
  p.sampleHash[31] = 1;
  EXPECT_FALSE(settingsOnly(p));
}

// A Track of a random song, its Macros and Pins within the rules of its sound.
void settle(Track& track) {
  std::string error;
  while (track.macroCount && !macros::valid(track, error)) track.macros[--track.macroCount] = MacroRec{};
}

TEST(PresetLoad, GivesATrackBackWhatWasTakenFromIt) {
  int kits = 0;
  for (u32 seed = 1; seed <= 60; seed++) {
    auto from = randomProject(seed), into = randomProject(seed + 1000);
    const int a = int(seed) % 16, b = int(seed * 7) % 16;
    settle(from->tracks[a]);
    Preset taken = capture(*from, a);
    kits += taken.kind == DRUMS;
    taken.name = "TAKEN";
    taken.role = Role::Keys;
    const Parsed stored = read(write(taken));
    ASSERT_TRUE(stored.ok && stored.warnings.empty());
    const Track before = into->tracks[b];
    ASSERT_TRUE(apply(*into, b, stored.preset));
    std::string error;
    EXPECT_TRUE(validateProject(*into, error)) << seed << ": " << error;
    const Track& now = into->tracks[b];
    EXPECT_EQ(nameText(now.preset_name), "TAKEN");
    EXPECT_EQ(matches(*into, b, taken),
              !settingsOnly(taken) || now.sample_root == from->tracks[a].sample_root)
        << seed;
    for (const param::Info& info : param::all()) {
      if (info.scope != param::ScopeTrack || std::string_view(info.key) == "engine") continue;
      if (info.mix) {
        EXPECT_EQ(info.get(now), info.get(before)) << info.key;
      }
      if (!holds(info, taken.kind, taken.engine) || std::string_view(info.key).starts_with("sample_"))
        continue;
      EXPECT_EQ(info.get(now), info.get(from->tracks[a])) << info.key;
    }
    into->tracks[b].attack = into->tracks[b].attack == 1 ? 2.0f : 1.0f;
    into->tracks[b].trim = into->tracks[b].trim == 1 ? 2.0f : 1.0f;
    EXPECT_FALSE(matches(*into, b, taken));
  }
  EXPECT_GT(kits, 5);
}

TEST(PresetLoad, KeepsLanesAndLocksOfMacrosThatTheNewSoundHas) {
  auto p = makeProject();
  auto with = [](const char* macroLines) {
    return read(std::string("name = A\nrole = LEAD\nengine = FM\n") + macroLines).preset;
  };
  ASSERT_TRUE(apply(*p, 1, with("macro = ONE uni 0\n cutoff 1\nmacro = TWO uni 0\n cutoff 1")));
  const LanePoint point{0, 100, 0, 0};
  for (int slot : {0, 1}) {
    setLanePoints(*p, laneRow(1, slot), &point, 1);
    p->lanes[laneRow(1, slot)].target = u8(automation::firstMacroTarget + slot + 1);
  }
  Note note;
  note.velocity = 100;
  note.locks[0] = {u8(automation::firstMacroTarget + 1), 0, 5};
  note.locks[1] = {u8(automation::firstMacroTarget + 2), 0, 6};
  setNote(*p, 1, 0, 0, 0, note);
  ASSERT_TRUE(apply(*p, 1, with("macro = NEW uni 0\nmacro = X uni 0\nmacro = TWO uni 0")));
  EXPECT_EQ(p->lanes[laneRow(1, 0)].target, 0);
  EXPECT_EQ(p->lanes[laneRow(1, 1)].target, automation::firstMacroTarget + 3);
  EXPECT_EQ(p->notes[0].locks[0].target, automation::firstMacroTarget + 3);
  EXPECT_EQ(p->notes[0].locks[0].value, 6);
  EXPECT_EQ(p->notes[0].locks[1].target, 0);
}

TEST(PresetLoad, ChangesTheKindOnlyWithThePatterns) {
  auto p = makeProject();
  const Preset kitSound = read("name = K\nrole = PERC\nengine = DRUMS\npad_tone[0] = 1").preset;
  p->tracks[1].level = 0.123f;
  EXPECT_TRUE(loadable(*p, 1, kitSound) && loadable(*p, 0, kitSound) && !loadable(*p, 16, kitSound));
  Note note;
  note.velocity = 100;
  setNote(*p, 1, 0, 0, 0, note);
  EXPECT_FALSE(loadable(*p, 1, kitSound));
  ASSERT_TRUE(apply(*p, 1, kitSound));
  EXPECT_EQ(std::tuple(trackClips(*p, 1), p->noteCount, p->tracks[1].level), std::tuple(0, 0, 0.123f));
  EXPECT_TRUE(isDrums(p->tracks[1]) && matches(*p, 1, kitSound));
  auto same = copyOf(*p);
  EXPECT_FALSE(apply(*p, 16, kitSound) || apply(*p, -1, kitSound) || matches(*p, 16, kitSound));
  EXPECT_TRUE(sameBytes(*same, *p));
}

TEST(PresetLoad, ASettingsOnlyPresetLeavesTheSample) {
  Track t = defaultTrack(MELODIC);
  u8 hash[32] = {9};
  assignSample(t, hash, "voice", 48, 12);
  const Track before = t;
  applyTo(t, read("name = L\nrole = PAD\nengine = SAMPLER\nsample_mode = KEYS\nsample_root = 70").preset);
  EXPECT_EQ(std::tuple(t.sample_mode, t.sample_root, t.sample_tune, t.sample_hash[0]),
            std::tuple(1, 48, 12.0f, 9));
  EXPECT_TRUE(sameBytes(t.sample_name, before.sample_name));
  applyTo(t, read("name = L\nrole = PAD\nengine = FM").preset);
  EXPECT_EQ(t.sample_hash[0], 0);
}

TEST(PresetWords, NamesBecomeFileNames) {
  const char* cases[][2] = {
      {"808 DIRTY!", "808-dirty"}, {"***", "preset"}, {"  A--B  c ", "a-b-c"}, {"(X)", "x"}, {"", "preset"}};
  for (auto& c : cases) EXPECT_EQ(slug(c[0]), c[1]);
  EXPECT_EQ(preset::cleanName("  my b\xC3\xA9"
                              "ss that goes on and on"),
            "MY BSS THAT GOES ON");
  EXPECT_EQ(roleName(Role(200)), std::string("FX"));
  EXPECT_EQ(familyIndex(Role::Keys, "STAB"), 3);
  EXPECT_EQ(familyIndex(Role::Keys, ""), -1);
}

}  // namespace
}  // namespace synth::test
