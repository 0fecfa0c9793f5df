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
      // A knight in the centre reaches all eight squares.
      {"4k3/8/8/8/3N4/8/8/4K3 w - - 0 1", "d4", {3 * 8, 4 * 8}},
      // Rook e1 on the only open file, the enemy king on the next one: 11 squares, bonus, +15.
      {"3k4/pppp1ppp/8/8/8/8/PPPP1PPP/4RK2 w - - 0 1", "e1", {55 + 47 + 15, 77 + 37 + 0}},
      // Two rooks on one open file: each its full term (6 and 4 squares).
      {"4k3/pppp1ppp/8/8/8/8/PPPPRPPP/4RK2 w - - 0 1", "e2", {30 + 47 + 67, 42 + 37 + 54}},
      {"4k3/pppp1ppp/8/8/8/8/PPPPRPPP/4RK2 w - - 0 1", "e1", {20 + 47 + 67, 28 + 37 + 54}},
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

// The walk reads the piece on each square, so a queen in a pawn slot (the
// second queen of a FEN) is scored as a queen: 14 and 16 squares.
TEST(PieceActivityTest, QueenInAPawnSlotMovesAsAQueen) {
  auto board = evaltest::boardFrom("qq2k3/8/8/8/8/8/8/QQ2K3 w - - 0 1");
  evaluateWithReport(*board, evaltest::pawnHash());
  const EvalRow& mobility = ReportRecord::rows[RowMobility];
  EXPECT_EQ(mobility.white, (ScorePair{4 * 30, 6 * 30}));
  EXPECT_EQ(mobility.black, (ScorePair{4 * 30, 6 * 30}));
}

}  // namespace
