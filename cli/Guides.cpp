#include "cli/Guides.h"

#include <span>

#include "base/Embedded.h"

namespace synth::guide_files {
std::span<const Embedded> files();
}

namespace synth::cli {

const std::vector<Guide>& guides() {
  static const std::vector<Guide> all = [] {
    std::vector<Guide> list;
    for (const Embedded& file : guide_files::files()) {
      const std::string text(file.text);
      const size_t colon = text.find(": "), end = text.find('\n');
      list.push_back({text.substr(2, colon - 2), text.substr(colon + 2, end - colon - 2), text});
      while (!list.back().text.empty() && list.back().text.back() == '\n') list.back().text.pop_back();
    }
    return list;
  }();
  return all;
}

const Guide* guideNamed(const std::string& topic) {
  for (const Guide& guide : guides())
    if (guide.topic == topic) return &guide;
  return nullptr;
}

}  // namespace synth::cli
