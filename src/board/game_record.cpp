#include "board/game_record.h"

#include "board/attacks.h"
#include "board/make_move.h"

bool GameRecord::recordMove(Move move) {
  if (!gameHasRoom()) return false;
  Board_0x88& b = *board;
  moveHistory[ply] = move;
  b.history[b.ply].movePlayed = move;
  makeMoveForSide(b, move, undoHistory[ply]);
  ++ply;
  return true;
}

bool GameRecord::gameHasRoom() const { return ply < MaxGamePly && board->ply < MaxBoardGamePly; }

bool GameRecord::hasSafeLists() const {
  const Board_0x88& b = *board;
  if (b.sideToMove != White && b.sideToMove != Black) return false;
  for (int sq = 0; sq < 128; ++sq)
    if (!(sq & 0x88) && b.piece[sq] != NoPiece && b.slot[sq] == NoSlot) return false;
  return true;
}

bool GameRecord::hasPlayablePosition() const {
  if (!hasSafeLists()) return false;
  const Board_0x88& b = *board;
  for (int c = 0; c < 2; ++c)
    if (b.side[c].count[King] != 1) return false;
  for (int file = 0; file < 8; ++file)
    if (b.piece[file] == Pawn || b.piece[0x70 + file] == Pawn) return false;
  // The side that has just moved may not stand in check.
  CheckInfo info;
  if (b.sideToMove == White) return !findCheck<Black>(b, b.side[Black].square[0], info);
  return !findCheck<White>(b, b.side[White].square[0], info);
}
