// What breaks if a failed write harms the old file or leaves its scraps behind.
#include "base/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>
#include <vector>

#include "base/ReadFile.h"
#include "support/TempFolder.h"

namespace synth {
namespace {

using test::readAll;
using test::TempFolder;
using test::writeAll;

int entries(const TempFolder& folder) {
  int n = 0;
  for ([[maybe_unused]] auto& entry : std::filesystem::directory_iterator(folder.path())) n++;
  return n;
}

TEST(AtomicFile, ReplacesTheOldFileOnCommitAlone) {
  TempFolder folder;
  const std::string path = folder / "song";
  writeAll(path, "old");
  std::string error;
  AtomicFile file;
  ASSERT_TRUE(file.open(path, error));
  EXPECT_EQ(file.temporary().find(path + ".tmp."), 0u);
  ASSERT_TRUE(file.write("0000 tail", 9, error) && file.seek(0, error) && file.write("head", 4, error));
  EXPECT_EQ(readAll(path), "old");
  ASSERT_TRUE(file.commit(error)) << error;
  EXPECT_EQ(readAll(path), "head tail");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, LeavesNothingBehindWithoutCommit) {
  TempFolder folder;
  writeAll(folder / "song", "old");
  for (const char* name : {"song", "new"}) {
    std::string error;
    AtomicFile file;
    ASSERT_TRUE(file.open(folder / name, error) && file.write("new", 3, error));
    EXPECT_EQ(entries(folder), 2);
  }
  EXPECT_EQ(readAll(folder / "song"), "old");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, WordsItsFailures) {
  TempFolder folder;
  std::string error;
  EXPECT_FALSE(writeAtomically(folder / "missing/song", "x", error));
  EXPECT_EQ(error, "Cannot create temporary output: No such file or directory");
  EXPECT_FALSE(writeAtomically("", "x", error));
  EXPECT_EQ(error, "Invalid destination path");
  EXPECT_FALSE(writeAtomically(folder / std::string("a\0b", 3), "x", error));
  EXPECT_EQ(error, "Invalid destination path");
  std::filesystem::create_directory(folder / "folder");
  EXPECT_FALSE(writeAtomically(folder / "folder", "x", error));
  EXPECT_EQ(error, "Cannot replace destination: Is a directory");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, RemovesItsScrapsWhenTheRenameFails) {
  TempFolder folder;
  std::string error;
  {
    AtomicFile file;
    ASSERT_TRUE(file.open(folder / "song", error) && file.write("x", 1, error));
    std::filesystem::create_directory(folder / "song");
    EXPECT_FALSE(file.commit(error));
    EXPECT_EQ(error.find("Cannot replace destination: "), 0u) << error;
  }
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, NeverTakesATakenNameWithCommitNew) {
  TempFolder folder;
  std::string error;
  bool taken = false;
  for (const char* text : {"first", "second"}) {
    AtomicFile file;
    ASSERT_TRUE(file.open(folder / "song", error) && file.write(text, 5, error));
    EXPECT_EQ(file.commitNew(taken, error), std::string(text) == "first");
  }
  EXPECT_TRUE(taken);
  EXPECT_EQ(readAll(folder / "song"), "first");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, TakesTheUmaskAndKeepsAnOldMode) {
  TempFolder folder;
  const std::string path = folder / "song";
  std::string error;
  auto mode = [&] {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 0777;
  };
  const mode_t before = ::umask(027);
  ASSERT_TRUE(writeAtomically(path, "x", error));
  EXPECT_EQ(mode(), mode_t(0640));
  ::umask(before);
  ::chmod(path.c_str(), 0604);
  ASSERT_TRUE(writeAtomically(path, "y", error));
  EXPECT_EQ(mode(), mode_t(0604));
}

TEST(AtomicFile, WritesFromSeveralThreadsAtOnce) {
  TempFolder folder;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; t++)
    threads.emplace_back([&folder, t] {
      for (int i = 0; i < 20; i++) {
        std::string error;
        EXPECT_TRUE(writeAtomically(folder / std::to_string(t % 2), std::string(5000, char('0' + t)), error))
            << error;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(entries(folder), 2);
  for (const char* name : {"0", "1"}) {
    const std::string bytes = readAll(folder / name);
    EXPECT_EQ(bytes, std::string(5000, bytes[0]));
  }
}

TEST(AtomicFile, IsReadBackWholeAndUpToALimit) {
  TempFolder folder;
  std::string error, back;
  const std::string large(3000000, 'q'), path = folder / "large";
  ASSERT_TRUE(writeAtomically(path, large, error));
  EXPECT_EQ(readFile(path, large.size(), back, error), ReadResult::Ok);
  EXPECT_TRUE(back == large);
  EXPECT_EQ(readFile(path, large.size() - 1, back, error), ReadResult::TooLarge);
  EXPECT_EQ(readFile(folder / "none", 10, back, error), ReadResult::CannotOpen);
  EXPECT_EQ(error, "No such file or directory");
  EXPECT_NE(readFile(folder.path(), 10, back, error), ReadResult::Ok);
}

}  // namespace
}  // namespace synth
