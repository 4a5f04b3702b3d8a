// Any bytes either fail with a text and change nothing, or load a valid Project that saves to bytes which
// load to the same Project.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/Crc32.h"
#include "core/ProjectFile.h"
#include "core/ProjectFormat.h"
#include "core/model/Validate.h"

using namespace synth;

namespace {

// The input is taken as a payload too, with a header that fits it, so that the fuzzer gets past the sums.
std::string withHeader(std::string_view payload) {
  std::string image(format::magic, sizeof format::magic);
  const u32 words[] = {projectFormatVersion, u32(payload.size()), crc32(payload.data(), payload.size())};
  image.append(reinterpret_cast<const char*>(words), sizeof words);
  return image.append(payload);
}

void check(std::string_view image) {
  static ProjectPtr project = newProject(), again = newProject();
  std::string error;
  if (!readProjectImage(image, *project, error)) {
    if (error.empty()) std::abort();
    return;
  }
  if (!validateProject(*project, error)) std::abort();
  if (!readProjectImage(projectImage(*project), *again, error) || !sameBytes(*project, *again)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  check(bytes);
  check(withHeader(bytes.substr(std::min(size, format::headerSize))));
  return 0;
}
