#include "board/draw_rules.h"

bool isDrawByRule(Board_0x88& board, GameEndReason& reason) {
  if (board.halfMoveClock > 99) {
    reason = ReasonFiftyMoves;
    return true;
  }

  const PieceSet& white = board.side[White];
  const PieceSet& black = board.side[Black];
  if ((white.count[Pawn] | white.count[Rook] | white.count[Queen] | black.count[Pawn] | black.count[Rook] |
       black.count[Queen]) == 0) {
    // Bare kings, or one minor piece against a bare king.
    uint32_t w = white.total, b = black.total;
    if (w <= 2 && (b == 1 || (b <= 2 && w == 1))) {
      reason = ReasonInsufficientMaterial;
      return true;
    }
  }

  // A repetition needs two moves by each side, and none can reach back past
  // the last irreversible move or the first record of the board.
  if (board.halfMoveClock > 3) {
    int ply = int(board.ply);
    int lowest = ply - int(board.halfMoveClock);
    if (lowest < 0) lowest = 0;
    PositionRecord& current = board.history[ply];
    for (int i = ply - 4; i >= lowest; i -= 2) {
      if (board.history[i].hashKey == current.hashKey) {
        current.repetitionCount = uint16_t(board.history[i].repetitionCount + 1);
        reason = current.repetitionCount >= 2 ? ReasonRepetition : ReasonNone;
        return true;
      }
    }
  }

  reason = ReasonNone;
  return false;
}
