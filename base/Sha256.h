// SHA-256 (FIPS 180-4).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace synth {

std::array<std::uint8_t, 32> sha256(std::string_view bytes);
// As 64 lower-case hexadecimal characters.
std::string hexOf(const std::array<std::uint8_t, 32>& hash);

}  // namespace synth
