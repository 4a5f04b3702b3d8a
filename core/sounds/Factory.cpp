#include "core/sounds/Factory.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <span>
#include <stdexcept>

#include "base/Embedded.h"
#include "core/Names.h"
#include "core/sounds/Pins.h"

namespace synth::preset_files {
std::span<const Embedded> files();
}

namespace synth::preset {
namespace {

std::span<const Embedded> files() { return preset_files::files(); }

// Every file is read when it is first asked for: a command that needs one sound does not read them all.
class Table {
 public:
  Table() : presets_(files().size()), read_(files().size()) {}

  const Preset& at(size_t i) {
    std::call_once(read_[i], [&] {
      std::vector<std::string> warnings;
      std::string error;
      if (!parse(files()[i].text, presets_[i], warnings, error))
        throw std::logic_error(std::string(files()[i].name) + ": " + error);
    });
    return presets_[i];
  }
  const std::vector<Preset>& all() {
    for (size_t i = 0; i < presets_.size(); i++) at(i);
    return presets_;
  }

 private:
  std::vector<Preset> presets_;
  std::deque<std::once_flag> read_;
};

Table& table() {
  static Table* const t = new Table;
  return *t;
}

}  // namespace

const std::vector<Preset>& factory() { return table().all(); }

const Preset* findFactory(std::string_view name) {
  const std::string wanted = cleanName(name), file = slug(wanted) + ".preset";
  const auto it = std::lower_bound(files().begin(), files().end(), file,
                                   [](const Embedded& row, const std::string& f) { return row.name < f; });
  if (it == files().end() || it->name != file) return nullptr;
  const Preset& found = table().at(size_t(it - files().begin()));
  return found.name == wanted ? &found : nullptr;
}

bool applyFactory(Track& track, std::string_view name) {
  const Preset* preset = findFactory(name);
  if (preset) applyTo(track, *preset);
  return preset;
}

bool pinsFromName(Track& track) {
  const Preset* preset = findFactory(nameText(track.preset_name));
  if (!preset || preset->kind != track.track_kind || (!isDrums(track) && preset->engine != track.engine))
    return false;
  if (preset->pinsSet)
    pins::setKeys(track, preset->pins);
  else
    pins::clear(track);
  return true;
}

}  // namespace synth::preset
