#include "spec/Schema.h"

#include "core/SynthKinds.h"
#include "core/params/Registry.h"
#include "core/params/Targets.h"
#include "core/sounds/Macros.h"
#include "spec/Arrangement.h"

namespace synth::spec {
namespace {

using json::Json;

// ---- The words of JSON Schema.

Json typed(const char* type, const char* description = nullptr) {
  Json o = Json::object();
  o.add("type", type);
  if (description) o.add("description", description);
  return o;
}
Json integer(double lo, double hi, const char* description = nullptr) {
  Json o = typed("integer", description);
  o.add("minimum", lo).add("maximum", hi);
  return o;
}
Json number(double lo, double hi, const char* description = nullptr) {
  Json o = typed("number", description);
  o.add("minimum", lo).add("maximum", hi);
  return o;
}
Json text(int most, const char* description = nullptr) {
  Json o = typed("string", description);
  o.add("maxLength", most);
  return o;
}
Json reference(const char* name) {
  Json o = Json::object();
  o.add("$ref", std::string("#/$defs/") + name);
  return o;
}
// Printable ASCII, as names are stored.
Json name(int least, int most, const char* description = nullptr) {
  Json o = text(most, description);
  o.add("pattern", "^[ -~]{" + std::to_string(least) + ",}$");
  return o;
}
Json listOf(Json items, int most, const char* description = nullptr) {
  Json o = typed("array", description);
  o.add("items", std::move(items));
  if (most > 0) o.add("maxItems", most);
  return o;
}
Json words(std::initializer_list<const char*> list) {
  Json values = Json::array(), o = Json::object();
  for (const char* word : list) values.push(word);
  o.add("enum", std::move(values));
  return o;
}
template <class... Ways>
Json either(const char* key, Ways... ways) {
  Json list = Json::array(), o = Json::object();
  (list.push(std::move(ways)), ...);
  o.add(key, std::move(list));
  return o;
}
Json orNull(Json way) { return either("anyOf", std::move(way), typed("null")); }
Json described(Json schema, const char* description) {
  for (Json::Member& member : schema.members())
    if (member.key == "description") {
      member.value = description;
      return schema;
    }
  schema.add("description", description);
  return schema;
}

// An object of these keys and no others.
class Form {
 public:
  Form& key(const char* name, Json schema) {
    properties_.add(name, std::move(schema));
    return *this;
  }
  Form& needed(const char* name, Json schema) {
    required_.push(name);
    return key(name, std::move(schema));
  }
  // Exactly one of two keys.
  Form& oneOf(const char* a, const char* b) {
    auto way = [](const char* name) {
      return std::move(Json::object().add("required", Json::array().push(name)));
    };
    ways_ = Json::array().push(way(a)).push(way(b));
    return *this;
  }
  Json done(const char* description = nullptr) {
    Json o = typed("object", description);
    o.add("properties", std::move(properties_));
    if (!required_.items().empty()) o.add("required", std::move(required_));
    if (ways_.isArray()) o.add("oneOf", std::move(ways_));
    o.add("additionalProperties", false);
    return o;
  }

