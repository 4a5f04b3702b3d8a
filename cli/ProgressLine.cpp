#include "cli/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace synth::cli {

ProgressLine::ProgressLine(std::string what, std::size_t parts)
    : what_(std::move(what)), watched_(::isatty(STDERR_FILENO) != 0), shares_(parts) {}

ProgressLine::~ProgressLine() {
  if (last_ >= 0) std::fprintf(stderr, "\r\033[K");
}

void ProgressLine::show(std::size_t part, double share) {
  if (!watched_) return;
  const std::lock_guard lock(mutex_);
  shares_[part] = share;
  double sum = 0;
  for (double s : shares_) sum += s;
  const int percent = int(100 * sum / double(shares_.size()));
  if (percent == last_) return;
  last_ = percent;
  std::fprintf(stderr, "\r%s %3d %%", what_.c_str(), percent);
  std::fflush(stderr);
}

}  // namespace synth::cli
