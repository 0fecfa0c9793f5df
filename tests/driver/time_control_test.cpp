#include "search/time_control.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <sstream>
#include <string>
#include <thread>

namespace {

// The four lines of an allocation, with the values of the third line as the engine prints them.
std::string allocationLines(const std::string& session, const std::string& position, const std::string& figures,
                            int maxTime) {
  return "# " + session + "\n# " + position + "\n# " + figures + " max=" + std::to_string(maxTime) +
         "\n# set maxTime = " + std::to_string(maxTime) + "\n";
}

TEST(TimeControlTest, DefaultsAreFortyMovesInFiveMinutesTimedAndStopped) {
  TimeControl tc;
  EXPECT_FALSE(tc.clockRunning);
  EXPECT_EQ(tc.elapsed, 0u);
  EXPECT_EQ(tc.clockStart, 0u);
  EXPECT_EQ(tc.elapsedAtMoveStart, 0u);
  EXPECT_EQ(tc.maxTime, 0u);
  EXPECT_EQ(tc.movesPerSession, 40u);
  EXPECT_EQ(tc.timePerSession, 30000u);
  EXPECT_EQ(tc.increment, 0u);
  EXPECT_TRUE(tc.timed);
  EXPECT_FALSE(tc.depthLimited);
  EXPECT_EQ(tc.maxDepth, 0u);
  EXPECT_EQ(tc.currentElapsed(), 0u);
}

TEST(TimeControlTest, LevelReadsMinutesSecondsAndWholeSecondIncrements) {
  TimeControl tc;
  EXPECT_TRUE(tc.setLevel("40", "5:30", "0"));
  EXPECT_EQ(tc.movesPerSession, 40u);
  EXPECT_EQ(tc.timePerSession, 33000u);
  EXPECT_EQ(tc.increment, 0u);

  EXPECT_TRUE(tc.setLevel("0", "1:30", "0"));
  EXPECT_EQ(tc.movesPerSession, 0u);
  EXPECT_EQ(tc.timePerSession, 9000u);

  EXPECT_TRUE(tc.setLevel("0", "5", "3"));
  EXPECT_EQ(tc.timePerSession, 30000u);
  EXPECT_EQ(tc.increment, 300u);

  // A fractional increment loses its fraction.
  EXPECT_TRUE(tc.setLevel("40", "0:30", "1.5"));
  EXPECT_EQ(tc.timePerSession, 3000u);
  EXPECT_EQ(tc.increment, 100u);

  // Empty pieces read as zero.
  EXPECT_TRUE(tc.setLevel("20", ":45", "0"));
  EXPECT_EQ(tc.movesPerSession, 20u);
  EXPECT_EQ(tc.timePerSession, 4500u);
  EXPECT_TRUE(tc.setLevel("30", "2:", "0"));
  EXPECT_EQ(tc.movesPerSession, 30u);
  EXPECT_EQ(tc.timePerSession, 12000u);

  // Level leaves the clock alone.
  tc.elapsed = 1234;
  EXPECT_TRUE(tc.setLevel("40", "5", "0"));
  EXPECT_EQ(tc.elapsed, 1234u);
}

TEST(TimeControlTest, LevelWithHoursOrNoTimeFailsAndKeepsTheOldValues) {
  TimeControl tc;
  ASSERT_TRUE(tc.setLevel("30", "2", "1"));
  EXPECT_FALSE(tc.setLevel("40", "1:30:15", "0"));
  EXPECT_FALSE(tc.setLevel("40", "", "0"));
  EXPECT_FALSE(tc.setLevel("40", ":::", "0"));
  EXPECT_EQ(tc.movesPerSession, 30u);
  EXPECT_EQ(tc.timePerSession, 12000u);
  EXPECT_EQ(tc.increment, 100u);
}

TEST(TimeControlTest, SdLimitsDepthButNotTime) {
  TimeControl tc;
  EXPECT_FALSE(tc.setDepth("-1"));
  EXPECT_FALSE(tc.depthLimited);
  EXPECT_EQ(tc.maxDepth, 0u);

  EXPECT_TRUE(tc.setDepth("0"));
  EXPECT_TRUE(tc.depthLimited);
  EXPECT_EQ(tc.maxDepth, 0u);

  EXPECT_TRUE(tc.setDepth("12"));
  EXPECT_EQ(tc.maxDepth, 12u);
  EXPECT_TRUE(tc.timed);

  EXPECT_FALSE(tc.setDepth("-5"));
  EXPECT_TRUE(tc.depthLimited);
  EXPECT_EQ(tc.maxDepth, 12u);
}

TEST(TimeControlTest, NewGameClearsClockAndTimeControl) {
  TimeControl tc;
  tc.setLevel("0", "1", "5");
  tc.setDepth("9");
  tc.startClockAt(100);
  tc.elapsed = 5000;
  tc.resetForNewGame(false);
  EXPECT_FALSE(tc.clockRunning);
  EXPECT_EQ(tc.elapsed, 0u);  // what ran isn't added
  EXPECT_EQ(tc.currentElapsed(), 0u);
  EXPECT_EQ(tc.movesPerSession, 40u);
  EXPECT_EQ(tc.timePerSession, 30000u);
  EXPECT_EQ(tc.increment, 0u);
  EXPECT_TRUE(tc.timed);
  EXPECT_FALSE(tc.depthLimited);

  tc.resetForNewGame(true);
  EXPECT_FALSE(tc.timed);
  EXPECT_FALSE(tc.depthLimited);
}

TEST(TimeControlTest, TimeTurnsTheHostsRemainingTimeIntoElapsed) {
  TimeControl tc;
  tc.setRemaining(0, "6000");
  EXPECT_EQ(tc.elapsed, 24000u);

  // Second session at ply 80: two sessions' time plus the increments.
  tc.setLevel("40", "5", "2");
  tc.setRemaining(80, "10000");
  EXPECT_EQ(tc.elapsed, 41u * 200u + 2u * 30000u - 10000u);

  // Both colours of one move pair see the same move number.
  TimeControl other = tc;
  other.setRemaining(81, "10000");
  EXPECT_EQ(other.elapsed, tc.elapsed);

  // More than the whole session wraps; the allocation still sees the host's figure.
  TimeControl wide;
  wide.setRemaining(0, "99999999");
  EXPECT_EQ(int32_t(wide.elapsed), 30000 - 99999999);
  std::ostringstream out;
  wide.allocateTimeFrom(0, wide.elapsed, out);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=0 fullMoveNumber=1 remainingMoves=40 nSessions=1",
                                       "total=30000 elapsed=-99969999 remaining=99999999 available=99999999",
                                       2249999));
}

