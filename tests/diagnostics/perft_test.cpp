#include "diagnostics/perft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <sstream>

#include "board/fen.h"

namespace {

const char* const kiwipete = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";

// What countLeaves prints (divide), and its count and statistics.
struct Counted {
  uint64_t leaves = 0;
  PerftStats stats;
  std::string printed;
};

Counted run(Board_0x88& board, PerftHashTable* table, uint32_t depth, bool divide = false) {
  Counted r;
  ::testing::internal::CaptureStdout();
  r.leaves = countLeaves(r.stats, board, table, depth, divide);
  std::cout.flush();
  r.printed = ::testing::internal::GetCapturedStdout();
  return r;
}

// The one table of the tests, sized (its size line swallowed) and cleared.
PerftHashTable* newTable(uint64_t megabytes) {
  static PerftHashTable table{"Perft hash"};
  ::testing::internal::CaptureStdout();
  table.sizeFor(megabytes);
  ::testing::internal::GetCapturedStdout();
  table.clear();
  return &table;
}

// Leaves, nodes visited and table hits: the table never changes a count, it
// only saves nodes; depth 1 neither probes nor stores; the root of divide
// isn't stored; a stored 0 of a mate is a hit like any other.
TEST(Perft, CountsNodesAndHits) {
  // Leaves ~0: as without the table; nodes 0: unchecked; hits ~0: some, saving nodes.
  const struct { const char* fen; uint32_t depth; bool table, twice, divide; uint64_t leaves, nodes, hits; } cases[] = {
      {startPositionFen, 1, true, false, false, 20, 1, 0},
      {startPositionFen, 2, true, false, false, 400, 21, 0},
      {startPositionFen, 2, true, true, false, 400, 1, 1},  // the second run is one hit at the root
      {startPositionFen, 4, false, false, false, 197281, 1 + 20 + 400 + 8902, 0},
      {startPositionFen, 4, true, false, false, 197281, 1 + 20 + 400 + 8902, 0},  // no transposition by ply 2
      {startPositionFen, 5, true, false, false, 4865609, 0, ~0ull},
      {kiwipete, 3, true, false, true, 97862, 1 + 48 + 2039, 0},
      {kiwipete, 4, true, false, false, 4085603, 0, ~0ull},
      {"8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28", 5, true, false, false, ~0ull, 0, ~0ull},  // in check, en passant at once
      {"rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3", 3, true, true, false, 0, 1, 1},
      {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", 3, true, true, true, 0, 1, 1},
      {"R6k/8/8/8/8/8/n7/2K5 w - - 0 1", 3, false, false, false, 239, 0, 0},  // the side not to move in check
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fen) + " depth " + std::to_string(c.depth));
    Board_0x88 board;
    ASSERT_TRUE(setupFromFen(board, c.fen));
    const uint64_t key = board.currentRecord().hashKey;
    PerftHashTable* table = c.table ? newTable(1) : nullptr;
    Counted r = run(board, table, c.depth, c.divide);
    if (c.twice) r = run(board, table, c.depth, c.divide);
    if (c.leaves != ~0ull) {
      EXPECT_EQ(r.leaves, c.leaves);
    }
    if (c.nodes) {
      EXPECT_EQ(r.stats.nodes, c.nodes);
    }
    if (c.hits == ~0ull) {
      Counted plain = run(board, nullptr, c.depth);
      EXPECT_TRUE(r.stats.hashHits > 0 && r.stats.nodes < plain.stats.nodes && plain.leaves == r.leaves);
    } else if (!c.divide) {
      EXPECT_EQ(r.stats.hashHits, c.hits);
    }
    EXPECT_TRUE(board.ply == 0u && board.currentRecord().hashKey == key && board.computeFullHash() == key);
    // Divide prints a count per root move; they add up.
    std::string move;
    uint64_t n, sum = 0;
    for (std::istringstream lines(r.printed); lines >> move >> n;) sum += n;
    EXPECT_EQ(sum, c.divide ? r.leaves : 0u);
  }
  Board_0x88 board;
  ASSERT_TRUE(setupFromFen(board, startPositionFen));
  // A cleared board (a refused FEN) has nothing to count or print.
  EXPECT_FALSE(setupFromFen(board, "4k3/8/8/8/8/8/8/4X3 w - - 0 1"));
  for (bool divide : {false, true}) {
    Counted r = run(board, newTable(1), 2, divide);
    EXPECT_TRUE(r.leaves == 0 && r.stats.nodes == 0 && r.printed.empty());
  }
}

// Same 48-bit key: overwritten whatever the depth; else the first free entry;
// else the entry of least depth, the lowest slot among equals.
TEST(Perft, HashReplacement) {
  PerftHashTable* table = newTable(0);  // a single bucket
  ASSERT_EQ(table->bucketCount(), 1u);
  PerftEntry* e = table->buckets[0].entries;
  const uint64_t a = 0x1111'2233'4455'6677;
  const struct { uint64_t key, count; uint32_t depth; int slot; } stores[] = {
      {a, 10, 5, 0},        {0x102, 20, 3, 1}, {0x7777'0000'0000'0003, 30, 3, 2}, {0xABCD'0000'0004, 40, 7, 3},
      {a ^ (uint64_t(0xFFFF) << 48), 11, 1, 0}, {a, 12, 9, 0},  // depths now 9 3 3 7
      {0x55, 50, 8, 1},     {0x66, 60, 9, 2},  {0x77, 70, 2, 3},  {0x55, 51, 1, 1},  // an existing key wins
  };
  for (const auto& s : stores) {
    perftHashStore(*table, s.key, s.count, s.depth);
    EXPECT_TRUE(perftEntryKey(e[s.slot]) == (s.key & PerftKeyMask) && e[s.slot].count == s.count &&
                e[s.slot].depth == s.depth) << s.count;
  }
  std::memset(&e[2], 0, sizeof e[2]);  // a cleared entry is free again
  perftHashStore(*table, 0x99, 80, 1);
  EXPECT_EQ(perftEntryKey(e[2]), 0x99u);
}

}  // namespace
