// The floors of the house: an include that runs up, or sideways between neighbours, fails here.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

// What each floor may include besides itself.
const std::map<std::string, std::set<std::string>> below = {
    {"base", {}},
    {"core", {"base"}},
    {"engine", {"base", "core"}},
    {"spec", {"base", "core", "engine"}},
    {"analysis", {"base", "core", "engine", "spec"}},
    {"cli", {"base", "core", "engine", "spec", "analysis"}},
    {"app", {"base", "core", "engine", "spec", "analysis", "cli"}},
};

TEST(House, NoIncludeRunsUp) {
  const std::regex include("^\\s*#include \"([a-z]+)/");
  int arrows = 0;
  for (const auto& [floor, allowed] : below)
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(QUOREL_SOURCE_DIR) / floor)) {
      const std::string extension = entry.path().extension().string();
      if (extension != ".h" && extension != ".cpp") continue;
      std::ifstream in(entry.path());
      std::smatch match;
      for (std::string line; std::getline(in, line);) {
        if (!std::regex_search(line, match, include)) continue;
        const std::string to = match[1];
        arrows++;
        EXPECT_TRUE(to == floor || allowed.count(to)) << entry.path() << " includes " << to;
      }
    }
  EXPECT_GT(arrows, 200);
}

}  // namespace
