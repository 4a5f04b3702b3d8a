// help, guide, commands, version, params, targets, examples, engines.
#include <cstring>

#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Error.h"
#include "cli/Help.h"
#include "cli/commands/Commands.h"
#include "core/ProjectFile.h"
#include "core/SynthKinds.h"
#include "core/model/Defaults.h"
#include "core/params/Options.h"
#include "core/params/Targets.h"
#include "core/sounds/Factory.h"
#include "spec/Examples.h"

namespace synth::cli::commands {
namespace {

using namespace automation;

Json argRow(const ArgSpec& arg) {
  constexpr const char* kinds[] = {"positional", "option", "flag"};
  Json o = Json::object();
  o.add("name", arg.kind == ArgSpec::Positional ? arg.name : "--" + arg.name).add("kind", kinds[arg.kind]);
  o.add("type", arg.type).add("required", arg.required).add("help", arg.help);
  if (arg.repeatable) o.add("repeatable", true);
  return o;
}

Json commandRow(const Command& command) {
  Json args = Json::array(), examples = Json::array();
  for (const ArgSpec& arg : command.args) args.push(argRow(arg));
  for (const std::string& example : command.examples) examples.push(example);
  Json o = Json::object();
  o.add("name", command.name).add("summary", command.summary).add("writes", command.writes);
  o.add("output", command.output).add("args", std::move(args)).add("examples", std::move(examples));
  return o;
}

Json listCommands(const Args&) {
  Json exits = Json::object(), rows = Json::array();
  exits.add("0", "ok")
      .add("1", "internal error")
      .add("2", "usage")
      .add("3", "invalid input")
      .add("4", "file problem");
  for (const Command& command : registerCommands()) rows.push(commandRow(command));
  Json o = Json::object();
  o.add("envelope", "{ok, command, data} or {ok:false, command, error:{code, message, hint}}");
  o.add("exit_codes", std::move(exits)).add("commands", std::move(rows));
  return o;
}

Json showVersion(const Args&) {
  Json engines = Json::array();
  for (int k = 0; k < synthKinds; k++) engines.push(synthKindName(k));
  Json o = Json::object();
  o.add("cli", cliVersion).add("format_version", projectFormatVersion).add("params", param::count());
  o.add("tracks", limits::tracks)
      .add("max_pattern_length", limits::patternLength)
      .add("patterns", limits::patterns);
  o.add("clips", limits::clips).add("notes", limits::notes).add("markers", limits::markers);
  o.add("max_song_steps", limits::songSteps).add("engines", std::move(engines));
  return o;
}

Json paramRow(const param::Info& info) {
  Json options = Json::array();
  for (int i = 0; i < info.optionCount; i++) options.push(info.options[i]);
  const int target = targetOf(info);
  constexpr const char* applies[] = {"any", "drums", "melodic"};
  Json o = Json::object();
  o.add("key", info.key)
      .add("scope", param::scopeName(info.scope))
      .add("group", info.group)
      .add("label", info.label);
  o.add("unit", info.unit)
      .add("min", info.min)
      .add("max", info.max)
      .add("kind", param::curveName(info.curve));
  o.add("options", std::move(options))
      .add("default", info.get(defaultProject()))
      .add("applies", applies[info.applies]);
  o.add("target", target < 0 ? Json() : Json(targetName(target)));
  return o;
}

void checkGroup(const std::string& group) {
  std::vector<std::string> groups;
  for (const param::Info& info : param::all()) {
    if (text::sameIgnoringCase(group, info.group)) return;
    if (groups.empty() || groups.back() != info.group) groups.push_back(info.group);
  }
  throw usage("No group " + group, suggest(group, groups));
}

Json listParams(const Args& args) {
  auto text = [&](const char* name) { return args.has(name) ? args.at(name) : std::string(); };
  const std::string scope = text("scope"), group = text("group"), key = text("key"),
                    applies = text("applies");
  if (args.has("scope") && scope != "project" && scope != "track" && scope != "pad")
    throw usage("--scope is project, track or pad");
  if (args.has("applies") && applies != "drums" && applies != "melodic")
    throw usage("--applies is drums or melodic");
  if (args.has("group")) checkGroup(group);
  if (args.has("key") && !param::find(key)) {
    std::vector<std::string> keys;
    for (const param::Info& info : param::all()) keys.push_back(info.key);
    throw CliError("unknown_parameter", "Unknown parameter " + key, suggest(key, keys));
  }
  Json rows = Json::array();
  for (const param::Info& info : param::all()) {
    if (!scope.empty() && scope != param::scopeName(info.scope)) continue;
    if (!group.empty() && !text::sameIgnoringCase(group, info.group)) continue;
    if (!key.empty() && key != info.key) continue;
    if (applies == "drums" && info.applies == param::MelodicOnly) continue;
    if (applies == "melodic" && info.applies == param::DrumsOnly) continue;
    rows.push(paramRow(info));
  }
  Json o = Json::object();
  o.add("count", rows.items().size()).add("params", std::move(rows));
  return o;
}

Json trackTargetRow(int t) {
  const param::Info* info = targetInfo(t);
  const bool engine = t >= ENGINE_1 && t <= ENGINE_4;
  Json o = Json::object();
  o.add("name", targetName(t))
      .add("key", info ? Json(info->key) : Json())
      .add("label", info ? info->label : "PITCH");
  o.add("unit", engine ? "" : info ? info->unit : "st");
  o.add("min", info ? info->min : -pitchLaneRange / 2).add("max", info ? info->max : pitchLaneRange / 2);
  if (engine) o.add("value01", true);
  return std::move(o.add("lock", lockable(t, false)).add("kit", lockable(t, true) || laneable(t, true)));
}

Json listTargets(const Args&) {
  Json tracks = Json::array(), buses = Json::array(), moves = Json::array();
  for (int t = 0; t < trackTargets; t++) tracks.push(trackTargetRow(t));
  Json macros = Json::object();
  macros.add("name", "MACRO_1..MACRO_16")
      .add("key", Json())
      .add("label", "a Macro of the sound, also by its own name");
  macros.add("unit", "").add("min", 0).add("max", 1).add("lock", true).add("kit", true);
  tracks.push(std::move(macros));
  constexpr const char* busNames[] = {"I", "II", "MASTER"};
  for (int t = firstBusTarget; t <= lastBusTarget; t++) {
    const param::Info& info = *targetInfo(t);
    Json o = Json::object();
    o.add("bus", busNames[busOf(t)])
        .add("name", targetName(t))
        .add("key", info.key)
        .add("label", busLabel(info));
    o.add("unit", info.unit).add("min", info.min).add("max", info.max);
    buses.push(std::move(o));
  }
  for (int i = 0; i < performanceEffects; i++) {
    Json o = Json::object();
    o.add("name", performanceEffectName(i)).add("index", i).add("meaning", performanceEffectMeaning(i));
    moves.push(std::move(o.add("neutral", masterBaseline(i))));
  }
  Json o = Json::object();
  o.add("track_targets", std::move(tracks))
      .add("bus_targets", std::move(buses))
      .add("master_targets", std::move(moves));
  return o;
}

Json listEngines(const Args&) {
  Json engines = Json::array(), models = Json::array();
  for (int k = 0; k < synthKinds; k++) {
    Json names = Json::object();
    for (int i = 0; i < 4; i++) names.add("engine" + std::to_string(i + 1), engineParamName(k, i));
    Json o = Json::object();
    o.add("index", k).add("name", synthKindName(k)).add("concept", synthKindConcept(k));
    engines.push(std::move(o.add("description", synthKindDescription(k)).add("params", std::move(names))));
  }
  for (const char* model : param::options::drumModel) models.push(model);
  Json presets = Json::array();
  for (const preset::Preset& p : preset::factory()) presets.push(p.name);
  Json o = Json::object();
  o.add("engines", std::move(engines))
      .add("factory_presets", std::move(presets))
      .add("pad_models", std::move(models));
  return o;
}

Json listExamples(const Args&) {
  Json rows = Json::array();
  for (int i = 0; i < spec::exampleCount(); i++) {
    const spec::ExampleInfo info = spec::exampleInfo(i);
    rows.push(std::move(
        Json::object().add("index", i).add("name", info.name).add("description", info.description)));
  }
  return std::move(Json::object().add("examples", std::move(rows)));
}

// help and guide print text; the frame serves them itself.
Json servedByFrame(const Args&) { return {}; }

}  // namespace

Command help() {
  return {"help",
          "Show the commands, or one command's arguments and examples (text).",
          {positional("command", "name", "the command, one or two words").many()},
          "text",
          false,
          {"quorel help project set"},
          servedByFrame};
}

Command guide() {
  return {
      "guide",
      "Print the agent guides (text): start (the tool map), rules, the recreate / edit / critique workflows, "
      "techniques, the sound vocabulary and the spec guide.",
      {positional("topic", "topic", "start, rules, recreate, edit, critique, techniques, vocabulary, spec")},
      "text",
      false,
      {"quorel guide start"},
      servedByFrame};
}

Command commandList() {
  return {"commands",  "List every command with its arguments as JSON (for agents).",
          {},          "{commands: [...]}",
          false,       {"quorel commands --compact"},
          listCommands};
}

Command version() {
  return {"version",
          "Versions of the CLI, the project format and the model, with the model's limits (tracks, Pattern "
          "length, "
          "Patterns, Clips, Notes, Markers, Song steps).",
          {},
          "{cli, format_version, params, tracks, max_pattern_length, patterns, clips, notes, markers, "
          "max_song_steps, engines}",
          false,
          {"quorel --version"},
          showVersion};
}

Command params() {
  return {"params",
          "List registry parameters: key, scope, unit, range, options, default and the Lock/Lane target that "
          "moves it.",
          {option("scope", "project|track|pad", "only this scope"),
           option("group", "name", "only this group, e.g. FILTER (any case)"),
           option("key", "key", "one parameter by its key"),
           option("applies", "drums|melodic",
                  "only what such a Track uses: its own rows and those for any Track")},
          "{count, params: [...]}",
          false,
          {"quorel params --scope track --group FILTER", "quorel params --key cutoff"},
          listParams};
}

Command targets() {
  return {"targets",
          "List Lock and Lane targets (track), bus row Lane targets and Performance effects (master lanes).",
          {},
          "{track_targets, bus_targets, master_targets}",
          false,
          {"quorel targets"},
          listTargets};
}

Command examples() {
  return {
      "examples",  "List the built-in example projects.", {}, "{examples: [...]}", false, {"quorel examples"},
      listExamples};
}

Command engines() {
  return {"engines",
          "List the engines (concept, description, the names of engine1..engine4), the factory Presets and "
          "drum pad "
          "models.",
          {},
          "{engines, factory_presets, pad_models}",
          false,
          {"quorel engines"},
          listEngines};
}

}  // namespace synth::cli::commands