TEST(TimeControlTest, AllocationAtTheStartOfTheGame) {
  TimeControl tc;
  std::ostringstream out;
  tc.allocateTimeFrom(0, 0, out);
  EXPECT_EQ(tc.maxTime, 675u);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=0 fullMoveNumber=1 remainingMoves=40 nSessions=1",
                                       "total=30000 elapsed=0 remaining=30000 available=30000", 675));

  TimeControl sudden;
  ASSERT_TRUE(sudden.setLevel("0", "5", "3"));
  out.str("");
  sudden.allocateTimeFrom(0, 0, out);
  EXPECT_EQ(sudden.maxTime, 1113u);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=0 timePerSession=30000 increment=300",
                                       "ply=0 fullMoveNumber=1 remainingMoves=32 nSessions=1",
                                       "total=30300 elapsed=0 remaining=30300 available=39600", 1113));

  // After `time 6000` the allocation works from the host's 6000.
  tc.setRemaining(0, "6000");
  out.str("");
  tc.allocateTimeFrom(0, tc.currentElapsed(), out);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=0 fullMoveNumber=1 remainingMoves=40 nSessions=1",
                                       "total=30000 elapsed=24000 remaining=6000 available=6000", 135));
}

TEST(TimeControlTest, AllocationAtSessionBoundaries) {
  TimeControl tc;
  ASSERT_TRUE(tc.setLevel("40", "5", "0"));
  std::ostringstream out;

  // Move 40: the last move of the session gets all that is left.
  tc.allocateTimeFrom(78, 29000, out);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=78 fullMoveNumber=40 remainingMoves=1 nSessions=1",
                                       "total=30000 elapsed=29000 remaining=1000 available=1000", 900));
  EXPECT_EQ(tc.maxTime, 900u);

  // Move 41: the next session's time has arrived.
  out.str("");
  tc.allocateTimeFrom(80, 29000, out);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=80 fullMoveNumber=41 remainingMoves=40 nSessions=2",
                                       "total=60000 elapsed=29000 remaining=31000 available=31000", 697));

  // Increments: those of the moves still to come count as available.
  ASSERT_TRUE(tc.setLevel("40", "5", "2"));
  out.str("");
  tc.allocateTimeFrom(11, 5000, out);
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=200",
                                       "ply=11 fullMoveNumber=6 remainingMoves=35 nSessions=1",
                                       "total=31200 elapsed=5000 remaining=26200 available=33000", 848));
}

