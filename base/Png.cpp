#include "base/Png.h"

#include <algorithm>
#include <string_view>

#include "base/AtomicFile.h"
#include "base/Crc32.h"

namespace synth {
namespace {

void append32(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += char(value >> shift);
}

void appendChunk(std::string& out, std::string_view type, std::string_view data) {
  append32(out, std::uint32_t(data.size()));
  const std::size_t start = out.size();
  out.append(type).append(data);
  append32(out, crc32(out.data() + start, out.size() - start));
}

std::uint32_t adler32(std::string_view data) {
  constexpr std::uint32_t modulus = 65521;
  // As many bytes as fit before the second sum could overflow.
  constexpr std::size_t run = 5552;
  std::uint32_t a = 1, b = 0;
  for (std::size_t start = 0; start < data.size(); start += run) {
    for (const char c : data.substr(start, run)) {
      a += std::uint8_t(c);
      b += a;
    }
    a %= modulus;
    b %= modulus;
  }
  return b << 16 | a;
}

// A zlib stream of stored deflate blocks.
std::string stored(std::string_view data) {
  constexpr std::size_t blockBytes = 65535;
  std::string out = "\x78\x01";
  out.reserve(data.size() + data.size() / blockBytes * 5 + 16);
  for (std::size_t start = 0; start < data.size(); start += blockBytes) {
    const std::string_view block = data.substr(start, blockBytes);
    const unsigned size = unsigned(block.size());
    out += char(start + blockBytes >= data.size());
    for (const unsigned word : {size, ~size}) {
      out += char(word & 255);
      out += char(word >> 8 & 255);
    }
    out += block;
  }
  append32(out, adler32(data));
  return out;
}

}  // namespace

bool writePng(const std::string& path, int width, int height, std::span<const std::uint8_t> rgb,
              std::string& error) {
  error = "Cannot write " + path;
  if (width < 1 || height < 1) return false;
  const std::size_t row = std::size_t(width) * 3;
  if (rgb.size() / row != std::size_t(height) || rgb.size() % row != 0) return false;
  if (rgb.size() + std::size_t(height) > 2'147'000'000u) return false;

  std::string rows;
  rows.reserve(rgb.size() + std::size_t(height));
  for (std::size_t start = 0; start < rgb.size(); start += row) {
    rows += '\0';  // no filter
    rows.append(reinterpret_cast<const char*>(rgb.data()) + start, row);
  }
  std::string header;
  append32(header, std::uint32_t(width));
  append32(header, std::uint32_t(height));
  header +=
      std::string_view("\x08\x02\x00\x00\x00", 5);  // 8 bits, RGB, deflate, one filter method, in one pass

  std::string file = "\x89PNG\r\n\x1a\n";
  appendChunk(file, "IHDR", header);
  appendChunk(file, "IDAT", stored(rows));
  appendChunk(file, "IEND", "");
  std::string why;
  if (!writeAtomically(path, file, why)) return false;
  error.clear();
  return true;
}

}  // namespace synth
