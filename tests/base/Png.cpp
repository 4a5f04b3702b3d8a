// What breaks if a picture cannot be opened elsewhere, or if a failed write harms what was there.
#include "base/Png.h"

#include <gtest/gtest.h>

#include "base/Process.h"
#include "support/PngReader.h"
#include "support/TempFolder.h"

namespace synth {
namespace {

using test::PngReader;
using test::readAll;
using test::TempFolder;

std::vector<std::uint8_t> pattern(int width, int height) {
  std::vector<std::uint8_t> rgb;
  for (int i = 0; i < width * height * 3; i++) rgb.push_back(std::uint8_t(i * 31 + i / 255));
  return rgb;
}

TEST(Png, ReadsBackInEverySize) {
  TempFolder folder;
  const std::string path = folder / "a.png";
  // One pixel; data that fill a block to the byte and to one more (a row is 1 + 3 w bytes); rows longer
  // than a block; many blocks.
  const struct {
    int width, height, blocks;
  } cases[] = {{1, 1, 1}, {28, 771, 1}, {28, 772, 2}, {21845, 1, 2}, {30000, 3, 5}, {600, 500, 14}};
  for (const auto& c : cases) {
    const auto rgb = pattern(c.width, c.height);
    std::string error = "x";
    ASSERT_TRUE(writePng(path, c.width, c.height, rgb, error));
    EXPECT_EQ(error, "");
    const auto back = PngReader::read(readAll(path));
    EXPECT_EQ(back.width, unsigned(c.width));
    EXPECT_EQ(back.height, unsigned(c.height));
    EXPECT_EQ(back.blocks, c.blocks) << c.width << " x " << c.height;
    EXPECT_TRUE(back.rgb == rgb);
  }
}

TEST(Png, RefusesWhatIsNoPictureAndSaysWhichFile) {
  TempFolder folder;
  const std::string path = folder / "a.png";
  test::writeAll(path, "old");
  const std::uint8_t rgb[12] = {};
  std::string error;
  for (const auto& [width, height] :
       {std::pair{0, 4}, {4, 0}, {-2, -2}, {3, 1}, {2, 3}, {1 << 30, 1 << 30}}) {
    EXPECT_FALSE(writePng(path, width, height, rgb, error)) << width << " x " << height;
    EXPECT_EQ(error, "Cannot write " + path);
  }
  EXPECT_EQ(readAll(path), "old");
  EXPECT_FALSE(writePng(folder / "none/a.png", 2, 2, rgb, error));
  EXPECT_EQ(error, "Cannot write " + (folder / "none/a.png"));
}

TEST(Png, AnIndependentReaderSeesTheSamePixels) {
  const std::string reader = programPath("ffmpeg");
  if (reader.empty()) GTEST_SKIP() << "needs ffmpeg";
  TempFolder folder;
  const auto rgb = pattern(301, 113);
  std::string error;
  ASSERT_TRUE(writePng(folder / "a.png", 301, 113, rgb, error));
  Process program;
  ASSERT_TRUE(program.start({reader, "-v", "error", "-i", folder / "a.png", "-f", "rawvideo", "-pix_fmt",
                             "rgb24", folder / "a.raw"}));
  ASSERT_EQ(program.finish(), 0);
  EXPECT_EQ(readAll(folder / "a.raw"), std::string(rgb.begin(), rgb.end()));
}

}  // namespace
}  // namespace synth
