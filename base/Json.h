// JSON values, their parser and two printers. Members keep the order in which they were added, so that
// what is printed is the same bytes each time.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace synth::json {

class Json {
 public:
  enum Type { Null, Number, String, Array, Object, Bool };
  struct Member;
  using Items = std::vector<Json>;
  using Members = std::vector<Member>;

  Json() = default;
  Json(std::nullptr_t) {}
  Json(double number) : value_(number) {}
  Json(int number) : value_(double(number)) {}
  Json(unsigned number) : value_(double(number)) {}
  Json(std::size_t number) : value_(double(number)) {}
  // A number that came from a 32-bit float prints with the digits that such a float needs.
  Json(float number) : value_(double(number)), float32_(true) {}
  Json(bool value) : value_(value) {}
  Json(std::string text) : value_(std::move(text)) {}
  Json(std::string_view text) : value_(std::string(text)) {}
  Json(const char* text) : value_(std::string(text)) {}
  static Json array() { return Json(Items{}); }
  static Json array(Items items) { return Json(std::move(items)); }
  static Json object();

  Json(const Json&) = default;
  Json(Json&&) noexcept = default;
  Json& operator=(const Json&) = default;
  Json& operator=(Json&&) noexcept = default;
  // Frees nested containers with a list of its own instead of by recursion: depth has no limit.
  ~Json();

  Type type() const { return Type(value_.index()); }
  bool isNull() const { return type() == Null; }
  bool isNumber() const { return type() == Number; }
  bool isString() const { return type() == String; }
  bool isArray() const { return type() == Array; }
  bool isObject() const { return type() == Object; }
  bool isBool() const { return type() == Bool; }
  bool float32() const { return float32_; }

  // Each asks for a value of that type.
  double number() const { return std::get<Number>(value_); }
  const std::string& string() const { return std::get<String>(value_); }
  bool boolean() const { return std::get<Bool>(value_); }
  const Items& items() const { return std::get<Array>(value_); }
  Items& items() { return std::get<Array>(value_); }
  const Members& members() const { return std::get<Object>(value_); }
  Members& members() { return std::get<Object>(value_); }

  // Of an object: the first member of that key, or null.
  const Json* find(std::string_view key) const;
  // Appends a member to an object, an item to an array; both return this value, to chain.
  Json& add(std::string key, Json value);
  Json& push(Json value);

 private:
  explicit Json(Items items) : value_(std::move(items)) {}

  std::variant<std::monostate, double, std::string, Items, Members, bool> value_;
  bool float32_ = false;
};

struct Json::Member {
  std::string key;
  Json value;
};

inline Json Json::object() {
  Json json;
  json.value_ = Members{};
  return json;
}

// Parses a whole text; "//" comments count as white space. On failure null, and `error` says what and
// where: " at line N, column M", both from 1, columns in bytes.
Json parse(const std::string& text, std::string& error);

// One line without white space.
std::string compact(const Json& value);
// Indented by two blanks, flat containers on one line.
std::string pretty(const Json& value);

}  // namespace synth::json
