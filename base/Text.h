// Small text helpers that do not depend on the locale.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace synth::text {

std::string upper(std::string_view s);
std::string lower(std::string_view s);
bool sameIgnoringCase(std::string_view a, std::string_view b);
std::string_view trimmed(std::string_view s);
std::string joined(std::span<const std::string> parts, std::string_view separator);

// The words between white space.
std::vector<std::string> words(std::string_view s);

// "%.*g" at the lowest of 1..17 digits that reads back to the same number: the same double, or with
// `asFloat32` the same 32-bit float. Negative zero is "-0"; whole numbers below `wholeBelow` print as
// integers.
std::string number(double value, bool asFloat32, double wholeBelow = 1e15);
// As printf would write it.
[[gnu::format(printf, 1, 2)]] std::string print(const char* format, ...);
// A text that is wholly a finite decimal number, with a sign or without.
bool readNumber(std::string_view s, double& value);

// Exactly two hexadecimal digits for each of the bytes; false for anything else.
bool fromHex(std::string_view digits, unsigned char* bytes, std::size_t count);

inline std::string number(float value) { return number(value, true); }

}  // namespace synth::text
