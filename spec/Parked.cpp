#include "spec/Parked.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/Names.h"
#include "core/params/Registry.h"
#include "core/sounds/Macros.h"
#include "core/sounds/Pins.h"
#include "spec/Rows.h"
#include "spec/Values.h"

namespace synth::spec {
namespace {

template <size_t N>
void readName(char (&field)[N], const Json& name, size_t most, const std::string& what) {
  if (!name.isString() || name.string().size() > most || !isPlainText(name.string()))
    throw SpecError(what + " is a string of up to " + std::to_string(most) + " characters");
  std::fill(field, field + N, char(0));
  std::copy(name.string().begin(), name.string().end(), field);
}

void readPads(Track& track, const Json& pads, const std::string& where) {
  size_t n = 0;
  for (const Json& row : list(pads, where + " is an array of {\"index\", \"params\"}")) {
    const std::string place = placeOf(where, n++);
    checkKeys(row, place, {"index", "params"});
    const int pad = requiredInteger(row, "index", place, 0, limits::pads - 1);
    const Json* params = row.find("params");
    if (!params) continue;
    requireObject(*params, place + ".params");
    const Project& none = defaultProject();
    for (const Json::Member& member : params->members()) {
      const param::Info& info = parameterOf(member.key, param::ScopePad);
      info.set(valueOf(info, member.value, none, 0), track, pad);
    }
  }
}

// Whether the plain `name` of the field reads back to the same bytes.
template <size_t N>
bool isPlain(const char (&field)[N]) {
  char again[N];
  setName(again, nameText(field));
  return std::memcmp(again, field, N) == 0;
}

Json padsSpec(const Track& track, const Track& had) {
  Json pads = Json::array();
  for (int pad = 0; pad < limits::pads; pad++) {
    Json params = Json::object();
    for (const param::Info& info : param::all())
      if (info.scope == param::ScopePad &&
          std::bit_cast<u32>(info.get(track, pad)) != std::bit_cast<u32>(info.get(had, pad)))
        params.add(info.key, info.get(track, pad));
    if (params.members().empty()) continue;
    Json row = Json::object();
    row.add("index", pad).add("params", std::move(params));
    pads.push(std::move(row));
  }
  return pads;
}

}  // namespace

void readParkedPins(PinList& pins, const Track* track, const Json& value, const std::string& where) {
  const Json::Items& items = list(value, where + " is an array of keys");
  if (items.size() > size_t(limits::pins))
    throw SpecError("At most " + std::to_string(limits::pins) + " Pins");
  pins = PinList{};
  pins.custom = 1;
  for (const Json& key : items) {
    const std::string text = key.isString() ? key.string() : "";
    const int slot = track ? macros::slotNamed(*track, text) : -1;
    const param::Info* info = param::find(text);
    int place = slot;
    if (slot < 0 && track && text.compare(0, 6, "MACRO_") == 0)
      for (int m = 0; m < limits::macros; m++)
        if (text == "MACRO_" + std::to_string(m + 1)) place = m;
    if (place < 0 && !info) throw SpecError("Pin " + text + " in " + where + " is no parameter and no Macro");
    pins.ids[pins.count++] = place >= 0 ? u16(limits::firstMacroPin + place) : u16(info->id);
  }
}

void readParked(Track& track, const Json& object, const std::string& where) {
  checkKeys(object, where, {"name", "preset_name", "sample_name", "pins", "pads"});
  auto key = [&](const char* name, auto read) {
    if (const Json* value = object.find(name)) read(*value);
  };
  key("name", [&](const Json& v) { readName(track.name, v, limits::shortName, whatOf("name", where)); });
  key("preset_name", [&](const Json& v) {
    readName(track.preset_name, v, limits::presetName, whatOf("preset_name", where));
  });
  key("sample_name", [&](const Json& v) {
    readName(track.sample_name, v, limits::shortName, whatOf("sample_name", where));
  });
  key("pins", [&](const Json& v) { readParkedPins(track.pins, &track, v, whatOf("pins", where)); });
  key("pads", [&](const Json& v) { readPads(track, v, where + ".pads"); });
}

Json parkedSpec(const Track& track, const Track& had) {
  Json o = Json::object();
  if (!isPlain(track.name)) o.add("name", nameText(track.name));
  if (!isPlain(track.preset_name)) o.add("preset_name", nameText(track.preset_name));
  if (!isPlain(track.sample_name)) o.add("sample_name", nameText(track.sample_name));
  Track listed = track;
  if (track.pins.custom) pins::setKeys(listed, pins::keys(track));
  if (!sameBytes(listed.pins, track.pins)) o.add("pins", pinsSpec(track.pins, &track));
  if (!isDrums(track))
    if (Json pads = padsSpec(track, had); !pads.items().empty()) o.add("pads", std::move(pads));
  return o;
}

}  // namespace synth::spec
