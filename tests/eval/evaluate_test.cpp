// The evaluation through its entry: worked scores with their lazy bounds, and
// properties over the suite and random positions, each also colour-mirrored:
// both colours score alike, the report agrees, the lazy exit and the clamp
// fit together, the fifty-move taper scales, the board is left as it was.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "diagnostics/random_positions.h"
#include "eval/eval_record.h"
#include "eval/evaluation_report.h"
#include "eval/scale_factor.h"
#include "eval_test_support.h"

namespace {

using evaltest::evaluateFen;
using evaltest::mirrorFen;

constexpr int Inf = 32000;

TEST(EvaluateTest, ScoresAndBoundsOfWorkedPositions) {
  const struct {
    const char* what;
    const char* fen;
    int full, high, low;  // with the full window, one far above, one far below
  } cases[] = {
      {"bare kings", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0, 0, 0},
      {"fifty moves in the mate branch", "8/8/8/4k3/8/8/8/R3K3 w - - 100 80", 0, 0, 0},
      {"wrong bishop, king in the corner", "8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", 0, 0, 0},
      {"start: the side to move has 24", startPositionFen, 24, 224, -176},
      {"bishop against pawn: no edge for the bishop", "4k3/4p3/8/8/8/8/8/2B1K3 w - - 0 1", 0, 0, 0},
      {"the pawn's edge stands, no lazy exit", "8/8/8/8/3k4/8/p7/B6K w - - 0 1", -40, -40, -40},
      {"mate branch from 175", "r1b1kb1r/8/8/8/8/8/3BB3/1NB1KB2 w - - 0 1", -164, -164, -164},
      {"174: the main path with bounds", "rbb1k2r/8/8/8/8/8/8/r2QKQ2 w - - 0 1", -522, -265, -665},
      {"rook against bishop: the mate branch isn't scaled", "3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", 238, 238, 238},
      {"at clock 100 a draw", "3bk3/8/8/8/8/8/8/R3K3 w - - 100 80", 0, 0, 0},
      {"the weak side to move", "3bk3/8/8/8/8/8/8/R3K3 b - - 0 1", 3 - 235, 3 - 235, 3 - 235},
      // The mate branch: material, the move, the kings' distance, the weak king's edge.
      {"rook mate, king in the centre", "8/8/8/4k3/8/8/8/R3K3 w - - 0 1", 560 + 2 + 6 - 192, 376, 376},
      {"weak king on the edge, kings 7 apart", "4k3/8/8/8/8/8/8/R3K3 w - - 0 1", 562, 562, 562},
      {"queen mate, kings in opposition", "4k3/8/4K3/8/8/8/8/Q7 w - - 0 1", 1101 + 4 + 10, 1115, 1115},
      // Bishop and knight: the defender is safe in the corners the bishop can't reach.
      {"KBNK, safe corner a8", "k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1", 620 + 2 + 6 - 112, 516, 516},
      {"KBNK, the bishop's corner a1", "8/8/8/8/3K4/8/8/k1B1N3 w - - 0 1", 630, 630, 630},
      {"KBNK, a step out of the corner", "8/k7/8/8/3K4/8/8/2B1N3 w - - 0 1", 534, 534, 534},
      {"KBNK, light bishop, a8 lost", "k7/8/8/8/3K4/8/8/3BN3 w - - 0 1", 628, 628, 628},
      {"a fifth man: no corner term", "k6n/8/8/8/3K4/8/8/2B1N3 w - - 0 1", 334, 334, 334},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(evaluateFen(c.fen), c.full) << c.what;
    EXPECT_EQ(evaluateFen(c.fen, Inf - 1, Inf), c.high) << c.what;
    EXPECT_EQ(evaluateFen(c.fen, -Inf, -Inf + 1), c.low) << c.what;
  }
}

std::string withClock(const std::string& fen, int clock) {
  std::istringstream in(fen);
  std::string placement, stm, castling, ep;
  in >> placement >> stm >> castling >> ep;
  return placement + " " + stm + " " + castling + " " + ep + " " + std::to_string(clock) + " 40";
}

int printedTotal(const Board_0x88& board, PawnHash& table) {
  testing::internal::CaptureStdout();
  printEvaluation(board, table);
  const std::string report = testing::internal::GetCapturedStdout(), mark = "Total evaluation =";
  const size_t at = report.find(mark);
  return at == std::string::npos ? -99999 : std::atoi(report.c_str() + at + mark.size());
}

TEST(EvaluateTest, PropertiesOverSuiteAndRandomPositions) {
  std::vector<std::string> fens = evaltest::suiteFens();
  ASSERT_GT(fens.size(), 100u);
  auto scratch = std::make_unique<Board_0x88>();
  std::srand(99);
  for (int i = 0; i < 1500; ++i) {
    std::string fen = randomPositionFen(*scratch);
    if (scratch->side[White].count[King] == 1 && scratch->side[Black].count[King] == 1) fens.push_back(fen);
  }
  PawnHash& table = evaltest::pawnHash();
  PawnHash oneSlot;
  oneSlot.sizeFor(0);
  int lazyChecked = 0, scaledChecked = 0;
  for (const std::string& base : fens) {
    ASSERT_EQ(mirrorFen(mirrorFen(base)), base);
    for (const std::string& fen : {base, mirrorFen(base)}) {
      auto board = evaltest::boardFrom(fen);
      auto before = std::make_unique<Board_0x88>(*board);
      const int full = evaluate(*board, table, -Inf, Inf);
      const int above = evaluate(*board, table, Inf - 1, Inf), below = evaluate(*board, table, -Inf, -Inf + 1);
      EXPECT_EQ(std::memcmp(board->piece, before->piece, sizeof board->piece), 0) << fen;
      EXPECT_EQ(std::memcmp(board->side, before->side, sizeof board->side), 0) << fen;
      EXPECT_EQ(board->currentRecord().hashKey, before->currentRecord().hashKey) << fen;
      if (fen != base) {
        EXPECT_EQ(full, evaluateFen(base)) << fen;
        EXPECT_EQ(above, evaluateFen(base, Inf - 1, Inf)) << fen;
        EXPECT_EQ(below, evaluateFen(base, -Inf, -Inf + 1)) << fen;
      }
      // The report gives the same score twice: computing the pawn structure, then finding it.
      oneSlot.clear();
      EXPECT_EQ(evaluateWithReport(*board, oneSlot), full) << fen;
      const EvalRow weak = ReportRecord::rows[RowWeakPawns];
      EXPECT_EQ(ReportRecord::rows[RowPawnStructure].white, (ScorePair{0, 0})) << fen;
      EXPECT_EQ(printedTotal(*board, oneSlot), board->sideToMove == White ? full : -full) << fen;
      EXPECT_EQ(ReportRecord::rows[RowPawnStructure].white, weak.white - weak.black) << fen;

      MaterialInfo info;
      computeMaterial(info, *board);
      const bool mateBranch = takesMateBranch(info, taper(info.material, info.phase));
      const int scale = computeScaleFactor(*board, info);
      if (!mateBranch && scale == 100 && info.canWin[White] && info.canWin[Black]) {
        // The bounds name the base score; the full score lies within the clamp of it.
        ++lazyChecked;
        const int b = above - PositionalLimit;
        EXPECT_EQ(below, b - PositionalLimit) << fen;
        EXPECT_LE(std::abs(full - b), PositionalLimit) << fen;
        EXPECT_EQ(evaluateFen(fen, b + 199, Inf), full) << fen;
        EXPECT_EQ(evaluateFen(fen, b + 200, Inf), b + 200) << fen;
        EXPECT_EQ(evaluateFen(fen, -Inf, b - 199), full) << fen;
        EXPECT_EQ(evaluateFen(fen, -Inf, b - 200), b - 200) << fen;
      }
      if (!mateBranch && computeScaleFactor(*evaltest::boardFrom(withClock(fen, 0)), info) == 100) {
        // At three quarters no window is looked at; rounding is toward zero.
        ++scaledChecked;
        const int fresh = evaluateFen(withClock(fen, 0));
        EXPECT_EQ(evaluateFen(withClock(fen, 50)), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 50), Inf - 1, Inf), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 50), -Inf, -Inf + 1), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 99)), fresh / 100) << fen;
      }
    }
  }
  EXPECT_GT(lazyChecked, 500);
  EXPECT_GT(scaledChecked, 1000);
}

}  // namespace
