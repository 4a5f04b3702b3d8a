#include "spec/Keys.h"

#include <algorithm>
#include <cmath>

#include "base/Suggest.h"
#include "base/Text.h"

namespace synth::spec {

std::string placeOf(const std::string& list, size_t index) {
  return list + "[" + std::to_string(index) + "]";
}
std::string whatOf(const char* key, const std::string& where) {
  return "\"" + std::string(key) + "\" in " + where;
}

bool isPlainText(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 32 && c <= 126; });
}

void requireObject(const Json& value, const std::string& where) {
  if (!value.isObject()) throw SpecError("Expected an object in " + where);
}

void checkKeys(const Json& object, const std::string& where, std::initializer_list<const char*> keys) {
  requireObject(object, where);
  for (const Json::Member& member : object.members()) {
    if (std::any_of(keys.begin(), keys.end(), [&](const char* key) { return member.key == key; })) continue;
    const std::vector<std::string> known(keys.begin(), keys.end());
    std::string hint = suggest(member.key, known);
    if (hint.empty()) hint = "Keys: " + text::joined(known, ", ");
    throw SpecError(Fault::UnknownKey, "Unknown key '" + member.key + "' in " + where, hint);
  }
}

const Json& required(const Json& object, const char* key, const std::string& where) {
  if (const Json* value = object.find(key)) return *value;
  throw SpecError(where + " needs \"" + key + "\"");
}

int integer(const Json& value, const std::string& what, int lo, int hi) {
  if (!value.isNumber()) throw SpecError(what + " must be a number");
  const double v = value.number();
  if (v >= lo && v <= hi && v == std::trunc(v)) return int(v);
  throw SpecError(Fault::OutOfRange, what + " must be an integer " + std::to_string(lo) + ".." +
                                         std::to_string(hi) + ", got " + text::number(v, false));
}

int integerAt(const Json& object, const char* key, const std::string& where, int lo, int hi, int fallback) {
  const Json* value = object.find(key);
  return value ? integer(*value, whatOf(key, where), lo, hi) : fallback;
}

int requiredInteger(const Json& object, const char* key, const std::string& where, int lo, int hi) {
  return integer(required(object, key, where), whatOf(key, where), lo, hi);
}

bool boolean(const Json& value, const std::string& what) {
  if (!value.isBool()) throw SpecError(what + " must be true or false");
  return value.boolean();
}

const Json::Items& list(const Json& value, const std::string& form) {
  if (!value.isArray()) throw SpecError(form);
  return value.items();
}

}  // namespace synth::spec
