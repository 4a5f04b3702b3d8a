// A Track in the fewest words that build it back.
#pragma once

#include <vector>

#include "core/Project.h"
#include "spec/Keys.h"

namespace synth::spec {

class TrackExport {
 public:
  // `blank` is what a spec builds on.
  TrackExport(const Project& project, const Project& blank, bool full);

  // Adds what there is to say of a Track to the two sections.
  void add(int track, Json& tracks, Json& pads);

 private:
  // Where a Track's description begins: the kind's default sound, the Engine's default parameters, a factory
  // Preset, in this order.
  struct Recipe {
    bool kind, engine, preset;
  };

  std::vector<Recipe> recipes(const Track& track) const;
  Json begin(int track, const Recipe& recipe) const;
  // Builds the description on the new Track of that place.
  Track built(int track, const Json& object);
  int cost(const Track& wanted, const Track& had) const;
  Json describe(int track, const Recipe& recipe, const Track& had) const;
  bool leadsTo(int track, const Json& object);
  void addPads(int track, const Track& had, Json& pads) const;

  const Project &p_, &blank_;
  bool full_;
  ProjectPtr scratch_;
};

}  // namespace synth::spec
