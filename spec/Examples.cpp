#include "spec/Examples.h"

#include <algorithm>
#include <span>
#include <stdexcept>

#include "base/Embedded.h"
#include "core/Names.h"
#include "spec/Build.h"

namespace synth::example_files {
std::span<const Embedded> files();
}

namespace synth::spec {
namespace {

std::span<const Embedded> files() { return example_files::files(); }
const Embedded& fileAt(int i) { return files()[size_t(std::clamp(i, 0, exampleCount() - 1))]; }

}  // namespace

int exampleCount() { return int(files().size()); }

std::string exampleText(int i) { return std::string(fileAt(i).text); }

// An example's first line is a comment that describes it.
ExampleInfo exampleInfo(int i) {
  const std::string text = exampleText(i);
  std::string description = text.compare(0, 3, "// ") == 0 ? text.substr(3, text.find('\n') - 3) : "";
  return {std::string(projectName(*makeExample(i))), description};
}

ProjectPtr makeExample(int i) {
  std::string error;
  const Json spec = json::parse(exampleText(i), error);
  if (!error.empty()) throw std::runtime_error("Example " + std::to_string(i) + ": " + error);
  return build(spec);
}

}  // namespace synth::spec
