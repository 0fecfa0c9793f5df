// The recording evaluation gives what evaluate gives, the printed total is
// that score from White's view, and the evaluation treats both colours alike,
// over the suite and positions of random games.
#include <gtest/gtest.h>

#include <cstdlib>

#include "board/fen_writer.h"
#include "diagnostics/random_positions.h"
#include "eval/eval_record.h"
#include "eval/evaluation_report.h"
#include "eval_test_support.h"

namespace {

// The number after "Total evaluation =" in a printed report.
int printedTotal(const std::string& report) {
  const std::string mark = "Total evaluation =";
  size_t at = report.find(mark);
  EXPECT_NE(at, std::string::npos);
  return at == std::string::npos ? 0 : std::atoi(report.c_str() + at + mark.size());
}

TEST(EvaluationReportTest, RecordingMatchesEvaluateAndColoursScoreAlike) {
  std::vector<std::string> fens = evaltest::suiteFens();
  auto scratch = std::make_unique<Board_0x88>();
  std::srand(99);
  for (int i = 0; i < 3000; ++i) {
    std::string fen = randomPositionFen(*scratch);
    // A finished game or a side without its king has no evaluation to compare.
    if (scratch->side[White].count[King] == 1 && scratch->side[Black].count[King] == 1) fens.push_back(fen);
  }
  PawnHash& table = evaltest::pawnHash();
  // One slot, emptied for each position: the first report computes the
  // structure, the second finds it.
  PawnHash oneSlot;
  oneSlot.sizeFor(0);
  for (const std::string& fen : fens) {
    auto board = evaltest::boardFrom(fen);
    const int32_t plain = evaluate(*board, table, FullWindowAlpha, FullWindowBeta);
    oneSlot.clear();
    EXPECT_EQ(evaluateWithReport(*board, oneSlot), plain) << fen;
    EvalRow first[EvalRowCount];
    std::copy(std::begin(ReportRecord::rows), std::end(ReportRecord::rows), first);
    EXPECT_EQ(evaluateWithReport(*board, oneSlot), plain) << fen << " (from the pawn hash)";
    const EvalRow* second = ReportRecord::rows;
    const EvalRow& weak = first[RowWeakPawns];
    EXPECT_EQ(second[RowPawnStructure].white, weak.white - weak.black) << fen;
    EXPECT_EQ(first[RowPawnStructure].white, (ScorePair{0, 0})) << fen;
    EXPECT_EQ(second[RowWeakPawns].white, (ScorePair{0, 0})) << fen;
    EXPECT_EQ(second[RowWeakPawns].black, (ScorePair{0, 0})) << fen;

    testing::internal::CaptureStdout();
    printEvaluation(*board, oneSlot);
    const int total = printedTotal(testing::internal::GetCapturedStdout());
    EXPECT_EQ(total, board->sideToMove == White ? plain : -plain) << fen;

    auto mirrored = evaltest::boardFrom(evaltest::mirrorFen(fen));
    EXPECT_EQ(evaluate(*mirrored, table, FullWindowAlpha, FullWindowBeta), plain) << fen;
  }
  EXPECT_GT(fens.size(), 2500u);
}

}  // namespace
