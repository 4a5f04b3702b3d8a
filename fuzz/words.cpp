// What people type: a command line of any words, one a line, parsed as every command; and the search.
#include <cstdint>
#include <string>
#include <vector>

#include "cli/Args.h"
#include "cli/Error.h"
#include "core/model/Defaults.h"
#include "core/sounds/ParamList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace synth;
  static const auto project = makeProject();
  static const std::vector<paramlist::Row> rows = paramlist::rows(*project, 1);
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> words(1);
  for (char c : text)
    if (c == '\n')
      words.emplace_back();
    else
      words.back() += c;
  for (const cli::Command& command : cli::registerCommands()) {
    try {
      const cli::Args args = cli::parseArgs(command, words);
      cli::intOption(args, "loops", 1, 1, 64);
      cli::numberOption(args, "tail", 2, 0, 12);
    } catch (const cli::CliError& error) {
      if (error.message.empty()) __builtin_trap();
    }
  }
  std::vector<search::Match> matches;
  for (const paramlist::Row& row : rows) matches.push_back(paramlist::match(row, text));
  for (const int i : search::shown(matches))
    if (i < 0 || i >= int(rows.size())) __builtin_trap();
  search::match(text.substr(0, size / 2), text);
  return 0;
}
