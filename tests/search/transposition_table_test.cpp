// The hash tables: sizing, the bound of a store, the choice of the entry in
// a bucket, mate scores across plies, the fill measure, and unlocked use by
// several threads.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "board/board.h"
#include "eval/pawn_hash.h"
#include "search/transposition_table.h"

namespace {

constexpr int32_t Lowest = -31999;  // what the position can come to, at ply 1
constexpr int32_t Highest = 31998;

// A board whose current record carries the given key at the given game ply.
struct KeyedBoard {
  std::unique_ptr<Board_0x88> board = std::make_unique<Board_0x88>();
  Board_0x88& at(uint64_t key, uint32_t gamePly = 10) {
    board->ply = gamePly;
    board->history[gamePly].hashKey = key;
    return *board;
  }
};

// Stores with a window that makes the result exact.
void storeExact(TTHashTable& table, Board_0x88& b, uint32_t ply, uint32_t depth, int32_t score, Move move) {
  ttStore(table, b, Lowest, Highest, -32000, 32000, ply, depth, score, move);
}

std::unique_ptr<TTHashTable> smallTable() {
  auto table = std::make_unique<TTHashTable>("TT hash");
  testing::internal::CaptureStdout();
  table->sizeFor(1);
  testing::internal::GetCapturedStdout();
  return table;
}

TEST(HashTable, Sizing) {
  TTHashTable table("TT hash");
  testing::internal::CaptureStdout();
  EXPECT_EQ(table.sizeFor(1), 1u);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "# new size of TT hash: 1 MB\n");
  EXPECT_EQ(table.bucketCount(), 16384u);
  EXPECT_EQ(table.mask, 16383u);
  EXPECT_EQ(table.entryCount, 65536u);
  EXPECT_EQ(table.reserved, 0u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(table.buckets) % 64, 0u);

  // The largest power of two that fits; the request is cut at 1048576 MB.
  EXPECT_EQ(TTHashTable::bucketCountFor(300), 256u * 16384);
  EXPECT_EQ(TTHashTable::bucketCountFor(1048576), uint64_t(1) << 34);
  EXPECT_EQ(TTHashTable::bucketCountFor(1048577), uint64_t(1) << 34);
  EXPECT_EQ(TTHashTable::bucketCountFor(~uint64_t(0) >> 21), uint64_t(1) << 34);
  EXPECT_EQ(TTHashTable::bucketCountFor(0), 1u);
  EXPECT_EQ(PawnHash::bucketCountFor(1), 32768u);
  EXPECT_EQ(PawnHash::bucketCountFor(3), 65536u);

  // A size of 0 MB still gives one bucket and prints 0.
  testing::internal::CaptureStdout();
  EXPECT_EQ(table.sizeFor(0), 0u);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "# new size of TT hash: 0 MB\n");
  EXPECT_EQ(table.bucketCount(), 1u);
  EXPECT_EQ(table.entryCount, 4u);
}

TEST(TranspositionTable, ProbeGivesMoveAndScoreWhateverTheDepth) {
  auto table = smallTable();
  KeyedBoard kb;
  Board_0x88& b = kb.at(0x1234567890ABCDEFull);

  int32_t score = 77;
  Move move = 99;
  bool hit = false;
  EXPECT_FALSE(ttProbe(*table, b, -100, 100, 1, 1, score, move, hit));
  EXPECT_FALSE(hit);  // a miss touches no output
  EXPECT_EQ(score, 77);
  EXPECT_EQ(move, 99);

  storeExact(*table, b, 1, 6, 35, 0x1234);
  EXPECT_FALSE(ttProbe(*table, b, -100, 100, 1, 10, score, move, hit));
  EXPECT_TRUE(hit);
  EXPECT_EQ(score, 35);
  EXPECT_EQ(move, 0x1234);
  score = 0;
  hit = false;
  EXPECT_TRUE(ttProbe(*table, b, -100, 100, 1, 6, score, move, hit));
  EXPECT_TRUE(hit);
  EXPECT_EQ(score, 35);

  // A store without a move overwrites the move; the probe then leaves the output alone.
  storeExact(*table, b, 1, 6, 40, NoMove);
  move = 555;
  EXPECT_TRUE(ttProbe(*table, b, -100, 100, 1, 6, score, move, hit));
  EXPECT_EQ(move, 555);
  EXPECT_EQ(score, 40);
}

