#include "base/FolderLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/TempFolder.h"

namespace synth::test {
namespace {

TEST(FolderLock, IsHeldByOneAtATime) {
  TempFolder folder;
  FolderLock first, second;
  ASSERT_TRUE(first.take(folder.path()));
  EXPECT_FALSE(second.take(folder.path(), 0.02));
  std::thread releasing([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    first.release();
  });
  EXPECT_TRUE(second.take(folder.path())) << "it waits";
  releasing.join();
  EXPECT_FALSE(first.take(folder.path(), 0));
  first = std::move(second);
  EXPECT_FALSE(second.take(folder.path(), 0)) << "it has moved, not gone";
  EXPECT_TRUE(second.take(folder / "none", 0)) << "where nothing is nobody is waited for";
}

}  // namespace
}  // namespace synth::test
