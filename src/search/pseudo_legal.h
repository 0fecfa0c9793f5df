#pragma once
#include <cstdint>

#include "board/attacks.h"
#include "board/board.h"
#include "board/side_geometry.h"
#include "board/move.h"

// Whether a move taken from elsewhere (a killer, a table entry that may come
// from another position with a colliding key) is one that side C could
// generate here, pins and checks aside. It accepts only the exact encoding a
// generator produces, so an accepted move can be made as it is; the caller
// still owes the legality test.

namespace pseudo_legal_detail {

template <Color C>
using Geometry = SideGeometry<C>;

inline bool isEmpty(const Board_0x88& b, int sq) { return b.color[sq] == NoColor; }

// A single pawn step onto an empty square, or a diagonal step onto an enemy piece.
template <Color C>
inline bool pawnReaches(const Board_0x88& b, Square from, Square to) {
  using G = Geometry<C>;
  if (to == uint8_t(from + G::push)) return isEmpty(b, to);
  if (to == uint8_t(from + G::capture1) || to == uint8_t(from + G::capture2)) return b.color[to] == G::Them;
  return false;
}

// Knight, king or slider geometry; a slider needs every square between empty.
inline bool pieceReaches(const Board_0x88& b, int piece, Square from, Square to) {
  const int dr = rankOf(to) - rankOf(from);
  const int df = fileOf(to) - fileOf(from);
  const int adr = dr < 0 ? -dr : dr;
  const int adf = df < 0 ? -df : df;
  const bool diagonal = adr == adf;
  const bool straight = dr == 0 || df == 0;
  switch (piece) {
    case Knight: return (adr == 1 && adf == 2) || (adr == 2 && adf == 1);
    case King: return adr <= 1 && adf <= 1;
    case Bishop: if (!diagonal) return false; break;
    case Rook: if (!straight) return false; break;
    case Queen: if (!diagonal && !straight) return false; break;
    default: return false;
  }
  const int step = ((dr > 0) - (dr < 0)) * 16 + ((df > 0) - (df < 0));
  for (int sq = from + step; sq != to; sq += step)
    if (!isEmpty(b, sq)) return false;
  return true;
}

// Castling as the generator builds it: right set, the path free, and the
// king not in check. The destination is left to the legality trial, as for
// every king move. Out of line: a castling hint is rare.
template <Color C>
[[gnu::noinline]] bool castlingPossible(const Board_0x88& b, Square from, Square to, unsigned detail) {
  using G = Geometry<C>;
  if (detail != G::kingSideDetail && detail != G::queenSideDetail) return false;
  if (!(b.castlingRights & (1u << detail))) return false;
  const CastlingPath& path = b.castling.path[detail];
  if (from != path.kingFrom || to != path.moveTo || b.piece[from] != King || b.color[from] != C) return false;
  return castlingPathIsFree<G::Them>(b, path) && !isAttacked<G::Them>(b, from);
}

}  // namespace pseudo_legal_detail

template <Color C>
inline bool isPseudoLegal(const Board_0x88& b, Move m) {
  using namespace pseudo_legal_detail;
  using G = Geometry<C>;
  if (m == NoMove) return false;
  const Square from = moveFromSquare(m);
  const Square to = moveToSquare(m);
  // A Chess960 castling goes to the own rook's square.
  if (b.color[from] != C || (b.color[to] == C && moveKind(m) != MoveCastling)) return false;
  const int piece = b.piece[from];
  const unsigned detail = moveDetail(m);

  switch (moveKind(m)) {
    case MovePromotion:
      return piece == Pawn && rankOf(from) == G::promotionSourceRank && pawnReaches<C>(b, from, to);
    case MoveCastling:
      return castlingPossible<C>(b, from, to, detail);
    case MoveEnPassant: {
      if (detail != 0 || b.epSquare == NoSquare || to != b.epSquare || piece != Pawn || !isEmpty(b, to)) return false;
      if (from != uint8_t(to - G::capture1) && from != uint8_t(to - G::capture2)) return false;
      const int behind = uint8_t(to - G::push);
      return b.piece[behind] == Pawn && b.color[behind] == G::Them;
    }
    default:
      break;
  }

  if (piece == Pawn) {
    if (detail == DetailDoubleStep) {
      const int over = uint8_t(from + G::push);
      return rankOf(from) == G::doubleStepRank && to == uint8_t(over + G::push) && isEmpty(b, over) &&
             isEmpty(b, to);
    }
    // A pawn that reaches the last rank must carry the promotion.
    return detail == 0 && rankOf(from) != G::promotionSourceRank && pawnReaches<C>(b, from, to);
  }
  return detail == 0 && pieceReaches(b, piece, from, to);
}
