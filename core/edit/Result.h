// The answer of every edit: whether it held, whether anything changed, and what to tell the user.
#pragma once

namespace synth::edit {

struct Result {
  bool ok = true, changed = false;
  const char* message = "";

  static Result failed(const char* why) { return {false, false, why}; }
  static Result nothing() { return {}; }
  static Result done(const char* what = "") { return {true, true, what}; }
  explicit operator bool() const { return ok; }
};

}  // namespace synth::edit
