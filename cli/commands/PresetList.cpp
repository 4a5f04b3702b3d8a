// preset list, preset families and preset show.
#include <algorithm>

#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Error.h"
#include "cli/PresetLookup.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Summary.h"
#include "core/Names.h"
#include "core/SynthKinds.h"
#include "core/sounds/Factory.h"
#include "core/sounds/MacroTravel.h"

namespace synth::cli::commands {
namespace {

using preset::Preset;

// ---- preset list

// The words of a repeated option in capitals, each of which the list must have.
preset::Words filterWords(const Args& args, const std::string& name, const preset::Words& known) {
  preset::Words words;
  if (!args.has(name)) return words;
  for (const std::string& given : args.lists.at(name)) {
    words.push_back(text::upper(text::trimmed(given)));
    if (std::find(known.begin(), known.end(), words.back()) != known.end()) continue;
    const std::string near = suggest(words.back(), known);
    throw usage("No " + name + " " + given, near.empty() ? text::joined(known, ", ") : near);
  }
  return words;
}

preset::Words roleNames() {
  preset::Words names;
  for (int r = 0; r < preset::roles; r++) names.emplace_back(preset::roleName(preset::Role(r)));
  return names;
}

preset::Words allFamilies() {
  preset::Words words;
  for (int r = 0; r < preset::roles; r++)
    for (const std::string& family : preset::families(preset::Role(r))) words.push_back(family);
  return words;
}

preset::Words engineNames() {
  preset::Words names;
  for (int k = 0; k < synthKinds; k++) names.emplace_back(synthKindName(k));
  names.emplace_back("DRUMS");
  return names;
}

struct Filter {
  preset::Words roles, families, tags, styles, engines;

  explicit Filter(const Args& args)
      : roles(filterWords(args, "role", roleNames())),
        families(filterWords(args, "family", allFamilies())),
        tags(filterWords(args, "tag", preset::characterTags())),
        styles(filterWords(args, "style", preset::styles())),
        engines(filterWords(args, "engine", engineNames())) {}

  bool passes(const Preset& p) const {
    auto has = [](const preset::Words& list, const std::string& word) {
      return std::find(list.begin(), list.end(), word) != list.end();
    };
    auto any = [&](const preset::Words& wanted, const std::string& word) {
      return wanted.empty() || has(wanted, word);
    };
    const bool style = styles.empty() || std::any_of(styles.begin(), styles.end(),
                                                     [&](const auto& word) { return has(p.styles, word); });
    const bool tagged =
        std::all_of(tags.begin(), tags.end(), [&](const auto& word) { return has(p.tags, word); });
    return any(roles, preset::roleName(p.role)) && any(families, p.family) && tagged && style &&
           any(engines, preset::engineName(p));
  }
};

Json list(const Args& args) {
  const Filter filter(args);
  const preset::PresetLibrary library = libraryOf(args);
  Json rows = Json::array();
  for (const preset::Entry& entry : library.listing()) {
    if (!filter.passes(entry.preset)) continue;
    Json row = presetHeader(entry.preset);
    row.add("factory", entry.factory);
    if (!entry.factory) row.add("file", entry.file);
    rows.push(std::move(row.add("value_count", int(entry.preset.values.size()))));
  }
  Json o = Json::object();
  o.add("directory", library.directory()).add("presets", std::move(rows));
  return std::move(o.add("problems", textList(library.problems())));
}

// ---- preset families

Json families(const Args&) {
  Json rows = Json::array();
  for (int r = 0; r < preset::roles; r++) {
    const preset::Role role = preset::Role(r);
    Json row = Json::object();
    rows.push(
        std::move(row.add("role", preset::roleName(role)).add("families", textList(preset::families(role)))));
  }
  Json o = Json::object();
  o.add("roles", std::move(rows)).add("tags", textList(preset::characterTags()));
  return std::move(o.add("styles", textList(preset::styles())));
}

// ---- preset show

Json valueRows(const Preset& p) {
  Json rows = Json::array();
  for (const preset::Value& value : p.values) {
    const param::Info* info = param::find(value.key);
    Json row = Json::object();
    row.add("key", value.key);
    if (value.pad >= 0) row.add("pad", value.pad);
    rows.push(std::move(row.add("value", value.value).add("shown", param::formatted(*info, value.value))));
  }
  return rows;
}

Json macroRows(const Preset& p) {
  Json rows = Json::array();
  for (const MacroRec& macro : p.macros) {
    Json targets = Json::array();
    for (int i = 0; i < macro.targetCount; i++) {
      const MacroTarget& t = macro.targets[i];
      const param::Info& info = *param::find(t.param);
      Json row = Json::object();
      row.add("key", info.key);
      if (info.scope == param::ScopePad) row.add("pad", int(t.pad));
      row.add("amount", t.amount);
      if (macro.polarity) row.add("amount_down", t.amount_down);
      if (t.window_from != 0 || t.window_to != 1)
        row.add("window", Json::array().push(t.window_from).push(t.window_to));
      targets.push(std::move(row.add("shown", macros::amountText(info, t.amount))));
    }
    Json row = Json::object();
    row.add("name", nameText(macro.name)).add("polarity", macro.polarity ? "bi" : "uni");
    rows.push(std::move(row.add("value", macro.value).add("targets", std::move(targets))));
  }
  return rows;
}

Json show(const Args& args) {
  const GivenPreset given = givenPreset(args, args.positionals[0]);
  const Preset& p = given.preset;
  Json o = presetHeader(p);
  o.add("pins", p.pinsSet ? textList(p.pins) : Json());
  if (!given.file) o.add("factory", preset::findFactory(p.name) != nullptr);
  if (!p.macros.empty()) o.add("macros", macroRows(p));
  o.add("values", valueRows(p)).add("text", preset::write(p));
  if (given.file) o.add("warnings", textList(given.warnings));
  return o;
}

}  // namespace

Command presetList() {
  return {"preset list",
          "List the factory Presets and yours, by Role, family, tag, style or engine.",
          {option("role", "ROLE", "only this Role"), option("family", "FAMILY", "any of these").many(),
           option("tag", "TAG", "every one of these").many(), option("style", "STYLE", "any of these").many(),
           option("engine", "ANALOG..SAMPLER or DRUMS", "only this engine"), libraryOption()},
          "{directory, presets: [{name, role, family, tags, style, engine, factory, file?, value_count}], "
          "problems}",
          false,
          {"quorel preset list --role BASS --tag WARM"},
          list};
}

Command presetFamilies() {
  return {"preset families",
          "List the vocabularies: Roles with their families, Character tags and styles.",
          {},
          "{roles: [{role, families}], tags, styles}",
          false,
          {"quorel preset families"},
          families};
}

Command presetShow() {
  return {"preset show",
          "Show a Preset's values and its text.",
          {positional("name", "NAME|file.preset", "the Preset, or a file").needed(), libraryOption()},
          "{name, role, family, tags, style, engine, pins, factory?, macros?, values: [{key, pad?, value, "
          "shown}], text, warnings?}",
          false,
          {"quorel preset show FOUNDATION"},
          show};
}

}  // namespace synth::cli::commands
