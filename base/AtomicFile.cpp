#include "base/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

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

// A new file beside `destination`, with the mode that the umask gives; mkstemp's would be private, and a
// song that was for others to read is to stay so. Returns -1 with errno.
int createBeside(const std::string& destination, std::string& name) {
  static std::atomic<unsigned> counter{0};
  constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  for (int tries = 0; tries < 100; tries++) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t h = std::uint64_t(now.tv_nsec) ^ std::uint64_t(now.tv_sec) << 30 ^
                      std::uint64_t(::getpid()) << 40 ^ std::uint64_t(counter++) << 20;
    name = destination + ".tmp.";
    for (int k = 0; k < 6; k++) {
      h = (h ^ h >> 33) * 0xFF51AFD7ED558CCDull;
      name += letters[(h >> 40) % (sizeof letters - 1)];
    }
    const int fd = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

}  // namespace

AtomicFile::~AtomicFile() {
  if (file_) std::fclose(file_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  forget();
}

void AtomicFile::forget() {
  scrap_.forget();
  temporary_.clear();
}

bool AtomicFile::open(const std::string& wanted, std::string& error) {
  if (wanted.empty() || wanted.find('\0') != wanted.npos) {
    error = "Invalid destination path";
    return false;
  }
  const std::string destination = behindLinks(wanted);
  struct stat old;
  const bool replaces = ::stat(destination.c_str(), &old) == 0;
  if (replaces && !S_ISREG(old.st_mode)) {
    error = std::string("Cannot replace destination: ") +
            (S_ISDIR(old.st_mode) ? std::strerror(EISDIR) : "Not an ordinary file");
    return false;
  }
  const SignalsHeld held;
  std::string name;
  const int fd = createBeside(destination, name);
  if (fd < 0) {
    error = std::string("Cannot create temporary output: ") + std::strerror(errno);
    return false;
  }
  destination_ = destination;
  temporary_ = name;
  scrap_.enroll(name, Scrap::File);
  if (replaces) ::fchmod(fd, old.st_mode & 07777);
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
