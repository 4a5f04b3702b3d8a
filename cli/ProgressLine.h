// Shows on standard error how far long work is, when someone watches it.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace synth::cli {

class ProgressLine {
 public:
  // `what` as "Rendering song.wav"; the work has that many parts of equal weight.
  explicit ProgressLine(std::string what, std::size_t parts = 1);
  // Wipes the line.
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // The share 0..1 that is done of a part. May be called from any thread.
  void show(std::size_t part, double share);

 private:
  std::string what_;
  bool watched_;
  std::mutex mutex_;
  std::vector<double> shares_;
  int last_ = -1;
};

}  // namespace synth::cli
