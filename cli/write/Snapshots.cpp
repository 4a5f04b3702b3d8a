#include "cli/write/Snapshots.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "base/AtomicFile.h"
#include "base/ReadFile.h"
#include "cli/Error.h"

namespace synth::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* historyFolder = ".quorel-history";
constexpr const char* extension = ".quorel";
constexpr size_t stampLength = 15;  // 20261009-120000

struct Place {
  fs::path folder;
  std::string stem;
};

Place placeOf(const std::string& path) {
  const fs::path p(path);
  return {p.parent_path() / historyFolder, p.stem().string()};
}

std::string localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
  return text;
}

bool digits(std::string_view s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](unsigned char c) { return std::isdigit(c); });
}

[[noreturn]] void cannotKeep(const std::string& path, const std::string& error) {
  throw CliError("write_failed", "Cannot keep a snapshot of " + path + ": " + error);
}

struct Snapshot {
  std::string stamp;
  long number = 1;  // the place among those of one second
  std::string path;
};

// "song-20261009-120000.quorel" or "song-20261009-120000-2.quorel": only names of exactly this form are
// snapshots of "song", so that those of "song-b" stay apart.
bool parse(const std::string& name, const std::string& stem, Snapshot& out) {
  const std::string prefix = stem + "-";
  const size_t tail = std::strlen(extension);
  if (name.size() < prefix.size() + stampLength + tail || name.compare(0, prefix.size(), prefix) != 0)
    return false;
  if (name.compare(name.size() - tail, tail, extension) != 0) return false;
  const std::string body = name.substr(prefix.size(), name.size() - prefix.size() - tail);
  const std::string stamp = body.substr(0, stampLength), rest = body.substr(stampLength);
  if (!digits(stamp.substr(0, 8)) || stamp[8] != '-' || !digits(stamp.substr(9))) return false;
  if (!rest.empty() && (rest[0] != '-' || !digits(rest.substr(1)) || rest.size() > 9)) return false;
  out.stamp = stamp;
  out.number = rest.empty() ? 1 : std::stol(rest.substr(1));
  return true;
}

}  // namespace

std::string keepSnapshot(const std::string& path) {
  const Place place = placeOf(path);
  std::error_code failed;
  fs::create_directories(place.folder, failed);
  if (failed)
    throw CliError("write_failed", "Cannot create " + place.folder.string() + ": " + failed.message());
  std::string bytes, error;
  if (readFile(path, size_t(1) << 40, bytes, error) != ReadResult::Ok) cannotKeep(path, error);
  const std::string base = place.stem + "-" + localTime();
  for (int n = 1;; n++) {
    const std::string number = n > 1 ? "-" + std::to_string(n) : "";
    const fs::path target = place.folder / (base + number + extension);
    if (fs::exists(target, failed)) continue;
    // Another command may take the name in the meantime: then the next number.
    AtomicFile file;
    bool taken = false;
    if (file.open(target.string(), error) && file.write(bytes.data(), bytes.size(), error) &&
        file.commitNew(taken, error))
      return target.string();
    if (!taken) cannotKeep(path, error);
  }
}

std::vector<std::string> snapshotsOf(const std::string& path) {
  const Place place = placeOf(path);
  std::vector<Snapshot> found;
  std::error_code failed;
  for (const auto& entry : fs::directory_iterator(place.folder, failed)) {
    Snapshot snapshot;
    if (!parse(entry.path().filename().string(), place.stem, snapshot)) continue;
    snapshot.path = entry.path().string();
    found.push_back(snapshot);
  }
  std::sort(found.begin(), found.end(), [](const Snapshot& a, const Snapshot& b) {
    return a.stamp != b.stamp ? a.stamp > b.stamp : a.number > b.number;
  });
  std::vector<std::string> paths;
  for (const Snapshot& s : found) paths.push_back(s.path);
  return paths;
}

}  // namespace synth::cli
