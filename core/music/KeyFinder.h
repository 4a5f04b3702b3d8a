// The key of a piece: the one that is set, or the one that its Notes are in.
#pragma once

#include "core/music/Scales.h"
#include "core/music/Scope.h"

namespace synth::compose {

struct Key {
  int root = 0;  // a pitch class
  Scale scale = Scale::Minor;
  f32 confidence = 0;  // 0..1: how far the best key stands before the next
  f32 share = 0;       // of the Notes' weight that lies in the key, 0..1
};

// What the Notes of some music weigh, pitch class by pitch class: long, loud and low ones and those on a beat
// count for more.
class KeyProfile {
 public:
  // `step` counts from the Pattern's start.
  void add(const Note& note, int step);
  // The best of all keys, or of those with the given root or scale; C minor without Notes.
  Key best(int root = -1, int scale = -1) const;

 private:
  double score(int root, Scale scale) const;

  double classes_[12] = {}, bass_[12] = {}, total_ = 0;
};

// Adds the Notes of a melodic Track's Pattern, those past its length left out.
void addPattern(KeyProfile& profile, const Project& project, int track, int pattern);

// What is found in a Scope.
struct Analysis : Key {
  int tracks = 0;  // in the Scope, kits included
  int steps = 0;   // the length of its line of time
};
// Each Note of its melodic Tracks counts once, however often it plays. A root of -1 is any, and so is AUTO.
Analysis analyze(const Project& project, const Scope& scope, int root = -1, Scale scale = Scale::Auto);

// Whether the Project's key is set; AUTO and OFF leave it to the Notes.
bool keySet(const Project& project, int& root, Scale& scale);
// The Project's key when it is set, else that of the melodic Tracks in the mask, bit n for Track n.
void projectKey(const Project& project, int& root, Scale& scale, u16 mask);

}  // namespace synth::compose
