#include "base/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace synth {

void runAll(const std::vector<std::function<void()>>& tasks, std::size_t most) {
  std::atomic<std::size_t> next{0};
  std::mutex mutex;
  std::exception_ptr fault;
  auto work = [&] {
    for (std::size_t i = next++; i < tasks.size(); i = next++) {
      try {
        tasks[i]();
      } catch (...) {
        const std::lock_guard lock(mutex);
        if (!fault) fault = std::current_exception();
        next = tasks.size();
      }
    }
  };
  const std::size_t processors = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t count = std::min({tasks.size(), processors, most});
  std::vector<std::thread> helpers;
  try {
    for (std::size_t i = 1; i < count; i++) helpers.emplace_back(work);
  } catch (const std::system_error&) {
    // Without more threads this one does all.
  }
  work();
  for (std::thread& helper : helpers) helper.join();
  if (fault) std::rethrow_exception(fault);
}

}  // namespace synth
