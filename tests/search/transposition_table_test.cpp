// The hash tables: sizing, store and probe cases (bounds, the entry a bucket
// gives up, mate scores across plies), the fill measure, and unlocked use by
// several threads.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "board/board.h"
#include "eval/pawn_hash.h"
#include "search/transposition_table.h"

namespace {

// A board whose current record carries the given key at the given game ply.
struct KeyedBoard {
  std::unique_ptr<Board_0x88> board = std::make_unique<Board_0x88>();
  Board_0x88& at(uint64_t key, uint32_t gamePly = 10) {
    board->ply = gamePly;
    board->history[gamePly].hashKey = key;
    return *board;
  }
};

std::string sized(TTHashTable& table, uint64_t megabytes) {
  testing::internal::CaptureStdout();
  table.sizeFor(megabytes);
  return testing::internal::GetCapturedStdout();
}

// The largest power of two that fits, the request cut at 1048576 MB; a
// table of one bucket at 0 MB. The fill counts the first 16384 buckets only,
// against the same divisor whatever the size.
TEST(HashTable, SizingAndFill) {
  const uint64_t sizes[][2] = {{0, 1}, {1, 16384}, {300, 256 * 16384}, {1048576, 1ull << 34}, {~0ull >> 21, 1ull << 34}};
  for (auto [megabytes, buckets] : sizes) EXPECT_EQ(TTHashTable::bucketCountFor(megabytes), buckets) << megabytes;
  EXPECT_EQ(PawnHash::bucketCountFor(3), 65536u);
  TTHashTable table("TT hash");
  EXPECT_EQ(sized(table, 0), "# new size of TT hash: 0 MB\n");
  EXPECT_EQ(table.entryCount, 4u);
  EXPECT_EQ(sized(table, 2), "# new size of TT hash: 2 MB\n");
  KeyedBoard kb;
  for (uint64_t k : {1, 2, 3, 16384 + 100}) ttStore(table, kb.at(k), -32000, 32000, -1, 1, 1, 1, 0, NoMove);
  EXPECT_DOUBLE_EQ(ttHashFill(table), 3 * 100.0 / 65536);
}

struct Store {
  uint64_t key;
  uint32_t gamePly, ply, depth;
  int32_t lowest, highest, alpha, beta, score;
  Move move;
};
struct Probe {
  uint64_t key;
  uint32_t ply, depth;
  int32_t alpha, beta;
  bool cut, hit;
  int32_t score;  // 77 and move 99: untouched
  Move move;
};

// Keys of one bucket of a 1 MB table.
constexpr uint64_t inBucket(uint64_t n) { return 5 + n * 16384; }
constexpr int32_t L = -31999, H = 31998;  // what the position can come to, at ply 1

TEST(TranspositionTable, StoreAndProbeCases) {
  const struct {
    const char* what;
    std::vector<Store> stores;
    std::vector<Probe> probes;
  } cases[] = {
      {"a miss touches no output", {}, {{42, 1, 1, -100, 100, false, false, 77, 99}}},
      {"move and score whatever the depth",
       {{42, 10, 1, 6, L, H, L, H, 35, 0x1234}},
       {{42, 1, 10, -100, 100, false, true, 35, 0x1234}, {42, 1, 6, -100, 100, true, true, 35, 0x1234}}},
      {"lower bound", {{1, 10, 1, 5, -200, 300, 0, 100, 150, 0}},
       {{1, 1, 5, 0, 150, true, true, 150, 99}, {1, 1, 5, 0, 151, false, true, 150, 99}}},
      {"upper bound", {{3, 10, 1, 5, -200, 300, 0, 100, 0, 0}},
       {{3, 1, 5, 0, 10, true, true, 0, 99}, {3, 1, 5, -1, 10, false, true, 0, 99}}},
      {"exact, deep enough or not", {{2, 10, 1, 5, -200, 300, 0, 100, 50, 0}},
       {{2, 1, 4, 60, 70, true, true, 50, 99}, {2, 1, 6, 60, 70, false, true, 50, 99}}},
      {"at the highest score a fail high is exact", {{5, 10, 1, 5, -200, 300, 0, 100, 300, 0}},
       {{5, 1, 5, 0, 400, true, true, 300, 99}}},
      {"mate in 5 seen at ply 3, read at ply 7", {{42, 10, 3, 4, L, H, L, H, 31992, 0}},
       {{42, 7, 4, -32000, 32000, true, true, 31988, 99}}},
      {"20001 is", {{42, 10, 3, 4, L, H, L, H, 20001, 0}}, {{42, 9, 4, -32000, 32000, true, true, 19995, 99}}},
      {"a full bucket of depths 9, 4, 4, 7 gives up the first 4",
       {{inBucket(10), 20, 2, 9, L, H, L, H, 0, 0}, {inBucket(11), 20, 2, 4, L, H, L, H, 0, 0},
        {inBucket(12), 20, 2, 4, L, H, L, H, 0, 0}, {inBucket(13), 20, 2, 7, L, H, L, H, 0, 0},
        {inBucket(20), 20, 2, 12, L, H, L, H, 0, 0}},
       {{inBucket(11), 1, 0, L, H, false, false, 77, 99}, {inBucket(12), 1, 0, L, H, true, true, 0, 99},
        {inBucket(20), 1, 0, L, H, true, true, 0, 99}}},
  };
  TTHashTable table("TT hash");
  sized(table, 1);
  KeyedBoard kb;
  for (const auto& c : cases) {
    table.clear();
    for (const Store& s : c.stores)
      ttStore(table, kb.at(s.key, s.gamePly), s.lowest, s.highest, s.alpha, s.beta, s.ply, s.depth, s.score, s.move);
    for (const Probe& p : c.probes) {
      int32_t score = 77;
      Move move = 99;
      bool hit = false;
      EXPECT_EQ(ttProbe(table, kb.at(p.key), p.alpha, p.beta, p.ply, p.depth, score, move, hit), p.cut) << c.what;
      EXPECT_EQ(hit, p.hit) << c.what;
      EXPECT_EQ(score, p.score) << c.what;
      EXPECT_EQ(move, p.move) << c.what;
    }
  }
}

// Threads store and probe one bucket at once: under the thread sanitizer the
// unlocked access is well defined; everywhere a probe returns only what some
// store wrote, though a torn entry may pair fields of two stores.
TEST(TranspositionTableThreadTest, ConcurrentStoresAndProbes) {
  TTHashTable table("TT hash");
  sized(table, 0);
  std::vector<KeyedBoard> boards(4);  // made before the threads: the first builds shared tables
  std::vector<int> bad(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 20000; ++i) {
        const uint64_t key = 1 + uint64_t((i * 7 + t) % 11);
        Board_0x88& b = boards[size_t(t)].at(key);
        int32_t score = -1;
        Move move = NoMove;
        bool hit = false;
        if ((i + t) % 3 == 0)
          ttStore(table, b, -31999, 31998, -31999, 31998, 1, uint32_t(i % 20), int32_t(key), Move(key));
        else if (ttProbe(table, b, -32000, 32000, 1, 0, score, move, hit), hit && (score < 0 || score > 11 || move > 11))
          ++bad[size_t(t)];
      }
    });
  for (std::thread& th : threads) th.join();
  EXPECT_EQ(bad, std::vector<int>(4, 0));
}

}  // namespace