TEST(TimeControlTest, AllocationWithTheTimeUsedUpIsNegativeAndTruncatedTowardZero) {
  TimeControl tc;
  std::ostringstream out;
  tc.allocateTimeFrom(0, 31000, out);
  EXPECT_EQ(int32_t(tc.maxTime), -22);  // -1000 * 0.9 / 40 = -22.5
  EXPECT_EQ(out.str(), allocationLines("movesPerSession=40 timePerSession=30000 increment=0",
                                       "ply=0 fullMoveNumber=1 remainingMoves=40 nSessions=1",
                                       "total=30000 elapsed=31000 remaining=-1000 available=-1000", -22));
}

TEST(TimeControlTest, AllocationReadsTheRunningClock) {
  TimeControl tc;
  tc.elapsed = 6000;
  std::ostringstream out;
  tc.allocateTime(0, out);  // clock stopped: the reading is elapsed itself
  EXPECT_NE(out.str().find(" elapsed=6000 remaining=24000 "), std::string::npos) << out.str();
  EXPECT_EQ(tc.maxTime, 540u);
}

TEST(TimeControlTest, OutOfBookCorrectionSkipsTheLastMovesOfASession) {
  TimeControl tc;
  std::ostringstream out;

  // Ten moves to go in the session: corrected.
  tc.maxTime = 675;
  tc.correctOutOfBook(60, out);
  EXPECT_EQ(tc.maxTime, 1012u);
  EXPECT_EQ(out.str(), "# out of book: corrected maxTime = 1012\n");

  // Five to go: left alone, silently.
  out.str("");
  tc.maxTime = 675;
  tc.correctOutOfBook(70, out);
  EXPECT_EQ(tc.maxTime, 675u);
  EXPECT_EQ(out.str(), "");

  // One session for the whole game: always corrected, negative budgets too.
  ASSERT_TRUE(tc.setLevel("0", "5", "0"));
  tc.maxTime = uint32_t(-22);
  tc.correctOutOfBook(300, out);
  EXPECT_EQ(int32_t(tc.maxTime), -33);
  EXPECT_EQ(out.str(), "# out of book: corrected maxTime = -33\n");
}

TEST(TimeControlTest, IsTimeUpLooksAtTheClockEvery4096Nodes) {
  TimeControl tc;
  tc.elapsedAtMoveStart = 500;
  tc.elapsed = 1000;
  tc.maxTime = 500;
  std::ostringstream out;

  EXPECT_FALSE(tc.isTimeUp(1, 4097, out));
  EXPECT_FALSE(tc.isTimeUp(4, 4096 * 3 + 1, out));
  EXPECT_EQ(out.str(), "");
  EXPECT_TRUE(tc.isTimeUp(1, 8192, out));
  EXPECT_EQ(out.str(), "# timeout\n");
  EXPECT_TRUE(tc.isTimeUp(2, 0, out));
  // Without thread objects the node rule doesn't apply.
  out.str("");
  EXPECT_TRUE(tc.isTimeUp(0, 4097, out));
  EXPECT_EQ(out.str(), "# timeout\n");

  // Just within the budget.
  out.str("");
  tc.maxTime = 501;
  EXPECT_FALSE(tc.isTimeUp(1, 4096, out));
  EXPECT_EQ(out.str(), "");

  // Analyze mode has no time limit.
  tc.maxTime = 0;
  tc.timed = false;
  EXPECT_FALSE(tc.isTimeUp(1, 4096, out));
  EXPECT_EQ(out.str(), "");
}

