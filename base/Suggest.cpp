#include "base/Suggest.h"

#include <algorithm>
#include <numeric>

#include "base/Text.h"

namespace synth {
namespace {

// Levenshtein distance with one row of the table (Wagner and Fischer, 1974).
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t(0));
  for (size_t i = 1; i <= a.size(); i++) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
      size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string> nearest(std::string_view word, const std::vector<std::string>& candidates) {
  struct Kept {
    size_t distance;
    const std::string* name;
  };
  const std::string w = text::upper(word);
  const size_t limit = std::max<size_t>(2, w.size() / 3);
  std::vector<Kept> kept;
  for (const std::string& candidate : candidates) {
    const std::string c = text::upper(candidate);
    const bool inside = w.size() > 2 && (c.find(w) != c.npos || w.find(c) != w.npos);
    const size_t gap = c.size() > w.size() ? c.size() - w.size() : w.size() - c.size();
    if (!inside && gap > limit) continue;
    size_t d = distance(w, c);
    if (inside) d = std::min<size_t>(d, 1);
    if (d <= limit) kept.push_back({d, &candidate});
  }
  std::stable_sort(kept.begin(), kept.end(), [](auto& a, auto& b) { return a.distance < b.distance; });
  std::vector<std::string> out;
  for (size_t i = 0; i < kept.size() && i < 3; i++) out.push_back(*kept[i].name);
  return out;
}

std::string suggest(std::string_view word, const std::vector<std::string>& candidates) {
  auto names = nearest(word, candidates);
  return names.empty() ? "" : "Did you mean: " + text::joined(names, ", ") + "?";
}

}  // namespace synth
