#include "base/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

}  // namespace

AtomicFile::~AtomicFile() {
  if (file_) std::fclose(file_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

bool AtomicFile::open(const std::string& destination, std::string& error) {
  if (destination.empty() || destination.find('\0') != destination.npos) {
    error = "Invalid destination path";
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

bool AtomicFile::commit(std::string& error) {
  if (std::fflush(file_) != 0 || ::fsync(::fileno(file_)) != 0) {
    error = "Output flush failed";
    return false;
  }
  std::FILE* file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) {
    error = "Output close failed";
    return false;
  }
  if (std::rename(temporary_.c_str(), destination_.c_str()) != 0) {
    error = std::string("Cannot replace destination: ") + std::strerror(errno);
    return false;
  }
  temporary_.clear();
  if (!flushFolderOf(destination_)) {
    error = "Directory flush failed after replacement";
    return false;
  }
  return true;
}

bool writeAtomically(const std::string& destination, std::string_view bytes, std::string& error) {
  AtomicFile file;
  return file.open(destination, error) && file.write(bytes.data(), bytes.size(), error) && file.commit(error);
}

}  // namespace synth
