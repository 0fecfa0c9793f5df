#include "eval/evaluation_report.h"

#include <cstdio>

#include "eval/eval_record.h"
#include "eval/evaluate.h"
#include "eval/material.h"

namespace {

constexpr const char* Rule = "==============================================================================\n";

constexpr const char* rowLabels[EvalRowCount] = {
    "Material",     "PST",         "Passed pawns",      "Weak pawns",   "Pawn structure",      "Mobility",
    "Double attacks", "Outpost",   "Rooks",             "Queens",       "King safety",         "King tropism",
    "M: King edge dist", "M: King dist", "M: KBNK safe corner", "Side to move"};

void printEvalRow(const EvalRow& row, const char* label, int phase) {
  const ScorePair total = row.white - row.black;
  std::printf("%-32s   %4d %4d (%4d)   %4d %4d (%4d)   %4d\n", label, row.white.mg, row.white.eg,
              taper(row.white, phase), row.black.mg, row.black.eg, taper(row.black, phase), taper(total, phase));
}

}  // namespace

void printEvaluation(const Board_0x88& board, PawnHash& pawnHash) {
  MaterialInfo info;
  computeMaterial(info, board);
  int32_t score = evaluateWithReport(board, pawnHash);
  if (board.sideToMove == Black) score = -score;
  std::printf("%s%s%s", Rule, "Evaluation part                    w-MG w-EG (wTot)   b-MG b-EG (bTot)   Total\n", Rule);
  for (int r = 0; r < EvalRowCount; ++r) printEvalRow(ReportRecord::rows[r], rowLabels[r], info.phase);
  std::printf("%s", Rule);
  std::printf("Phase = %3d          Scaling factor = %3.2f          Total evaluation = %6d\n", info.phase,
              ReportRecord::scaleFactor / 100.0, score);
  std::printf("%s", Rule);
  std::fflush(stdout);
}
