// The same Song gives the same bytes whatever the size of the render calls.
#include <gtest/gtest.h>

#include "support/RandomProject.h"
#include "support/Rendered.h"

namespace synth::test {
namespace {

TEST(BlockSize, ChangesNoByteOfRandomSongs) {
  for (u32 seed = 1; seed <= 24; seed++) {
    auto song = randomSong(seed);
    const Audio whole = renderProject(*song, 1.2, 4096);
    ASSERT_GT(whole.size(), 0u) << seed;
    EXPECT_TRUE(allFinite(whole)) << seed;
    for (unsigned block : {1u, 37u, 64u, 256u})
      EXPECT_TRUE(sameBytes(whole, renderProject(*song, 1.2, block)))
          << "seed " << seed << ", blocks of " << block;
  }
}

TEST(BlockSize, ChangesNoByteOfATailAfterTheSong) {
  for (u32 seed = 40; seed < 44; seed++) {
    auto song = randomSong(seed);
    song->bpm = 240;
    Audio renders[2];
    for (int i = 0; i < 2; i++) {
      Engine engine(44100);
      ASSERT_TRUE(engine.submitProject(*song));
      engine.setPlaying(true);
      renders[i] = renderFrames(engine, 44100 * 4, i ? 1000 : 16);
    }
    EXPECT_TRUE(sameBytes(renders[0], renders[1])) << seed;
  }
}

TEST(BlockSize, ASecondRenderRepeatsTheFirst) {
  auto song = randomSong(7);
  EXPECT_TRUE(sameBytes(renderProject(*song, 2), renderProject(*song, 2)));
}

}  // namespace
}  // namespace synth::test
