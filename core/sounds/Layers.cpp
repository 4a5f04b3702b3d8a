#include "core/sounds/Layers.h"

#include <algorithm>

#include "base/Text.h"
#include "core/model/Defaults.h"

namespace synth::layers {
namespace {

using paramlist::Row;

std::vector<Row> rowsOf(const Project& p, std::string_view page, int track) {
  std::vector<Row> rows = paramlist::rows(p, track);
  std::erase_if(rows, [&](const Row& row) { return row.group != page; });
  return rows;
}

}  // namespace

std::vector<std::string> pages(const Project& p, int track) {
  std::vector<std::string> titles;
  for (const Row& row : paramlist::rows(p, track))
    if (titles.empty() || titles.back() != row.group) titles.push_back(row.group);
  return titles;
}

int count(const Project& p, std::string_view page, int track) { return int(rowsOf(p, page, track).size()); }

bool layer(const Project& p, std::string_view page, int track, int index, Row& row) {
  std::vector<Row> rows = rowsOf(p, page, track);
  if (index < 0 || size_t(index) >= rows.size()) return false;
  row = std::move(rows[size_t(index)]);
  return true;
}

int find(const Project& p, std::string_view page, int track, std::string_view key) {
  const std::vector<Row> rows = rowsOf(p, page, track);
  for (size_t i = 0; i < rows.size(); i++)
    if (text::sameIgnoringCase(rows[i].key, key)) return int(i);
  return -1;
}

f32 defaultValue(const Project& p, int track, std::string_view key, int pad) {
  const param::Info* info = param::find(key);
  if (!info || track < 0 || track >= limits::tracks) return 0;
  if (info->scope == param::ScopeProject) return info->get(*makeProject());
  Track plain = defaultTrack(TrackKind(p.tracks[track].track_kind));
  if (!isDrums(plain)) setSynthKind(plain, p.tracks[track].engine);
  return info->get(plain, std::clamp(pad, 0, limits::pads - 1));
}

}  // namespace synth::layers
