#pragma once

#include "board/board.h"
#include "board/score_pair.h"
#include "eval/eval_record.h"
#include "eval/material.h"
#include "eval/pawn_structure.h"

// The weights of tropism by piece code: all 0, so the term is there but adds nothing.
inline constexpr ScorePair kingTropismWeight[7] = {};

// Whether any tropism weight is set. While none is, the search's evaluation
// leaves out the per-piece lookups, which could only add 0.
inline constexpr bool kingTropismWeighs = [] {
  for (ScorePair w : kingTropismWeight)
    if (w.mg || w.eg) return true;
  return false;
}();

// Builds the king safety and tropism tables, once whoever calls.
void initKingSafetyTables();

// Pawn shield and open files at the king of side C.
template <Color C, typename Rec = NoRecord>
ScorePair kingSafety(const Board_0x88& board, const PawnInfo& pawns, MaterialSignature enemy);

// Tropism of one piece of side C on sq toward the enemy king.
template <Color C, typename Rec = NoRecord>
ScorePair kingTropism(const Board_0x88& board, Square sq, PieceType type);
