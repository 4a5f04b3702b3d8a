// The typeface of pictures: capitals, digits and signs of 5 x 7 pixels.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace synth::analysis::font {

inline constexpr int width = 5, height = 7;
// From one sign to the next.
inline constexpr int advance = 6;

// Seven rows from the top, bit 4 the leftmost pixel. Small letters answer as capitals, what the typeface
// does not have as an empty box.
std::span<const std::uint8_t, height> glyph(char sign);

// Of a whole text, without the gap after its last sign; 0 for none.
int textWidth(std::string_view text);

}  // namespace synth::analysis::font
