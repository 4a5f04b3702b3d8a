// Running another program with an argument vector, feeding its standard input or reading its output.
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

  // Starts it to be fed; its standard output and error go nowhere. False when it cannot be started.
  bool start(const std::vector<std::string>& arguments);
  // Starts it to be read: its input is empty, its standard error goes nowhere. False as above.
  bool startReading(const std::vector<std::string>& arguments);
  // Hands it bytes; false when it no longer takes them.
  bool feed(const void* data, std::size_t size);
  // Takes bytes of its output: fewer than `size` only at the end.
  std::size_t read(void* data, std::size_t size);
  // Closes what is open to it and waits; the exit status, or -1 when it ended otherwise.
  int finish();

 private:
  bool spawn(const std::vector<std::string>& arguments, int input, int output);

  int pid_ = -1, input_ = -1, output_ = -1;
};

}  // namespace synth
