#include "board/fen_writer.h"

std::string positionToFen(const Board_0x88& board) {
  std::string fen;
  for (int rank = 7; rank >= 0; --rank) {
    int empty = 0;
    for (int file = 0; file < 8; ++file) {
      Square sq = makeSquare(file, rank);
      if (board.piece[sq] == NoPiece) {
        ++empty;
        continue;
      }
      if (empty) fen += char('0' + empty);
      empty = 0;
      char letter = pieceLetters[board.piece[sq]];
      fen += board.color[sq] == White ? char(letter - 'a' + 'A') : letter;
    }
    if (empty) fen += char('0' + empty);
    if (rank) fen += '/';
  }
  fen += board.sideToMove == Black ? " b " : " w ";
  if (!board.castlingRights) fen += '-';
  const char rightLetters[] = "KQkq";
  for (int bit = 0; bit < 4; ++bit) {
    if (!(board.castlingRights & (1 << bit))) continue;
    // Chess960 in Shredder form: the file of each right's rook.
    if (board.castling.chess960)
      fen += char((bit < 2 ? 'A' : 'a') + fileOf(board.castling.path[bit].rookFrom));
    else
      fen += rightLetters[bit];
  }
  fen += ' ';
  if (board.epSquare == NoSquare) {
    fen += '-';
  } else {
    fen += char('a' + fileOf(board.epSquare));
    fen += char('1' + rankOf(board.epSquare));
  }
  // Black to move at ply 0 means the set-up position had Black to move.
  bool setupBlack = ((board.sideToMove == Black) != (board.ply & 1));
  uint32_t moveNumber = board.setupMoveNumber + (board.ply + (setupBlack ? 1 : 0)) / 2;
  fen += ' ' + std::to_string(board.halfMoveClock) + ' ' + std::to_string(moveNumber);
  return fen;
}
