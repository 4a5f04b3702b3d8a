#include "base/Scraps.h"

#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace synth {
namespace {

namespace fs = std::filesystem;

// Paths at fixed places, since a signal's handler may not allocate.
struct Registry {
  static constexpr int places = Scrap::most;
  enum State : unsigned char { Free, Claimed };  // then the kinds of scraps
  std::atomic<unsigned char> states[places]{};
  char paths[places][PATH_MAX]{};
};
Registry registry;

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void removeAndEnd(int signal) {
  for (int i = 0; i < Registry::places; i++)
    if (registry.states[i].load() == Scrap::File) ::unlink(registry.paths[i]);
  // Empty by now.
  for (int i = 0; i < Registry::places; i++)
    if (registry.states[i].load() == Scrap::Folder) ::rmdir(registry.paths[i]);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void Scrap::enroll(const std::string& path, Kind kind) {
  if (path.size() >= PATH_MAX) return;
  for (int i = 0; i < Registry::places; i++) {
    unsigned char free = Registry::Free;
    if (!registry.states[i].compare_exchange_strong(free, Registry::Claimed)) continue;
    std::memcpy(registry.paths[i], path.c_str(), path.size() + 1);
    registry.states[i].store(kind);
    place_ = i;
    return;
  }
}

void Scrap::forget() {
  if (place_ >= 0) registry.states[place_].store(Registry::Free);
  place_ = -1;
}

SignalsHeld::SignalsHeld() {
  sigset_t held;
  sigemptyset(&held);
  for (int signal : endingSignals) sigaddset(&held, signal);
  pthread_sigmask(SIG_BLOCK, &held, &before_);
}
SignalsHeld::~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

void removeTemporaryFilesOnSignals() {
  // A signal that the caller has us ignore, as nohup does, stays ignored.
  for (int signal : endingSignals)
    if (std::signal(signal, removeAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
}

TemporaryFolder::TemporaryFolder() {
  std::error_code none;
  fs::path base = fs::temp_directory_path(none);
  if (base.empty()) base = "/tmp";
  path_ = (base / "synth-cli.XXXXXX").string();
  const SignalsHeld held;
  if (!::mkdtemp(path_.data()))
    throw std::runtime_error("Cannot create a temporary folder in " + base.string());
  scrap_.enroll(path_, Scrap::Folder);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code none;
  fs::remove_all(path_, none);
}

}  // namespace synth
