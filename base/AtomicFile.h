// The one road by which a file is replaced: written beside its destination, flushed, renamed over it,
// and its folder flushed, so that a reader sees the old file or the new one and never a torn one.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "base/Scraps.h"

namespace synth {

class AtomicFile {
 public:
  AtomicFile() = default;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  // Without `commit` the temporary file is removed and the destination stays as it was.
  ~AtomicFile();

  // Each returns false and sets `error` to a fixed text, with the system's words where it has any.

  // A destination that is a symbolic link stays one: what it points to is replaced. One that is no
  // ordinary file is refused. The new file takes the old one's mode, or what the umask leaves.
  bool open(const std::string& destination, std::string& error);
  bool write(const void* data, std::size_t size, std::string& error);
  bool seek(long offset, std::string& error);
  // False with "Directory flush failed after replacement" means that the new file is in place, but that
  // its name may not survive a power failure.
  bool commit(std::string& error);
  // The same, but never over a file: false with `taken` when the destination exists by now.
  bool commitNew(bool& taken, std::string& error);

  // The temporary file, for writers that want a path of their own.
  const std::string& temporary() const { return temporary_; }

 private:
  bool close(std::string& error);
  void forget();

  std::FILE* file_ = nullptr;
  std::string destination_, temporary_;
  Scrap scrap_;
};

// The three steps in one, for a whole text or image.
bool writeAtomically(const std::string& destination, std::string_view bytes, std::string& error);

}  // namespace synth
