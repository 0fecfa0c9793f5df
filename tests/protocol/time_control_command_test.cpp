// The time-control commands level, sd and time through the real binary.
#include <gtest/gtest.h>

#include <string>

#include "protocol/engine_process.h"

namespace {

const std::string prompt = "# Your move: ";

std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

TEST(TimeControlCommandTest, ValidSettingsAreSilent) {
  EngineRun run = runEngine(
      "level 40 5 0\nlevel 0 1:30 0\nlevel 40 0:30 1.5\nlevel 40 :30 0\nlevel 40 5: 0\n"
      "sd 0\nsd 12\ntime 6000\ntime 0\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup();
  for (int i = 0; i < 10; ++i) expected += prompt;
  EXPECT_EQ(run.output, expected);
}

TEST(TimeControlCommandTest, BadLevelAndDepthGiveOnlyTheLoopsErrorLine) {
  EngineRun run = runEngine("level 40 1:30:15 0\nsd -1\nlevel 40  0\nlevel 40 5 0\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt + commandError("level 40 1:30:15 0") + prompt +
                            commandError("sd -1") + prompt + commandError("level 40  0") + prompt + prompt);
}

TEST(TimeControlCommandTest, TimeBeyondTheSessionAndOddNumbersDoNotHurt) {
  EngineRun run = runEngine("time 99999999\ntime -5\ntime 99999999999999999999\ntime x\nlevel -3 -1:-7 -2\n"
                            "level 99999999999 99999999999:99999999999 99999999999\nsd 99999999999\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup();
  for (int i = 0; i < 8; ++i) expected += prompt;
  EXPECT_EQ(run.output, expected);
}

}  // namespace
