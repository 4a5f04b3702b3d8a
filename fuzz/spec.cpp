// Any JSON either is refused with a code and a text, or builds a Project that validates and whose export
// builds it again.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/model/Validate.h"
#include "spec/Build.h"
#include "spec/Diff.h"
#include "spec/Export.h"
#include "spec/Warnings.h"

using namespace synth;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string error;
  const spec::Json value = json::parse(std::string(reinterpret_cast<const char*>(data), size), error);
  if (!error.empty()) return 0;
  try {
    auto project = spec::build(value);
    if (!validateProject(*project, error)) std::abort();
    spec::warningsOf(*project);
    if (!spec::diffProjects(*project, *project).items().empty()) std::abort();
    for (bool full : {false, true})
      if (!spec::rebuilds(*project, spec::toSpec(*project, full), error)) std::abort();
  } catch (const spec::SpecError& mistake) {
    if (mistake.message().empty() || !mistake.code()[0]) std::abort();
  }
  return 0;
}
