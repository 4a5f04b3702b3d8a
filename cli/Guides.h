// The guides for agents, kept as Markdown files whose first line is "# topic: description".
#pragma once

#include <string>
#include <vector>

namespace synth::cli {

struct Guide {
  std::string topic, description, text;
};

const std::vector<Guide>& guides();
const Guide* guideNamed(const std::string& topic);

}  // namespace synth::cli
