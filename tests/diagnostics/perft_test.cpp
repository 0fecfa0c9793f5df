#include "diagnostics/perft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "board/fen.h"

namespace {

const char* const kiwipete = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
const char* const foolsMate = "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3";
const char* const stalemate = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";

// Collects what std::cout receives while it lives.
class CoutCapture {
 public:
  CoutCapture() : old_(std::cout.rdbuf(buffer_.rdbuf())) {}
  ~CoutCapture() { std::cout.rdbuf(old_); }
  std::string text() const { return buffer_.str(); }

 private:
  std::ostringstream buffer_;
  std::streambuf* old_;
};

class PerftTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CoutCapture quiet;  // the size line
    table.sizeFor(1);
  }
  void setUp(const char* fen) { ASSERT_TRUE(setupFromFen(board, fen)) << fen; }
  uint64_t count(uint32_t depth, PerftHashTable* t) {
    stats = PerftStats{};
    return countLeaves(stats, board, t, depth, false);
  }
  uint64_t usedEntries() const {
    uint64_t used = 0;
    for (uint64_t i = 0; i < table.bucketCount(); ++i)
      for (const PerftEntry& e : table.buckets[i].entries) used += perftEntryKey(e) != 0;
    return used;
  }

  Board_0x88 board;
  PerftHashTable table{"Perft hash"};
  PerftStats stats;
};

TEST_F(PerftTest, StartPositionCountsLeavesAndNodes) {
  setUp(startPositionFen);
  const uint64_t keyBefore = board.history[0].hashKey;

  // Depth 1 is the length of the move list: one node, no table access.
  EXPECT_EQ(count(1, &table), 20u);
  EXPECT_EQ(stats.nodes, 1u);
  EXPECT_EQ(stats.hashHits, 0u);
  EXPECT_EQ(usedEntries(), 0u);

  // Depth 2: the root and its 20 children, and only the root is stored.
  EXPECT_EQ(count(2, &table), 400u);
  EXPECT_EQ(stats.nodes, 21u);
  EXPECT_EQ(stats.hashHits, 0u);
  EXPECT_EQ(usedEntries(), 1u);

  // The same again is a single hit at the root.
  EXPECT_EQ(count(2, &table), 400u);
  EXPECT_EQ(stats.nodes, 1u);
  EXPECT_EQ(stats.hashHits, 1u);

  EXPECT_EQ(count(3, &table), 8902u);
  EXPECT_EQ(count(4, nullptr), 197281u);
  EXPECT_EQ(stats.nodes, 1u + 20u + 400u + 8902u);

  // The position is the same as before.
  EXPECT_EQ(board.ply, 0u);
  EXPECT_EQ(board.sideToMove, White);
  EXPECT_EQ(board.history[0].hashKey, keyBefore);
  EXPECT_EQ(board.computeFullHash(), keyBefore);
}

TEST_F(PerftTest, DivideListsRootMovesInGenerationOrder) {
  setUp(startPositionFen);
  std::string out;
  uint64_t leaves;
  {
    CoutCapture capture;
    leaves = countLeaves(stats, board, &table, 1, true);
    out = capture.text();
  }
  EXPECT_EQ(leaves, 20u);
  EXPECT_EQ(stats.nodes, 1u);
  EXPECT_EQ(out,
            "b1a3 1\nb1c3 1\ng1f3 1\ng1h3 1\na2a3 1\na2a4 1\nb2b3 1\nb2b4 1\nc2c3 1\nc2c4 1\n"
            "d2d3 1\nd2d4 1\ne2e3 1\ne2e4 1\nf2f3 1\nf2f4 1\ng2g3 1\ng2g4 1\nh2h3 1\nh2h4 1\n");

  // Deeper, the per-move counts add up to perft, and the root is not stored.
  setUp(kiwipete);
  stats = PerftStats{};
  table.clear();
  {
    CoutCapture capture;
    leaves = countLeaves(stats, board, &table, 3, true);
    out = capture.text();
  }
  EXPECT_EQ(leaves, 97862u);
  uint64_t sum = 0, lines = 0;
  std::istringstream in(out);
  std::string move;
  uint64_t n;
  while (in >> move >> n) {
    sum += n;
    ++lines;
  }
  EXPECT_EQ(lines, 48u);
  EXPECT_EQ(sum, 97862u);
  EXPECT_EQ(stats.nodes, 1u + 48u + 2039u);
  const PerftHashTable::Bucket& root = table.bucketFor(board.history[0].hashKey);
  for (const PerftEntry& e : root.entries) EXPECT_NE(perftEntryKey(e), board.history[0].hashKey & PerftKeyMask);
}

