#include "book/polyglot_key.h"

uint64_t polyglotKey(const Board_0x88& board) {
  uint64_t key = 0;
  for (int c = 0; c < 2; ++c) {
    for (int slot = 0; slot <= LastSlot; ++slot) {
      Square sq = board.side[c].square[slot];
      if (!onBoard(sq)) continue;
      int kind = 2 * board.piece[sq] - (c == White ? 1 : 2);
      key ^= polyglotRandom64[64 * kind + toSquare64(sq)];
    }
  }
  for (int right = 0; right < 4; ++right)
    if (board.castlingRights & (1 << right)) key ^= polyglotRandom64[768 + right];
  // The board keeps an en-passant square only when a pawn can take there, as the format asks.
  if (board.epSquare != NoSquare) key ^= polyglotRandom64[772 + fileOf(board.epSquare)];
  if (board.sideToMove == White) key ^= polyglotRandom64[780];
  return key;
}
