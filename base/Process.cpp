#include "base/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

extern char** environ;

namespace synth {

std::string programPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string rest = path ? path : "";
  while (!rest.empty()) {
    const std::size_t colon = rest.find(':');
    const std::string folder = rest.substr(0, colon);
    rest = colon == rest.npos ? "" : rest.substr(colon + 1);
    const std::string candidate = folder + "/" + name;
    if (!folder.empty() && ::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return "";
}

Process::~Process() {
  if (input_ >= 0) ::close(input_);
  if (pid_ < 0) return;
  ::kill(pid_, SIGTERM);
  ::waitpid(pid_, nullptr, 0);
}

bool Process::start(const std::vector<std::string>& arguments) {
  // A socket instead of a pipe: writing to a program that has ended must not raise a signal here.
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
  std::vector<char*> argv;
  for (const std::string& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = -1;
  const bool started = ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(ends[0]);
  if (!started) {
    ::close(ends[1]);
    return false;
  }
  pid_ = pid;
  input_ = ends[1];
  return true;
}

bool Process::feed(const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t n = ::send(input_, at, size, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    at += n;
    size -= std::size_t(n);
  }
  return true;
}

int Process::finish() {
  if (input_ >= 0) ::close(input_);
  input_ = -1;
  if (pid_ < 0) return -1;
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0)
    if (errno != EINTR) break;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace synth
