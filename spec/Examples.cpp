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
namespace synth::fixture_files {
std::span<const Embedded> files();
}

namespace synth::spec {
namespace {

std::string textOf(std::span<const Embedded> files, int i) {
  return std::string(files[size_t(std::clamp(i, 0, int(files.size()) - 1))].text);
}

ProjectPtr made(const std::string& text) {
  std::string error;
  const Json spec = json::parse(text, error);
  if (!error.empty()) throw std::runtime_error(error);
  return build(spec);
}

}  // namespace

int exampleCount() { return int(example_files::files().size()); }
std::string exampleText(int i) { return textOf(example_files::files(), i); }
ProjectPtr makeExample(int i) { return made(exampleText(i)); }

// An example's first line is a comment that describes it.
ExampleInfo exampleInfo(int i) {
  const std::string text = exampleText(i);
  std::string description = text.compare(0, 3, "// ") == 0 ? text.substr(3, text.find('\n') - 3) : "";
  return {std::string(projectName(*makeExample(i))), description};
}

int fixtureCount() { return int(fixture_files::files().size()); }
std::string fixtureText(int i) { return textOf(fixture_files::files(), i); }
ProjectPtr makeFixture(int i) { return made(fixtureText(i)); }

}  // namespace synth::spec
