#include "base/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace synth {

bool FolderLock::take(const std::string& folder, double seconds) {
  using namespace std::chrono;
  release();
  fd_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd_ < 0) return true;
  const auto end = steady_clock::now() + duration<double>(seconds);
  while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return true;
    if (steady_clock::now() >= end) {
      release();
      return false;
    }
    std::this_thread::sleep_for(milliseconds(2));
  }
  return true;
}

void FolderLock::release() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

}  // namespace synth
