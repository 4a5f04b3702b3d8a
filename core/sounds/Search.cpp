#include "core/sounds/Search.h"

#include <algorithm>
#include <numeric>

namespace synth::search {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; }
bool wordLetter(char c) {
  // Bytes of letters beyond ASCII belong to their word.
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (c & 0x80);
}
bool startsWord(std::string_view text, size_t at) { return at == 0 || !wordLetter(text[at - 1]); }
bool endsWord(std::string_view text, size_t end) { return end >= text.size() || !wordLetter(text[end]); }

// Scores lie in bands, so that any match of one sort beats any of the next.
constexpr unsigned wholeBand = 4000, startBand = 3000, insideBand = 2000, abbreviationBand = 1000;

unsigned nearStart(unsigned band, size_t at) { return band - unsigned(std::min<size_t>(at, 500)); }

bool sameAt(std::string_view text, std::string_view query, size_t at) {
  if (at + query.size() > text.size()) return false;
  for (size_t i = 0; i < query.size(); i++)
    if (lower(text[at + i]) != lower(query[i])) return false;
  return true;
}

}  // namespace

const Match& better(const Match& a, const Match& b) { return a < b ? b : a; }

std::vector<std::string> words(std::string_view text, size_t most) {
  std::vector<std::string> out;
  bool inside = false;
  for (char c : text) {
    const bool blank = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
    if (!blank && !inside) {
      if (out.size() >= most) break;
      out.emplace_back();
    }
    if (!blank) out.back() += lower(c);
    inside = !blank;
  }
  return out;
}

Match exact(std::string_view text, std::string_view query) {
  if (query.empty()) return {Match::Exact, 0};
  Match best;
  for (size_t at = 0; at + query.size() <= text.size(); at++) {
    if (!sameAt(text, query, at)) continue;
    Match here{Match::Weak, nearStart(insideBand, at)};
    if (startsWord(text, at))
      here = endsWord(text, at + query.size()) ? Match{Match::Exact, nearStart(wholeBand, at)}
                                               : Match{Match::WordStart, nearStart(startBand, at)};
    best = better(best, here);
  }
  return best;
}

Match abbreviation(std::string_view text, std::string_view query) {
  if (query.empty() || query.size() > size_t(longest) || query.size() > text.size()) return {};
  constexpr int none = -1;
  // The first letter has to begin a word: letters strewn over a text are no abbreviation of it.
  // fit[k]: the best score of the first k + 1 letters with the last of them at the place before this one;
  // best[k]: with it anywhere before.
  int fit[longest], best[longest];
  std::fill(fit, fit + longest, none);
  std::fill(best, best + longest, none);
  const int n = int(query.size());
  for (size_t at = 0; at < text.size(); at++) {
    const int bonus = startsWord(text, at) ? 12 : 1;
    for (int k = std::min<int>(n - 1, int(at)); k >= 0; k--) {
      int now = none;
      if (lower(text[at]) == lower(query[size_t(k)])) {
        if (k == 0)
          now = startsWord(text, at) ? bonus : none;
        else if (best[k - 1] != none)
          now = std::max(best[k - 1] + bonus, fit[k - 1] == none ? none : fit[k - 1] + std::max(bonus, 6));
      }
      fit[k] = now;
      best[k] = std::max(best[k], now);
    }
  }
  if (best[n - 1] == none) return {};
  return {Match::Weak, abbreviationBand + unsigned(std::min(best[n - 1], 900)) -
                           unsigned(std::min<size_t>(text.size(), 99))};
}

int typoLimit(int length) { return length < 4 ? 0 : length < 8 ? 1 : 2; }

int distance(std::string_view a, std::string_view b, int limit) {
  const int n = int(std::min<size_t>(a.size(), longest)), m = int(std::min<size_t>(b.size(), longest));
  if (std::abs(n - m) > limit) return limit + 1;
  int rows[3][longest + 1];
  for (int j = 0; j <= m; j++) rows[0][j] = j;
  for (int i = 1; i <= n; i++) {
    int(&now)[longest + 1] = rows[i % 3];
    const int(&before)[longest + 1] = rows[(i + 2) % 3];
    const int(&two)[longest + 1] = rows[(i + 1) % 3];
    now[0] = i;
    int least = i;
    for (int j = 1; j <= m; j++) {
      const char x = lower(a[size_t(i - 1)]), y = lower(b[size_t(j - 1)]);
      now[j] = std::min({before[j] + 1, now[j - 1] + 1, before[j - 1] + (x != y)});
      if (i > 1 && j > 1 && x == lower(b[size_t(j - 2)]) && lower(a[size_t(i - 2)]) == y)
        now[j] = std::min(now[j], two[j - 2] + 1);
      least = std::min(least, now[j]);
    }
    if (least > limit) return limit + 1;
  }
  return std::min(rows[n % 3][m], limit + 1);
}

Match typo(std::string_view text, std::string_view query) {
  const int n = int(query.size()), limit = typoLimit(n);
  if (limit == 0 || n > longest) return {};
  int least = limit + 1;
  for (size_t at = 0; at < text.size(); at++) {
    if (!wordLetter(text[at]) || !startsWord(text, at)) continue;
    size_t end = at;
    while (end < text.size() && wordLetter(text[end])) end++;
    // The whole word, or as much of it as has been typed so far.
    for (int length = n - limit; length <= n + limit; length++)
      if (length > 0 && (size_t(length) <= end - at))
        least = std::min(least, distance(text.substr(at, size_t(length)), query, limit));
  }
  return least > limit ? Match{} : Match{Match::Weak, unsigned(900 - 300 * least)};
}

Match both(const Match& a, const Match& b) { return {std::min(a.rank, b.rank), a.score + b.score}; }

Match match(std::string_view query, std::string_view text) {
  Match all{Match::Exact, 0};
  for (const std::string& word : words(query, mostWords)) {
    Match one = exact(text, word);
    if (!one) one = better(abbreviation(text, word), typo(text, word));
    if (!one) return {};
    all = both(all, one);
  }
  return all;
}

std::vector<int> shown(const std::vector<Match>& matches) {
  unsigned char best = Match::None;
  for (const Match& m : matches) best = std::max(best, m.rank);
  std::vector<int> rows;
  for (size_t i = 0; i < matches.size() && best != Match::None; i++)
    if (matches[i].rank == best) rows.push_back(int(i));
  std::stable_sort(rows.begin(), rows.end(),
                   [&](int a, int b) { return matches[size_t(b)] < matches[size_t(a)]; });
  return rows;
}

}  // namespace synth::search
