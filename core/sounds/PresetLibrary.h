// The user's own Presets: a folder of .preset files, one sound each. Factory names are reserved; no call
// touches another Preset's file. Each that can fail answers false with `error`, and then nothing is lost.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/FolderLock.h"
#include "core/Preset.h"

namespace synth::preset {

struct Entry {
  Preset preset;
  std::string file;  // empty for a factory Preset
  std::string slug;  // the file's stem
  bool factory = false;
};

class PresetLibrary {
 public:
  explicit PresetLibrary(std::string directory) : directory_(std::move(directory)) {}
  // The folder in the user's home.
  static std::string defaultDirectory();

  const std::string& directory() const { return directory_; }
  const std::vector<Entry>& entries() const { return entries_; }
  // One line for each file that could not be used.
  const std::vector<std::string>& problems() const { return problems_; }

  // Reads the folder anew. A folder that does not exist is an empty library; false when it cannot be listed.
  bool reload(std::string& error);
  // The user's Preset of that name in any case, or null.
  const Entry* find(std::string_view name) const;
  // The factory's or the user's Preset of that name, or null.
  const Preset* resolve(std::string_view name) const;
  // All Presets, by Role, family, the user's first, and name.
  std::vector<Entry> listing() const;
  // The name's slug, or with "-2", "-3" ... the first one of which no file exists.
  std::string freeSlug(std::string_view name) const;

  // Replaces the file whole; the folder is made when it is missing.
  bool writeFile(const std::string& file, const Preset& preset, std::string& error) const;
  // Without `replace` an existing name is refused; with it the Preset's file is written anew.
  bool save(const Preset& preset, bool replace, Entry& entry, std::string& error);
  bool rename(std::string_view from, std::string_view to, std::string& error);
  bool remove(std::string_view name, std::string& error);

 private:
  void readEntry(const std::string& file);
  bool hold(FolderLock& lock, std::string& error);
  bool makeFolder(std::string& error) const;
  bool writeNew(const Preset& preset, std::string& file, std::string& error) const;

  std::string directory_;
  std::vector<Entry> entries_;
  std::vector<std::string> problems_;
};

}  // namespace synth::preset
