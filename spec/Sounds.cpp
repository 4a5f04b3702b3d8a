#include "spec/Sounds.h"

#include <cmath>
#include <limits>

#include "base/Suggest.h"
#include "base/Text.h"
#include "core/Names.h"
#include "core/model/Defaults.h"
#include "core/sounds/MacroEdit.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "spec/Arrangement.h"
#include "spec/Parked.h"
#include "spec/Values.h"

namespace synth::spec {
namespace {

constexpr const char* trackPinHint =
    "Pins are registry keys the parameter list shows on the track, or the names of its Macros";
constexpr const char* busPinHint =
    "A Send effect pins its own effect's values and RETURN; the Master its LEVEL, COMP, RELEASE, SATURATE, "
    "CEILING and EQ bands";

// A number of a Macro target; NaN where it is missing, none, or more than any amount may be.
f32 amountAt(const Json& target, const char* key) {
  const Json* value = target.find(key);
  const bool usable = value && value->isNumber() && std::fabs(value->number()) <= macros::largestAmount;
  return usable ? f32(value->number()) : std::numeric_limits<f32>::quiet_NaN();
}

// What a Macro of that Track may move, for hints.
std::vector<std::string> movableKeys(const Track& track) {
  std::vector<std::string> keys;
  for (const param::Info& info : param::all())
    if (macros::targetable(info, track.track_kind, track.engine)) keys.emplace_back(info.key);
  return keys;
}

struct Window {
  f32 from = 0, to = 1;
};
Window windowOf(const Json& target) {
  const Json* value = target.find("window");
  if (!value) return {};
  const bool pair = value->isArray() && value->items().size() == 2 && value->items()[0].isNumber() &&
                    value->items()[1].isNumber();
  if (!pair) throw SpecError("A window is [from, to] on the Macro's travel");
  const double from = value->items()[0].number(), to = value->items()[1].number();
  if (!(from >= 0 && from < to && to <= 1)) throw SpecError(macros::badWindow);
  return {f32(from), f32(to)};
}

void readMacroTarget(Project& p, int t, int slot, const Json& target, const std::string& where) {
  checkKeys(target, where, {"key", "pad", "amount", "amount_down", "window"});
  const MacroRec& macro = p.tracks[t].macros[slot];
  const Json* key = target.find("key");
  if (!key || !key->isString()) throw SpecError("A Macro target's key is a registry key");
  const param::Info* info = param::find(key->string());
  if (!info)
    throw SpecError(Fault::UnknownParameter,
                    "Unknown parameter " + key->string() + " in Macro " + std::string(nameText(macro.name)),
                    suggest(key->string(), movableKeys(p.tracks[t])));
  if (target.find("amount_down") && !macro.polarity)
    throw SpecError("A unipolar Macro has no \"amount_down\"");
  const f32 down = amountAt(target, "amount_down");
  if (target.find("amount_down") && std::isnan(down))
    throw SpecError("The amount at -100 % must be a number", macros::amountHint);
  const int pad = integerAt(target, "pad", where, 0, limits::pads - 1, -1);
  const Window window = windowOf(target);
  std::string error;
  const int before = macro.targetCount;
  const f32 amount = amountAt(target, "amount");
  if (!macros::map(p, t, slot, *info, pad, amount, down, window.from, window.to, error))
    throw SpecError(error, std::isnan(amount) ? macros::amountHint : "");
  if (macro.targetCount == before) throw SpecError("moves " + key->string() + " twice");
}

bool isBipolar(const Json& macro) {
  const Json* polarity = macro.find("polarity");
  if (!polarity) return false;
  if (polarity->isString() && polarity->string() == "bi") return true;
  if (polarity->isString() && polarity->string() == "uni") return false;
  throw SpecError("A Macro's \"polarity\" is \"uni\" or \"bi\"");
}

void readMacro(Project& p, int t, const Json& macro, const std::string& name, const std::string& where) {
  checkKeys(macro, where, {"name", "polarity", "value", "targets"});
  const bool bipolar = isBipolar(macro);
  const std::string clean = macros::cleanName(name);
  if (clean.empty() || macros::find(p.tracks[t], clean) >= 0)
    throw SpecError("Macro names are single words, unique in the sound, not a parameter key");
  std::string error;
  const int slot = macros::add(p, t, name, bipolar, 0, error);
  if (slot < 0) throw SpecError(error);
  if (const Json* value = macro.find("value")) readMacroValue(p.tracks[t], clean, *value);
  const Json* targets = macro.find("targets");
  if (!targets) return;
  const Json::Items& items = list(*targets, "A Macro's \"targets\" is an array");
  for (size_t i = 0; i < items.size(); i++)
    readMacroTarget(p, t, slot, items[i], placeOf(where + ".targets", i));
}

void readMacroList(Project& p, int t, const Json& value) {
  if (value.isNull()) return;
  const Json::Items& items =
      list(value, "\"macros\" is an array of {\"name\", \"polarity\", \"value\", \"targets\"}");
  for (size_t i = 0; i < items.size(); i++) {
    const std::string where = placeOf("macros", i);
    requireObject(items[i], where);
    const Json* name = items[i].find("name");
    if (!name || !name->isString()) throw SpecError("A Macro's name is a string");
    try {
      readMacro(p, t, items[i], name->string(), where);
    } catch (const SpecError& error) {
      throw SpecError(error.fault(), "Macro " + name->string() + ": " + error.message(), error.hint());
    }
  }
}

// The texts of a list of Pins, each of which `valid` accepts.
template <class Refuse>
pins::Keys pinKeys(const Json& value, const char* form, Refuse refuse) {
  pins::Keys keys;
  for (const Json& key : list(value, form)) {
    if (!key.isString()) throw SpecError(form, "Keys in quotes (null: the Engine's defaults)");
    refuse(key.string());
    keys.push_back(key.string());
  }
  if (int(keys.size()) > limits::pins) throw SpecError("At most " + std::to_string(limits::pins) + " Pins");
  return keys;
}

void readBusRow(Project& p, const Json& object, const std::string& where) {
  checkKeys(object, where, {"bus", "pins", "parked"});
  const Json& name = required(object, "bus", where);
  const int bus = name.isString() ? readBus(name.string()) : -1;
  if (bus < 0) throw SpecError(whatOf("bus", where) + " is \"I\", \"II\" or \"MASTER\"");
  if (const Json* parked = object.find("parked")) {
    checkKeys(*parked, where + ".parked", {"pins"});
    return readParkedPins(p.busPins[bus], nullptr, required(*parked, "pins", where + ".parked"),
                          where + ".parked.pins");
  }
  const Json* value = object.find("pins");
  if (!value || value->isNull()) return pins::clearBus(p, bus);
  pins::setBusKeys(p, bus,
                   pinKeys(*value, "\"pins\" is an array of keys, or null", [&](const std::string& key) {
                     if (!pins::validBus(p, bus, key))
                       throw SpecError("Pin " + key + " is not a value of bus " + busKey(bus), busPinHint);
                   }));
}

}  // namespace

bool readMacroValue(Track& track, const std::string& name, const Json& value) {
  const int slot = macros::inCapitals(name) ? macros::slotNamed(track, name) : -1;
  if (slot < 0) return false;
  MacroRec& macro = track.macros[slot];
  const double lo = macro.polarity ? -1 : 0;
  if (!value.isNumber()) throw SpecError("Expected a number for " + name);
  if (!(value.number() >= lo && value.number() <= 1))
    throw SpecError(Fault::OutOfRange, name + " = " + text::number(value.number(), false) + " is outside " +
                                           (macro.polarity ? "-1..1" : "0..1"));
  macro.value = macros::clampValue(macro.polarity, f32(value.number()));
  return true;
}

void readMacros(Project& p, int t, const Json& value) {
  Track& track = p.tracks[t];
  const Track old = track;
  for (MacroRec& macro : track.macros) macro = MacroRec{};
  track.macroCount = 0;
  readMacroList(p, t, value);
  // What named a Macro by its place finds the one of its name, or goes.
  macros::follow(p, t, old);
  macros::followPins(track, old);
}

void readPins(Track& track, const Json& value) {
  if (value.isNull()) return pins::clear(track);
  pins::setKeys(track, pinKeys(value, "\"pins\" is an array of keys, or null", [&](const std::string& key) {
                  if (!pins::valid(track, key))
                    throw SpecError(
                        "Pin " + key + " is not a parameter this track lists or one of its Macros",
                        trackPinHint);
                }));
}

void readSample(Track& track, const Json& value, const std::string& where) {
  if (value.isNull()) {
    clearSample(track);
    return;
  }
  checkKeys(value, where, {"hash", "name"});
  const Json& hash = required(value, "hash", where);
  u8 bytes[sizeof track.sample_hash];
  if (!hash.isString() || !text::fromHex(hash.string(), bytes, sizeof bytes))
    throw SpecError(whatOf("hash", where) + " is 64 hexadecimal digits");
  const Json* name = value.find("name");
  if (name && (!name->isString() || name->string().size() > size_t(limits::shortName) ||
               !isPlainText(name->string())))
    throw SpecError(whatOf("name", where) + " is a string of up to 12 characters");
  std::copy(bytes, bytes + sizeof bytes, track.sample_hash);
  setName(track.sample_name, name ? name->string() : "");
}

void readBuses(Project& p, const Json& section) {
  const Json::Items& items = list(section, "\"buses\" is an array of {\"bus\", \"pins\"}");
  for (size_t i = 0; i < items.size(); i++)
    inPlace(placeOf("buses", i), [&] { readBusRow(p, items[i], placeOf("buses", i)); });
}

}  // namespace synth::spec
