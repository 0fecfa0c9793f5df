// The evaluation frame: early zero, lazy exit, clamp, mating material, scaling,
// the choice of the mate branch, and colour symmetry.
#include <gtest/gtest.h>

#include <cstring>

#include "eval/evaluate.h"
#include "eval/scale_factor.h"
#include "eval/score_pair_ops.h"
#include "eval_test_support.h"

namespace {

using evaltest::evaluateFen;
using evaltest::mirrorFen;

constexpr int Inf = 32000;

struct Frame {
  int scaleFactor;
  bool canWinBoth;
  bool mateBranch;
};

Frame frameOf(const std::string& fen) {
  auto board = evaltest::boardFrom(fen);
  MaterialInfo info;
  computeMaterial(info, *board);
  return Frame{computeScaleFactor(*board, info), info.canWin[White] && info.canWin[Black],
               takesMateBranch(info, taper(info.material, info.phase))};
}

std::string withClock(const std::string& fen, int clock) {
  std::istringstream in(fen);
  std::string placement, stm, castling, ep;
  in >> placement >> stm >> castling >> ep;
  return placement + " " + stm + " " + castling + " " + ep + " " + std::to_string(clock) + " 40";
}

// Positions beside the suite: endings of every kind, promoted pieces, clocks.
const char* const extraFens[] = {
    "8/8/8/4k3/8/8/8/R3K3 w - - 0 1",
    "k7/8/8/8/3K4/8/8/2B1N3 b - - 0 1",
    "3bk3/8/8/8/8/8/8/R3K3 w - - 0 1",
    "8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1",
    "8/8/2k5/P7/8/8/8/2B1K3 b - - 0 1",
    "8/8/8/8/8/8/2p5/3k2QK w - - 0 1",
    "8/8/8/8/3k4/8/p7/B6K w - - 0 1",
    "4k3/4p3/8/8/8/8/8/2B1K3 b - - 0 1",
    "r1b1kb1r/8/8/8/8/8/3BB3/1NB1KB2 w - - 0 1",
    "rbb1k2r/8/8/8/8/8/8/r2QKQ2 b - - 0 1",
    "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - - 0 1",
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 73 1",
};

TEST(EvaluateTest, ZeroBeforeAnyWork) {
  for (const char* fen : {
           "4k3/8/8/8/8/8/8/4K3 w - - 0 1",
           "4k3/8/8/8/8/8/8/1N2K3 w - - 0 1",
           "4k3/8/8/8/8/8/8/1N2K3 b - - 0 1",
           "4k3/8/8/8/8/8/8/1N2K1N1 w - - 0 1",
           "2b1k3/8/8/8/8/8/8/1N2K3 w - - 0 1",
           "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 100 60",
           "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 150 60",
           "8/8/8/4k3/8/8/8/R3K3 w - - 100 80",  // the mate branch too
           "8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1",   // wrong bishop, king in the corner
       }) {
    EXPECT_EQ(evaluateFen(fen), 0) << fen;
    // No bound comes out either, whatever the window.
    EXPECT_EQ(evaluateFen(fen, Inf - 1, Inf), 0) << fen;
    EXPECT_EQ(evaluateFen(fen, -Inf, -Inf + 1), 0) << fen;
  }
}

TEST(EvaluateTest, StartPositionAndLazyThresholds) {
  // Material and piece-square sums cancel; the side to move has 24.
  const std::string start = startPositionFen;
  const std::string blackToMove = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1";
  EXPECT_EQ(evaluateFen(start), 24);
  EXPECT_EQ(evaluateFen(blackToMove), 24);

  // base = 24: alpha from base + 200, beta from base - 200 give the bound.
  EXPECT_EQ(evaluateFen(start, 223, Inf), 24);
  EXPECT_EQ(evaluateFen(start, 224, Inf), 224);
  EXPECT_EQ(evaluateFen(start, 5000, Inf), 224);
  EXPECT_EQ(evaluateFen(start, -Inf, -175), 24);
  EXPECT_EQ(evaluateFen(start, -Inf, -176), -176);
  EXPECT_EQ(evaluateFen(blackToMove, 224, Inf), 224);
  EXPECT_EQ(evaluateFen(blackToMove, -Inf, -176), -176);
}

TEST(EvaluateTest, LazyExitAndClampOverTheSuite) {
  int checked = 0;
  for (const std::string& base : evaltest::suiteFens()) {
    for (const std::string& fen : {base, mirrorFen(base)}) {
      Frame frame = frameOf(fen);
      int full = evaluateFen(fen);
      if (frame.mateBranch || frame.scaleFactor != 100 || !frame.canWinBoth) continue;
      ++checked;
      // The bounds name the base score; the full score stays within the clamp of it.
      int above = evaluateFen(fen, Inf - 1, Inf);
      int below = evaluateFen(fen, -Inf, -Inf + 1);
      int b = above - PositionalLimit;
      EXPECT_EQ(below, b - PositionalLimit) << fen;
      EXPECT_LE(full, b + PositionalLimit) << fen;
      EXPECT_GE(full, b - PositionalLimit) << fen;
      EXPECT_EQ(evaluateFen(fen, b + 199, Inf), full) << fen;
      EXPECT_EQ(evaluateFen(fen, b + 200, Inf), b + 200) << fen;
      EXPECT_EQ(evaluateFen(fen, -Inf, b - 199), full) << fen;
      EXPECT_EQ(evaluateFen(fen, -Inf, b - 200), b - 200) << fen;
      // A window that holds the score changes nothing.
      EXPECT_EQ(evaluateFen(fen, full - 1, full + 1), full) << fen;
    }
  }
  EXPECT_GT(checked, 50);
}

TEST(EvaluateTest, ClampAndScaleHelpers) {
  EXPECT_EQ(clampPositional(260), 200);
  EXPECT_EQ(clampPositional(-260), -200);
  EXPECT_EQ(clampPositional(200), 200);
  EXPECT_EQ(clampPositional(-200), -200);
  EXPECT_EQ(clampPositional(199), 199);
  EXPECT_EQ(clampPositional(-1), -1);
  EXPECT_EQ(applyScaleFactor(101, 75), 75);   // 75.75
  EXPECT_EQ(applyScaleFactor(-101, 75), -75);  // toward zero
  EXPECT_EQ(applyScaleFactor(-3, 25), 0);
  EXPECT_EQ(applyScaleFactor(500, 100), 500);
}

TEST(EvaluateTest, FiftyMoveScalingAndNoLazyExitBelowFullScale) {
  int negatives = 0;
  for (const std::string& base : evaltest::suiteFens()) {
    for (const std::string& fen : {base, mirrorFen(base)}) {
      if (frameOf(withClock(fen, 0)).scaleFactor != 100 || frameOf(fen).mateBranch) continue;
      int fresh = evaluateFen(withClock(fen, 0));
      std::string late = withClock(fen, 50);
      int scaled = evaluateFen(late);
      EXPECT_EQ(scaled, fresh * 75 / 100) << fen;
      negatives += fresh < 0 && fresh % 4 != 0;
      // At 75 percent the window is not looked at.
      EXPECT_EQ(evaluateFen(late, Inf - 1, Inf), scaled) << fen;
      EXPECT_EQ(evaluateFen(late, -Inf, -Inf + 1), scaled) << fen;
      EXPECT_EQ(evaluateFen(withClock(fen, 99)), fresh / 100) << fen;
    }
  }
  EXPECT_GT(negatives, 0);  // rounding toward zero was exercised on negative scores
}

TEST(EvaluateTest, SideWithoutMatingMaterialCannotBeAhead) {
  // King and bishop against king and pawn: the bishop's edge is cut to 0.
  EXPECT_EQ(evaluateFen("4k3/4p3/8/8/8/8/8/2B1K3 w - - 0 1"), 0);
  EXPECT_EQ(evaluateFen("4k3/4p3/8/8/8/8/8/2B1K3 b - - 0 1"), 0);
  EXPECT_EQ(evaluateFen(mirrorFen("4k3/4p3/8/8/8/8/8/2B1K3 w - - 0 1")), 0);
  // A score for the pawn's side stands, from either side's view.
  int whiteView = evaluateFen("8/8/8/8/3k4/8/p7/B6K w - - 0 1");
  int blackView = evaluateFen("8/8/8/8/3k4/8/p7/B6K b - - 0 1");
  EXPECT_LT(whiteView, 0);
  EXPECT_GT(blackView, 0);
  // The lazy exit is off, since one side can't win.
  EXPECT_EQ(evaluateFen("8/8/8/8/3k4/8/p7/B6K w - - 0 1", Inf - 1, Inf), whiteView);
  EXPECT_EQ(evaluateFen("8/8/8/8/3k4/8/p7/B6K w - - 0 1", -Inf, -Inf + 1), whiteView);
}

TEST(EvaluateTest, MateBranchTakesOverFrom175) {
  // White knight and four bishops against two bishops and two rooks: m = -175,
  // phase 11. Mate branch: -175 + 11 for White to move, weak king on the edge,
  // kings seven apart.
  const std::string at175 = "r1b1kb1r/8/8/8/8/8/3BB3/1NB1KB2 w - - 0 1";
  EXPECT_TRUE(frameOf(at175).mateBranch);
  EXPECT_EQ(evaluateFen(at175), -164);
  EXPECT_EQ(evaluateFen(at175, Inf - 1, Inf), -164);  // no bound: the window plays no part
  EXPECT_EQ(evaluateFen(at175, -Inf, -Inf + 1), -164);
  EXPECT_EQ(evaluateFen(mirrorFen(at175)), -164);

  // Two queens against two bishops and three rooks: m = -174 runs the main path,
  // which answers a window far away with a bound.
  const std::string at174 = "rbb1k2r/8/8/8/8/8/8/r2QKQ2 w - - 0 1";
  EXPECT_FALSE(frameOf(at174).mateBranch);
  int full = evaluateFen(at174);
  EXPECT_NE(evaluateFen(at174, Inf - 1, Inf), full);
  EXPECT_EQ(evaluateFen(at174, Inf - 1, Inf) - evaluateFen(at174, -Inf, -Inf + 1), 2 * PositionalLimit);
}

TEST(EvaluateTest, MateBranchIsNotScaled) {
  // Rook against bishop has the factor 25, but the mate branch ignores it:
  // m = 560 - 325 = 235, phase 3, weak king on the edge, kings seven apart.
  EXPECT_EQ(evaluateFen("3bk3/8/8/8/8/8/8/R3K3 w - - 0 1"), 238);
  EXPECT_EQ(evaluateFen("3bk3/8/8/8/8/8/8/R3K3 w - - 99 80"), 238);
  EXPECT_EQ(evaluateFen("3bk3/8/8/8/8/8/8/R3K3 w - - 100 80"), 0);
  EXPECT_EQ(evaluateFen("3bk3/8/8/8/8/8/8/R3K3 b - - 0 1"), 3 - 235);
}

TEST(EvaluateTest, ColourMirrorScoresAlike) {
  std::vector<std::string> fens = evaltest::suiteFens();
  ASSERT_GT(fens.size(), 100u);
  for (const char* fen : extraFens) fens.push_back(fen);
  for (const std::string& fen : fens) {
    std::string mirrored = mirrorFen(fen);
    EXPECT_EQ(mirrorFen(mirrored), fen);
    EXPECT_EQ(evaluateFen(fen), evaluateFen(mirrored)) << fen << " | " << mirrored;
    EXPECT_EQ(evaluateFen(fen, Inf - 1, Inf), evaluateFen(mirrored, Inf - 1, Inf)) << fen;
    EXPECT_EQ(evaluateFen(fen, -Inf, -Inf + 1), evaluateFen(mirrored, -Inf, -Inf + 1)) << fen;
  }
}

TEST(EvaluateTest, LeavesTheBoardAsItWas) {
  for (const std::string& fen : evaltest::suiteFens()) {
    auto board = evaltest::boardFrom(fen);
    auto before = std::make_unique<Board_0x88>(*board);
    int first = evaluate(*board, evaltest::pawnHash(), -Inf, Inf);
    EXPECT_EQ(evaluate(*board, evaltest::pawnHash(), -Inf, Inf), first);
    EXPECT_EQ(std::memcmp(board->piece, before->piece, sizeof board->piece), 0);
    EXPECT_EQ(std::memcmp(board->color, before->color, sizeof board->color), 0);
    EXPECT_EQ(std::memcmp(board->slot, before->slot, sizeof board->slot), 0);
    EXPECT_EQ(std::memcmp(board->side, before->side, sizeof board->side), 0);
    EXPECT_EQ(board->psq[White], before->psq[White]);
    EXPECT_EQ(board->psq[Black], before->psq[Black]);
    EXPECT_EQ(board->currentRecord().hashKey, before->currentRecord().hashKey);
    EXPECT_EQ(board->currentRecord().pawnHashKey, before->currentRecord().pawnHashKey);
    EXPECT_EQ(board->sideToMove, before->sideToMove);
  }
}

}  // namespace
