// Pawn structure, passed pawns and the pawn hash: hand-computed positions,
// and a table shared by threads that never hands out a torn entry.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "eval/pawn_structure.h"
#include "eval_test_support.h"

namespace {

using evaltest::boardFrom;

struct Terms {
  ScorePair structure, whitePassed, blackPassed;
};

Terms termsOf(const std::string& fen, PawnHash& table) {
  auto b = boardFrom(fen);
  MaterialInfo info;
  computeMaterial(info, *b);
  PawnInfo pawns{};
  Terms t;
  t.structure = evaluatePawnStructure(*b, table, pawns);
  t.whitePassed = passedPawnTerms<White>(*b, pawns, info.signature[Black]);
  t.blackPassed = passedPawnTerms<Black>(*b, pawns, info.signature[White]);
  return t;
}

TEST(PawnStructureTest, HandComputedPositions) {
  const struct {
    const char* fen;
    Terms expected;
  } cases[] = {
      // a2 and a3 alone: isolated once, doubled once; both passed, a2 with a3 ahead (d 5 + 1).
      {"4k3/8/8/8/8/P7/P7/4K3 w - - 0 1", {{-39, -39}, {4 + 20, 28 + 8}, {0, 0}}},
      // a2 behind b4: its path a3, a4 is free.
      {"4k3/8/8/8/1P6/8/P7/4K3 b - - 0 1", {{0, 0}, {4 + 16, 28 + 52}, {0, 0}}},
      // b5 attacks a4: a2 is backward (attacked); b5 is isolated; nothing passed.
      {"4k3/8/8/1p6/1P6/8/P7/4K3 w - - 0 1", {{-22 + 27, -11 + 9}, {0, 0}, {0, 0}}},
      // a3 blocks the path: backward (blocked); a3 is isolated. b4 is passed (d 4), a3 is not.
      {"4k3/8/8/8/1P6/p7/P7/4K3 w - - 0 1", {{0 + 27, -1 + 9}, {16, 52}, {0, 0}}},
      // The rule of the square: a5 with d 3 against a king on f6 (Black to move) runs through; from e6 it doesn't.
      {"8/8/5k2/P7/8/8/8/K7 b - - 0 1", {{-27, -9}, {32 + 170, 79 + 215}, {0, 0}}},
      {"8/8/4k3/P7/8/8/8/K7 b - - 0 1", {{-27, -9}, {32, 79}, {0, 0}}},
      // A knight left to the defender: no race.
      {"8/8/5k2/P7/8/8/8/K6n b - - 0 1", {{-27, -9}, {32, 79}, {0, 0}}},
      // d4 with its own knight and an enemy knight ahead: d 6, quartered.
      {"4k3/3n4/3N4/8/3P4/8/8/4K3 w - - 0 1", {{-27, -9}, {20 / 4, 8 / 4}, {0, 0}}},
      // Only its own knight ahead: d 5, not quartered; the king on e8 is in time.
      {"4k3/8/3N4/8/3P4/8/8/4K3 w - - 0 1", {{-27, -9}, {4, 28}, {0, 0}}},
      // a4 blocks a2's path and b5 attacks it: both outcomes. b5's path b4 is blocked only.
      {"4k3/8/8/1p6/pP6/8/P7/4K3 w - - 0 1", {{-22 - 0, -12 + 1}, {0, 0}, {0, 0}}},
      // b4 and b6 attack two squares of a2's path a3-a5: charged once. b4, b6 isolated and doubled.
      {"4k3/8/1p6/1P6/1p6/8/P7/4K3 w - - 0 1", {{-22 + 39, -11 + 39}, {0, 0}, {0, 0}}},
      // a6 stands on its sixth rank: never backward, even blocked. b7 is passed, d 1, and runs.
      {"4k3/pP6/P7/8/8/8/8/4K3 w - - 0 1", {{27, 9}, {69 + 128, 173 + 228}, {0, 0}}},
      // The rule of the square with White to move: from e6 the king is a move short now.
      {"8/8/5k2/P7/8/8/8/K7 w - - 0 1", {{-27, -9}, {32 + 170, 79 + 215}, {0, 0}}},
      {"8/8/4k3/P7/8/8/8/K7 w - - 0 1", {{-27, -9}, {32 + 170, 79 + 215}, {0, 0}}},
      // A Black a4 (d 3) against the White king: f3 is too far, e3 in time unless Black moves first.
      {"k7/8/8/8/p7/5K2/8/8 w - - 0 1", {{27, 9}, {0, 0}, {32 + 170, 79 + 215}}},
      {"k7/8/8/8/p7/4K3/8/8 w - - 0 1", {{27, 9}, {0, 0}, {32, 79}}},
      {"k7/8/8/8/p7/4K3/8/8 b - - 0 1", {{27, 9}, {0, 0}, {32 + 170, 79 + 215}}},
  };
  initEvalTables();
  PawnHash table;
  table.sizeFor(1);
  for (const auto& c : cases) {
    for (int pass = 0; pass < 2; ++pass) {  // computed, then from the table
      Terms t = termsOf(c.fen, table);
      EXPECT_EQ(t.structure, c.expected.structure) << c.fen << " pass " << pass;
      EXPECT_EQ(t.whitePassed, c.expected.whitePassed) << c.fen;
      EXPECT_EQ(t.blackPassed, c.expected.blackPassed) << c.fen;
    }
  }
}

TEST(PawnStructureTest, MaskTables) {
  const struct {
    Color c;
    int square;  // Square64
    uint64_t front, span, support;
  } cases[] = {
      {White, 10, 0x0004040404040000, 0x000E0E0E0E0E0000, 0x0000000000000A00},  // c2
      {White, 55, 0, 0, 0x0040404040404000},                                     // h7: nothing ahead
      {Black, 36, 0x0000000010101000, 0x0000000038383800, 0x0028282800000000},  // e5
      {Black, 48, 0x0000010101010100, 0x0000030303030300, 0x0002000000000000},  // a7
  };
  initEvalTables();
  for (const auto& c : cases) {
    EXPECT_EQ(frontFileMask[c.c][c.square], c.front) << c.square;
    EXPECT_EQ(frontSpanMask[c.c][c.square], c.span) << c.square;
    EXPECT_EQ(supportMask[c.c][c.square], c.support) << c.square;
  }
}

TEST(PawnHashTest, HitsAreCountedAndPawnlessBoardsLeaveTheTableAlone) {
  initEvalTables();
  PawnHash table;
  table.sizeFor(0);
  auto pawns = boardFrom("4k3/8/8/8/8/P7/P7/4K3 w - - 0 1");
  PawnInfo first{}, second{};
  evaluatePawnStructure(*pawns, table, first);
  EXPECT_EQ(table.hits.get(), 0u);
  evaluatePawnStructure(*pawns, table, second);
  EXPECT_EQ(table.hits.get(), 1u);
  EXPECT_EQ(second.pawns[White], first.pawns[White]);
  EXPECT_EQ(second.openFiles, first.openFiles);
  EXPECT_EQ(second.openFileCount, 7);
  EXPECT_EQ(second.halfOpenFileCount, 1);

  const PawnHashEntry before = table.bucketFor(0).entries[0];
  PawnInfo none{};
  EXPECT_EQ(evaluatePawnStructure(*boardFrom("r3k3/8/8/8/8/8/8/R3K3 w - - 0 1"), table, none), (ScorePair{0, 0}));
  EXPECT_EQ(none.pawns[White] | none.pawns[Black] | none.passers[White] | none.passers[Black], 0u);
  EXPECT_EQ(none.openFiles | none.halfOpenFiles | none.openFileCount | none.halfOpenFileCount, 0);
  EXPECT_EQ(std::memcmp(&before, &table.bucketFor(0).entries[0], sizeof before), 0);
  EXPECT_EQ(table.hits.get(), 1u);
}

// Threads share a table of one slot, so every probe meets another
// structure's entry or a half-written one; none may be used.
TEST(PawnHashThreadTest, SharedTableNeverMixesTwoStructures) {
  initEvalTables();
  std::vector<std::string> fens = evaltest::suiteFens();
  std::vector<ScorePair> expected;
  {
    PawnHash fresh;
    fresh.sizeFor(1);
    for (const std::string& fen : fens) expected.push_back(termsOf(fen, fresh).structure);
  }
  std::vector<std::unique_ptr<Board_0x88>> boards;
  for (const std::string& fen : fens) boards.push_back(boardFrom(fen));
  for (int threads : {2, 4}) {
    PawnHash shared;
    shared.sizeFor(0);
    ASSERT_EQ(shared.bucketCount(), 1u);
    std::atomic<int> wrong{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
      pool.emplace_back([&, t] {
        for (int round = 0; round < 200; ++round)
          for (size_t i = size_t(t); i < boards.size(); i += 3) {
            PawnInfo pawns{};
            if (!(evaluatePawnStructure(*boards[i], shared, pawns) == expected[i])) ++wrong;
          }
      });
    for (std::thread& th : pool) th.join();
    EXPECT_EQ(wrong, 0) << threads << " threads";
  }
}

}  // namespace
