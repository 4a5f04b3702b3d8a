#include "base/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace synth {
namespace {

bool flushFolderOf(const std::string& path) {
  size_t slash = path.rfind('/');
  std::string folder = slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
  int fd = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  bool ok = ::fsync(fd) == 0;
  return (::close(fd) == 0) && ok;
}

// Where the links of a path lead; the path itself where they lead nowhere.
std::string behindLinks(const std::string& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
  char* real = ::realpath(path.c_str(), nullptr);
  std::string out = real ? real : path;
  std::free(real);
  return out;
}

mode_t modeFor(const std::string& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) == 0) return info.st_mode & 07777;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

// Temporary files that a signal removes: paths at fixed places, since a handler may not allocate.
struct Registry {
  static constexpr int places = 8;
  std::atomic<bool> used[places]{};
  char paths[places][PATH_MAX]{};
};
Registry registry;

int enroll(const std::string& path) {
  if (path.size() >= PATH_MAX) return -1;
  for (int i = 0; i < Registry::places; i++) {
    if (registry.used[i].load()) continue;
    std::memcpy(registry.paths[i], path.c_str(), path.size() + 1);
    registry.used[i].store(true);
    return i;
  }
  return -1;
}

extern "C" void removeAndEnd(int signal) {
  for (int i = 0; i < Registry::places; i++)
    if (registry.used[i].load()) ::unlink(registry.paths[i]);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void removeTemporaryFilesOnSignals() {
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, removeAndEnd);
}

AtomicFile::~AtomicFile() {
  if (file_) std::fclose(file_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  forget();
}

void AtomicFile::forget() {
  if (registered_ >= 0) registry.used[registered_].store(false);
  registered_ = -1;
  temporary_.clear();
}

bool AtomicFile::open(const std::string& wanted, std::string& error) {
  if (wanted.empty() || wanted.find('\0') != wanted.npos) {
    error = "Invalid destination path";
    return false;
  }
  const std::string destination = behindLinks(wanted);
  struct stat info;
  if (::stat(destination.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
    error = std::string("Cannot replace destination: ") +
            (S_ISDIR(info.st_mode) ? std::strerror(EISDIR) : "Not an ordinary file");
    return false;
  }
  std::string name = destination + ".tmp.XXXXXX";
  int fd = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd < 0) {
    error = std::string("Cannot create temporary output: ") + std::strerror(errno);
    return false;
  }
  destination_ = destination;
  temporary_ = name;
  registered_ = enroll(name);
  ::fchmod(fd, modeFor(destination));
  file_ = ::fdopen(fd, "w+b");
  if (!file_) {
    error = std::string("Cannot open temporary output: ") + std::strerror(errno);
    ::close(fd);
    return false;
  }
  return true;
}

bool AtomicFile::write(const void* data, std::size_t size, std::string& error) {
  if (std::fwrite(data, 1, size, file_) == size) return true;
  error = "Output write failed";
  return false;
}

bool AtomicFile::seek(long offset, std::string& error) {
  if (std::fseek(file_, offset, SEEK_SET) == 0) return true;
  error = "Output seek failed";
  return false;
}

bool AtomicFile::close(std::string& error) {
  if (std::fflush(file_) != 0 || ::fsync(::fileno(file_)) != 0) {
    error = "Output flush failed";
    return false;
  }
  std::FILE* file = file_;
  file_ = nullptr;
  if (std::fclose(file) == 0) return true;
  error = "Output close failed";
  return false;
}

bool AtomicFile::commit(std::string& error) {
  if (!close(error)) return false;
  if (std::rename(temporary_.c_str(), destination_.c_str()) != 0) {
    error = std::string("Cannot replace destination: ") + std::strerror(errno);
    return false;
  }
  forget();
  if (flushFolderOf(destination_)) return true;
  error = "Directory flush failed after replacement";
  return false;
}

bool AtomicFile::commitNew(bool& taken, std::string& error) {
  taken = false;
  if (file_ && !close(error)) return false;
  if (::link(temporary_.c_str(), destination_.c_str()) != 0) {
    taken = errno == EEXIST;
    error = std::string("Cannot replace destination: ") + std::strerror(errno);
    return false;
  }
  ::unlink(temporary_.c_str());
  forget();
  if (flushFolderOf(destination_)) return true;
  error = "Directory flush failed after replacement";
  return false;
}

bool writeAtomically(const std::string& destination, std::string_view bytes, std::string& error) {
  AtomicFile file;
  return file.open(destination, error) && file.write(bytes.data(), bytes.size(), error) && file.commit(error);
}

}  // namespace synth
