// Running another program with an argument vector, and feeding its standard input.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace synth {

// Where a program stands on PATH; "" where it does not.
std::string programPath(const std::string& name);

class Process {
 public:
  Process() = default;
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  // Ends a program that still runs.
  ~Process();

  // Starts it; its standard output and error go nowhere. False when it cannot be started.
  bool start(const std::vector<std::string>& arguments);
  // Hands it bytes; false when it no longer takes them.
  bool feed(const void* data, std::size_t size);
  // Closes its input and waits; the exit status, or -1 when it ended otherwise.
  int finish();

 private:
  int pid_ = -1, input_ = -1;
};

}  // namespace synth
