// One stored sound: an Engine or a Drums kit, the values that differ from its plain sound, its Macros, its
// Pins and the Sample it plays. It holds no mix, no Track name, no Notes, Locks or Lanes.
//
// As text (a .preset file) it is one setting a line:
//
//   # Quorel Preset
//   name = FOUNDATION
//   role = BASS
//   engine = ANALOG
//   macro = GRIT uni 0
//     insert_drive +0.3
//     decay ×0.5 0.25..1
//
//   cutoff = 650
//   pad_model[1] = CLAP
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/params/Registry.h"
#include "core/sounds/Vocabulary.h"

namespace synth::preset {

struct Value {
  std::string key;  // of the registry
  i32 pad = -1;     // 0..7 for a Pad's value
  f32 value = 0;    // in the parameter's own unit; an option's index

  bool operator==(const Value& other) const;  // bit for bit
};

struct Preset {
  std::string name;  // printable ASCII in capitals, at most 20
  Role role = Role::Lead;
  std::string family;  // of the Role, or empty
  std::vector<std::string> tags, styles;
  TrackKind kind = MELODIC;
  SynthKind engine = ANALOG;  // ANALOG for a kit
  u8 sampleHash[32] = {};     // all zero for none
  std::string sampleName;     // at most 12
  std::vector<Value> values;
  bool pinsSet = false;  // with its own Pins, even none
  std::vector<std::string> pins;
  std::vector<MacroRec> macros;

  bool operator==(const Preset& other) const;  // bit for bit
};

// Whether a value belongs to a Preset of that sound: sound values only, and only those its Engine uses.
bool holds(const param::Info& info, int kind, int engine);
// "DRUMS" for a kit, else the Engine's name.
std::string engineName(const Preset& preset);
// Whether it is a SAMPLER sound without a Sample, which plays whatever Sample the Track has.
bool settingsOnly(const Preset& preset);
// What a search for Presets looks through.
std::string searchText(const Preset& preset);

// The text of the Preset's canonical form.
std::string write(const Preset& preset);
// Reads a text. A bad line costs only itself and a warning, "line 7: ..."; false with `error` when the name
// or the Engine is missing or unknown, or a Sample is no hash.
bool parse(std::string_view text, Preset& preset, std::vector<std::string>& warnings, std::string& error);
// The one warning that a Role given from elsewhere answers.
inline constexpr char noRoleWarning[] = "no role, LEAD instead";
// Brings the Preset to its canonical form: clean words, no value that equals the plain sound's, values and
// Macros in order and within their rules.
void normalize(Preset& preset);

// The Track's sound under the Track's name; Role, family, tags and styles are the caller's.
Preset capture(const Project& project, int track);
// Loads a Preset onto a Track of its kind. Mix, name, kind and origin stay; all else becomes the Preset's.
// A settings-only Preset leaves the Track its Sample.
void applyTo(Track& track, const Preset& preset);
// The whole load: the Track changes its kind when it must, which clears its Patterns, and Lanes and Locks
// follow their Macros by name. False, changing nothing, for a Track number outside 0..15.
bool apply(Project& project, int track, const Preset& preset);
// Whether the Track plays the Preset's sound as it is stored.
bool matches(const Project& project, int track, const Preset& preset);
// Whether `apply` would lose no Notes or Lanes.
bool loadable(const Project& project, int track, const Preset& preset);

}  // namespace synth::preset
