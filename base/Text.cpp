#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace synth::text {
namespace {

constexpr const char* blanks = " \t\r\n\v\f";

char upperOf(char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; }
char lowerOf(char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; }

// The text of `value` at `digits` significant digits, as printf's %.*g writes it in the classic locale.
std::string general(double value, int digits) {
  char buffer[40];
  auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits).ptr;
  return {buffer, end};
}

}  // namespace

std::string upper(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = upperOf(c);
  return out;
}

std::string lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = lowerOf(c);
  return out;
}

bool sameIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); i++)
    if (upperOf(a[i]) != upperOf(b[i])) return false;
  return true;
}

std::string_view trimmed(std::string_view s) {
  size_t from = s.find_first_not_of(blanks);
  if (from == std::string_view::npos) return {};
  return s.substr(from, s.find_last_not_of(blanks) - from + 1);
}

std::string joined(std::span<const std::string> parts, std::string_view separator) {
  std::string out;
  for (size_t i = 0; i < parts.size(); i++) {
    if (i) out += separator;
    out += parts[i];
  }
  return out;
}

std::vector<std::string> words(std::string_view s) {
  std::vector<std::string> out;
  while (!(s = trimmed(s)).empty()) {
    const size_t end = std::min(s.find_first_of(blanks), s.size());
    out.emplace_back(s.substr(0, end));
    s.remove_prefix(end);
  }
  return out;
}

std::string number(double value, bool asFloat32, double wholeBelow) {
  if (value == 0 && std::signbit(value)) return "-0";
  if (value == std::trunc(value) && std::fabs(value) < wholeBelow) {
    char buffer[24];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, (long long)value).ptr};
  }
  for (int digits = 1; digits < 17; digits++) {
    std::string text = general(value, digits);
    double back = 0;
    std::from_chars(text.data(), text.data() + text.size(), back);
    if (asFloat32 ? float(back) == float(value) : back == value) return text;
  }
  return general(value, 17);
}

bool readNumber(std::string_view s, double& value) {
  if (s.size() > 1 && s[0] == '+' && s[1] != '-') s.remove_prefix(1);
  const auto [end, code] = std::from_chars(s.data(), s.data() + s.size(), value);
  return code == std::errc{} && end == s.data() + s.size() && std::isfinite(value);
}

bool fromHex(std::string_view digits, unsigned char* bytes, std::size_t count) {
  if (digits.size() != 2 * count) return false;
  auto value = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
  };
  for (char c : digits)
    if (value(c) < 0) return false;
  for (std::size_t i = 0; i < count; i++)
    bytes[i] = static_cast<unsigned char>(value(digits[2 * i]) * 16 + value(digits[2 * i + 1]));
  return true;
}

std::string print(const char* format, ...) {
  va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  std::string out(size_t(std::max(std::vsnprintf(nullptr, 0, format, arguments), 0)), '\0');
  std::vsnprintf(out.data(), out.size() + 1, format, again);
  va_end(again);
  va_end(arguments);
  return out;
}

}  // namespace synth::text
