// Finding by typing.
#include "core/sounds/Search.h"

#include <gtest/gtest.h>

#include "core/params/Registry.h"
#include "support/RandomProject.h"

namespace synth::test {
namespace {

using namespace search;

int rankOf(std::string_view query, std::string_view text) { return match(query, text).rank; }

TEST(Search, RanksWholeWordsThenStartsThenTheRest) {
  EXPECT_EQ(rankOf("cutoff", "cutoff"), Match::Exact);
  EXPECT_EQ(rankOf("cut", "cutoff"), Match::WordStart);
  EXPECT_EQ(rankOf("cutof", "cutoff"), Match::WordStart);
  EXPECT_EQ(rankOf("off", "cutoff"), Match::Weak);
  EXPECT_EQ(rankOf("decay", "filter_decay FILTER DECAY"), Match::Exact);
  EXPECT_EQ(rankOf("ctf", "cutoff"), Match::Weak) << "an abbreviation";
  EXPECT_EQ(rankOf("cutofg", "cutoff"), Match::Weak) << "a typo";
  EXPECT_EQ(rankOf("rsnnce", "resonance"), Match::Weak) << "letters missing";
  EXPECT_EQ(rankOf("xyz", "cutoff"), Match::None);
  EXPECT_EQ(rankOf("", "anything"), Match::Exact);
  EXPECT_EQ(rankOf("filter dec", "filter_decay"), Match::WordStart);
  EXPECT_EQ(rankOf("filter xyz", "filter_decay"), Match::None) << "every word must fit";
  EXPECT_EQ(rankOf("a a a a a a a a xyz", "a"), Match::Exact) << "but only eight of them";
  EXPECT_LT(match("ft", "cutoff"), match("ct", "cutoff")) << "an abbreviation begins with a word";
}

TEST(Search, TyposGrowWithTheirWords) {
  EXPECT_EQ(typoLimit(3), 0);
  EXPECT_EQ(typoLimit(4), 1);
  EXPECT_EQ(typoLimit(7), 1);
  EXPECT_EQ(typoLimit(8), 2);
  EXPECT_EQ(distance("abcd", "acbd", 1), 1);
  EXPECT_EQ(distance("abcd", "abcd", 0), 0);
  EXPECT_EQ(distance("abcd", "badc", 2), 2);
  EXPECT_EQ(distance("abcdef", "abc", 2), 3) << "cut off by the lengths alone";
  EXPECT_EQ(distance("kitten", "sitting", 3), 3);
  EXPECT_EQ(rankOf("ctu", "attack"), Match::None) << "three letters bear no fault";
  EXPECT_EQ(rankOf("atatck", "attack"), Match::Weak);
  EXPECT_EQ(rankOf("resonence", "resonance"), Match::Weak);
  EXPECT_EQ(rankOf("resonense", "resonance"), Match::Weak);
}

TEST(Search, BetterMatchesHideWeakerOnes) {
  const std::vector<Match> matches = {match("cut", "low_cut"), match("cut", "cutoff"),
                                      match("cut", "execute"), match("cut", "cut"), match("cut", "level")};
  EXPECT_EQ(shown(matches), (std::vector<int>{3, 0}));
  EXPECT_EQ(shown({match("ct", "cutoff"), match("ct", "acetone"), {}}), (std::vector<int>{0}));
  EXPECT_TRUE(shown({{}, {}}).empty());
}

TEST(Search, AnyBytesAreHarmless) {
  Random r(5);
  for (int n = 0; n < 20000; n++) {
    std::string query, text;
    for (int i = r.below(50); i > 0; i--) query += char(r.below(256));
    for (int i = r.below(80); i > 0; i--) text += char(r.below(256));
    const Match m = match(query, text);
    EXPECT_LE(m.rank, Match::Exact);
    EXPECT_EQ(bool(m), m.rank != Match::None);
  }
}

TEST(Search, EveryKeyIsFoundWithALetterMissing) {
  for (const param::Info& info : param::all()) {
    const std::string key = info.key;
    EXPECT_EQ(rankOf(key, key), Match::Exact) << key;
    for (size_t i = 1; i < key.size() && key.size() > 5; i++) {
      std::string query = key;
      query.erase(i, 1);
      EXPECT_TRUE(match(query, key)) << query;
    }
  }
}

}  // namespace
}  // namespace synth::test
