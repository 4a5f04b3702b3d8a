#include "analysis/picture/Canvas.h"

#include <algorithm>
#include <cmath>

#include "analysis/picture/PixelFont.h"

namespace synth::analysis {
namespace {

Rect common(Rect a, Rect b) {
  const int x = std::max(a.x, b.x), y = std::max(a.y, b.y);
  return {x, y, std::max(0, std::min(a.x + a.width, b.x + b.width) - x),
          std::max(0, std::min(a.y + a.height, b.y + b.height) - y)};
}

std::uint8_t mixed(std::uint8_t below, std::uint8_t above, double opacity) {
  return std::uint8_t(std::floor(below + (double(above) - below) * opacity + 0.5));
}

}  // namespace

Canvas::Canvas(int width, int height, Colour colour)
    : width_(std::max(1, width)),
      height_(std::max(1, height)),
      rgb_(std::size_t(width_) * std::size_t(height_) * 3) {
  fill({0, 0, width_, height_}, colour);
}

Colour Canvas::at(int x, int y) const {
  const std::uint8_t* p = &rgb_[(std::size_t(y) * std::size_t(width_) + std::size_t(x)) * 3];
  return {p[0], p[1], p[2]};
}

void Canvas::set(int x, int y, Colour colour) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  std::uint8_t* p = &rgb_[(std::size_t(y) * std::size_t(width_) + std::size_t(x)) * 3];
  p[0] = colour.red;
  p[1] = colour.green;
  p[2] = colour.blue;
}

void Canvas::fill(Rect area, Colour colour, double opacity) {
  const Rect r = common(area, {0, 0, width_, height_});
  for (int y = r.y; y < r.y + r.height; y++)
    for (int x = r.x; x < r.x + r.width; x++) {
      const Colour below = at(x, y);
      set(x, y,
          {mixed(below.red, colour.red, opacity), mixed(below.green, colour.green, opacity),
           mixed(below.blue, colour.blue, opacity)});
    }
}

void Canvas::vertical(int x, int y, int length, Colour colour, double opacity) {
  fill({x, y, 1, length}, colour, opacity);
}

void Canvas::horizontal(int x, int y, int length, Colour colour, double opacity) {
  fill({x, y, length, 1}, colour, opacity);
}

void Canvas::text(int x, int y, std::string_view text, Colour colour, Rect within) {
  const Rect r = common(within, {0, 0, width_, height_});
  for (const char sign : text) {
    if (x >= r.x + r.width) return;
    const auto rows = font::glyph(sign);
    for (int dy = 0; dy < font::height; dy++)
      for (int dx = 0; dx < font::width; dx++) {
        const bool inside =
            x + dx >= r.x && x + dx < r.x + r.width && y + dy >= r.y && y + dy < r.y + r.height;
        if (inside && (rows[std::size_t(dy)] >> (font::width - 1 - dx) & 1)) set(x + dx, y + dy, colour);
      }
    x += font::advance;
  }
}

void Canvas::text(int x, int y, std::string_view text, Colour colour) {
  this->text(x, y, text, colour, {0, 0, width_, height_});
}

}  // namespace synth::analysis
