// The frame of the command line: finds the command, runs it, and prints one envelope.
#pragma once

#include <string>
#include <vector>

namespace synth::cli {

struct Outcome {
  std::string text;  // what goes to standard output
  int status = 0;
};

// Runs one command line. Can be called again and again.
Outcome run(std::vector<std::string> args);

int cliMain(int argc, char** argv);

}  // namespace synth::cli
