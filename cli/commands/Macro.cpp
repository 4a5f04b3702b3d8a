#include <cmath>
#include <limits>

#include "base/Math.h"
#include "base/Suggest.h"
#include "base/Text.h"
#include "cli/Args.h"
#include "cli/Error.h"
#include "cli/LoadAny.h"
#include "cli/commands/Commands.h"
#include "cli/write/EditProject.h"
#include "core/Names.h"
#include "core/params/Perceptual.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/MacroTravel.h"
#include "core/sounds/Macros.h"

namespace synth::cli::commands {
namespace {

// ---- What an answer says of a Macro.

Json targetJson(const Project& p, int t, const MacroRec& macro, const MacroTarget& target) {
  const param::Info& info = *param::find(target.param);
  const bool perPad = info.scope == param::ScopePad;
  const int pad = perPad ? target.pad : -1;
  Json o = Json::object();
  o.add("key", info.key);
  if (perPad) o.add("pad", pad);
  o.add("label", info.label).add("amount", target.amount);
  if (macro.polarity) o.add("amount_down", target.amount_down);
  const std::string unit = macros::unitName(info), amount = macros::amountText(info, target.amount);
  o.add("unit", unit).add("shown", unit.empty() || unit == "×" ? amount : amount + " " + unit);
  if (target.window_from != 0 || target.window_to != 1)
    o.add("window", Json::array().push(target.window_from).push(target.window_to));
  o.add("value", info.get(p.tracks[t], std::max(pad, 0))).add("now", macros::resulting(p, t, info, pad));
  return o;
}

Json macroJson(const Project& p, int t, int slot) {
  const MacroRec& macro = p.tracks[t].macros[slot];
  Json targets = Json::array();
  for (int i = 0; i < macro.targetCount; i++) targets.push(targetJson(p, t, macro, macro.targets[i]));
  Json o = Json::object();
  o.add("name", nameText(macro.name)).add("polarity", macro.polarity ? "bi" : "uni");
  return std::move(o.add("value", macro.value).add("targets", std::move(targets)));
}

// ---- Reading the arguments.

CliError refused(const std::string& why, const std::string& hint = {}) {
  return CliError("invalid_macro", why, hint);
}

int trackOf(const Args& args, const Project& p, const char* command) {
  if (!args.has("track")) throw usage(std::string(command) + " needs --track", "The track's index or name");
  return trackOption(p, args.at("track"));
}

std::string trackTitle(const Project& p, int t) {
  const std::string name(nameText(p.tracks[t].name));
  return name.empty() ? "Track " + std::to_string(t) : name;
}

int macroOf(const Project& p, int t, const std::string& name) {
  const int slot = macros::slotNamed(p.tracks[t], name);
  if (slot >= 0) return slot;
  const std::vector<std::string> names = macros::names(p.tracks[t]);
  const std::string near = suggest(name, names);
  throw CliError("unknown_macro", trackTitle(p, t) + " has no Macro " + name,
                 names.empty()  ? "Add one with: quorel macro add"
                 : near.empty() ? "Its Macros: " + text::joined(names, ", ")
                                : near);
}

const param::Info& parameterOf(const Track& track, const std::string& key) {
  if (macros::slotNamed(track, key) >= 0) throw refused(macros::notAnotherMacro);
  if (const param::Info* info = param::find(text::lower(key))) return *info;
  std::vector<std::string> keys;
  for (const param::Info& info : param::all())
    if (info.scope != param::ScopeProject) keys.emplace_back(info.key);
  const std::string near = suggest(key, keys);
  throw CliError("unknown_parameter", "Unknown parameter " + key,
                 near.empty() ? "List them with: quorel params --scope track" : near);
}

// A number in the target's perceptual unit, as "1.5" or "+1.5", or a ratio of times as ×N or xN. `refusal` is
// what is said of a number that is too large.
f32 amountOf(const param::Info& info, const std::string& text, const char* refusal) {
  for (const std::string sign : {"×", "x", "X"}) {
    if (text.compare(0, sign.size(), sign) != 0) continue;
    double ratio = 0;
    if (!decimal(text.substr(sign.size()), ratio) || !(ratio > 0))
      throw usage("An amount is a number or ×N, got " + text);
    if (perceptual::unitOf(info) != perceptual::Time)
      throw usage("×N is for times: " + std::string(info.key) + " moves in " +
                  (macros::unitName(info).empty() ? "its own 0..1" : macros::unitName(info)));
    return f32(math::log2(ratio));
  }
  double number = 0;
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '+' && text[1] != '-';
  if (!decimal(plus ? text.substr(1) : text, number)) throw usage("An amount is a number or ×N, got " + text);
  if (std::fabs(number) > macros::largestAmount) throw refused(refusal, macros::amountHint);
  return f32(number);
}

struct Window {
  f32 from = 0, to = 1;
};
Window windowOf(const Args& args) {
  if (!args.has("window")) return {};
  const std::string& text = args.at("window");
  const size_t dots = text.find("..");
  double from = 0, to = 0;
  if (dots == text.npos || !decimal(text.substr(0, dots), from) || !decimal(text.substr(dots + 2), to))
    throw usage("--window is A..B with 0 <= A < B <= 1, got " + text);
  if (!(from >= 0 && from < to && to <= 1)) throw refused(macros::badWindow);
  return {f32(from), f32(to)};
}

int padOf(const Args& args) { return intOption(args, "pad", -1, 0, limits::pads - 1); }

// ---- The commands.

Json list(const Args& args) {
  auto p = loadAny(args.positionals[0]);
  const int only = args.has("track") ? trackOption(*p, args.at("track")) : -1;
  Json tracks = Json::array();
  for (int t = 0; t < p->track_count; t++) {
    if ((only >= 0 && t != only) || (only < 0 && p->tracks[t].macroCount == 0)) continue;
    Json rows = Json::array();
    for (int m = 0; m < p->tracks[t].macroCount; m++) rows.push(macroJson(*p, t, m));
    tracks.push(std::move(Json::object()
                              .add("track", t)
                              .add("name", nameText(p->tracks[t].name))
                              .add("macros", std::move(rows))));
  }
  return std::move(Json::object().add("tracks", std::move(tracks)));
}

Json add(const Args& args) {
  return editProject(args, "ADD MACRO", [&](Project& p) {
    const int t = trackOf(args, p, "macro add");
    const bool bipolar = args.has("bipolar");
    const double value = numberOption(args, "value", 0, bipolar ? -1 : 0, 1);
    std::string error;
    const int slot = macros::add(p, t, args.positionals[1], bipolar, f32(value), error);
    if (slot < 0) throw refused(error);
    return std::move(Json::object().add("macro", macroJson(p, t, slot)));
  });
}

Json rename(const Args& args) {
  return editProject(args, "RENAME MACRO", [&](Project& p) {
    const int t = trackOf(args, p, "macro rename"), slot = macroOf(p, t, args.positionals[1]);
    std::string error;
    if (!macros::rename(p, t, slot, args.positionals[2], error)) throw refused(error);
    return std::move(Json::object().add("macro", macroJson(p, t, slot)));
  });
}

Json remove(const Args& args) {
  return editProject(args, "REMOVE MACRO", [&](Project& p) {
    const int t = trackOf(args, p, "macro remove"), slot = macroOf(p, t, args.positionals[1]);
    const std::string name(nameText(p.tracks[t].macros[slot].name));
    macros::remove(p, t, slot);
    return std::move(Json::object().add("removed", name));
  });
}

Json map(const Args& args) {
  return editProject(args, "MAP MACRO", [&](Project& p) {
    const int t = trackOf(args, p, "macro map"), slot = macroOf(p, t, args.positionals[1]);
    const param::Info& info = parameterOf(p.tracks[t], args.positionals[2]);
    const f32 amount = amountOf(info, args.positionals[3], "The amount must be a number");
    f32 down = std::numeric_limits<f32>::quiet_NaN();
    if (args.has("down")) {
      if (!p.tracks[t].macros[slot].polarity) throw usage("--down is for bipolar Macros");
      down = amountOf(info, args.at("down"), "The amount at -100 % must be a number");
    }
    const Window window = windowOf(args);
    std::string error;
    if (!macros::map(p, t, slot, info, padOf(args), amount, down, window.from, window.to, error))
      throw refused(error);
    return std::move(Json::object().add("macro", macroJson(p, t, slot)));
  });
}

Json unmap(const Args& args) {
  return editProject(args, "UNMAP MACRO", [&](Project& p) {
    const int t = trackOf(args, p, "macro unmap"), slot = macroOf(p, t, args.positionals[1]);
    const param::Info& info = parameterOf(p.tracks[t], args.positionals[2]);
    const int pad = padOf(args);
    std::string error;
    if (!macros::padFits(info, pad, error)) throw refused(error);
    if (!macros::unmap(p, t, slot, info, pad))
      throw refused("Macro " + macros::name(p.tracks[t], slot) + " does not move " + info.key +
                    (pad >= 0 ? " on Pad " + std::to_string(pad) : ""));
    return std::move(Json::object().add("macro", macroJson(p, t, slot)));
  });
}

Json set(const Args& args) {
  return editProject(args, "SET " + text::upper(args.positionals[1]), [&](Project& p) {
    const int t = trackOf(args, p, "macro set"), slot = macroOf(p, t, args.positionals[1]);
    setMacroValue(p.tracks[t].macros[slot], args.positionals[2]);
    return Json::object();
  });
}

// ---- Their rows.

constexpr const char* inputForm = "path.quorel|@app";

Command writing(const char* name, const char* summary, const std::vector<ArgSpec>& args, const char* output,
                std::vector<std::string> examples, Json (*run)(const Args&)) {
  return {name,
          summary,
          arguments({{positional("input", inputForm, "the project").needed()},
                     args,
                     {option("track", "index|name", "the Track whose sound it is")},
                     writeOptions()}),
          output,
          true,
          std::move(examples),
          run};
}

ArgSpec macroName() {
  return positional("name", "NAME", "the Macro, by its name or MACRO_1 .. MACRO_16").needed();
}
ArgSpec padArg() { return option("pad", "0..7", "for pad keys"); }

}  // namespace

Command macroList() {
  return {"macro list",
          "List the Macros of a project: polarity, value, targets and what each target plays now.",
          {positional("input", "path.quorel|spec.json|@app", "the project").needed(),
           option("track", "index|name", "only this Track")},
          "{tracks: [{track, name, macros: [{name, polarity, value, targets: [{key, pad?, label, amount, "
          "amount_down?, "
          "unit, shown, window?, value, now}]}]}]}",
          false,
          {"quorel macro list song.quorel --track LEAD"},
          list};
}

Command macroAdd() {
  return writing(
      "macro add", "Add a Macro to a Track's sound. It moves nothing until macro map gives it targets.",
      {positional("name", "NAME", "one word of up to 12 letters, digits, _ or -").needed(),
       flag("bipolar", "-1..1 instead of 0..1"),
       option("value", "number", "its setting (default 0, so the targets stay as they are)")},
      "{wrote?, macro, changes}", {"quorel macro add song.quorel DISTANCE --track LEAD --in-place"}, add);
}

Command macroRename() {
  return writing("macro rename", "Rename a Macro; its Lanes, Locks and Pins stay.",
                 {macroName(), positional("new_name", "NAME", "its new name").needed()},
                 "{wrote?, macro, changes}",
                 {"quorel macro rename song.quorel DISTANCE FAR --track LEAD --in-place"}, rename);
}

Command macroRemove() {
  return writing("macro remove", "Remove a Macro with its Lanes, Locks and Pin.", {macroName()},
                 "{wrote?, removed, changes}",
                 {"quorel macro remove song.quorel FAR --track LEAD --in-place"}, remove);
}

Command macroMap() {
  return writing(
      "macro map", "Make a Macro move a parameter, or change by how much.",
      {macroName(), positional("key", "KEY", "a continuous value of the sound, or send_1, send_2").needed(),
       positional("amount", "number or ×N",
                  "at +100 %: octaves for frequencies, dB for levels, ×N (or xN) for times, else the "
                  "parameter's unit")
           .needed(),
       option("down", "number or ×N", "bipolar: the amount at -100 % (default: the mirror)"),
       option("window", "A..B", "part of the Macro's travel that moves it"), padArg()},
      "{wrote?, macro, changes}",
      {"quorel macro map song.quorel DISTANCE cutoff -1.5 --track LEAD --in-place",
       "quorel macro map song.quorel DISTANCE room_mix 0.6 --window 0.4..1 --track LEAD --in-place",
       "quorel macro map kit.quorel TIGHT pad_decay -0.3 --pad 3 --track DRUMS --in-place"},
      map);
}

Command macroUnmap() {
  return writing("macro unmap", "Take a parameter off a Macro.",
                 {macroName(), positional("key", "KEY", "the parameter").needed(), padArg()},
                 "{wrote?, macro, changes}",
                 {"quorel macro unmap song.quorel DISTANCE cutoff --track LEAD --in-place"}, unmap);
}

Command macroSet() {
  return writing("macro set", "Turn a Macro: 0..1, a bipolar one -1..1.",
                 {macroName(), positional("value", "number", "its setting").needed()}, "{wrote?, changes}",
                 {"quorel macro set song.quorel WARMTH 0.6 --track BASS --in-place"}, set);
}

}  // namespace synth::cli::commands