 private:
  Json ways_, properties_ = Json::object(), required_ = Json::array();
};

// ---- Values of the registry.

std::string meaningOf(const param::Info& info) {
  std::string out = info.label;
  if (const char* meaning = param::meaning(info)) out += std::string(": ") + meaning;
  if (*info.unit) out += std::string(" (") + info.unit + ")";
  return out;
}

Json valueOf(const param::Info& info) {
  Json range = Json::object();
  range.add("type", info.whole() ? "integer" : "number").add("minimum", info.min).add("maximum", info.max);
  if (info.optionCount == 0) {
    range.add("description", meaningOf(info));
    return range;
  }
  Json labels = Json::array(), o = Json::object();
  for (int i = 0; i < info.optionCount; i++) labels.push(info.options[i]);
  Json named = Json::object();
  named.add("enum", std::move(labels));
  o.add("anyOf", Json::array().push(std::move(range)).push(std::move(named)));
  o.add("description", meaningOf(info) + "; labels match in any case");
  return o;
}

Json paramsOf(param::Scope scope) {
  Json properties = Json::object();
  for (const param::Info& info : param::all())
    if (info.scope == scope) properties.add(info.key, valueOf(info));
  if (scope == param::ScopeProject) {
    Json loop = listOf(integer(0, limits::songSteps), 2, "the Song's loop: [from, to] in Steps");
    loop.add("minItems", 2);
    properties.add("loop", orNull(std::move(loop)));
  }
  Json o = typed("object");
  o.add("properties", std::move(properties));
  if (scope == param::ScopeTrack) {
    Json macro = number(-1, 1, "a Macro of the sound by its name, and its value");
    o.add("patternProperties", Json::object().add("^[A-Z][A-Z0-9_-]{0,11}$", std::move(macro)));
  }
  o.add("additionalProperties", false);
  return o;
}

Json labels(const char* key) { return valueOf(*param::find(key)); }

// ---- Targets.

// Track targets and Macros stand in any case, by name or place, so the names are told and not enforced.
Json trackTarget() {
  std::string names;
  for (int t = 0; t < automation::trackTargets; t++)
    names += (t ? ", " : "") + std::string(automation::targetName(t));
  Json o = typed("string");
  o.add("description", names + "; or a Macro by its name, or MACRO_1 .. MACRO_16 by its place");
  return o;
}
Json masterTarget() {
  std::string names;
  for (int t = 0; t < automation::performanceEffects; t++)
    names += (t ? ", " : "") + std::string(automation::performanceEffectName(t));
  Json o = typed("string");
  o.add("description", names);
  return orNull(std::move(o));
}

// ---- Rows.

constexpr int mostVelocity = 127, mostPitch = 127, mostLength = 65535;

Json lockValue(Form form) {
  return form.needed("target", trackTarget())
      .key("value", typed("number", "in the target's unit"))
      .key("value01", number(0, 1, "along the target's range"))
      .oneOf("value", "value01")
      .done("exactly one of value and value01");
}

Json noteForm() {
  Json items = Json::array();
  items.push(integer(0, limits::patternLength - 1, "step"))
      .push(integer(0, mostPitch, "pitch, or the Pad on Drums"))
      .push(integer(1, mostVelocity, "velocity"))
      .push(integer(1, mostLength, "length in 1/256 Step (192)"))
      .push(integer(-64, 63, "nudge in 1/128 Step (0)"))
      .push(integer(0, 15, "flags: Slide 1, Accent 2, ratchet (hits - 1) x 4 (0)"))
      .push(integer(1, 16, "chance in sixteenths (16)"));
  Json array =
      typed("array", "[step, pitch, velocity, length, nudge, flags, chance], the last four optional");
  array.add("prefixItems", std::move(items)).add("items", false).add("minItems", 3).add("maxItems", 7);
  Json object = Form()
                    .needed("step", integer(0, limits::patternLength - 1))
                    .key("pitch", integer(0, mostPitch, "on melodic Tracks"))
                    .key("pad", integer(0, limits::pads - 1, "on Drums Tracks"))
                    .key("velocity", integer(1, mostVelocity, "100 unless stated"))
                    .key("length", integer(1, mostLength, "in 1/256 Step; 192 unless stated"))
                    .key("nudge", integer(-64, 63, "in 1/128 Step"))
                    .key("slide", typed("boolean"))
                    .key("accent", typed("boolean"))
                    .key("ratchet", integer(1, 4, "hits"))
                    .key("chance", integer(1, 16, "sixteenths; 16 always plays"))
                    .key("locks", listOf(reference("lock"), limits::locks))
                    .key("slot", integer(0, limits::slots - 1, "the first free one unless stated"))
                    .oneOf("pitch", "pad")
                    .done();
  return either("oneOf", std::move(array), std::move(object));
}

Json patternLock() {
  Json items = Json::array();
  items.push(integer(0, limits::patternLength - 1, "step")).push(trackTarget()).push(number(0, 1, "value01"));
  Json array = typed("array", "[step, \"TARGET\", value01]");
  array.add("prefixItems", std::move(items)).add("items", false).add("minItems", 3).add("maxItems", 3);
  return either("oneOf", std::move(array),
                lockValue(Form()
                              .needed("step", integer(0, limits::patternLength - 1))
                              .key("pitch", integer(0, mostPitch))
                              .key("pad", integer(0, limits::pads - 1))));
}

Json points() {
  Json items = Json::array();
  items.push(number(0, limits::songSteps, "Song step; fractions round to 1/16"))
      .push(orNull(number(0, 1, "value along the target's range; null rests until the next point")));
  Json point = typed("array");
  point.add("prefixItems", std::move(items)).add("items", false).add("minItems", 2).add("maxItems", 2);
  return listOf(std::move(point), limits::lanePoints,
                "[[step, value01], ...] going forward, linear between; two points on one step jump");
}

Json busName() { return described(words({"I", "II", "MASTER"}), "in any case"); }

Json laneForm() {
  return Form()
      .key("track", integer(0, limits::tracks - 1, "or a bus"))
      .key("bus", busName())
      .key("lane", integer(0, limits::lanesPerOwner - 1, "the first free one unless stated"))
      .needed("target", orNull(trackTarget()))
      .key("enabled", typed("boolean"))
      .needed("points", points())
      .oneOf("track", "bus")
      .done();
}

Json masterLane() {
  return Form()
      .key("lane", integer(0, limits::masterLanes - 1, "the first free one unless stated"))
      .needed("target", masterTarget())
      .key("enabled", typed("boolean"))
      .needed("points", points())
      .done();
}

Json macroForm() {
  const Json amount = number(-macros::largestAmount, macros::largestAmount,
                             "at 100 %, in the key's perceptual unit: octaves, dB, ...");
  Json window = typed("array", "the part of the Macro's travel that moves it");
  window.add("items", number(0, 1)).add("minItems", 2).add("maxItems", 2);
  Json target = Form()
                    .needed("key", typed("string", "a parameter's key"))
                    .key("pad", integer(0, limits::pads - 1))
                    .needed("amount", amount)
                    .key("amount_down", amount)
                    .key("window", std::move(window))
                    .done();
  Json name = typed("string", "one word, up to 12 characters, not a parameter key");
  name.add("pattern", "^\\s*[A-Za-z][A-Za-z0-9_-]{0,11}\\s*$");
  return Form()
      .needed("name", std::move(name))
      .key("polarity", words({"uni", "bi"}))
      .key("value", number(-1, 1))
      .key("targets", listOf(std::move(target), limits::macroTargets))
      .done();
}

Json sampleForm() {
  Json hash = typed("string");
  hash.add("pattern", "^[0-9A-Fa-f]{64}$");
  return orNull(Form().needed("hash", std::move(hash)).key("name", name(0, limits::shortName)).done());
}

Json pinsForm() {
  return orNull(listOf(typed("string"), limits::pins, "parameter keys and Macro names; null: the defaults"));
}

Json padForm(bool parked) {
  Form form;
  form.needed("index", integer(0, limits::pads - 1));
  if (!parked) form.key("track", integer(0, limits::tracks - 1, "the first Drums track unless stated"));
  return form.key("params", reference("padParams")).done();
}

Json parkedForm() {
  return Form()
      .key("name", name(0, limits::shortName))
      .key("preset_name", name(0, limits::presetName))
      .key("sample_name", name(0, limits::shortName))
      .key("pins", listOf(typed("string"), limits::pins))
      .key("pads", listOf(padForm(true), 0))
      .done("what the file keeps and nobody hears");
}

Json trackForm() {
  Json macros = orNull(listOf(reference("macro"), limits::macros));
  return Form()
      .needed("index", integer(0, limits::tracks - 1))
      .key("kind", described(labels("track_kind"), "start from this kind's Default sound"))
      .key("name", name(0, limits::shortName))
      .key("origin", integer(0, 255))
      .key("engine_defaults",
           described(labels("engine"), "switch the engine with its default Engine parameters"))
      .key("preset", typed("string", "load a Preset before params; the track keeps its mix"))
      .key("params", reference("trackParams"))
      .key("sample", reference("sample"))
      .key("preset_name", name(0, limits::presetName, "the name the Track shows, without loading it"))
      .key("pins", reference("pins"))
      .key("macros", described(std::move(macros), "they replace a Preset's"))
      .key("v5_slot", integer(0, limits::tracks - 1, "only with base \"v5\""))
      .key("parked", parkedForm())
      .done();
}

Json patternForm() {
  return Form()
      .needed("track", integer(0, limits::tracks - 1))
      .key("id", integer(0, 65535, "the Track's next free id unless stated"))
      .key("length", integer(1, limits::patternLength, "in Steps; 16 unless stated"))
      .key("notes", listOf(reference("note"), 0))
      .key("locks", listOf(reference("patternLock"), 0))
      .key("front", orNull(integer(0, 65534, "the Pattern that holds this one's parked head")))
      .done();
}

Json clipForm() {
  return Form()
      .needed("track", integer(0, limits::tracks - 1))
      .needed("at", integer(0, limits::songSteps - 1, "Song step"))
      .needed("pattern", integer(0, 65535, "a Pattern's id"))
      .key("length", integer(1, limits::songSteps, "one pass of the Pattern less offset unless stated"))
      .key("offset", integer(0, limits::patternLength - 1))
      .key("repeats", typed("boolean"))
      .done();
}

Json busForm() {
  return Form()
      .needed("bus", busName())
      .key("pins", reference("pins"))
      .key("parked", Form().needed("pins", listOf(typed("string"), limits::pins)).done())
      .done();
}

Json definitions() {
  Json o = Json::object();
  o.add("projectParams", paramsOf(param::ScopeProject))
      .add("trackParams", paramsOf(param::ScopeTrack))
      .add("padParams", paramsOf(param::ScopePad))
      .add("note", noteForm())
      .add("lock", lockValue(Form()))
      .add("patternLock", patternLock())
      .add("lane", laneForm())
      .add("masterLane", masterLane())
      .add("macro", macroForm())
      .add("sample", sampleForm())
      .add("pins", pinsForm());
  return o;
}

}  // namespace

Json schema() {
  Json properties = Json::object();
  properties.add("base", described(words({"v5"}), "the older defaults of a set of etudes; new specs omit it"))
      .add("name", text(limits::projectName))
      .add("project", reference("projectParams"))
      .add("tracks", listOf(trackForm(), 0))
      .add("pads", listOf(padForm(false), 0))
      .add("patterns", listOf(patternForm(), limits::patterns))
      .add("clips", listOf(clipForm(), limits::clips))
      .add("lanes", listOf(reference("lane"), 0))
      .add("master", listOf(reference("masterLane"), 0))
      .add("markers", listOf(Form()
                                 .needed("at", integer(0, limits::songSteps - 1, "Song step"))
                                 .key("name", name(1, limits::shortName))
                                 .done(),
                             limits::markers))
      .add("buses", listOf(busForm(), 0));
  Json ignored = Json::object();
  properties.add("clip_offset", described(std::move(ignored), "read by scripts only"));
  Json o = Json::object();
  o.add("$schema", "https://json-schema.org/draft/2020-12/schema")
      .add("title", "Quorel project spec")
      .add("type", "object")
      .add("properties", std::move(properties))
      .add("additionalProperties", false)
      .add("$defs", definitions());
  return o;
}

}  // namespace synth::spec
