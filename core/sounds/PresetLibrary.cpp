#include "core/sounds/PresetLibrary.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <tuple>

#include "base/AtomicFile.h"
#include "base/Folders.h"
#include "base/ReadFile.h"
#include "core/sounds/Factory.h"

namespace synth::preset {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view extension = ".preset";
constexpr size_t largestFile = size_t(1) << 20;

std::string pathOf(const std::string& folder, const std::string& stem) {
  return (fs::path(folder) / (stem + std::string(extension))).string();
}

std::string stemOf(const std::string& file) { return fs::path(file).stem().string(); }

std::string taken(const std::string& name) { return "A Preset named " + name + " exists"; }

std::string cannotWrite(const std::string& file, const std::string& why) {
  // What the atomic writer says ends with the system's words, where it has any.
  const size_t colon = why.rfind(": ");
  return "Cannot write " + file + (colon == why.npos ? "" : why.substr(colon));
}

bool fails(std::string& error, std::string text) {
  error = std::move(text);
  return false;
}

bool occupied(const std::string& file) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(file, ignored));
}

}  // namespace

std::string PresetLibrary::defaultDirectory() { return supportFolder() + "/Presets"; }

bool PresetLibrary::reload(std::string& error) {
  entries_.clear();
  problems_.clear();
  std::error_code fault;
  if (!fs::exists(directory_, fault) && (!fault || fault == std::errc::no_such_file_or_directory))
    return true;
  std::vector<std::string> files;
  for (fs::directory_iterator it(directory_, fault), end; !fault && it != end; it.increment(fault))
    if (it->path().filename().string().ends_with(extension)) files.push_back(it->path().string());
  if (fault) return fails(error, "Cannot read " + directory_ + ": " + fault.message());
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) readEntry(file);
  return true;
}

void PresetLibrary::readEntry(const std::string& file) {
  std::error_code ignored;
  std::string text, error;
  if (!fs::is_regular_file(file, ignored) || readFile(file, largestFile, text, error) != ReadResult::Ok) {
    problems_.push_back(file + ": unreadable");
    return;
  }
  Entry entry{{}, file, stemOf(file), false};
  std::vector<std::string> warnings;
  if (!parse(text, entry.preset, warnings, error))
    problems_.push_back(file + ": " + error);
  else if (resolve(entry.preset.name))
    problems_.push_back(file + ": the name " + entry.preset.name + " is taken, skipped");
  else
    entries_.push_back(std::move(entry));
}

const Entry* PresetLibrary::find(std::string_view name) const {
  const std::string wanted = cleanName(name);
  for (const Entry& entry : entries_)
    if (entry.preset.name == wanted) return &entry;
  return nullptr;
}

const Preset* PresetLibrary::resolve(std::string_view name) const {
  if (const Preset* preset = findFactory(name)) return preset;
  const Entry* entry = find(name);
  return entry ? &entry->preset : nullptr;
}

std::vector<Entry> PresetLibrary::listing() const {
  std::vector<Entry> list = entries_;
  for (const Preset& preset : factory()) list.push_back({preset, "", preset::slug(preset.name), true});
  auto key = [](const Entry& e) {
    return std::tuple(e.preset.role, familyIndex(e.preset.role, e.preset.family), e.factory,
                      std::string_view(e.preset.name));
  };
  std::vector<size_t> order(list.size());
  for (size_t i = 0; i < order.size(); i++) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return key(list[a]) < key(list[b]); });
  std::vector<Entry> sorted;
  sorted.reserve(list.size());
  for (size_t i : order) sorted.push_back(std::move(list[i]));
  return sorted;
}

std::string PresetLibrary::freeSlug(std::string_view name) const {
  const std::string base = preset::slug(name);
  std::string stem = base;
  for (int n = 2; occupied(pathOf(directory_, stem)); n++) stem = base + "-" + std::to_string(n);
  return stem;
}

