#pragma once
#include "board/score_pair.h"
#include "board/types.h"
#include "eval/score_pair_ops.h"

// The rows of the evaluation report, in printed order.
enum EvalRowId : int {
  RowMaterial, RowPst, RowPassedPawns, RowWeakPawns, RowPawnStructure, RowMobility, RowDoubleAttacks,
  RowOutpost, RowRooks, RowQueens, RowKingSafety, RowKingTropism, RowKingEdgeDistance, RowKingDistance,
  RowSafeCorner, RowSideToMove, EvalRowCount
};

struct EvalRow {
  ScorePair white{0, 0};
  ScorePair black{0, 0};
};

// The evaluation's terms take one of these as a template argument. The
// search's instance records nothing and costs nothing; the report's writes
// each term into its row as it enters the score (command thread only).
struct NoRecord {
  static void add(EvalRowId, Color, ScorePair) {}
};

struct ReportRecord {
  static inline EvalRow rows[EvalRowCount];
  static inline int scaleFactor = 0;
  static void clear() {
    for (EvalRow& row : rows) row = EvalRow{};
    scaleFactor = 0;
  }
  static void add(EvalRowId id, Color c, ScorePair pair) { (c == White ? rows[id].white : rows[id].black) += pair; }
};
