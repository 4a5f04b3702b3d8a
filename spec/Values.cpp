#include "spec/Values.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/Suggest.h"
#include "base/Text.h"
#include "core/sounds/Macros.h"
#include "core/sounds/SendPresets.h"

namespace synth::spec {
namespace {

std::vector<std::string> keysOf(param::Scope scope) {
  std::vector<std::string> keys;
  for (const param::Info& info : param::all())
    if (info.scope == scope) keys.push_back(info.key);
  return keys;
}

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool isSendType(std::string_view key) { return key == "fx1_type" || key == "fx2_type"; }
bool isSendPreset(std::string_view key) { return key.substr(0, 2) == "fx" && endsWith(key, "_preset"); }

// "fx1_delay_preset": the Send and the effect that the row belongs to.
void presetRow(std::string_view key, int& bus, int& type) {
  constexpr std::string_view kinds[] = {"delay", "tape", "hall", "plate", "shimmer", "chorus"};
  bus = key[2] == '2' ? SendII : SendI;
  const std::string_view kind = key.substr(4, key.size() - 4 - std::strlen("_preset"));
  for (type = 0; type < FX_OFF; type++)
    if (kinds[type] == kind) return;
}

void loadSendPreset(Project& p, const param::Info& info, const std::string& name) {
  int bus, type;
  presetRow(info.key, bus, type);
  const int loaded = sendfx::typeOf(p, bus);
  for (int i = 0; type == loaded && i < sendfx::presetCount(type); i++) {
    if (!text::sameIgnoringCase(name, sendfx::preset(type, i))) continue;
    sendfx::load(p, bus, type, i);
    return;
  }
  std::vector<std::string> names;
  for (int i = 0; i < sendfx::presetCount(loaded); i++) names.push_back(sendfx::preset(loaded, i));
  std::string hint = "Set " + sendfx::key(bus, "type") + " first";
  const std::string near = suggest(name, names);
  if (!near.empty()) hint += ". " + near;
  throw SpecError(Fault::UnknownOption,
                  std::string(info.key) + " names no " + sendfx::typeName(loaded) + " preset: " + name, hint);
}

f32 optionOf(const param::Info& info, const std::string& label, const Project& project, int track) {
  if (!info.options)
    throw SpecError(std::string(info.key) + " takes a number, not \"" + label + "\"", rangeHint(info));
  std::vector<std::string> labels;
  for (int i = 0; i < info.optionCount; i++) {
    if (text::sameIgnoringCase(label, info.options[i]) ||
        text::sameIgnoringCase(label, param::optionLabel(info, i, &project, track)))
      return f32(i);
    labels.push_back(info.options[i]);
  }
  std::vector<std::string> ordered = nearest(label, labels);
  for (const std::string& l : labels)
    if (std::find(ordered.begin(), ordered.end(), l) == ordered.end()) ordered.push_back(l);
  constexpr size_t most = 40;
  std::string hint = "Options: ";
  const size_t shown = std::min(ordered.size(), most);
  hint += text::joined(std::span(ordered).first(shown), ", ");
  if (ordered.size() > shown) hint += " (+" + std::to_string(ordered.size() - shown) + " more)";
  throw SpecError(Fault::UnknownOption, "Unknown option '" + label + "' for " + info.key, hint);
}

void refuseKey(const std::string& key, param::Scope scope) {
  constexpr const char* sections[] = {"project", "tracks", "pads"};
  constexpr const char* places[] = {"Put it in \"project\"", "Put it in a \"tracks\" entry's \"params\"",
                                    "Put it in a \"pads\" entry"};
  if (const param::Info* other = param::find(key))
    throw SpecError(Fault::UnknownParameter,
                    "Parameter " + key + " is a " + param::scopeName(other->scope) +
                        " parameter, used in the " + sections[other->scope] + " section",
                    places[other->scope]);
  const std::string name = param::scopeName(scope);
  std::string hint = suggest(key, keysOf(scope));
  if (hint.empty()) hint = "List them with: quorel params --scope " + name;
  throw SpecError(Fault::UnknownParameter, "Unknown " + name + " parameter " + key, hint);
}

// Within `project` the type of a Send decides which preset names it knows, and a preset loads values that
// other members may then change: so those two come first.
int turnOf(std::string_view key) { return isSendType(key) ? 0 : isSendPreset(key) ? 1 : 2; }

}  // namespace

std::string rangeHint(const param::Info& info) {
  std::string hint = "Range " + text::number(info.min) + ".." + text::number(info.max);
  if (info.unit[0]) hint += std::string(" ") + info.unit;
  return info.whole() ? hint + ", integer" : hint;
}

const param::Info& parameterOf(const std::string& key, param::Scope scope) {
  const param::Info* info = param::find(key);
  if (!info || info->scope != scope) refuseKey(key, scope);
  return *info;
}

f32 valueOf(const param::Info& info, const Json& value, const Project& project, int track) {
  if (value.isString()) return optionOf(info, value.string(), project, track);
  if (!value.isNumber()) throw SpecError(std::string("Expected a number or option for ") + info.key);
  const double stated = value.number();
  // Bounds such as 0.95 are those of a 32-bit float: compare as one.
  const f32 v = std::fabs(stated) < 1e30 ? f32(stated) : f32(INFINITY);
  if (!param::inRange(info, v))
    throw SpecError(Fault::OutOfRange,
                    "Out of range: " + std::string(info.key) + "=" + text::number(stated, value.float32()),
                    rangeHint(info));
  return v;
}

void applyValue(Project& p, const param::Info& info, const Json& value, int track, int pad) {
  if (value.isString() && isSendPreset(info.key)) return loadSendPreset(p, info, value.string());
  info.set(valueOf(info, value, p, track), p, track, pad);
}

void applyValues(Project& p, const Json& object, param::Scope scope, int track, int pad,
                 const std::string& where, std::string_view except) {
  requireObject(object, where);
  const int turns = scope == param::ScopeProject ? 3 : 1;
  for (int turn = 0; turn < turns; turn++)
    for (const Json::Member& member : object.members()) {
      if (member.key == except || (turns > 1 && turnOf(member.key) != turn)) continue;
      inPlace(where, [&] { applyValue(p, parameterOf(member.key, scope), member.value, track, pad); });
    }
}

}  // namespace synth::spec
