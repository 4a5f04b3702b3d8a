// Any text either fails with a place or parses to a value whose two printed forms parse back to it.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/Json.h"

using synth::json::Json;

namespace {

int depth(const Json& v, int most) {
  if (most == 0) return 0;
  int deepest = 0;
  if (v.isArray())
    for (const Json& item : v.items()) deepest = std::max(deepest, depth(item, most - 1));
  if (v.isObject())
    for (const Json::Member& member : v.members()) deepest = std::max(deepest, depth(member.value, most - 1));
  return deepest + 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string error;
  const Json value = synth::json::parse(text, error);
  if (!error.empty()) {
    if (error.find(" at line ") == error.npos) std::abort();
    return 0;
  }
  if (depth(value, 500) >= 500) return 0;
  const std::string once = synth::json::compact(value);
  const Json again = synth::json::parse(once, error);
  if (!error.empty() || synth::json::compact(again) != once) std::abort();
  const Json pretty = synth::json::parse(synth::json::pretty(value), error);
  if (!error.empty() || synth::json::compact(pretty) != once) std::abort();
  return 0;
}
