#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/move.h"

// The quiet-move memory of one thread: two killers per ply in the position
// records, and one reply per (side, piece, square) of the move before.

// Killers and counter moves keep only quiet moves: target square empty, and
// no promotion or en passant (bit 12). Judged on the position before the move.
inline bool isQuietForMemory(const Board_0x88& b, Move m) {
  return b.piece[moveToSquare(m)] == NoPiece && !(m & 0x1000);
}

// Index by the piece that made previousMove, found on its target square; a
// promotion counts as the pawn it was. -1 if that square is empty.
inline int counterMovePieceIndex(const Board_0x88& b, Move previousMove) {
  if (moveKind(previousMove) == MovePromotion) return Pawn - 1;
  return int(b.piece[moveToSquare(previousMove)]) - 1;
}

// After unmake of a move that caused a cutoff: the newest killer of this ply.
inline void updateKiller(Board_0x88& b, Move move) {
  if (!isQuietForMemory(b, move)) return;
  PositionRecord& record = b.history[b.ply];
  record.killer[1] = record.killer[0];
  record.killer[0] = move;
}

// After unmake of a move that caused a cutoff: the reply to previousMove.
inline void updateCounterMove(Board_0x88& b, Move previousMove, Move move) {
  if (previousMove == NoMove || !isQuietForMemory(b, move)) return;
  int p = counterMovePieceIndex(b, previousMove);
  if (p < 0) return;
  b.counterMove[b.sideToMove ^ 1][p][moveTo(previousMove)] = move;
}

inline bool isCounterMove(const Board_0x88& b, Move previousMove, Move move) {
  if (previousMove == NoMove) return false;
  int p = counterMovePieceIndex(b, previousMove);
  if (p < 0) return false;
  return sameMove(move, b.counterMove[b.sideToMove ^ 1][p][moveTo(previousMove)]);
}
