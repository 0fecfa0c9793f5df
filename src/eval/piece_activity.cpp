#include "eval/piece_activity.h"

// Piece activity contributes nothing yet.
template <Color C>
ScorePair pieceActivity(const Board_0x88&, Square, PieceType, const PawnInfo&) {
  return ScorePair{0, 0};
}

template ScorePair pieceActivity<White>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<Black>(const Board_0x88&, Square, PieceType, const PawnInfo&);