TEST_F(PerftTest, MateAndStalemateHaveNoLeaves) {
  for (const char* fen : {foolsMate, stalemate}) {
    setUp(fen);
    table.clear();
    EXPECT_EQ(count(1, &table), 0u) << fen;
    EXPECT_EQ(stats.nodes, 1u);
    EXPECT_EQ(usedEntries(), 0u);

    // Deeper, the node with no moves stores its 0 and returns it.
    table.clear();
    EXPECT_EQ(count(3, &table), 0u) << fen;
    EXPECT_EQ(stats.nodes, 1u);
    EXPECT_EQ(usedEntries(), 1u);
    const uint64_t key = board.history[0].hashKey;
    const PerftEntry& e = table.bucketFor(key).entries[0];
    EXPECT_EQ(perftEntryKey(e), key & PerftKeyMask);
    EXPECT_EQ(e.depth, 3u);
    EXPECT_EQ(e.count, 0u);
    // A hit on a stored 0 is a hit all the same.
    EXPECT_EQ(count(3, &table), 0u);
    EXPECT_EQ(stats.hashHits, 1u);
  }
  // Divide on a mate prints nothing but still counts its root.
  setUp(foolsMate);
  stats = PerftStats{};
  CoutCapture capture;
  EXPECT_EQ(countLeaves(stats, board, &table, 2, true), 0u);
  EXPECT_EQ(stats.nodes, 1u);
  EXPECT_EQ(capture.text(), "");
}

TEST_F(PerftTest, ClearedBoardHasNothingToCount) {
  // What a refused FEN leaves behind: no side to move.
  setUp(startPositionFen);
  EXPECT_FALSE(setupFromFen(board, "4k3/8/8/8/8/8/8/4X3 w - - 0 1"));
  for (bool divide : {false, true}) {
    CoutCapture capture;
    stats = PerftStats{};
    EXPECT_EQ(countLeaves(stats, board, &table, 2, divide), 0u);
    EXPECT_EQ(stats.nodes, 0u);
    EXPECT_EQ(capture.text(), "");
  }
}

TEST_F(PerftTest, TranspositionsHitWithoutChangingTheCount) {
  struct Case {
    const char* fen;
    uint32_t depth;
    uint64_t leaves;  // 0: only compared with the count without the table
  };
  const Case cases[] = {
      {startPositionFen, 5, 4865609},
      {kiwipete, 4, 4085603},
      {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6, 11030083},
      // In check at the root, and en passant for Black at once.
      {"8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28", 5, 0},
  };
  for (const Case& c : cases) {
    setUp(c.fen);
    uint64_t without = count(c.depth, nullptr);
    uint64_t nodesWithout = stats.nodes;
    EXPECT_EQ(stats.hashHits, 0u);
    if (c.leaves) {
      EXPECT_EQ(without, c.leaves) << c.fen;
    }

    table.clear();
    EXPECT_EQ(count(c.depth, &table), without) << c.fen;
    EXPECT_GT(stats.hashHits, 0u) << c.fen;
    EXPECT_LT(stats.nodes, nodesWithout) << c.fen;
  }

  // 1. Nf3 Nf6 2. Nc3 and 1. Nc3 Nf6 2. Nf3 meet at ply 3; at depth 5 that node
  // has two plies to go and the second visit is a hit.
  setUp(startPositionFen);
  table.clear();
  count(5, &table);
  EXPECT_GT(stats.hashHits, 0u);
  // At depth 4 the deepest stored nodes are at ply 2, where no two move
  // orders meet.
  table.clear();
  EXPECT_EQ(count(4, &table), 197281u);
  EXPECT_EQ(stats.hashHits, 0u);
}

