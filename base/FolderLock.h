// A folder held for writing, so that commands that change a file there wait for each other.
#pragma once

#include <string>
#include <utility>

namespace synth {

class FolderLock {
 public:
  FolderLock() = default;
  FolderLock(FolderLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FolderLock& operator=(FolderLock&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FolderLock() { release(); }

  // Waits for whoever holds it, for `seconds` at most, where a write takes milliseconds; false when that was
  // not enough. Where a folder cannot be opened, or its file system knows no locks, nobody is waited for. It
  // ends with the process at the latest.
  bool take(const std::string& folder, double seconds = 10);
  void release();

 private:
  int fd_ = -1;
};

}  // namespace synth
