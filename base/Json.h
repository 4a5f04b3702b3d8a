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

  Json();
  Json(std::nullptr_t);
  Json(double number);
  Json(int number);
  Json(unsigned number);
  Json(std::size_t number);
  // A number that came from a 32-bit float prints with the digits that such a float needs.
  Json(float number);
  Json(bool value);
  Json(std::string text);
  Json(std::string_view text);
  Json(const char* text);
  static Json array();
  static Json object();

  Json(const Json&);
  Json(Json&&) noexcept;
  Json& operator=(const Json&);
  Json& operator=(Json&&) noexcept;
  // Frees nested containers with a list of its own instead of by recursion: depth has no limit.
  ~Json();

  Type type() const;
  bool isNull() const { return type() == Null; }
  bool isNumber() const { return type() == Number; }
  bool isString() const { return type() == String; }
  bool isArray() const { return type() == Array; }
  bool isObject() const { return type() == Object; }
  bool isBool() const { return type() == Bool; }
  bool float32() const { return float32_; }

  // Each asks for a value of that type.
  double number() const;
  const std::string& string() const;
  bool boolean() const;
  const Items& items() const;
  Items& items();
  const Members& members() const;
  Members& members();

  // Of an object: the first member of that key, or null.
  const Json* find(std::string_view key) const;
  // Appends a member to an object, an item to an array; both return this value, to chain.
  Json& add(std::string key, Json value);
  Json& push(Json value);

 private:
  std::variant<std::monostate, double, std::string, Items, Members, bool> value_;
  bool float32_ = false;
};

struct Json::Member {
  std::string key;
  Json value;
};

// Defined here, where a Member is complete.
inline Json::Json() = default;
inline Json::Json(const Json&) = default;
inline Json::Json(Json&&) noexcept = default;
inline Json& Json::operator=(const Json&) = default;
inline Json& Json::operator=(Json&&) noexcept = default;
inline Json::Json(std::nullptr_t) {}
inline Json::Json(double number) : value_(number) {}
inline Json::Json(int number) : value_(double(number)) {}
inline Json::Json(unsigned number) : value_(double(number)) {}
inline Json::Json(std::size_t number) : value_(double(number)) {}
inline Json::Json(float number) : value_(double(number)), float32_(true) {}
inline Json::Json(bool value) : value_(value) {}
inline Json::Json(std::string text) : value_(std::move(text)) {}
inline Json::Json(std::string_view text) : value_(std::string(text)) {}
inline Json::Json(const char* text) : value_(std::string(text)) {}

inline Json::Type Json::type() const { return Type(value_.index()); }
inline double Json::number() const { return std::get<Number>(value_); }
inline const std::string& Json::string() const { return std::get<String>(value_); }
inline bool Json::boolean() const { return std::get<Bool>(value_); }
inline const Json::Items& Json::items() const { return std::get<Array>(value_); }
inline Json::Items& Json::items() { return std::get<Array>(value_); }
inline const Json::Members& Json::members() const { return std::get<Object>(value_); }
inline Json::Members& Json::members() { return std::get<Object>(value_); }

inline Json Json::array() {
  Json json;
  json.value_ = Items{};
  return json;
}

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
