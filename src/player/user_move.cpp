#include <cctype>

#include "board/draw_rules.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "player/chess_player.h"

namespace {

// 0 to 7 for a file letter in either case, -1 otherwise.
int fileOf(char c) {
  char lower = char(std::tolower(static_cast<unsigned char>(c)));
  return lower >= 'a' && lower <= 'h' ? lower - 'a' : -1;
}

int rankOf(char c) { return c >= '1' && c <= '8' ? c - '1' : -1; }

// The piece a promotion letter asks for; NoPiece for anything else.
PieceType promotionOf(char c) {
  switch (std::tolower(static_cast<unsigned char>(c))) {
    case 'q': return Queen;
    case 'r': return Rook;
    case 'b': return Bishop;
    case 'n': return Knight;
    default: return NoPiece;
  }
}

}  // namespace

bool ChessPlayer::parseUserMove(const std::string& text, Move& move) {
  if (!hasPlayablePosition()) return false;
  if (text.size() != 4 && text.size() != 5) return false;
  const int fromFile = fileOf(text[0]), fromRank = rankOf(text[1]);
  const int toFile = fileOf(text[2]), toRank = rankOf(text[3]);
  if (fromFile < 0 || fromRank < 0 || toFile < 0 || toRank < 0) return false;
  PieceType wanted = NoPiece;
  if (text.size() == 5) {
    wanted = promotionOf(text[4]);
    if (wanted == NoPiece) return false;
  }
  const Square64 from = Square64(fromRank * 8 + fromFile);
  const Square64 to = Square64(toRank * 8 + toFile);

  // Matching against the generated moves gives the move all its flags, and
  // a pawn reaching the last rank needs its letter: there is no default piece.
  MoveList moves;
  bool inCheck = false;
  generateLegalMoves(*board, moves, inCheck);
  for (uint32_t i = 0; i < moves.count; ++i) {
    const Move m = moves.moves[i].move;
    if (moveFrom(m) != from || moveTo(m) != to) continue;
    const PieceType promoted = moveKind(m) == MovePromotion ? promotionPiece(m) : NoPiece;
    if (promoted != wanted) continue;
    move = m;
    return true;
  }
  return false;
}

bool ChessPlayer::shouldOfferDraw(Move move) {
  if (!hasPlayablePosition()) return false;
  Board_0x88& b = *board;
  // The trial needs the record after this one.
  if (b.ply + 1 >= uint32_t(HistorySize)) return false;

  PositionRecord& record = b.history[b.ply];
  const Move savedPlayed = record.movePlayed;
  record.movePlayed = move;
  UndoRecord undo;
  makeMoveForSide(b, move, undo);

  MoveList replies;
  bool inCheck = false;
  generateLegalMoves(b, replies, inCheck);
  bool offer = false;
  // A mate or stalemate ends the game by itself: no offer then.
  if (replies.count > 0) {
    GameEndReason reason = ReasonNone;
    isDrawByRule(b, reason);
    offer = reason == ReasonFiftyMoves || reason == ReasonRepetition;
  }

  unmakeMoveForSide(b, move, undo);
  record.movePlayed = savedPlayed;
  return offer;
}