TEST(TranspositionTable, BoundsOfStoreAndProbe) {
  auto table = smallTable();
  KeyedBoard kb;
  auto boundAfter = [&](uint64_t key, int32_t alpha, int32_t beta, int32_t score) {
    Board_0x88& b = kb.at(key);
    ttStore(*table, b, -200, 300, alpha, beta, 1, 5, score, NoMove);
    for (const TTEntry& e : table->bucketFor(key).entries)
      if (e.key == key) return int(e.bound);
    return -1;
  };
  EXPECT_EQ(boundAfter(1, 0, 100, 150), BoundLower);
  EXPECT_EQ(boundAfter(2, 0, 100, 50), BoundExact);
  EXPECT_EQ(boundAfter(3, 0, 100, 0), BoundUpper);
  EXPECT_EQ(boundAfter(4, 0, 100, -150), BoundUpper);
  // At the limits of the position a result outside the window is exact.
  EXPECT_EQ(boundAfter(5, 0, 100, 300), BoundExact);
  EXPECT_EQ(boundAfter(6, 0, 100, 350), BoundExact);
  EXPECT_EQ(boundAfter(7, 0, 100, -200), BoundExact);
  EXPECT_EQ(boundAfter(8, 0, 100, 299), BoundLower);

  int32_t score;
  Move move = NoMove;
  bool hit;
  Board_0x88& lower = kb.at(1);
  EXPECT_TRUE(ttProbe(*table, lower, 0, 150, 1, 5, score, move, hit));
  EXPECT_FALSE(ttProbe(*table, lower, 0, 151, 1, 5, score, move, hit));
  EXPECT_EQ(score, 150);
  Board_0x88& upper = kb.at(3);
  EXPECT_TRUE(ttProbe(*table, upper, 0, 10, 1, 5, score, move, hit));
  EXPECT_FALSE(ttProbe(*table, upper, -1, 10, 1, 5, score, move, hit));
  Board_0x88& exact = kb.at(2);
  EXPECT_TRUE(ttProbe(*table, exact, 60, 70, 1, 4, score, move, hit));
  EXPECT_FALSE(ttProbe(*table, exact, 60, 70, 1, 6, score, move, hit));
}

TEST(TranspositionTable, ChoiceOfTheEntry) {
  auto table = smallTable();
  KeyedBoard kb;
  const uint64_t stride = table->mask + 1;  // keys that share bucket 5
  auto key = [&](uint64_t n) { return 5 + n * stride; };
  auto& entries = table->bucketFor(5).entries;

  // The same position is overwritten, deeper or shallower.
  storeExact(*table, kb.at(key(1)), 1, 3, 10, 0x111);
  storeExact(*table, kb.at(key(2)), 1, 3, 10, 0x222);
  storeExact(*table, kb.at(key(2)), 1, 8, 20, 0x223);
  EXPECT_EQ(entries[1].key, key(2));
  EXPECT_EQ(entries[1].depth, 8);
  EXPECT_EQ(entries[1].score, 20);
  storeExact(*table, kb.at(key(2)), 1, 2, 30, NoMove);
  EXPECT_EQ(entries[1].depth, 2);
  EXPECT_EQ(entries[1].move, NoMove);
  EXPECT_EQ(entries[2].key, 0u);

  // A full bucket with depths 9, 4, 4, 7 and equal ages gives up index 1.
  table->clear();
  const uint32_t depths[4] = {9, 4, 4, 7};
  for (int i = 0; i < 4; ++i) storeExact(*table, kb.at(key(10 + i), 20), 2, depths[i], 0, NoMove);
  for (int i = 0; i < 4; ++i) ASSERT_EQ(entries[i].key, key(10 + i));
  EXPECT_EQ(entries[0].age, 18);
  storeExact(*table, kb.at(key(20), 20), 2, 12, 0, NoMove);
  EXPECT_EQ(entries[1].key, key(20));
  EXPECT_EQ(entries[2].key, key(12));

  // Equal depths: the entry of the later game ply (the larger age) goes first.
  table->clear();
  const uint32_t gamePlies[4] = {30, 34, 33, 34};
  for (int i = 0; i < 4; ++i) storeExact(*table, kb.at(key(30 + i), gamePlies[i]), 1, 5, 0, NoMove);
  storeExact(*table, kb.at(key(40), 40), 1, 5, 0, NoMove);
  EXPECT_EQ(entries[1].key, key(40));
  EXPECT_EQ(entries[1].age, 39);
  storeExact(*table, kb.at(key(41), 40), 1, 5, 0, NoMove);
  EXPECT_EQ(entries[1].key, key(41));  // now the youngest is index 1 again
  // Depth weighs more than any age.
  storeExact(*table, kb.at(key(42), 40), 1, 6, 0, NoMove);
  EXPECT_EQ(entries[1].key, key(42));
  storeExact(*table, kb.at(key(43), 40), 1, 6, 0, NoMove);
  EXPECT_EQ(entries[3].key, key(43));
}

