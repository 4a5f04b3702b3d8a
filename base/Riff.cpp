#include "base/Riff.h"

#include <algorithm>
#include <cstring>

namespace synth {
namespace {

constexpr std::uint64_t headerBytes = 8;
constexpr std::size_t windowBytes = 65536;
// A RIFF file tells its length in 32 bits.
constexpr std::uint64_t largest = headerBytes + 0xFFFFFFFF;

}  // namespace

RiffWalk::RiffWalk(ByteSource& bytes) : bytes_(bytes), end_(std::min(bytes.size(), largest)) {}

bool RiffWalk::next(RiffChunk& chunk) {
  if (at_ + headerBytes > end_) return false;
  if (at_ < windowAt_ || at_ + headerBytes > windowAt_ + window_.size()) {
    window_.resize(windowBytes);
    window_.resize(bytes_.read(at_, window_.data(), windowBytes));
    windowAt_ = at_;
    if (window_.size() < headerBytes) return false;
  }
  const unsigned char* header = window_.data() + (at_ - windowAt_);
  std::uint32_t length;
  std::memcpy(chunk.id, header, 4);
  std::memcpy(&length, header + 4, 4);
  chunk.at = at_ + headerBytes;
  chunk.length = std::min<std::uint64_t>(length, end_ - chunk.at);
  at_ = chunk.at + chunk.length + chunk.length % 2;
  return true;
}

bool isRiff(ByteSource& bytes, std::string_view form) {
  char start[12];
  return bytes.read(0, start, sizeof start) == sizeof start && std::string_view(start, 4) == "RIFF" &&
         std::string_view(start + 8, 4) == form;
}

}  // namespace synth
