// The recording evaluation gives what evaluate gives, and the evaluation
// treats both colours alike, over the suite and positions of random games.
#include <gtest/gtest.h>

#include <cstdlib>

#include "board/fen_writer.h"
#include "diagnostics/random_positions.h"
#include "eval/eval_record.h"
#include "eval_test_support.h"

namespace {

TEST(EvaluationReportTest, RecordingMatchesEvaluateAndColoursScoreAlike) {
  std::vector<std::string> fens = evaltest::suiteFens();
  auto scratch = std::make_unique<Board_0x88>();
  std::srand(99);
  for (int i = 0; i < 2000; ++i) {
    std::string fen = randomPositionFen(*scratch);
    // A finished game or a side without its king has no evaluation to compare.
    if (scratch->side[White].count[King] == 1 && scratch->side[Black].count[King] == 1) fens.push_back(fen);
  }
  PawnHash& table = evaltest::pawnHash();
  for (const std::string& fen : fens) {
    auto board = evaltest::boardFrom(fen);
    const int32_t plain = evaluate(*board, table, FullWindowAlpha, FullWindowBeta);
    EXPECT_EQ(evaluateWithReport(*board, table), plain) << fen;
    EXPECT_EQ(evaluateWithReport(*board, table), plain) << fen << " (from the pawn hash)";
    auto mirrored = evaltest::boardFrom(evaltest::mirrorFen(fen));
    EXPECT_EQ(evaluate(*mirrored, table, FullWindowAlpha, FullWindowBeta), plain) << fen;
  }
  EXPECT_GT(fens.size(), 1500u);
}

}  // namespace
