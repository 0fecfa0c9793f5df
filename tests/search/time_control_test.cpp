#include "search/time_control.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <sstream>
#include <thread>

namespace {

TEST(TimeControl, LevelAndSd) {
  const struct { const char *moves, *time, *increment; bool ok; uint32_t movesPerSession, timePerSession, cs; } cases[] = {
      {"40", "5:30", "0", true, 40, 33000, 0},   {"0", "1:30", "0", true, 0, 9000, 0},
      {"0", "5", "3", true, 0, 30000, 300},      {"40", "0:30", "1.5", true, 40, 3000, 100},  // whole seconds
      {"20", ":45", "0", true, 20, 4500, 0},     {"30", "2:", "0", true, 30, 12000, 0},
      // Hours or no time: refused, the old values stay.
      {"40", "1:30:15", "0", false, 7, 6000, 200}, {"40", "", "0", false, 7, 6000, 200},
      {"40", ":::", "0", false, 7, 6000, 200},
  };
  for (const auto& c : cases) {
    TimeControl tc;
    ASSERT_TRUE(tc.setLevel("7", "1", "2"));
    tc.elapsed = 1234;
    EXPECT_EQ(tc.setLevel(c.moves, c.time, c.increment), c.ok) << c.time;
    EXPECT_TRUE(tc.movesPerSession == c.movesPerSession && tc.timePerSession == c.timePerSession &&
                tc.increment == c.cs && tc.elapsed == 1234u) << c.time;  // level leaves the clock alone
  }
  // sd limits the depth, not the time; a refused one keeps the last. A new game
  // brings back 40 moves in 5 minutes, timed unless analyzing, the clock at 0.
  TimeControl tc;
  EXPECT_TRUE(!tc.setDepth("-1") && !tc.depthLimited && tc.setDepth("0") && tc.depthLimited && tc.maxDepth == 0u);
  EXPECT_TRUE(tc.setDepth("12") && !tc.setDepth("-5") && tc.depthLimited && tc.maxDepth == 12u && tc.timed);
  tc.setLevel("0", "1", "5");
  tc.startClockAt(100);
  tc.elapsed = 5000;
  tc.resetForNewGame(false);
  EXPECT_TRUE(!tc.clockRunning && tc.elapsed == 0u && tc.currentElapsed() == 0u && tc.timed && !tc.depthLimited);
  EXPECT_TRUE(tc.movesPerSession == 40u && tc.timePerSession == 30000u && tc.increment == 0u);
  tc.resetForNewGame(true);
  EXPECT_FALSE(tc.timed);
}

// The host's `time` becomes elapsed; the allocation prints its figures and
// grants 90% of what is available spread over the moves to come.
TEST(TimeControl, Allocation) {
  // `remaining` as `time` gives it; nullptr: `used` stands. Out of book the
  // budget grows by half, except in the last moves of a session.
  const struct {
    const char *moves, *increment;  // five minutes a session
    uint32_t ply;
    const char* remaining;
    uint32_t used;
    int remainingMoves, sessions;
    const char* figures;  // total, elapsed, remaining, available
    int32_t maxTime, outOfBook;
  } cases[] = {
      {"40", "0", 0, nullptr, 0, 40, 1, "30000 0 30000 30000", 675, 1012},
      {"0", "3", 0, nullptr, 0, 32, 1, "30300 0 30300 39600", 1113, 1669},
      {"40", "0", 0, "6000", 0, 40, 1, "30000 24000 6000 6000", 135, 202},
      // The last move of a session gets all that is left; the next brings new time.
      // Out of book, ten moves to go are corrected, nine are not.
      {"40", "0", 60, nullptr, 20000, 10, 1, "30000 20000 10000 10000", 900, 1350},
      {"40", "0", 62, nullptr, 20000, 9, 1, "30000 20000 10000 10000", 1000, 1000},
      {"40", "0", 78, nullptr, 29000, 1, 1, "30000 29000 1000 1000", 900, 900},
      {"40", "0", 80, nullptr, 29000, 40, 2, "60000 29000 31000 31000", 697, 1045},
      // Both colours of a move pair see the same move number.
      {"40", "2", 80, "10000", 0, 40, 2, "68200 58200 10000 17800", 400, 600},
      {"40", "2", 81, "10000", 0, 40, 2, "68200 58200 10000 17800", 400, 600},
      {"40", "2", 11, nullptr, 5000, 35, 1, "31200 5000 26200 33000", 848, 1272},
      // Used up: negative, truncated toward zero; more than the session wraps.
      {"40", "0", 0, nullptr, 31000, 40, 1, "30000 31000 -1000 -1000", -22, -33},
      {"40", "0", 0, "99999999", 0, 40, 1, "30000 -99969999 99999999 99999999", 2249999, 3374998},
  };
  for (const auto& c : cases) {
    TimeControl tc;
    ASSERT_TRUE(tc.setLevel(c.moves, "5", c.increment));
    tc.elapsed = c.used;
    if (c.remaining) tc.setRemaining(c.ply, c.remaining);
    std::ostringstream out;
    tc.allocateTime(c.ply, out);
    std::istringstream figures(c.figures);
    std::string shown, value;
    for (const char* label : {"total=", " elapsed=", " remaining=", " available="}) shown += label + (figures >> value, value);
    const std::string max = std::to_string(c.maxTime);
    // The increment comes in seconds.
    EXPECT_EQ(out.str(), "# movesPerSession=" + std::string(c.moves) + " timePerSession=30000 increment=" +
                             std::to_string(std::stoi(c.increment) * 100) + "\n# ply=" + std::to_string(c.ply) +
                             " fullMoveNumber=" + std::to_string(c.ply / 2 + 1) + " remainingMoves=" +
                             std::to_string(c.remainingMoves) + " nSessions=" + std::to_string(c.sessions) +
                             "\n# " + shown + " max=" + max + "\n# set maxTime = " + max + "\n");
    EXPECT_EQ(int32_t(tc.maxTime), c.maxTime);
    out.str("");
    tc.correctOutOfBook(c.ply, out);
    EXPECT_EQ(int32_t(tc.maxTime), c.outOfBook) << c.ply << " " << c.maxTime;
    EXPECT_EQ(out.str(), c.outOfBook == c.maxTime ? "" : "# out of book: corrected maxTime = " + std::to_string(c.outOfBook) + "\n");
  }
}

// The clock is read every 4096 nodes per thread (always without threads), and
// the budget compared signed, across the 32-bit wrap; analyze mode has none.
TEST(TimeControl, IsTimeUp) {
  const struct { uint32_t atMoveStart, elapsed; int32_t maxTime; bool timed; uint32_t cores; uint64_t nodes; bool up; } cases[] = {
      {500, 1000, 500, true, 1, 4097, false}, {500, 1000, 500, true, 4, 4096 * 3 + 1, false},
      {500, 1000, 500, true, 1, 8192, true},  {500, 1000, 500, true, 2, 0, true},
      {500, 1000, 500, true, 0, 4097, true},  {500, 1000, 501, true, 1, 4096, false},
      {500, 1000, 0, false, 1, 4096, false},  {1000, 500, 100, true, 1, 4096, false},
      {1000, 1000, -10, true, 1, 4096, true}, {0xFFFFFF00u, 0x100u, 500, true, 1, 4096, true},
      {0xFFFFFF00u, 0x100u, 513, true, 1, 4096, false},
  };
  for (const auto& c : cases) {
    TimeControl tc;
    tc.elapsedAtMoveStart = c.atMoveStart, tc.elapsed = c.elapsed, tc.maxTime = uint32_t(c.maxTime);
    tc.timed = c.timed;
    std::ostringstream out;
    EXPECT_EQ(tc.isTimeUp(c.cores, c.nodes, out), c.up) << c.maxTime << " " << c.nodes;
    EXPECT_EQ(out.str(), c.up ? "# timeout\n" : "");
  }
}

}  // namespace