TEST(TimeControlTest, IsTimeUpComparesSigned) {
  TimeControl tc;
  std::ostringstream out;

  // A `time` during the search moved the clock back: no time used yet.
  tc.elapsedAtMoveStart = 1000;
  tc.elapsed = 500;
  tc.maxTime = 100;
  EXPECT_FALSE(tc.isTimeUp(1, 4096, out));

  // A negative budget is exhausted at once.
  tc.elapsedAtMoveStart = 1000;
  tc.elapsed = 1000;
  tc.maxTime = uint32_t(-10);
  EXPECT_TRUE(tc.isTimeUp(1, 4096, out));

  // Differences across the 32-bit wrap still count forward.
  tc.elapsedAtMoveStart = 0xFFFFFF00u;
  tc.elapsed = 0x100u;
  tc.maxTime = 500;
  EXPECT_TRUE(tc.isTimeUp(1, 4096, out));
  tc.maxTime = 513;
  EXPECT_FALSE(tc.isTimeUp(1, 4096, out));
}

TEST(TimeControlTest, ClockStartsStopsAndRunsOnAcrossThinks) {
  TimeControl tc;
  tc.elapsed = 300;
  tc.startClockAt(1000);
  EXPECT_TRUE(tc.clockRunning);
  EXPECT_EQ(tc.clockStart, 1000u);
  EXPECT_EQ(tc.elapsedAtMoveStart, 300u);
  EXPECT_EQ(tc.currentElapsedAt(1250), 550u);
  EXPECT_EQ(tc.elapsed, 300u);

  // A think that begins while the clock runs notes the reading and lets it run on.
  tc.startClockAt(1400);
  EXPECT_TRUE(tc.clockRunning);
  EXPECT_EQ(tc.clockStart, 1000u);
  EXPECT_EQ(tc.elapsedAtMoveStart, 700u);

  tc.stopClockAt(1500);
  EXPECT_FALSE(tc.clockRunning);
  EXPECT_EQ(tc.elapsed, 800u);
  EXPECT_EQ(tc.currentElapsedAt(99999), 800u);
  tc.stopClockAt(2000);  // stopping a stopped clock adds nothing
  EXPECT_EQ(tc.elapsed, 800u);

  // Between thinks elapsed stands still.
  tc.startClockAt(5000);
  EXPECT_EQ(tc.elapsedAtMoveStart, 800u);
  tc.stopClockAt(5100);
  EXPECT_EQ(tc.elapsed, 900u);

  // Stamps wrap at 32 bits; only their difference counts.
  tc.startClockAt(0xFFFFFFF0u);
  EXPECT_EQ(tc.currentElapsedAt(0x10u), 932u);
  tc.stopClockAt(0x10u);
  EXPECT_EQ(tc.elapsed, 932u);
}

TEST(TimeControlTest, TheRealClockCountsCentiseconds) {
  uint32_t expected = uint32_t(std::time(nullptr)) * 100u;
  uint32_t stamp = TimeControl::timeStamp();
  EXPECT_LT(uint32_t(stamp - expected), 200u);

  TimeControl tc;
  tc.elapsed = 1000;
  tc.startClock();
  EXPECT_TRUE(tc.clockRunning);
  EXPECT_EQ(tc.elapsedAtMoveStart, 1000u);
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  uint32_t reading = tc.currentElapsed();
  EXPECT_GE(reading, 1005u);
  EXPECT_LT(reading, 1000u + 500u);
  tc.stopClock();
  EXPECT_FALSE(tc.clockRunning);
  EXPECT_GE(tc.elapsed, reading);
  EXPECT_LT(tc.elapsed, 1000u + 500u);
  EXPECT_EQ(tc.currentElapsed(), tc.elapsed);
}

}  // namespace
