#include <iostream>

#include "board/draw_rules.h"
#include "board/move_generation.h"
#include "player/chess_player.h"

bool ChessPlayer::reportGameEnd() {
  // A board left behind by a refused position has no game to judge.
  if (!hasSafeLists()) return false;
  if (!hasPlayablePosition()) return reportUnplayableEnd();

  MoveList moves;
  bool inCheck = false;
  generateLegalMoves(*board, moves, inCheck);
  bool over = false;
  if (moves.count == 0) {
    if (inCheck)
      std::cout << (board->sideToMove == Black ? "1-0 {White wins by checkmate}" : "0-1 {Black wins by checkmate}")
                << '\n';
    else
      std::cout << "1/2-1/2 {Stalemate}\n";
    over = true;
  } else {
    // Fifty moves and repetition are claims for the host to make; the game goes on.
    GameEndReason reason = ReasonNone;
    isDrawByRule(*board, reason);
    if (reason == ReasonInsufficientMaterial) {
      std::cout << "1/2-1/2 {Draw by insufficient material}\n";
      over = true;
    }
  }
  std::cout.flush();
  return over;
}

bool ChessPlayer::reportUnplayableEnd() {
  // With both kings the fault is elsewhere (a pawn on its last rank, a king
  // left in check): no rule applies. Without a king nothing is generated, but
  // a side to move with no men at all has no move, and bare material is bare.
  const Board_0x88& b = *board;
  if (b.side[White].count[King] == 1 && b.side[Black].count[King] == 1) return false;
  if (b.side[b.sideToMove].total == 0) {
    std::cout << "1/2-1/2 {Stalemate}" << std::endl;
    return true;
  }
  GameEndReason reason = ReasonNone;
  isDrawByRule(*board, reason);
  if (reason != ReasonInsufficientMaterial) return false;
  std::cout << "1/2-1/2 {Draw by insufficient material}" << std::endl;
  return true;
}
