// A surface of pixels to draw pictures on. Whatever leaves it is cut off, never an error.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace synth::analysis {

struct Colour {
  std::uint8_t red = 0, green = 0, blue = 0;
  bool operator==(const Colour&) const = default;
};

struct Rect {
  int x = 0, y = 0, width = 0, height = 0;
};

class Canvas {
 public:
  // At least one pixel each way.
  Canvas(int width, int height, Colour fill);

  int width() const { return width_; }
  int height() const { return height_; }
  // Inside the surface only.
  Colour at(int x, int y) const;

  void set(int x, int y, Colour colour);
  // Lays the colour over the rectangle; opacity 0..1, 1 hides what was there.
  void fill(Rect area, Colour colour, double opacity = 1);
  // One pixel wide or high.
  void vertical(int x, int y, int length, Colour colour, double opacity = 1);
  void horizontal(int x, int y, int length, Colour colour, double opacity = 1);
  // The left upper corner of the first sign at x, y. What would leave `within` is cut off.
  void text(int x, int y, std::string_view text, Colour colour, Rect within);
  void text(int x, int y, std::string_view text, Colour colour);

  // Three bytes a pixel, top row first.
  std::span<const std::uint8_t> rgb() const { return rgb_; }

 private:
  int width_, height_;
  std::vector<std::uint8_t> rgb_;
};

}  // namespace synth::analysis
