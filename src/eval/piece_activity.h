#pragma once

#include "board/board.h"
#include "board/score_pair.h"
#include "eval/eval_record.h"
#include "eval/pawn_structure.h"

// Mobility and file terms of one piece of side C on sq; type is read from the
// board by the caller, since a promoted piece sits in a pawn slot.
template <Color C, typename Rec = NoRecord>
ScorePair pieceActivity(const Board_0x88& board, Square sq, PieceType type, const PawnInfo& pawns);

// The same terms summed over all knights, bishops, rooks and queens of side C.
template <Color C, typename Rec = NoRecord>
ScorePair sideActivity(const Board_0x88& board, const PawnInfo& pawns);
