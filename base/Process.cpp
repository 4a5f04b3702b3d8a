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
namespace {

void closeEnd(int& descriptor) {
  if (descriptor >= 0) ::close(descriptor);
  descriptor = -1;
}

}  // namespace

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
  closeEnd(input_);
  closeEnd(output_);
  if (pid_ < 0) return;
  ::kill(pid_, SIGTERM);
  ::waitpid(pid_, nullptr, 0);
}

bool Process::start(const std::vector<std::string>& arguments) {
  // A socket instead of a pipe: writing to a program that has ended must not raise a signal here.
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return false;
  input_ = ends[1];
  const bool started = spawn(arguments, ends[0], -1);
  ::close(ends[0]);
  if (!started) closeEnd(input_);
  return started;
}

bool Process::startReading(const std::vector<std::string>& arguments) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return false;
  output_ = ends[0];
  const bool started = spawn(arguments, -1, ends[1]);
  ::close(ends[1]);
  if (!started) closeEnd(output_);
  return started;
}

// A descriptor below 0 stands for nothing to read, or nowhere to write.
bool Process::spawn(const std::vector<std::string>& arguments, int input, int output) {
  std::vector<char*> argv;
  for (const std::string& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  auto connect = [&](int descriptor, int to, int mode) {
    if (descriptor >= 0)
      ::posix_spawn_file_actions_adddup2(&actions, descriptor, to);
    else
      ::posix_spawn_file_actions_addopen(&actions, to, "/dev/null", mode, 0);
  };
  connect(input, STDIN_FILENO, O_RDONLY);
  connect(output, STDOUT_FILENO, O_WRONLY);
  connect(-1, STDERR_FILENO, O_WRONLY);
  pid_t pid = -1;
  const bool started = ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  if (started) pid_ = pid;
  return started;
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

std::size_t Process::read(void* data, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t n = ::read(output_, static_cast<char*>(data) + done, size - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += std::size_t(n);
  }
  return done;
}

int Process::finish() {
  closeEnd(input_);
  closeEnd(output_);
  if (pid_ < 0) return -1;
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0)
    if (errno != EINTR) break;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace synth
