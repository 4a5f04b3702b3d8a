// The one exception of the command line: a code, a message, and a hint that says what to do next.
#pragma once

#include <stdexcept>
#include <string>

namespace synth::cli {

// The exit status of a code: usage 2, internal 1, conflict 5, files and the app 4, everything else 3.
int exitOf(const std::string& code);

class CliError : public std::runtime_error {
 public:
  CliError(std::string itsCode, const std::string& itsMessage, std::string itsHint = {})
      : std::runtime_error(itsMessage),
        code(std::move(itsCode)),
        message(itsMessage),
        hint(std::move(itsHint)),
        exit(exitOf(code)) {}

  // `message` rather than what(), which would end at a zero byte.
  std::string code, message, hint;
  int exit;
};

// The command line itself was wrong.
inline CliError usage(const std::string& message, std::string hint = {}) {
  return CliError("usage", message, std::move(hint));
}

}  // namespace synth::cli
