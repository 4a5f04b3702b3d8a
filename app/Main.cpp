// One executable, two faces: started under the name `quorel` it is the command line, under any other the
// instrument.
#include <cstdio>
#include <cstring>

#include "cli/Cli.h"

int main(int argc, char** argv) {
  const char* name = argc > 0 && argv[0] ? argv[0] : "";
  if (const char* slash = std::strrchr(name, '/')) name = slash + 1;
  if (std::strcmp(name, "quorel") == 0) return synth::cli::cliMain(argc, argv);
  std::fputs("No application is available in this build yet; start it as `quorel` for the command line.\n",
             stderr);
  return 1;
}
