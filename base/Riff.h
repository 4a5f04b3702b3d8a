// The chunks of a RIFF file, one after the other.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/ByteSource.h"

namespace synth {

struct RiffChunk {
  char id[4];
  std::uint64_t at = 0, length = 0;  // of the contents, cut to what the file holds

  bool is(std::string_view name) const { return std::string_view(id, 4) == name; }
};

class RiffWalk {
 public:
  // Starts behind the twelve bytes that name the form.
  explicit RiffWalk(ByteSource& bytes);
  // False when no further header fits.
  bool next(RiffChunk& chunk);

 private:
  ByteSource& bytes_;
  std::uint64_t at_ = 12, end_;
  // Read ahead: a file can hold a great many empty chunks.
  std::vector<unsigned char> window_;
  std::uint64_t windowAt_ = 0;
};

// Whether the bytes begin as a RIFF file of that form, four letters such as "WAVE".
bool isRiff(ByteSource& bytes, std::string_view form);

}  // namespace synth
