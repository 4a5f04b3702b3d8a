// A mistake in a spec: what is wrong and where, and a hint that teaches the right form.
#pragma once

#include <stdexcept>
#include <string>

namespace synth::spec {

enum class Fault {
  Shape,
  UnknownKey,
  UnknownOption,
  UnknownParameter,
  UnknownTarget,
  UnknownPreset,
  OutOfRange
};

class SpecError : public std::runtime_error {
 public:
  SpecError(Fault fault, const std::string& message, std::string hint = {})
      : std::runtime_error(message), fault_(fault), message_(message), hint_(std::move(hint)) {}
  // A spec of the wrong shape, the most frequent mistake.
  explicit SpecError(const std::string& message, std::string hint = {})
      : SpecError(Fault::Shape, message, std::move(hint)) {}

  // The error's code in the command line's envelope.
  const char* code() const {
    constexpr const char* codes[] = {"invalid_spec",      "unknown_key",    "unknown_option",
                                     "unknown_parameter", "unknown_target", "unknown_preset",
                                     "out_of_range"};
    return codes[int(fault_)];
  }
  // The text whole; what() would end at a zero byte.
  const std::string& message() const { return message_; }
  const std::string& hint() const { return hint_; }
  Fault fault() const { return fault_; }

 private:
  Fault fault_;
  std::string message_, hint_;
};

}  // namespace synth::spec
