#include "base/Text.h"
#include "cli/Command.h"
#include "cli/Help.h"
#include "cli/Pages.h"
#include "core/params/Perceptual.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"
#include "spec/Schema.h"

namespace synth::cli {
namespace {

using text::number;

// A cell of a table: one line, no bars.
std::string cell(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '|') out += '\\';
    out += c == '\n' ? ' ' : c;
  }
  return out;
}

std::string row(std::initializer_list<std::string> cells) {
  std::string out = "|";
  for (const std::string& text : cells) out += " " + cell(text) + " |";
  return out + "\n";
}

std::string code(const std::string& text) { return "`" + text + "`"; }

std::string commandsPage() {
  std::string out =
      "# Commands\n\nEach prints one JSON envelope, `{ok, command, data}` or `{ok: false, command, error: "
      "{code, "
      "message, hint}}`; `--compact` prints it on one line.\n";
  for (const Command& c : registerCommands()) {
    out += "\n## " + c.name + "\n\n" + c.summary + "\n\n    " + usageLine(c) + "\n";
    if (!c.args.empty()) out += "\n| argument | form | |\n|---|---|---|\n";
    for (const ArgSpec& a : c.args)
      out += row({code(a.kind == ArgSpec::Positional ? a.name : "--" + a.name),
                  a.type.empty() ? "" : code(a.type), a.help + (a.repeatable ? " (may be repeated)" : "")});
    out += "\nAnswers " + code(c.output) + (c.writes ? "; writes files." : ".") + "\n";
    for (const std::string& example : c.examples) out += "\n    " + example;
    if (!c.examples.empty()) out += "\n";
  }
  return out;
}

std::string rangeOf(const param::Info& info) {
  if (info.optionCount == 0) return number(info.min) + " to " + number(info.max);
  std::vector<std::string> labels;
  for (int i = 0; i < info.optionCount; i++) labels.emplace_back(info.options[i]);
  return text::joined(labels, ", ");
}

// The unit of a Macro's amount, for what a Macro can move at all.
const char* amountUnit(const param::Info& info) {
  if (info.scope == param::ScopeProject || info.whole()) return "";
  switch (perceptual::unitOf(info)) {
    case perceptual::Octave: return "octaves";
    case perceptual::Decibel:
    case perceptual::Level: return "dB";
    case perceptual::Time: return "×";
    case perceptual::Own: break;
  }
  return *info.unit ? info.unit : "its own";
}

std::string parametersPage() {
  std::string out =
      "# Parameters\n\nEvery settable value, by its key in specs and on the command line. A target is what "
      "Locks and "
      "Lanes call it.\n";
  std::string heading;
  for (const param::Info& info : param::all()) {
    const std::string here = std::string(param::scopeName(info.scope)) + ": " + info.group;
    if (here != heading)
      out += "\n## " + here +
             "\n\n| key | label | range | unit | default | target | Macros | "
             "|\n|---|---|---|---|---|---|---|---|\n";
    heading = here;
    const int target = automation::targetOf(info);
    const char* meaning = param::meaning(info);
    const f32 initial = info.get(defaultProject());
    out +=
        row({code(info.key), info.label, rangeOf(info), info.unit,
             info.optionCount ? info.options[int(initial)] : number(initial),
             target < 0 ? "" : automation::targetName(target), amountUnit(info),
             std::string(meaning ? meaning : "") + (info.applies == param::DrumsOnly     ? " (Drums tracks)"
                                                    : info.applies == param::MelodicOnly ? " (melodic tracks)"
                                                                                         : "")});
  }
  return out;
}

