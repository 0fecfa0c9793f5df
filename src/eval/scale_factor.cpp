#include "eval/scale_factor.h"

#include <initializer_list>

#include "board/square_shade.h"
#include "eval/endgame_drivers.h"

namespace {

constexpr int FullScale = 100;
constexpr int RookVsBishopScale = 25;
constexpr int RookVsKnightScale = 12;
constexpr int WrongRookPawnScale = 50;
constexpr int QueenVsPawnScale = 25;

Square firstPawnSquare(const Board_0x88& board, const PieceSet& set) {
  for (int s = FirstPawnSlot; s <= LastSlot; ++s) {
    Square sq = set.square[s];
    if (!(sq & 0x88) && board.piece[sq] == Pawn) return sq;
  }
  return NoSquare;
}

// King, bishop and pawn against a bare king: a rook pawn whose promotion
// square the bishop doesn't cover is a draw once the defending king gets there.
int bishopAndRookPawn(const Board_0x88& board, Color s) {
  const PieceSet& set = board.side[s];
  Square pawn = firstPawnSquare(board, set);
  if (pawn & 0x88) return FullScale;
  int file = fileOf(pawn);
  if (file != 0 && file != 7) return FullScale;
  Square queening = makeSquare(file, s == White ? 7 : 0);
  Square bishop = endgameBishopSquare(set);
  if ((bishop & 0x88) || squareShade[bishop] == squareShade[queening]) return FullScale;
  return squareDistance(board.side[opponent(s)].square[0], queening) <= 1 ? 0 : WrongRookPawnScale;
}

// Queen against a rook or bishop pawn one step from promotion: the known
// drawing set-ups with the defending king beside the pawn.
int queenAgainstPawn(const Board_0x88& board, Color t) {
  const PieceSet& set = board.side[t];
  Square pawn = firstPawnSquare(board, set);
  if (pawn & 0x88) return FullScale;
  int file = fileOf(pawn);
  if (file != 0 && file != 2 && file != 5 && file != 7) return FullScale;
  if (rankOf(pawn) != (t == White ? 6 : 1)) return FullScale;

  // Normal form: pawn on rank 2 on the a or c file.
  Square king = set.square[0];
  int kingFile = fileOf(king), kingRank = rankOf(king);
  if (t == White) kingRank = 7 - kingRank;
  if (file > 3) {
    file = 7 - file;
    kingFile = 7 - kingFile;
  }
  bool drawish;
  if (file == 0)
    drawish = (kingRank == 0 && kingFile <= 1) || (kingRank == 1 && kingFile == 1);
  else
    drawish = (kingRank == 0 && kingFile >= 1 && kingFile <= 3) || (kingRank == 1 && (kingFile == 1 || kingFile == 3));
  return drawish ? QueenVsPawnScale : FullScale;
}

bool only(const PieceSet& set, PieceType type) { return set.total == 2 && set.count[type] == 1; }

int fourMenScale(const Board_0x88& board) {
  const PieceSet& w = board.side[White];
  const PieceSet& b = board.side[Black];
  if ((only(w, Rook) && only(b, Bishop)) || (only(w, Bishop) && only(b, Rook))) return RookVsBishopScale;
  if ((only(w, Rook) && only(b, Knight)) || (only(w, Knight) && only(b, Rook))) return RookVsKnightScale;
  for (Color s : {White, Black}) {
    const PieceSet& set = board.side[s];
    if (set.total == 3 && set.count[Bishop] == 1 && set.count[Pawn] == 1 && board.side[opponent(s)].total == 1)
      return bishopAndRookPawn(board, s);
    if (only(set, Pawn) && only(board.side[opponent(s)], Queen)) return queenAgainstPawn(board, s);
  }
  return FullScale;
}

}  // namespace

int fiftyMoveScale(int halfMoveClock) {
  int c = halfMoveClock < 100 ? halfMoveClock : 100;
  return (10000 - c * c) / 100;
}

int positionScaleFactor(const Board_0x88& board, const MaterialInfo& info) {
  int s = FullScale;
  if (board.side[White].total + board.side[Black].total == 4) s = fourMenScale(board);
  if (!info.canWin[White] && !info.canWin[Black]) s = 0;
  return s;
}

int computeScaleFactor(const Board_0x88& board, const MaterialInfo& info) {
  int s = positionScaleFactor(board, info);
  int fifty = fiftyMoveScale(board.halfMoveClock);
  return s < fifty ? s : fifty;
}
