// Reads back the PNG files that the program writes, byte by byte, and fails the test at whatever a strict
// reader would refuse.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/Crc32.h"

namespace synth::test {

struct Pixels {
  unsigned width = 0, height = 0;
  std::vector<std::uint8_t> rgb;
  int blocks = 0;  // of stored data

  const std::uint8_t* at(unsigned x, unsigned y) const { return &rgb[(std::size_t(y) * width + x) * 3]; }
};

class PngReader {
 public:
  static Pixels read(const std::string& bytes) {
    PngReader reader{bytes};
    Pixels out;
    reader.file(out);
    return out;
  }

 private:
  explicit PngReader(const std::string& bytes) : bytes_(bytes) {}

  std::uint32_t big32(const std::string& s, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; i++) value = value << 8 | std::uint8_t(s.at(at + i));
    return value;
  }

  std::string chunk(const std::string& type) {
    const std::uint32_t size = big32(bytes_, at_);
    const std::string body = bytes_.substr(at_ + 4, size + 4);
    EXPECT_EQ(body.substr(0, 4), type);
    EXPECT_EQ(big32(bytes_, at_ + 8 + size), crc32(body.data(), body.size())) << type;
    at_ += 12 + size;
    return body.substr(4);
  }

  std::string inflated(const std::string& zlib, int& blocks) {
    EXPECT_EQ(zlib.substr(0, 2), "\x78\x01");
    std::string out;
    std::size_t at = 2;
    for (bool last = false; !last; blocks++) {
      last = zlib.at(at) == 1;
      EXPECT_LE(unsigned(std::uint8_t(zlib.at(at))), 1u);
      const unsigned size = std::uint8_t(zlib.at(at + 1)) | std::uint8_t(zlib.at(at + 2)) << 8;
      const unsigned check = std::uint8_t(zlib.at(at + 3)) | std::uint8_t(zlib.at(at + 4)) << 8;
      EXPECT_EQ(size ^ check, 0xFFFFu);
      out += zlib.substr(at + 5, size);
      at += 5 + size;
    }
    std::uint32_t a = 1, b = 0;
    for (const char c : out) a = (a + std::uint8_t(c)) % 65521, b = (b + a) % 65521;
    EXPECT_EQ(big32(zlib, at), b << 16 | a);
    EXPECT_EQ(at + 4, zlib.size());
    return out;
  }

  void file(Pixels& out) {
    EXPECT_EQ(bytes_.substr(0, 8), "\x89PNG\r\n\x1a\n");
    const std::string header = chunk("IHDR");
    out.width = big32(header, 0);
    out.height = big32(header, 4);
    EXPECT_EQ(header.substr(8), std::string("\x08\x02\x00\x00\x00", 5));
    const std::string rows = inflated(chunk("IDAT"), out.blocks);
    EXPECT_EQ(chunk("IEND"), "");
    EXPECT_EQ(at_, bytes_.size());
    const std::size_t row = std::size_t(out.width) * 3;
    ASSERT_EQ(rows.size(), (row + 1) * out.height);
    for (std::size_t y = 0; y < out.height; y++) {
      EXPECT_EQ(rows[y * (row + 1)], 0);
      out.rgb.insert(out.rgb.end(), rows.begin() + long(y * (row + 1) + 1),
                     rows.begin() + long((y + 1) * (row + 1)));
    }
  }

  const std::string& bytes_;
  std::size_t at_ = 8;
};

}  // namespace synth::test
