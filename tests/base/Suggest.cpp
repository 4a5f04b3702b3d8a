// What breaks if a mistyped word gets no hint, or a hint that is far from it.
#include "base/Suggest.h"

#include <gtest/gtest.h>

namespace synth {
namespace {

using Names = std::vector<std::string>;

TEST(Suggest, NamesTheNearestFirstAsTheyAreSpelled) {
  EXPECT_EQ(suggest("RENDR", {"Send", "render", "bend"}), "Did you mean: render, Send, bend?");
  EXPECT_EQ(suggest("velosity", {"value", "Velocity"}), "Did you mean: Velocity?");
  EXPECT_EQ(
      suggest("projct new", {"preset new", "project new", "project set"}).find("Did you mean: project new"),
      0u);
  EXPECT_EQ(suggest("zzzz", {"render", "build"}), "");
  EXPECT_EQ(suggest("word", {}), "");
}

TEST(Suggest, TakesTheFirstThreeInStableOrder) {
  EXPECT_EQ(nearest("cat", {"dog", "bat", "cut", "cat", "cap", "can"}), (Names{"cat", "bat", "cut"}));
}

TEST(Suggest, CountsAWordInsideAnotherAsNear) {
  EXPECT_EQ(nearest("cut", {"low_cut_of_the_master", "cup"}), (Names{"low_cut_of_the_master", "cup"}));
  EXPECT_EQ(nearest("resonance_of_it", {"resonance"}), (Names{"resonance"}));
  // Two bytes are too few for that.
  EXPECT_EQ(nearest("cu", {"low_cut"}), Names{});
}

TEST(Suggest, ForgivesAThirdOfALongWordAndTwoOfAShortOne) {
  EXPECT_EQ(nearest("abcdefghi", {"abcdefxyz", "abcdewxyz"}), (Names{"abcdefxyz"}));
  EXPECT_EQ(nearest("abcd", {"abxy", "axyz"}), (Names{"abxy"}));
  EXPECT_EQ(nearest("ab", {"xy", "xyz"}), (Names{"xy"}));
}

}  // namespace
}  // namespace synth
