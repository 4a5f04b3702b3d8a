#include "core/edit/Selection.h"

#include <algorithm>

#include "core/edit/Workspace.h"
#include "core/model/Clips.h"

namespace synth::workspace {
namespace {

int rowOf(const Project& p, const ClipKey& key) {
  return key.track < u32(p.track_count) ? clipIndex(p, int(key.track), key.start) : -1;
}

}  // namespace

bool Selection::contains(const ClipKey& key) const {
  return std::find(keys_.begin(), keys_.end(), key) != keys_.end();
}

void Selection::select(const Project& p, const ClipKey& key, bool add) {
  if (rowOf(p, key) < 0) return;
  const auto there = std::find(keys_.begin(), keys_.end(), key);
  if (!add)
    keys_ = {key};
  else if (there != keys_.end())
    keys_.erase(there);
  else
    keys_.push_back(key);
  sanitize(p);
}

void Selection::sanitize(const Project& p) {
  std::vector<ClipKey> kept;
  for (const ClipKey& key : keys_)
    if (rowOf(p, key) >= 0 && std::find(kept.begin(), kept.end(), key) == kept.end()) kept.push_back(key);
  keys_ = std::move(kept);
}

bool Selection::span(const Project& p, u32& start, u32& end) const {
  bool any = false;
  for (const ClipKey& key : keys_) {
    const int row = rowOf(p, key);
    if (row < 0) continue;
    start = any ? std::min(start, p.clips[row].start) : p.clips[row].start;
    end = any ? std::max(end, clipEnd(p.clips[row])) : clipEnd(p.clips[row]);
    any = true;
  }
  return any;
}

}  // namespace synth::workspace
