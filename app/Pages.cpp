// Writes the shell completions and the man page into a folder: a step of the build.
#include <cstdio>
#include <string>

#include "base/AtomicFile.h"
#include "cli/Pages.h"

int main(int argc, char** argv) {
  using namespace synth::cli;
  if (argc != 2) {
    std::fputs("usage: quorel_pages FOLDER\n", stderr);
    return 2;
  }
  const Page pages[] = {
      {"quorel.bash", bashCompletion()}, {"_quorel", zshCompletion()}, {"quorel.1", manPage()}};
  for (const Page& page : pages) {
    std::string error;
    if (synth::writeAtomically(argv[1] + ("/" + page.file), page.text, error)) continue;
    std::fprintf(stderr, "quorel_pages: %s: %s\n", page.file.c_str(), error.c_str());
    return 1;
  }
  return 0;
}
