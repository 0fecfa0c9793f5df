#pragma once

#include "board/board.h"
#include "board/score_pair.h"
#include "eval/eval_record.h"
#include "eval/material.h"
#include "eval/pawn_structure.h"

// Builds the king safety and tropism tables; idempotent.
void initKingSafetyTables();

// Pawn shield and open files at the king of side C.
template <Color C, typename Rec = NoRecord>
ScorePair kingSafety(const Board_0x88& board, const PawnInfo& pawns, MaterialSignature enemy);

// Tropism of one piece of side C on sq toward the enemy king.
template <Color C, typename Rec = NoRecord>
ScorePair kingTropism(const Board_0x88& board, Square sq, PieceType type);
