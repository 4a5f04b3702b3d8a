// The table of every settable value of a Project: its stable number, key, label, range, curve and how to
// read and write it. Files, specs, commands, Presets, Macros and the screen know values through it alone.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "core/Project.h"

namespace synth::param {

enum Scope : u8 { ScopeProject, ScopeTrack, ScopePad };
enum Curve : u8 { Linear, Logarithmic, Integer, Enumeration };
enum Applies : u8 { AnyTrack, DrumsOnly, MelodicOnly };

struct Info {
  u16 id;             // the key of the row in files; rows are not sorted by it
  const char* key;    // unique snake case; the key of the row in specs and on the command line
  const char* label;  // for the screen, not unique
  const char* group;
  const char* unit;
  Scope scope;
  Curve curve;
  Applies applies;
  f32 min, max;
  const char* const* options;
  u8 optionCount;
  bool mix;             // stays with the Track when a Preset loads
  const char* meaning;  // one sentence for people, or null
  u32 offset;           // of the field in Project, or in Track for the other scopes
  bool isByte;          // the field is a u8, else an f32

  // Integer and enumerated fields are read and written as floats. `value` is assumed in range.
  f32 get(const Project& project, int track = 0, int pad = 0) const;
  void set(f32 value, Project& project, int track = 0, int pad = 0) const;
  // The same field on a bare Track, for the scopes track and pad.
  f32 get(const Track& track, int pad = 0) const;
  void set(f32 value, Track& track, int pad = 0) const;

  // How many values the row stands for: 1, 16 or 128.
  int instances() const;
  bool whole() const { return curve == Integer || curve == Enumeration; }
};

int count();
// The row at index i of the table, clamped to it.
const Info& info(int i);
std::span<const Info> all();

// Binary searches; null when absent.
const Info* find(u16 id);
const Info* find(const char* key);
const Info* find(std::string_view key);

const Info& masterEq(int band);
// True for the one row whose value multiplies a speed ("×").
bool isSpeed(const Info& info);

// The position 0..1 of a control for a value, and back. Values are clamped to the row's range.
f32 toNormalized(const Info& info, f32 value);
f32 fromNormalized(const Info& info, f32 position);
// Finite, within min..max, and whole where the row asks for it.
bool inRange(const Info& info, f32 value);

// The label of an option, or "". On a melodic Track of `project`, "ENGINE n" becomes the Engine's own word.
std::string optionLabel(const Info& info, int index, const Project* project = nullptr, int track = 255);
// Writes the text shown for a value, cut to `size`, always terminated.
void format(const Info& info, f32 value, char* buffer, int size, const Project* project = nullptr,
            int track = 255);
std::string formatted(const Info& info, f32 value, const Project* project = nullptr, int track = 255);

// One sentence for people, or null.
const char* meaning(const Info& info);

const char* scopeName(Scope scope);
const char* curveName(Curve curve);

}  // namespace synth::param

namespace synth {

// What a Track's duck_source names: "BASS" or "DRUMS PAD 3", by the Track's own name in this Project.
std::string duckSourceName(const Project& project, int source);
// Whether the source is a Track of the Project, or a Pad of one of its Drums Tracks.
bool duckSourceValid(const Project& project, int source);
// The next valid source in that direction (1 or -1), or the same when there is no other.
int stepDuckSource(const Project& project, int source, int direction);

// The names of the sixteen starter slots, clamped to them.
const char* starterTrackName(int slot);

}  // namespace synth