// What is decided from now on is decided on the folder as it stands, whoever else writes there.
bool PresetLibrary::hold(FolderLock& lock, std::string& error) {
  if (!lock.take(directory_))
    return fails(error,
                 "Cannot write " + directory_ + ": another command has been writing there for a while");
  return reload(error);
}

bool PresetLibrary::makeFolder(std::string& error) const {
  std::error_code fault;
  fs::create_directories(directory_, fault);
  return fault ? fails(error, "Cannot create " + directory_ + ": " + fault.message()) : true;
}

bool PresetLibrary::writeFile(const std::string& file, const Preset& preset, std::string& error) const {
  std::string why;
  return writeAtomically(file, write(preset), why) || fails(error, cannotWrite(file, why));
}

// Into a file that is there for nobody else, even if one comes to be in the meantime.
bool PresetLibrary::writeNew(const Preset& preset, std::string& file, std::string& error) const {
  const std::string text = write(preset);
  for (bool lost = true; lost;) {
    file = pathOf(directory_, freeSlug(preset.name));
    AtomicFile out;
    std::string why;
    if (!out.open(file, why) || !out.write(text.data(), text.size(), why) ||
        (!out.commitNew(lost, why) && !lost))
      return fails(error, cannotWrite(file, why));
  }
  return true;
}

bool PresetLibrary::save(const Preset& preset, bool replace, Entry& entry, std::string& error) {
  error.clear();
  Preset copy = preset;
  normalize(copy);
  if (copy.name.empty()) return fails(error, "A Preset needs a name");
  if (findFactory(copy.name)) return fails(error, copy.name + " is a factory Preset; choose another name");
  FolderLock lock;
  if (!makeFolder(error) || !hold(lock, error)) return false;
  const Entry* old = find(copy.name);
  if (old && !replace) return fails(error, taken(copy.name));
  std::string file = old ? old->file : "";
  if (!(old ? writeFile(file, copy, error) : writeNew(copy, file, error))) return false;
  if (!reload(error)) return false;
  const Entry* saved = find(copy.name);
  if (!saved) return fails(error, "The saved Preset did not read back");
  entry = *saved;
  return true;
}

bool PresetLibrary::rename(std::string_view from, std::string_view to, std::string& error) {
  error.clear();
  const std::string old = cleanName(from), name = cleanName(to);
  if (findFactory(old)) return fails(error, old + " is a factory Preset and cannot be renamed");
  FolderLock lock;
  if (!hold(lock, error)) return false;
  const Entry* entry = find(old);
  if (!entry) return fails(error, "No Preset named " + old);
  if (name.empty()) return fails(error, "A Preset needs a name");
  if (findFactory(name)) return fails(error, name + " is a factory Preset; choose another name");
  if (name != old && find(name)) return fails(error, taken(name));
  Preset renamed = entry->preset;
  renamed.name = name;
  // Written before the old file goes, so that one of the two is there at every moment.
  const std::string before = entry->file;
  if (preset::slug(name) == preset::slug(old)) {
    if (!writeFile(before, renamed, error)) return false;
  } else {
    std::string file;
    if (!writeNew(renamed, file, error)) return false;
    if (::unlink(before.c_str()) != 0 && errno != ENOENT) {
      const std::string why = std::strerror(errno);
      ::unlink(file.c_str());
      return fails(error, "Cannot delete " + before + ": " + why);
    }
  }
  return reload(error);
}

bool PresetLibrary::remove(std::string_view name, std::string& error) {
  error.clear();
  const std::string wanted = cleanName(name);
  if (findFactory(wanted)) return fails(error, wanted + " is a factory Preset and cannot be deleted");
  FolderLock lock;
  if (!hold(lock, error)) return false;
  const Entry* entry = find(wanted);
  if (!entry) return fails(error, "No Preset named " + wanted);
  if (::unlink(entry->file.c_str()) != 0 && errno != ENOENT)
    return fails(error, "Cannot delete " + entry->file + ": " + std::strerror(errno));
  entries_.erase(entries_.begin() + (entry - entries_.data()));
  return true;
}

}  // namespace synth::preset
