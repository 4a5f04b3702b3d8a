// Reading a whole file into memory, with a limit.
#pragma once

#include <cstddef>
#include <string>

namespace synth {

enum class ReadResult { Ok, CannotOpen, TooLarge, Failed };

// Reads `path` into `bytes`. More than `limit` bytes stop the reading with TooLarge. On CannotOpen and
// Failed `error` holds the system's text. Folders and other things that are no file fail.
ReadResult readFile(const std::string& path, std::size_t limit, std::string& bytes, std::string& error);

}  // namespace synth
