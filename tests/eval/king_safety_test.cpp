// The pawn shield and open files at the king, and the tropism machinery
// whose weights are all 0.
#include <gtest/gtest.h>

#include "eval/king_safety.h"
#include "eval_test_support.h"

extern uint32_t kingTropismTable[6][128];

namespace {

TEST(KingSafetyTest, ShieldAndOpenFiles) {
  const struct {
    const char* fen;
    Color side;
    ScorePair expected;
  } cases[] = {
      {"4k3/8/8/8/8/8/5PPP/6K1 w - - 0 1", White, {0, 0}},      // f2 g2 h2: no hole
      {"4k3/8/8/8/8/8/6P1/6K1 w - - 0 1", White, {-20, 0}},     // the king's own file doesn't cover
      {"4k3/8/8/8/8/5P2/7P/6K1 w - - 0 1", White, {0, 0}},      // f3 and h2
      {"4k3/8/8/8/8/7P/5P2/6K1 w - - 0 1", White, {-10, 0}},    // h3 is too far to cover
      {"4k3/8/8/8/8/8/1P6/K7 w - - 0 1", White, {0, 0}},        // the a file counts as covered
      {"4k3/6K1/8/8/8/8/8/8 w - - 0 1", White, {0, 0}},         // rank 7: nothing ahead to cover
      {"8/8/8/8/8/8/6k1/4K3 b - - 0 1", Black, {0, 0}},         // Black on its rank 7 likewise
      // On an open file between two open files, against rook and queen: all three charges.
      {"r2qk3/p6p/8/8/8/8/P6P/4K3 w - - 0 1", White, {-20 - 78, -80}},
      // Against minor pieces only the shield counts.
      {"n3k3/p6p/8/8/8/8/P6P/4K3 w - - 0 1", White, {-20, 0}},
      // Two queens and two rooks still count as two.
      {"rq1qk2r/p6p/8/8/8/8/P6P/4K3 w - - 0 1", White, {-20 - 78, -80}},
      // One rook: the king's f file and the e file beside it are open, the d file only half-open.
      {"r5k1/ppp3pp/8/8/8/3p4/PPP3PP/5K2 w - - 0 1", White, {-10 - 31 - 4, -12 - 14}},
      // Black looks down the board; f-1 is still toward the a file.
      {"6k1/5ppp/8/8/8/8/8/4K3 b - - 0 1", Black, {0, 0}},
      {"6k1/6p1/8/8/8/8/8/4K3 b - - 0 1", Black, {-20, 0}},
      {"6k1/7p/5p2/8/8/8/8/4K3 b - - 0 1", Black, {0, 0}},   // f6 and h7
      {"6k1/5p2/7p/8/8/8/8/4K3 b - - 0 1", Black, {-10, 0}},  // f7 and h6
      // King on rank 6: the second row is the last rank and counts as covered.
      {"4k3/8/6K1/8/8/8/8/8 w - - 0 1", White, {-10, 0}},
      {"4k3/7P/6K1/8/8/8/8/8 w - - 0 1", White, {0, 0}},
      // No pawns: no open files, but the shield is charged.
      {"r3k3/8/8/8/8/8/8/4K3 w - - 0 1", White, {-20, 0}},
  };
  initEvalTables();
  PawnHash table;
  table.sizeFor(1);
  for (const auto& c : cases) {
    auto board = evaltest::boardFrom(c.fen);
    MaterialInfo info;
    computeMaterial(info, *board);
    PawnInfo pawns{};
    evaluatePawnStructure(*board, table, pawns);
    const ScorePair got = c.side == White ? kingSafety<White>(*board, pawns, info.signature[Black])
                                          : kingSafety<Black>(*board, pawns, info.signature[White]);
    EXPECT_EQ(got.mg, c.expected.mg) << c.fen;
    EXPECT_EQ(got.eg, c.expected.eg) << c.fen;
  }
}

TEST(KingSafetyTest, TropismIsCountedButWeighsNothing) {
  initEvalTables();
  // Against a king on g7: from e5 (difference 34) the pieces bear on f6 and
  // on the knight's f7 and g6; from g4 (difference 48) the knight reaches f6
  // and h6, the rook and queen only the line.
  const uint32_t fromE5[6] = {1, 2, 2, 0, 2, 1}, fromG4[6] = {0, 2, 0, 1, 1, 0};
  for (int row = 0; row < 6; ++row) {
    EXPECT_EQ(kingTropismTable[row][34], fromE5[row]) << row;
    EXPECT_EQ(kingTropismTable[row][48], fromG4[row]) << row;
  }
  // The counts exist: a knight two files and a rank from the reference king bears on its zone.
  int counted = 0;
  for (const auto& row : kingTropismTable)
    for (uint32_t v : row) counted += v != 0;
  EXPECT_GT(counted, 100);
  for (const std::string& fen : evaltest::suiteFens()) {
    auto board = evaltest::boardFrom(fen);
    for (int c = 0; c < 2; ++c)
      for (Square sq : board->side[c].square) {
        if (!onBoard(sq)) continue;
        const PieceType type = PieceType(board->piece[sq]);
        const ScorePair t = c == White ? kingTropism<White>(*board, sq, type) : kingTropism<Black>(*board, sq, type);
        EXPECT_EQ(t.mg, 0);
        EXPECT_EQ(t.eg, 0);
      }
  }
}

}  // namespace
