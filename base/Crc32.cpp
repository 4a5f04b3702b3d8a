#include "base/Crc32.h"

#include <array>

namespace synth {
namespace {

// Slicing by four (Kounavis and Berry, 2005): four table look-ups a word instead of four dependent ones.
using Tables = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr Tables makeTables() {
  Tables t{};
  for (std::uint32_t n = 0; n < 256; n++) {
    std::uint32_t c = n;
    for (int k = 0; k < 8; k++) c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
    t[0][n] = c;
  }
  for (int s = 1; s < 4; s++)
    for (std::uint32_t n = 0; n < 256; n++) t[s][n] = (t[s - 1][n] >> 8) ^ t[0][t[s - 1][n] & 255];
  return t;
}

constexpr Tables tables = makeTables();

}  // namespace

std::uint32_t crc32(const void* data, std::size_t size, std::uint32_t crc) {
  auto p = static_cast<const unsigned char*>(data);
  std::uint32_t c = ~crc;
  for (; size >= 4; size -= 4, p += 4) {
    c ^= p[0] | p[1] << 8 | p[2] << 16 | std::uint32_t(p[3]) << 24;
    c = tables[3][c & 255] ^ tables[2][c >> 8 & 255] ^ tables[1][c >> 16 & 255] ^ tables[0][c >> 24];
  }
  for (; size; size--) c = (c >> 8) ^ tables[0][(c ^ *p++) & 255];
  return ~c;
}

}  // namespace synth
