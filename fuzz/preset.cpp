// .preset texts: whatever is read has a canonical form that reads back to the same sound without a warning,
// and loads onto a Track that validates.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/Preset.h"
#include "core/model/Defaults.h"
#include "core/model/Validate.h"

namespace {

using namespace synth;

void check(bool ok) {
  if (!ok) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto song = makeProject();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  preset::Preset p, back;
  std::vector<std::string> warnings;
  std::string error;
  if (!preset::parse(text, p, warnings, error)) {
    check(!error.empty());
    return 0;
  }
  warnings.clear();
  const std::string canonical = preset::write(p);
  check(preset::parse(canonical, back, warnings, error) && warnings.empty());
  check(back == p && preset::write(back) == canonical);

  // Onto a Track of its kind, which changes nothing but the Track.
  Track& track = song->tracks[p.kind == DRUMS ? 0 : 1];
  const Track before = track;
  check(preset::apply(*song, int(&track - song->tracks), p) && validateProject(*song, error));
  track = before;
  preset::searchText(p);
  return 0;
}
