// The user's folder of Presets: what is found in it, and that nothing in it is ever lost.
#include "core/sounds/PresetLibrary.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>

#include "base/Text.h"
#include "core/sounds/Factory.h"
#include "support/Cli.h"
#include "support/TempFolder.h"

namespace synth::test {
namespace {

namespace fs = std::filesystem;
using namespace preset;

Preset sound(const std::string& name, f32 cutoff = 800, Role role = Role::Lead) {
  Preset p;
  p.name = name;
  p.role = role;
  p.values = {{"cutoff", -1, cutoff}};
  return p;
}

struct Folder {
  TempFolder temporary;
  std::string path = temporary / "deep/er";
  PresetLibrary library{path};
  std::string error;

  std::string file(const std::string& stem) const { return path + "/" + stem + ".preset"; }
  bool save(const Preset& p, bool replace = false) {
    Entry entry;
    return library.save(p, replace, entry, error);
  }
  std::string stems() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return text::joined(names, " ");
  }
};

TEST(PresetLibrary, StartsWithoutAFolder) {
  Folder f;
  EXPECT_TRUE(f.library.reload(f.error));
  EXPECT_EQ(f.library.listing().size(), factory().size());
  EXPECT_TRUE(f.library.problems().empty());
  EXPECT_FALSE(fs::exists(f.path));
  EXPECT_TRUE(PresetLibrary::defaultDirectory().ends_with("/Library/Application Support/Quorel/Presets"));
}

TEST(PresetLibrary, SavesAndFindsByName) {
  Folder f;
  Entry entry;
  ASSERT_TRUE(f.library.save(sound("My Lead"), false, entry, f.error)) << f.error;
  EXPECT_EQ(std::tuple(entry.file, entry.slug, entry.factory),
            std::tuple(f.file("my-lead"), "my-lead", false));
  EXPECT_EQ(readAll(entry.file), write(sound("MY LEAD")));
  EXPECT_FALSE(f.save(sound("my lead", 300)));
  EXPECT_EQ(f.error, "A Preset named MY LEAD exists");
  EXPECT_TRUE(f.save(sound("my lead", 300), true));
  ASSERT_TRUE(f.save(sound("My-Lead!")));
  ASSERT_TRUE(f.save(sound("My.Lead")));
  EXPECT_EQ(f.stems(), "my-lead-2.preset my-lead-3.preset my-lead.preset");
  EXPECT_EQ(f.library.find(" my lead")->preset.values[0].value, 300);
  EXPECT_EQ(f.library.resolve("foundation"), findFactory("FOUNDATION"));
  EXPECT_EQ(f.library.resolve("MY.LEAD")->name, "MY.LEAD");
  EXPECT_EQ(f.library.resolve("NOBODY"), nullptr);
}

// Two libraries on one folder, as two commands have them: each sees what the other has done in the meantime.
TEST(PresetLibrary, DecidesOnTheFolderAsItStands) {
  Folder f;
  PresetLibrary other(f.path);
  ASSERT_TRUE(other.reload(f.error) && f.save(sound("ONE", 500)));
  Entry entry;
  EXPECT_FALSE(other.save(sound("One"), false, entry, f.error));
  EXPECT_EQ(f.error, "A Preset named ONE exists");
  ASSERT_TRUE(f.library.rename("one", "two", f.error));
  EXPECT_FALSE(other.remove("one", f.error));
  EXPECT_FALSE(other.rename("one", "three", f.error));
  EXPECT_TRUE(other.remove("two", f.error)) << f.error;
  EXPECT_EQ(f.stems(), "");
}

TEST(PresetLibrary, RefusesInItsWordsAndTouchesNothing) {
  Folder f;
  ASSERT_TRUE(f.save(sound("ONE")) && f.save(sound("TWO")));
  const auto before = contentsOf(f.path);
  auto refused = [&](bool ok, const char* words) {
    EXPECT_FALSE(ok) << words;
    EXPECT_EQ(f.error, words);
    EXPECT_EQ(contentsOf(f.path), before);
  };
  refused(f.save(sound("")), "A Preset needs a name");
  refused(f.save(sound("Foundation"), true), "FOUNDATION is a factory Preset; choose another name");
  refused(f.library.rename("foundation", "X", f.error),
          "FOUNDATION is a factory Preset and cannot be renamed");
  refused(f.library.rename("three", "X", f.error), "No Preset named THREE");
  refused(f.library.rename("one", " ", f.error), "A Preset needs a name");
  refused(f.library.rename("one", "glass", f.error), "GLASS is a factory Preset; choose another name");
  refused(f.library.rename("one", "two", f.error), "A Preset named TWO exists");
  refused(f.library.remove("glass", f.error), "GLASS is a factory Preset and cannot be deleted");
  refused(f.library.remove("three", f.error), "No Preset named THREE");
  // A folder in the way of the library, or of its parent.
  PresetLibrary blocked(f.file("one") + "/sub");
  Entry entry;
  refused(blocked.save(sound("X"), false, entry, f.error),
          ("Cannot create " + f.file("one") + "/sub: Not a directory").c_str());
  PresetLibrary file(f.file("one"));
  EXPECT_FALSE(file.reload(f.error));
  EXPECT_EQ(f.error, "Cannot read " + f.file("one") + ": Not a directory");
}

TEST(PresetLibrary, RenamesAndRemoves) {
  Folder f;
  ASSERT_TRUE(f.save(sound("ONE", 500)) && f.save(sound("TWO")));
  ASSERT_TRUE(f.library.rename("one", "Our Two", f.error)) << f.error;
  EXPECT_EQ(f.library.find("OUR TWO")->preset.values[0].value, 500);
  EXPECT_EQ(f.library.find("ONE"), nullptr);
  ASSERT_TRUE(f.library.rename("our two", "OUR-TWO", f.error));
  EXPECT_EQ(f.stems(), "our-two.preset two.preset");
  ASSERT_TRUE(f.library.rename("OUR-TWO", "TWO!", f.error));
  EXPECT_EQ(f.stems(), "two-2.preset two.preset");
  ASSERT_TRUE(f.library.rename("TWO!", "two!", f.error));
  EXPECT_EQ(f.stems(), "two-2.preset two.preset");
  ASSERT_TRUE(f.library.remove("two", f.error));
  EXPECT_EQ(f.library.find("TWO"), nullptr);
  EXPECT_EQ(f.stems(), "two-2.preset");
}

TEST(PresetLibrary, TellsOfFilesThatItCannotUse) {
  Folder f;
  ASSERT_TRUE(f.save(sound("GOOD")));
  writeAll(f.file("a"), write(sound("GLASS")));
  writeAll(f.file("b"), "name = B");
  writeAll(f.file("hood"), write(sound("good")));
  writeAll(f.file("soft"), "name = SOFT\nengine = FM\ncutof = 1");
  writeAll(f.path + "/good.preset.tmp.x1", "torn");
  fs::create_directory(f.file("folder"));
  ASSERT_EQ(::mkfifo(f.file("pipe").c_str(), 0600), 0);
  ASSERT_TRUE(f.library.reload(f.error));
  EXPECT_EQ(text::joined(f.library.problems(), "\n"),
            f.file("a") + ": the name GLASS is taken, skipped\n" + f.file("b") +
                ": A Preset needs an engine (ANALOG … SAMPLER, or DRUMS)\n" + f.file("folder") +
                ": unreadable\n" + f.file("hood") + ": the name GOOD is taken, skipped\n" + f.file("pipe") +
                ": unreadable");
  EXPECT_EQ(f.library.entries().size(), 2u);
}

TEST(PresetLibrary, ListsByRoleFamilyOwnerAndName) {
  Folder f;
  Preset bass = sound("ZZ", 1, Role::Bass), sub = sound("YY", 1, Role::Bass);
  sub.family = "SUB";
  ASSERT_TRUE(f.save(bass) && f.save(sub) && f.save(sound("FX", 1, Role::Fx)));
  const std::vector<Entry> list = f.library.listing();
  ASSERT_EQ(list.size(), factory().size() + 3);
  EXPECT_EQ(std::tuple(list[0].preset.name, list[1].preset.name), std::tuple("ZZ", "YY"));
  for (size_t i = 1; i < list.size(); i++) {
    auto key = [](const Entry& e) {
      return std::tuple(int(e.preset.role), familyIndex(e.preset.role, e.preset.family), e.factory,
                        e.preset.name);
    };
    EXPECT_LT(key(list[i - 1]), key(list[i]));
    if (list[i].factory) {
      EXPECT_EQ(std::tuple(list[i].file, list[i].slug), std::tuple("", slug(list[i].preset.name)));
    }
  }
}

// As on a full disk: no file of this process may grow.
class NoRoom {
 public:
  NoRoom() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit none{0, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
  }
  ~NoRoom() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST(PresetLibrary, KeepsTheOldFileWhenTheNewOneCannotBeWritten) {
  Folder f;
  ASSERT_TRUE(f.save(sound("ONE")));
  const auto before = contentsOf(f.path);
  {
    const NoRoom full;
    EXPECT_FALSE(f.save(sound("ONE", 99), true));
    EXPECT_EQ(f.error, "Cannot write " + f.file("one"));
    EXPECT_FALSE(f.save(sound("NEW")));
    EXPECT_FALSE(f.library.rename("ONE", "OTHER", f.error));
    EXPECT_EQ(f.error, "Cannot write " + f.file("other"));
  }
  EXPECT_EQ(contentsOf(f.path), before);
  EXPECT_NE(f.library.find("ONE"), nullptr);
}

}  // namespace
}  // namespace synth::test
