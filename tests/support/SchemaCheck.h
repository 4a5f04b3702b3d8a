// As much of JSON Schema (draft 2020-12) as the schema of specs uses; any other word in a schema fails the
// test.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "base/Json.h"

namespace synth::test {

class SchemaCheck {
 public:
  explicit SchemaCheck(const json::Json& schema) : root_(schema) {}

  // Where and why the value does not fit; "" when it does.
  std::string fault(const json::Json& value) { return fault(root_, value, ""); }

 private:
  using Json = json::Json;

  static bool hasType(const Json& value, const std::string& type) {
    if (type == "integer") return value.isNumber() && value.number() == double((long long)(value.number()));
    return (type == "object" && value.isObject()) || (type == "array" && value.isArray()) ||
           (type == "string" && value.isString()) || (type == "number" && value.isNumber()) ||
           (type == "boolean" && value.isBool()) || (type == "null" && value.isNull());
  }

  std::string ways(const Json& list, const Json& value, const std::string& at, bool exactlyOne) {
    int fits = 0;
    std::string first;
    for (const Json& way : list.items()) {
      const std::string why = fault(way, value, at);
      fits += why.empty();
      if (first.empty()) first = why;
    }
    if (fits == 0) return first;
    return exactlyOne && fits > 1 ? at + " fits " + std::to_string(fits) + " forms" : "";
  }

  std::string member(const Json& schema, const Json::Member& member, const std::string& at) {
    const std::string place = at + "." + member.key;
    if (const Json* properties = schema.find("properties"))
      if (const Json* property = properties->find(member.key)) return fault(*property, member.value, place);
    if (const Json* patterns = schema.find("patternProperties"))
      for (const Json::Member& pattern : patterns->members())
        if (std::regex_search(member.key, std::regex(pattern.key)))
          return fault(pattern.value, member.value, place);
    const Json* others = schema.find("additionalProperties");
    return others && others->isBool() && !others->boolean() ? place + " is not a key here" : "";
  }

  std::string object(const Json& schema, const Json& value, const std::string& at) {
    if (const Json* required = schema.find("required"))
      for (const Json& key : required->items())
        if (!value.find(key.string())) return at + " lacks " + key.string();
    for (const Json::Member& m : value.members())
      if (const std::string why = member(schema, m, at); !why.empty()) return why;
    return "";
  }

  std::string array(const Json& schema, const Json& value, const std::string& at) {
    const size_t count = value.items().size();
    if (const Json* least = schema.find("minItems"); least && double(count) < least->number())
      return at + " is short";
    if (const Json* most = schema.find("maxItems"); most && double(count) > most->number())
      return at + " is long";
    const Json *prefix = schema.find("prefixItems"), *items = schema.find("items");
    for (size_t i = 0; i < count; i++) {
      const std::string place = at + "[" + std::to_string(i) + "]";
      const Json* form = prefix && i < prefix->items().size() ? &prefix->items()[i] : items;
      if (form && form->isBool()) return form->boolean() ? "" : place + " is one too many";
      if (!form) continue;
      if (const std::string why = fault(*form, value.items()[i], place); !why.empty()) return why;
    }
    return "";
  }

  std::string fault(const Json& schema, const Json& value, const std::string& at) {
    for (const Json::Member& word : schema.members()) {
      const std::string& key = word.key;
      if (key == "$ref") {
        const std::string name = word.value.string().substr(word.value.string().rfind('/') + 1);
        const Json* target = root_.find("$defs")->find(name);
        EXPECT_NE(target, nullptr) << name;
        if (const std::string why = target ? fault(*target, value, at) : ""; !why.empty()) return why;
      } else if (key == "anyOf" || key == "oneOf") {
        if (const std::string why = ways(word.value, value, at, key == "oneOf"); !why.empty()) return why;
      } else if (key == "enum") {
        bool found = false;
        for (const Json& choice : word.value.items()) found |= json::compact(choice) == json::compact(value);
        if (!found) return at + " is none of the choices";
      } else if (key == "type") {
        if (!hasType(value, word.value.string())) return at + " is no " + word.value.string();
      } else if (key == "minimum" || key == "maximum") {
        const bool below = value.isNumber() && value.number() < word.value.number();
        const bool above = value.isNumber() && value.number() > word.value.number();
        if (key == "minimum" ? below : above) return at + " is out of range";
      } else if (key == "maxLength") {
        if (value.isString() && double(value.string().size()) > word.value.number())
          return at + " is too long";
      } else if (key == "pattern") {
        if (value.isString() && !std::regex_search(value.string(), std::regex(word.value.string())))
          return at + " has another form";
      } else {
        static const std::string known =
            " $schema title description properties patternProperties additionalProperties"
            " required items prefixItems minItems maxItems $defs ";
        EXPECT_NE(known.find(" " + key + " "), std::string::npos) << "the schema uses " << key;
      }
    }
    if (value.isObject()) return object(schema, value, at);
    return value.isArray() ? array(schema, value, at) : "";
  }

  const Json& root_;
};

}  // namespace synth::test
