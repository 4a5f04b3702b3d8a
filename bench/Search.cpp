// What a key press in the search field costs: every row of a sound is matched anew.
#include <benchmark/benchmark.h>

#include "core/model/Defaults.h"
#include "core/sounds/ParamList.h"

namespace {

using namespace synth;

void searchAllRows(benchmark::State& state, const std::string& query) {
  const auto p = makeProject();
  const std::vector<paramlist::Row> rows = paramlist::rows(*p, 1);
  std::vector<search::Match> matches;
  for (auto _ : state) {
    matches.clear();
    for (const paramlist::Row& row : rows) matches.push_back(paramlist::match(row, query));
    benchmark::DoNotOptimize(search::shown(matches));
  }
  state.counters["rows"] = double(rows.size());
}

// A word with a typing error, which fits no row exactly.
void SearchAllRows(benchmark::State& state) { searchAllRows(state, "resnance"); }

// Sixty words, of which the first eight count.
void SearchAllRowsForAPastedText(benchmark::State& state) {
  std::string text;
  for (int i = 0; i < 30; i++) text += "filter envelope ";
  searchAllRows(state, text);
}

BENCHMARK(SearchAllRows)->Unit(benchmark::kMillisecond);
BENCHMARK(SearchAllRowsForAPastedText)->Unit(benchmark::kMillisecond);

}  // namespace
