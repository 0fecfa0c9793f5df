// The millisecond allocation of UCI clocks: what one move may use, and that
// whole games on short clocks never run out.
#include <gtest/gtest.h>

#include "uci/uci_time.h"

namespace {

struct AllocationRow {
  int64_t time, increment, movesToGo, expected, moveTime = -1, limit = 3 * expected;
};

TEST(UciTimeTest, AllocationTable) {
  const AllocationRow rows[] = {
      {1000, 10, 0, 28},       // 1 s + 10 ms: a thirtieth of what is left after the reserve and overheads
      {2000, 100, 0, 145},     // the increments of the coming moves count
      {60000, 0, 0, 1956},     // sudden death
      {60000, 1000, 0, 2923},  //
      {300000, 0, 40, 7465},   // 40 moves in 5 minutes
      {2000, 0, 1, 1492, -1, 1492},  // the last move before the control: three quarters of the clock
      {100, 1000, 0, 30, -1, 30},    // a big increment on an empty clock: a third of the clock at most
      {3000, 30, 0, 106},            // the hard stop: three plans,
      {3000, 0, 5, 515, -1, 996},    // within a third of the clock
      {0, 0, 0, 1, -1, 1},     // an empty clock or one the host sends negative: still a move
      {-50, 10, 0, 1, -1, 1},
      {300000, 0, 80, 5970},     // more than 50 moves to go count as 50
      {60000, -1000, 0, 1956},   // a negative increment counts as none
      {60000, 0, 0, 499, 500, 499},  // a move time beside the clock, the shorter
      {60000, 0, 0, 1956, 5000, 5000 - 1},
  };
  for (const AllocationRow& row : rows) {
    SCOPED_TRACE(row.time);
    const GoBudget budget = goBudget(UciClock{row.time, row.increment, row.movesToGo}, row.moveTime);
    EXPECT_EQ(budget.plan, row.expected);
    EXPECT_EQ(budget.limit, row.limit);
  }
  EXPECT_EQ(goBudget(UciClock{60000, 0, 0, 100}, -1).plan, 1866);  // a larger overhead leaves less to think
  // A move time alone, and no limit at all.
  for (const auto& [moveTime, both] : {std::pair{500, 499}, {0, 1}, {-1, -1}}) {
    EXPECT_EQ(goBudget(std::nullopt, moveTime).plan, both);
    EXPECT_EQ(goBudget(std::nullopt, moveTime).limit, both);
  }
}

// Many moves, each running to its hard stop and half the overhead allowed for: the clock stays positive.
TEST(UciTimeTest, ShortClocksLastTheGame) {
  const AllocationRow clocks[] = {{1000, 10, 0, 0}, {2000, 100, 0, 0}, {5000, 50, 0, 0}, {60000, 0, 40, 0}};
  for (const AllocationRow& start : clocks) {
    int64_t time = start.time;
    for (int move = 0; move < 300; ++move) {
      const int64_t movesToGo = start.movesToGo ? start.movesToGo - move % start.movesToGo : 0;
      time -= moveTimeLimit(UciClock{time, start.increment, movesToGo}) + UciClock{}.overhead / 2 - start.increment;
      if (movesToGo == 1) time += start.time;
      ASSERT_GT(time, 0) << "clock " << start.time << "+" << start.increment << ", move " << move;
    }
  }
}

}  // namespace
