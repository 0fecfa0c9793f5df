// Mobility and file terms of single pieces, worked out by hand.
#include <gtest/gtest.h>

#include "eval/piece_activity.h"
#include "eval_test_support.h"

namespace {

TEST(PieceActivityTest, HandComputedPieces) {
  const struct {
    const char* fen;
    const char* square;
    ScorePair expected;
  } cases[] = {
      // Knight a1 behind its own b3 and c2: no move, only the penalty.
      {"4k3/8/8/8/8/1P6/2P5/N3K3 w - - 0 1", "a1", {-12, -58}},
      // Bishop c1 between its own b2 and an enemy knight on d2: one move, no penalty.
      {"4k3/8/8/8/8/8/1P1n4/2B1K3 w - - 0 1", "c1", {6, 4}},
      // Queen a1 hemmed in by its own pieces.
      {"4k3/8/8/8/8/8/PP6/QR2K3 w - - 0 1", "a1", {0, -3}},
      // Rook e1 on one of three open files with the enemy king on it: 12 squares, bonus, king file.
      {"4k3/pppp3p/8/8/8/8/PPPP3P/4R1K1 w - - 0 1", "e1", {60 + 45 + 67, 84 + 20 + 54}},
      // Rook e1 on the only half-open file, the enemy king next to it: 10 squares and the table value only.
      {"3k4/pppppppp/8/8/8/8/PPPP1PPP/4RK2 w - - 0 1", "e1", {50 + 12, 70 - 14}},
      // No pawns: no open files, no file term.
      {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "a1", {50, 70}},
      // Queen d1 on an open file next to the enemy king: 0 / +11 besides its 14 squares.
      {"4k3/ppp5/8/8/8/8/PPP5/3QK3 w - - 0 1", "d1", {4 * 14, 6 * 14 + 11}},
  };
  initEvalTables();
  PawnHash table;
  table.sizeFor(1);
  for (const auto& c : cases) {
    auto board = evaltest::boardFrom(c.fen);
    PawnInfo pawns{};
    evaluatePawnStructure(*board, table, pawns);
    const Square sq = makeSquare(c.square[0] - 'a', c.square[1] - '1');
    const ScorePair got = pieceActivity<White>(*board, sq, PieceType(board->piece[sq]), pawns);
    EXPECT_EQ(got.mg, c.expected.mg) << c.fen;
    EXPECT_EQ(got.eg, c.expected.eg) << c.fen;
  }
}

}  // namespace
