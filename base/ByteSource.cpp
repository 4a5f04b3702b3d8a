#include "base/ByteSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace synth {

std::size_t MemoryBytes::read(std::uint64_t at, void* to, std::size_t count) {
  if (at >= bytes_.size()) return 0;
  count = std::min(count, bytes_.size() - std::size_t(at));
  if (count > 0) std::memcpy(to, bytes_.data() + at, count);
  return count;
}

std::unique_ptr<FileBytes> FileBytes::open(const std::string& path) {
  // Opening a pipe that nobody writes to must not wait.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  struct stat status;
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    return nullptr;
  }
  return std::unique_ptr<FileBytes>(new FileBytes(descriptor, std::uint64_t(status.st_size)));
}

FileBytes::~FileBytes() { ::close(descriptor_); }

std::size_t FileBytes::read(std::uint64_t at, void* to, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(descriptor_, static_cast<char*>(to) + done, count - done, off_t(at + done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += std::size_t(got);
  }
  return done;
}

}  // namespace synth
