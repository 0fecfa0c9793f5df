#pragma once
#include "board/board.h"
#include "eval/pawn_hash.h"

// The eval command: every term of the evaluation of the position by side, in
// middlegame and endgame values, then the phase, the scale factor and the
// total from White's view. Probes and fills the pawn hash as a search would.
void printEvaluation(const Board_0x88& board, PawnHash& pawnHash);