TEST(TranspositionTable, MateScoresCountFromTheNode) {
  auto table = smallTable();
  KeyedBoard kb;
  Board_0x88& b = kb.at(42);
  const auto& entry = table->bucketFor(42).entries[0];
  int32_t score;
  Move move;
  bool hit;

  // A mate in 5 plies seen at ply 3: 31992 there, stored 31995, read 31988 at ply 7.
  storeExact(*table, b, 3, 4, 31992, NoMove);
  EXPECT_EQ(entry.score, 31995);
  EXPECT_TRUE(ttProbe(*table, b, -32000, 32000, 7, 4, score, move, hit));
  EXPECT_EQ(score, 31988);
  storeExact(*table, b, 3, 4, -31992, NoMove);
  EXPECT_EQ(entry.score, -31995);
  EXPECT_TRUE(ttProbe(*table, b, -32000, 32000, 7, 4, score, move, hit));
  EXPECT_EQ(score, -31988);

  // 20000 is no mate score; 20001 is.
  storeExact(*table, b, 3, 4, 20000, NoMove);
  EXPECT_EQ(entry.score, 20000);
  ttProbe(*table, b, -32000, 32000, 9, 4, score, move, hit);
  EXPECT_EQ(score, 20000);
  storeExact(*table, b, 3, 4, -20000, NoMove);
  EXPECT_EQ(entry.score, -20000);
  storeExact(*table, b, 3, 4, 20001, NoMove);
  EXPECT_EQ(entry.score, 20004);

  // A node at or above what it can reach stores an exact entry though it failed high.
  ttStore(*table, b, 3 - 32000, 32000 - 4, -50, 50, 3, 4, 31996, 0x777);
  EXPECT_EQ(entry.bound, BoundExact);
  EXPECT_EQ(entry.score, 31999);
  EXPECT_EQ(entry.move, 0x777);
}

TEST(HashTable, FillPercentages) {
  auto table = smallTable();
  KeyedBoard kb;
  EXPECT_EQ(ttHashFill(*table), 0.0);
  for (uint64_t k = 1; k <= 24; ++k) storeExact(*table, kb.at(k), 1, 1, 0, NoMove);
  EXPECT_DOUBLE_EQ(ttHashFill(*table), 24 * 100.0 / 65536);
  // Only the first 16384 buckets are looked at: a 2 MB table has twice as many.
  auto big = std::make_unique<TTHashTable>("TT hash");
  testing::internal::CaptureStdout();
  big->sizeFor(2);
  testing::internal::GetCapturedStdout();
  storeExact(*big, kb.at(100), 1, 1, 0, NoMove);
  storeExact(*big, kb.at(16384 + 100), 1, 1, 0, NoMove);
  EXPECT_DOUBLE_EQ(ttHashFill(*big), 100.0 / 65536);
  // A table of one bucket counts against the same divisor.
  testing::internal::CaptureStdout();
  big->sizeFor(0);
  testing::internal::GetCapturedStdout();
  for (uint64_t k = 1; k <= 4; ++k) storeExact(*big, kb.at(k), 1, 1, 0, NoMove);
  EXPECT_DOUBLE_EQ(ttHashFill(*big), 4 * 100.0 / 65536);

  PawnHash pawns;
  testing::internal::CaptureStdout();
  pawns.sizeFor(1);  // 32768 entries of 32 bytes
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "# new size of Pawn hash: 1 MB\n");
  EXPECT_EQ(pawnHashFill(pawns), 0.0);
  pawns.buckets[0].entries[0].key = 7;
  pawns.buckets[16383].entries[0].key = 8;
  pawns.buckets[16384].entries[0].key = 9;  // beyond the sample
  EXPECT_DOUBLE_EQ(pawnHashFill(pawns), 2 * 100.0 / 16384);
}

// Threads store and probe the same few buckets at once. Under the thread
// sanitizer this shows that the unlocked access is well defined; everywhere
// it shows that a probe only ever returns what some store wrote.
TEST(TranspositionTable, ConcurrentStoresAndProbes) {
  auto table = std::make_unique<TTHashTable>("TT hash");
  testing::internal::CaptureStdout();
  table->sizeFor(0);  // one bucket: every access collides
  testing::internal::GetCapturedStdout();
  constexpr int threadCount = 4;
  constexpr int rounds = 20000;
  std::vector<int> bad(threadCount, 0);
  // Boards are made before the threads start, as in the engine: the first one
  // builds the shared tables.
  std::vector<KeyedBoard> boards(threadCount);
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&, t] {
      KeyedBoard& kb = boards[t];
      for (int i = 0; i < rounds; ++i) {
        uint64_t key = 1 + uint64_t((i * 7 + t) % 11);
        Board_0x88& b = kb.at(key);
        // Every store of this key writes score = key and move = key.
        if ((i + t) % 3 == 0) {
          storeExact(*table, b, 1, uint32_t(i % 20), int32_t(key), Move(key));
        } else {
          int32_t score = -1;
          Move move = NoMove;
          bool hit = false;
          ttProbe(*table, b, -32000, 32000, 1, 0, score, move, hit);
          // A torn entry may pair a new key with old fields, but each field
          // holds a value some store wrote.
          if (hit && (score < 0 || score > 11 || move > 11)) ++bad[t];
        }
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < threadCount; ++t) EXPECT_EQ(bad[t], 0);
}

}  // namespace
