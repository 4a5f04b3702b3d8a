// Finding by typing: a parameter, a Preset or a Sample, by part of a word, an abbreviation, or with a letter
// missing, doubled, wrong or swapped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace synth::search {

// How well a query fits. Of two fits the higher rank is better, then the higher score.
struct Match {
  enum Rank : unsigned char { None, Weak, WordStart, Exact };
  unsigned char rank = None;
  unsigned score = 0;

  explicit operator bool() const { return rank != None; }
  friend bool operator<(const Match& a, const Match& b) {
    return a.rank != b.rank ? a.rank < b.rank : a.score < b.score;
  }
};

inline constexpr int longest = 32;  // characters of a query word that count

// The words of a text in lower case; a query has at most `mostWords`, what follows does not count.
inline constexpr size_t mostWords = 8;
std::vector<std::string> words(std::string_view text, size_t most = ~size_t(0));
// The query inside the text: as a whole word, at a word's start, or anywhere. An empty query fits exactly.
Match exact(std::string_view text, std::string_view query);
// The query's letters in their order inside the text, the better the nearer they stand to word starts and to
// each other.
Match abbreviation(std::string_view text, std::string_view query);
// How many faults a query of that length may have.
int typoLimit(int length);
// The edits between two texts, two neighbours swapped counting as one (Damerau, 1964); limit + 1 as soon as
// it must be more than `limit`.
int distance(std::string_view a, std::string_view b, int limit);
// The query as a word of the text with some faults.
Match typo(std::string_view text, std::string_view query);

const Match& better(const Match& a, const Match& b);
// Two matches that must both hold: the lower rank, and the scores together.
Match both(const Match& a, const Match& b);

// Every word of the query must fit the text somewhere.
Match match(std::string_view query, std::string_view text);
// The rows to show of a list's matches, best first: weaker ranks go when a better one is there.
std::vector<int> shown(const std::vector<Match>& matches);

}  // namespace synth::search
