// What is written about the program from its own tables: the reference as Markdown, shell completion, the man
// page.
#pragma once

#include <string>
#include <vector>

namespace synth::cli {

struct Page {
  std::string file;  // such as "commands.md"
  std::string text;
};

// commands.md, parameters.md, specs.md, targets.md.
std::vector<Page> referencePages();

// For a shell's completion folder, and for man.
std::string bashCompletion();
std::string zshCompletion();
std::string manPage();

}  // namespace synth::cli
