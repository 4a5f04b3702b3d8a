#include "base/ReadFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace synth {

ReadResult readFile(const std::string& path, std::size_t limit, std::string& bytes, std::string& error) {
  bytes.clear();
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    error = std::strerror(errno);
    return ReadResult::CannotOpen;
  }
  char chunk[65536];
  ReadResult result = ReadResult::Ok;
  while (std::size_t got = std::fread(chunk, 1, sizeof chunk, file)) {
    if (bytes.size() + got > limit) {
      result = ReadResult::TooLarge;
      break;
    }
    bytes.append(chunk, got);
  }
  if (std::ferror(file)) {
    error = std::strerror(errno);
    result = ReadResult::Failed;
  }
  std::fclose(file);
  return result;
}

}  // namespace synth
