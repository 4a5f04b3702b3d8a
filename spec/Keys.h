// Reading JSON strictly: every key known, every value of its type and range, each mistake with its place.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "base/Json.h"
#include "spec/SpecError.h"

namespace synth::spec {

using json::Json;

// "tracks" and 3: "tracks[3]".
std::string placeOf(const std::string& list, size_t index);
// Whether a text is printable ASCII, as stored names are.
bool isPlainText(const std::string& text);
// The value's name in messages: "at" in clips[2].
std::string whatOf(const char* key, const std::string& where);

void requireObject(const Json& value, const std::string& where);
// Refuses members that are not among `keys`.
void checkKeys(const Json& object, const std::string& where, std::initializer_list<const char*> keys);
const Json& required(const Json& object, const char* key, const std::string& where);

// A whole number within lo..hi; `what` names it in messages.
int integer(const Json& value, const std::string& what, int lo, int hi);
int integerAt(const Json& object, const char* key, const std::string& where, int lo, int hi, int fallback);
int requiredInteger(const Json& object, const char* key, const std::string& where, int lo, int hi);
bool boolean(const Json& value, const std::string& what);
// Runs a part of the reading. A mistake in it that does not say where it is gets the place at the end of its
// hint.
template <class Read>
void inPlace(const std::string& where, Read read) {
  try {
    read();
  } catch (const SpecError& error) {
    if (error.message().find(where) != error.message().npos ||
        error.hint().find(" (in ") != error.hint().npos || error.hint().substr(0, 3) == "In ")
      throw;
    throw SpecError(error.fault(), error.message(),
                    error.hint().empty() ? "In " + where : error.hint() + " (in " + where + ")");
  }
}

// The items of a list; `form` says what the list should be.
const Json::Items& list(const Json& value, const std::string& form);

}  // namespace synth::spec
