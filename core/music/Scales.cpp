#include "core/music/Scales.h"

#include <algorithm>

#include "base/Text.h"
#include "core/PitchNames.h"
#include "core/params/Options.h"

namespace synth::compose {
namespace {

struct Row {
  const char* name;
  int size;
  int intervals[7];
};

constexpr Row rows[scales] = {
    {"AUTO", 7, {0, 2, 3, 5, 7, 8, 10}},          {"MAJOR", 7, {0, 2, 4, 5, 7, 9, 11}},
    {"MINOR", 7, {0, 2, 3, 5, 7, 8, 10}},         {"DORIAN", 7, {0, 2, 3, 5, 7, 9, 10}},
    {"MINOR PENTATONIC", 5, {0, 3, 5, 7, 10}},    {"PHRYGIAN", 7, {0, 1, 3, 5, 7, 8, 10}},
    {"LYDIAN", 7, {0, 2, 4, 6, 7, 9, 11}},        {"MIXOLYDIAN", 7, {0, 2, 4, 5, 7, 9, 10}},
    {"LOCRIAN", 7, {0, 1, 3, 5, 6, 8, 10}},       {"HARMONIC MINOR", 7, {0, 2, 3, 5, 7, 8, 11}},
    {"MELODIC MINOR", 7, {0, 2, 3, 5, 7, 9, 11}}, {"MAJOR PENTATONIC", 5, {0, 2, 4, 7, 9}},
};

const Row& row(Scale scale) { return rows[int(scale) < scales ? int(scale) : int(Scale::Minor)]; }

int classOf(int pitch) { return ((pitch % 12) + 12) % 12; }

}  // namespace

const char* rootName(int root) { return param::options::keyRoot[2 + classOf(root)]; }

int rootNamed(std::string_view name) {
  for (int r = 0; r < 12; r++)
    if (text::sameIgnoringCase(name, rootName(r)) || text::sameIgnoringCase(name, flatPitchClassNames[r]))
      return r;
  return -1;
}

const char* scaleName(Scale scale) { return int(scale) < scales ? rows[int(scale)].name : "UNKNOWN"; }

std::optional<Scale> scaleNamed(std::string_view name) {
  for (int s = int(Scale::Major); s < scales; s++)
    if (text::sameIgnoringCase(name, rows[s].name)) return Scale(s);
  return std::nullopt;
}

int scaleSize(Scale scale) { return row(scale).size; }

int scaleInterval(Scale scale, int degree) {
  const Row& r = row(scale);
  const int turns = degree >= 0 ? degree / r.size : -((r.size - 1 - degree) / r.size);
  return r.intervals[degree - turns * r.size] + 12 * turns;
}

u16 scaleMask(int root, Scale scale) {
  unsigned mask = 0;
  for (int degree = 0; degree < scaleSize(scale); degree++)
    mask |= 1u << classOf(root + scaleInterval(scale, degree));
  return u16(mask);
}

std::optional<Triad> triadOn(int pitch, int root, Scale scale) {
  const int above = classOf(pitch - root);
  const Row& r = row(scale);
  const int degree = int(std::find(r.intervals, r.intervals + r.size, above) - r.intervals);
  if (degree == r.size) return std::nullopt;
  if (r.size == 7) {
    auto note = [&](int d) { return pitch + scaleInterval(scale, degree + d) - above; };
    return Triad{{pitch, note(2), note(4)}};
  }
  // Five notes are too few for thirds of their own: the nearest that the scale has.
  auto nearest = [&](std::initializer_list<int> semitones) {
    for (int s : semitones)
      if (inKey(classOf(pitch + s), root, scale)) return pitch + s;
    return pitch + *semitones.begin();
  };
  return Triad{{pitch, nearest({3, 4, 5}), nearest({7, 6, 8})}};
}

}  // namespace synth::compose
