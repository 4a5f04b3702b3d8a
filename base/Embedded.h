// A data file compiled into the program: its name and its bytes.
#pragma once

#include <span>
#include <string_view>

namespace synth {

struct Embedded {
  const char* name;
  std::string_view text;
};

}  // namespace synth
