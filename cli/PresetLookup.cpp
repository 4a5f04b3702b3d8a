#include "cli/PresetLookup.h"

#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "base/ReadFile.h"
#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Error.h"
#include "cli/commands/Summary.h"
#include "core/sounds/Factory.h"
#include "spec/Presets.h"

namespace synth::cli {
namespace {

constexpr size_t largestFile = size_t(1) << 20;
constexpr const char* formatHint =
    "The format is described in core/Preset; quorel preset show FOUNDATION prints an example";

std::string roleList() {
  std::vector<std::string> names;
  for (int r = 0; r < preset::roles; r++) names.emplace_back(preset::roleName(preset::Role(r)));
  return text::joined(names, ", ");
}

// Words of a vocabulary from a repeated option, each checked.
preset::Words wordsOption(const Args& args, const std::string& name, const preset::Words& vocabulary,
                          int most) {
  preset::Words words;
  for (const std::string& given : args.lists.at(name))
    for (const std::string& word : text::words(text::upper(given))) {
      if (std::find(vocabulary.begin(), vocabulary.end(), word) == vocabulary.end()) {
        const std::string near = suggest(word, vocabulary);
        throw usage("No " + name + " " + word, near.empty() ? text::joined(vocabulary, ", ") : near);
      }
      if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
    }
  if (int(words.size()) > most)
    throw usage("--" + name + " can be given up to " + std::to_string(most) + " times");
  return words;
}

void applyFamily(const std::string& wanted, preset::Preset& p) {
  const std::string family = text::upper(text::trimmed(wanted));
  const preset::Words& list = preset::families(p.role);
  if (!family.empty() && preset::familyIndex(p.role, family) < 0)
    throw usage("No family " + family + " of " + preset::roleName(p.role), text::joined(list, ", "));
  if ((family == "KIT") != (p.kind == DRUMS) && !family.empty())
    throw usage(p.kind == DRUMS ? "A Drums kit's family is KIT" : "Family KIT is for Drums kits");
  p.family = family;
}

}  // namespace

ArgSpec libraryOption() { return option("library", "folder", "the Preset folder (default: yours)"); }

preset::PresetLibrary libraryOf(const Args& args) {
  preset::PresetLibrary library(args.has("library") ? args.at("library")
                                                    : preset::PresetLibrary::defaultDirectory());
  std::string error;
  if (!library.reload(error)) throw CliError("read_failed", "Cannot read the Preset library: " + error);
  return library;
}

void resolvePresetsOfSpecs() {
  spec::presetResolver() = [library = std::shared_ptr<preset::PresetLibrary>()](
                               const std::string& name) mutable -> std::optional<preset::Preset> {
    if (const preset::Preset* found = preset::findFactory(name)) return *found;
    if (!library) library = std::make_shared<preset::PresetLibrary>(libraryOf({}));
    const preset::Entry* found = library->find(name);
    return found ? std::optional(found->preset) : std::nullopt;
  };
}

const preset::Preset& presetNamed(const preset::PresetLibrary& library, const std::string& name) {
  if (const preset::Preset* found = library.resolve(name)) return *found;
  std::vector<std::string> names;
  for (const preset::Preset& p : preset::factory()) names.push_back(p.name);
  for (const preset::Entry& entry : library.entries()) names.push_back(entry.preset.name);
  const std::string near = suggest(name, names);
  throw CliError("unknown_preset", "No Preset named " + text::upper(name),
                 near.empty() ? "List them with: quorel preset list" : near);
}

preset::Preset readPresetFile(const std::string& path, std::vector<std::string>& warnings) {
  struct stat info;
  if (path.empty() || ::stat(path.c_str(), &info) != 0)
    throw CliError("not_found", "No such file: " + path, "Check the path; Presets are .preset files");
  std::string text, error;
  if (!S_ISREG(info.st_mode) || readFile(path, largestFile, text, error) != ReadResult::Ok)
    throw CliError("read_failed", "Cannot read " + path, "A Preset is a text file of at most 1 MiB");
  preset::Preset p;
  if (!preset::parse(text, p, warnings, error))
    throw CliError("invalid_preset", path + ": " + error, formatHint);
  return p;
}

GivenPreset givenPreset(const Args& args, const std::string& wanted) {
  GivenPreset given;
  given.file = text::lower(wanted).ends_with(".preset");
  given.preset = given.file ? readPresetFile(wanted, given.warnings) : presetNamed(libraryOf(args), wanted);
  return given;
}

std::vector<ArgSpec> headerOptions() {
  return {option("name", "NAME", "its name, up to 20 characters"), option("role", "ROLE", roleList()),
          option("family", "FAMILY", "one of the Role's (quorel preset families)"),
          option("tag", "TAG", "a Character tag; up to four").many(),
          option("style", "STYLE", "a style; up to two").many()};
}

void applyHeader(const Args& args, preset::Preset& p) {
  if (args.has("name")) {
    if (args.at("name").size() > size_t(limits::presetName))
      throw usage("--name is up to " + std::to_string(limits::presetName) + " characters");
    p.name = preset::cleanName(args.at("name"));
    if (p.name.empty()) throw usage("A Preset needs a name", "Letters without accents, digits and signs");
  }
  if (args.has("role")) {
    if (!preset::parseRole(args.at("role"), p.role)) throw usage("No role " + args.at("role"), roleList());
    if (preset::familyIndex(p.role, p.family) < 0) p.family.clear();
  }
  if (args.has("family")) applyFamily(args.at("family"), p);
  // A kit has no other family, so nobody needs to name it.
  if (p.kind == DRUMS && p.role == preset::Role::Perc) p.family = "KIT";
  if (args.has("tag")) p.tags = wordsOption(args, "tag", preset::characterTags(), preset::mostTags);
  if (args.has("style")) p.styles = wordsOption(args, "style", preset::styles(), preset::mostStyles);
}

Json presetHeader(const preset::Preset& p) {
  Json o = Json::object();
  o.add("name", p.name).add("role", preset::roleName(p.role)).add("family", p.family);
  o.add("tags", textList(p.tags)).add("style", textList(p.styles)).add("engine", preset::engineName(p));
  return o;
}

void libraryRefused(const std::string& error, const std::string& name, const char* wayOn) {
  auto has = [&](const char* part) { return error.find(part) != error.npos; };
  if (has(" is a factory Preset; choose"))
    throw CliError("reserved_name", "Factory Presets keep their names; choose another", error);
  if (has(" is a factory Preset and")) throw CliError("reserved_name", error);
  if (error.starts_with("A Preset named ")) throw CliError("exists", error, wayOn);
  if (error.starts_with("No Preset named ")) throw CliError("unknown_preset", error);
  if (error.starts_with("Cannot read "))
    throw CliError("read_failed", "Cannot read the Preset library: " + error);
  if (error.starts_with("Cannot ")) throw CliError("write_failed", error);
  throw CliError("invalid_preset", error.empty() ? "Cannot use " + name : error);
}

}  // namespace synth::cli
