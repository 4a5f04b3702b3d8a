// Bytes at a place: of memory, or of a file that may be too big to hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace synth {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual std::uint64_t size() const = 0;
  // How many bytes it gave: fewer than `count` behind the end, or when the file fails.
  virtual std::size_t read(std::uint64_t at, void* to, std::size_t count) = 0;
};

// Bytes that outlive it.
class MemoryBytes final : public ByteSource {
 public:
  explicit MemoryBytes(std::span<const unsigned char> bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::size_t read(std::uint64_t at, void* to, std::size_t count) override;

 private:
  std::span<const unsigned char> bytes_;
};

class FileBytes final : public ByteSource {
 public:
  // Null when the path cannot be opened or is no regular file.
  static std::unique_ptr<FileBytes> open(const std::string& path);
  ~FileBytes() override;
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;

  std::uint64_t size() const override { return size_; }
  std::size_t read(std::uint64_t at, void* to, std::size_t count) override;

 private:
  FileBytes(int descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  std::uint64_t size_;
};

}  // namespace synth
