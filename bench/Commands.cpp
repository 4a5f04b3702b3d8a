// What an agent waits for: the start of a command.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace {

void runProgram(benchmark::State& state, const char* path, const char* argument) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  char* argv[] = {const_cast<char*>(path), const_cast<char*>(argument), nullptr};
  for (auto _ : state) {
    pid_t pid = 0;
    int status = 0;
    if (posix_spawn(&pid, path, &actions, nullptr, argv, environ) != 0 || waitpid(pid, &status, 0) < 0)
      state.SkipWithError("the program did not start");
  }
  posix_spawn_file_actions_destroy(&actions);
}

void ProcessEmpty(benchmark::State& state) { runProgram(state, QUOREL_EMPTY, nullptr); }
void ProcessVersion(benchmark::State& state) { runProgram(state, QUOREL_BINARY, "version"); }

BENCHMARK(ProcessEmpty)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ProcessVersion)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
