// Temporary files and folders: a signal that ends the process removes those that are in use.
#pragma once

#include <csignal>
#include <string>

namespace synth {

// One path in the list of what a signal removes; it leaves the list with the object.
class Scrap {
 public:
  enum Kind : unsigned char { File = 2, Folder };
  static constexpr int most = 16;  // that the list holds

  Scrap() = default;
  Scrap(const Scrap&) = delete;
  Scrap& operator=(const Scrap&) = delete;
  ~Scrap() { forget(); }

  // Nothing where the list is full: then a signal leaves the path behind.
  void enroll(const std::string& path, Kind kind);
  void forget();

 private:
  int place_ = -1;
};

// Holds the ending signals back while something exists that the list does not know yet.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

// From now on SIGINT, SIGTERM and SIGHUP remove what is listed before they end the process.
void removeTemporaryFilesOnSignals();

// A fresh folder that goes with all that is in it.
class TemporaryFolder {
 public:
  // Throws std::runtime_error where none can be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  Scrap scrap_;
};

}  // namespace synth
