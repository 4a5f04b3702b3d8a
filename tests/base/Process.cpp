// Reading what another program writes.
#include "base/Process.h"

#include <gtest/gtest.h>

namespace synth {
namespace {

TEST(Process, ReadsOutputToItsEnd) {
  Process process;
  ASSERT_TRUE(
      process.startReading({"/bin/sh", "-c", "cat; echo one; sleep 0.05; printf two; echo no >&2; exit 3"}));
  char text[64];
  const size_t got = process.read(text, sizeof text);
  EXPECT_EQ(std::string(text, got), "one\ntwo") << "the input is empty, errors are kept apart, pieces joined";
  EXPECT_EQ(process.read(text, sizeof text), 0u);
  EXPECT_EQ(process.finish(), 3);
}

TEST(Process, OneThatNeverEndsIsEnded) {
  Process process;
  ASSERT_TRUE(process.startReading({"/bin/sh", "-c", "while :; do echo again; done"}));
  char text[1000];
  EXPECT_EQ(process.read(text, sizeof text), sizeof text);
}

TEST(Process, WhatIsNoProgramDoesNotStart) {
  Process process;
  EXPECT_FALSE(process.startReading({"/nonexistent/program"}));
  EXPECT_EQ(process.finish(), -1);
}

}  // namespace
}  // namespace synth
