// The Clips that are selected on the board. A key names a Clip until that Clip moves.
#pragma once

#include <vector>

#include "core/Project.h"

namespace synth::workspace {

struct ClipKey {
  u32 track = 0, start = 0;

  friend bool operator==(const ClipKey&, const ClipKey&) = default;
};

class Selection {
 public:
  const std::vector<ClipKey>& keys() const { return keys_; }  // in the order of selecting
  bool contains(const ClipKey& key) const;
  // Selects a Clip alone, or with `add` takes it in or out. A key that names no Clip does nothing.
  void select(const Project& project, const ClipKey& key, bool add);
  // Drops keys that name no Clip of an active Track, and doubles.
  void sanitize(const Project& project);
  // The lowest start and the highest end; false when nothing is selected.
  bool span(const Project& project, u32& start, u32& end) const;
  void clear() { keys_.clear(); }

 private:
  std::vector<ClipKey> keys_;
};

}  // namespace synth::workspace
