// The reflected CRC-32 of IEEE 802.3 (polynomial 0xEDB88320), as zlib and PNG use it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace synth {

// Checksum of `size` bytes; 0 for none. Pass an earlier result as `crc` to go on with it.
std::uint32_t crc32(const void* data, std::size_t size, std::uint32_t crc = 0);

}  // namespace synth
