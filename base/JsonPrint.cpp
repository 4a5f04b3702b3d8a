#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/Json.h"
#include "base/Text.h"

namespace synth::json {
namespace {

void quote(const std::string& s, std::string& out) {
  out += '"';
  for (char c : s) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 32) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", unsigned(c));
      out += escape;
    } else {
      out += c;
    }
  }
  out += '"';
}

void scalar(const Json& v, std::string& out) {
  switch (v.type()) {
    case Json::Number:
      out += std::isfinite(v.number()) ? text::number(v.number(), v.float32()) : "null";
      break;
    case Json::String: quote(v.string(), out); break;
    case Json::Bool: out += v.boolean() ? "true" : "false"; break;
    default: out += "null";
  }
}

// Everything on one line, with the given texts after commas and colons.
void line(const Json& v, const char* comma, const char* colon, std::string& out) {
  if (v.isArray()) {
    out += '[';
    for (size_t i = 0; i < v.items().size(); i++) {
      if (i) out += comma;
      line(v.items()[i], comma, colon, out);
    }
    out += ']';
  } else if (v.isObject()) {
    out += '{';
    for (size_t i = 0; i < v.members().size(); i++) {
      if (i) out += comma;
      quote(v.members()[i].key, out);
      out += colon;
      line(v.members()[i].value, comma, colon, out);
    }
    out += '}';
  } else {
    scalar(v, out);
  }
}

// Whether containers nest at most `levels` deep in `v`, itself counted.
bool nestsAtMost(const Json& v, int levels) {
  if (!v.isArray() && !v.isObject()) return true;
  if (levels == 0) return false;
  if (v.isArray())
    return std::all_of(v.items().begin(), v.items().end(),
                       [&](const Json& item) { return nestsAtMost(item, levels - 1); });
  return std::all_of(v.members().begin(), v.members().end(),
                     [&](const Json::Member& member) { return nestsAtMost(member.value, levels - 1); });
}

constexpr size_t lineLimit = 111;

void indented(const Json& v, size_t level, std::string& out) {
  const bool array = v.isArray();
  if (!array && !v.isObject()) return scalar(v, out);
  const size_t count = array ? v.items().size() : v.members().size();
  if (nestsAtMost(v, 2)) {
    const size_t from = out.size();
    line(v, ", ", ": ", out);
    if (array || count == 0 || out.size() - from + 2 * level < lineLimit) return;
    out.resize(from);
  }
  out += array ? "[\n" : "{\n";
  for (size_t i = 0; i < count; i++) {
    out.append(2 * (level + 1), ' ');
    if (!array) {
      quote(v.members()[i].key, out);
      out += ": ";
    }
    indented(array ? v.items()[i] : v.members()[i].value, level + 1, out);
    out += i + 1 < count ? ",\n" : "\n";
  }
  out.append(2 * level, ' ');
  out += array ? ']' : '}';
}

}  // namespace

std::string compact(const Json& value) {
  std::string out;
  line(value, ",", ":", out);
  return out;
}

std::string pretty(const Json& value) {
  std::string out;
  indented(value, 0, out);
  return out;
}

}  // namespace synth::json