TEST_F(PerftTest, StoredCountOfAnotherDepthIsNotUsed) {
  setUp(startPositionFen);
  const uint64_t key = board.history[0].hashKey;
  PerftHashTable::Bucket& bucket = table.bucketFor(key);

  // The first entry with the key decides: a depth mismatch there ends the
  // probe as a miss, though the next entry has the right depth.
  perftHashStore(table, key, 999, 2);
  bucket.entries[1] = bucket.entries[0];
  bucket.entries[1].depth = 3;
  bucket.entries[1].count = 777;

  EXPECT_EQ(count(3, &table), 8902u);
  EXPECT_EQ(stats.hashHits, 0u);
  // The store overwrote the first entry with the key.
  EXPECT_EQ(bucket.entries[0].count, 8902u);
  EXPECT_EQ(bucket.entries[0].depth, 3u);
  EXPECT_EQ(bucket.entries[1].count, 777u);

  // A stored count at the right depth is taken as it is, without a check.
  bucket.entries[0].count = 12345;
  EXPECT_EQ(count(3, &table), 12345u);
  EXPECT_EQ(stats.hashHits, 1u);
  EXPECT_EQ(stats.nodes, 1u);
}

TEST(PerftHashStoreTest, ReplacementRules) {
  PerftHashTable table("Perft hash");
  {
    CoutCapture quiet;
    table.sizeFor(0);  // a single bucket: every key lands in it
  }
  ASSERT_EQ(table.bucketCount(), 1u);
  PerftEntry* e = table.buckets[0].entries;
  const uint64_t a = 0x1111'2233'4455'6677, b = 0x0000'0000'0000'0102, c = 0x7777'0000'0000'0003,
                 d = 0x0000'ABCD'0000'0004;

  // Free entries fill in slot order.
  perftHashStore(table, a, 10, 5);
  perftHashStore(table, b, 20, 3);
  perftHashStore(table, c, 30, 3);
  perftHashStore(table, d, 40, 7);
  EXPECT_EQ(e[0].count, 10u);
  EXPECT_EQ(e[1].count, 20u);
  EXPECT_EQ(e[2].count, 30u);
  EXPECT_EQ(e[3].count, 40u);
  EXPECT_EQ(e[0].depth, 5u);

  // The key holds the low 48 bits, least significant byte first.
  const uint8_t bytes[6] = {0x77, 0x66, 0x55, 0x44, 0x33, 0x22};
  EXPECT_EQ(std::memcmp(e[0].key, bytes, 6), 0);
  EXPECT_EQ(perftEntryKey(e[0]), a & PerftKeyMask);

  // The same 48-bit key is overwritten whatever its depth; the bits above 48
  // take no part.
  perftHashStore(table, a ^ (uint64_t(0xFFFF) << 48), 11, 1);
  EXPECT_EQ(e[0].count, 11u);
  EXPECT_EQ(e[0].depth, 1u);
  perftHashStore(table, a, 12, 9);
  EXPECT_EQ(e[0].count, 12u);
  EXPECT_EQ(e[0].depth, 9u);

  // A new key in a full bucket takes the entry of least depth, of equal
  // depths the lowest slot: depths are 9, 3, 3, 7.
  const uint64_t n1 = 0x55, n2 = 0x66, n3 = 0x77;
  perftHashStore(table, n1, 50, 8);
  EXPECT_EQ(perftEntryKey(e[1]), n1);
  EXPECT_EQ(e[1].count, 50u);
  EXPECT_EQ(e[2].count, 30u);
  // Depths 9, 8, 3, 7.
  perftHashStore(table, n2, 60, 9);
  EXPECT_EQ(perftEntryKey(e[2]), n2);
  // Depths 9, 8, 9, 7: the least depth may be deeper than the new one.
  perftHashStore(table, n3, 70, 2);
  EXPECT_EQ(perftEntryKey(e[3]), n3);
  EXPECT_EQ(e[3].depth, 2u);
  // Depths 9, 8, 9, 2: an existing key still wins over the shallow entry.
  perftHashStore(table, n1, 51, 1);
  EXPECT_EQ(e[1].count, 51u);
  EXPECT_EQ(e[3].count, 70u);

  // A cleared entry is free again and is taken before any replacement.
  std::memset(&e[2], 0, sizeof e[2]);
  perftHashStore(table, 0x99, 80, 1);
  EXPECT_EQ(perftEntryKey(e[2]), 0x99u);
  EXPECT_EQ(e[1].depth, 1u);

  // The fill looks at the first 16384 buckets and divides by 65536 entries.
  EXPECT_DOUBLE_EQ(perftHashFill(table), 4 * 100.0 / 65536);
  table.clear();
  EXPECT_EQ(perftHashFill(table), 0.0);
}

}  // namespace