std::string targetsPage() {
  using namespace automation;
  std::string out =
      "# Targets\n\nWhat Lanes move over the Song and Locks pin to one Note. A Macro is a target too, by its "
      "name or "
      "as MACRO_1 to MACRO_16.\n\n## Of a track\n\n| target | key | unit | Locks | on a kit "
      "|\n|---|---|---|---|---|\n";
  for (int t = 0; t < trackTargets; t++) {
    const param::Info* info = targetInfo(t);
    out += row({code(targetName(t)), info ? code(info->key) : "", info ? info->unit : "st",
                lockable(t, false) ? "yes" : "no",
                lockable(t, true)   ? "Locks and Lanes"
                : laneable(t, true) ? "Lanes"
                                    : "no"});
  }
  out += "\n## Of the Sends and the Master\n\n| target | key | unit |\n|---|---|---|\n";
  for (int t = firstBusTarget; t <= lastBusTarget; t++)
    out += row({code(targetName(t)), code(targetInfo(t)->key), targetInfo(t)->unit});
  out += "\n## Performance effects (master lanes)\n\n| target | |\n|---|---|\n";
  for (int i = 0; i < performanceEffects; i++)
    out += row({code(performanceEffectName(i)), performanceEffectMeaning(i)});
  return out;
}

// What a schema asks of a value, in a few words.
std::string formOf(const Json& schema) {
  if (const Json* reference = schema.find("$ref")) {
    const std::string& text = reference->string();
    return text.substr(text.rfind('/') + 1);
  }
  // The ways of an object tell its keys apart, not its forms.
  for (const char* key : {"anyOf", "oneOf"})
    if (const Json* ways = schema.find(key); ways && !schema.find("properties")) {
      std::vector<std::string> forms;
      for (const Json& way : ways->items()) forms.push_back(formOf(way));
      return text::joined(forms, " or ");
    }
  if (const Json* values = schema.find("enum")) {
    std::vector<std::string> words;
    for (const Json& value : values->items()) words.push_back(json::compact(value));
    return text::joined(words, ", ");
  }
  const Json* type = schema.find("type");
  if (!type) return "anything";
  std::string out = type->string();
  if (const Json* items = schema.find("items"); items && items->isObject() && out == "array")
    out += " of " + formOf(*items);
  if (const Json* lo = schema.find("minimum"))
    out += " " + json::compact(*lo) + " to " + json::compact(*schema.find("maximum"));
  if (const Json* most = schema.find("maxLength")) out += " up to " + json::compact(*most) + " characters";
  return out;
}

void describe(const std::string& name, const Json& schema, std::string& out);

// The object among a schema's ways of being, if there is one.
void describeObjects(const std::string& name, const Json& schema, std::string& out) {
  if (schema.find("properties")) return describe(name, schema, out);
  for (const char* key : {"anyOf", "oneOf"})
    if (const Json* ways = schema.find(key))
      for (const Json& way : ways->items()) describeObjects(name, way, out);
  if (const Json* items = schema.find("items"); items && items->isObject())
    describeObjects(name, *items, out);
}

void describe(const std::string& name, const Json& schema, std::string& out) {
  out += "\n## " + name + "\n\n| key | form | |\n|---|---|---|\n";
  const Json* required = schema.find("required");
  for (const Json::Member& member : schema.find("properties")->members()) {
    bool needed = false;
    if (required)
      for (const Json& key : required->items()) needed |= key.string() == member.key;
    const Json* description = member.value.find("description");
    out += row({code(member.key), formOf(member.value),
                std::string(needed ? "required" : "") + (needed && description ? "; " : "") +
                    (description ? description->string() : "")});
  }
  for (const Json::Member& member : schema.find("properties")->members())
    describeObjects(name + "." + member.key, member.value, out);
}

std::string specPage() {
  const Json schema = spec::schema();
  std::string out =
      "# The spec\n\nA JSON object from which `quorel project build` makes a project; `quorel project "
      "export` writes "
      "one. Everything is optional. Sections are read in the order of this table, whatever their order in "
      "the text. "
      "The values of `projectParams`, `trackParams` and `padParams` stand in "
      "[parameters.md](parameters.md).\n";
  describe("spec", schema, out);
  for (const Json::Member& member : schema.find("$defs")->members()) {
    if (member.key.ends_with("Params")) continue;
    describeObjects(member.key, member.value, out);
  }
  return out;
}

}  // namespace

std::vector<Page> referencePages() {
  return {{"commands.md", commandsPage()},
          {"parameters.md", parametersPage()},
          {"targets.md", targetsPage()},
          {"specs.md", specPage()}};
}

}  // namespace synth::cli
