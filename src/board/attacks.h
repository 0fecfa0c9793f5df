#pragma once
#include <cstdint>

#include "board/attack_vectors.h"
#include "board/board.h"
#include "board/check_info.h"
#include "board/directions.h"
#include "board/make_move.h"

// Attack questions answered by scanning outward from the square; nothing is
// kept incrementally. Each exists per attacking colour.

namespace attack_detail {

inline bool holds(const Board_0x88& b, int sq, Color c, PieceType t) {
  return !(sq & 0x88) && b.piece[sq] == t && b.color[sq] == c;
}

// First attacker of colour A on s, in the fixed order pawns, leapers, rooks, bishops.
template <Color A>
inline Square findAttacker(const Board_0x88& b, Square s) {
  // A side without a king asks about square 255: nothing attacks it.
  if (s & 0x88) return NoSquare;
  constexpr int p1 = A == White ? -15 : 15;
  constexpr int p2 = A == White ? -17 : 17;
  // Kinds the attacker doesn't have are skipped; the order of the rest stands.
  const uint8_t* count = b.side[A].count;
  int t;
  if (count[Pawn]) {
    t = uint8_t(s + p1);
    if (holds(b, t, A, Pawn)) return Square(t);
    t = uint8_t(s + p2);
    if (holds(b, t, A, Pawn)) return Square(t);
  }
  if (count[Knight]) {
    for (int i = 0; i < 8; ++i) {
      t = uint8_t(s - knightDirs[i]);
      if (holds(b, t, A, Knight)) return Square(t);
      t = uint8_t(s - kingDirs[i]);
      if (holds(b, t, A, King)) return Square(t);
    }
  } else {
    for (int i = 0; i < 8; ++i) {
      t = uint8_t(s - kingDirs[i]);
      if (holds(b, t, A, King)) return Square(t);
    }
  }
  if (count[Rook] | count[Queen]) {
    for (int d : orthogonalDirs) {
      t = uint8_t(s - d);
      while (!(t & 0x88) && b.color[t] == NoColor) t = uint8_t(t - d);
      if (!(t & 0x88) && b.color[t] == A && (b.piece[t] == Rook || b.piece[t] == Queen)) return Square(t);
    }
  }
  if (count[Bishop] | count[Queen]) {
    for (int d : diagonalDirs) {
      t = uint8_t(s - d);
      while (!(t & 0x88) && b.color[t] == NoColor) t = uint8_t(t - d);
      if (!(t & 0x88) && b.color[t] == A && (b.piece[t] == Bishop || b.piece[t] == Queen)) return Square(t);
    }
  }
  return NoSquare;
}

// Does the man of colour A on `from` attack `target`? The vector table
// answers for every kind but the pawn; a slider also needs the squares
// between empty.
template <Color A>
inline bool attacksSquare(const Board_0x88& b, Square from, Square target) {
  const int piece = b.piece[from];
  const int diff = target - from;
  if (piece == Pawn) return A == White ? (diff == 15 || diff == 17) : (diff == -15 || diff == -17);
  const AttackVector& v = attackVectors[size_t(diff + 119)];
  if (!(v.kinds & kindBit(piece))) return false;
  if (piece == Knight || piece == King) return true;
  for (int t = from + v.step; t != target; t += v.step)
    if (b.color[t] != NoColor) return false;
  return true;
}

// The pins found by walking the eight lines out from the king.
template <Color Side>
inline void pinsByRays(const Board_0x88& b, PinMasks& pins) {
  pins.orthogonal = pins.diagonal = 0;
  Square k = b.side[Side].square[0];
  if (k & 0x88) return;
  // Without an enemy slider of a kind there is no pin along its lines.
  const uint8_t* enemy = b.side[opponent(Side)].count;
  auto scan = [&](const int (&dirs)[4], PieceType slider, uint64_t& mask) {
    if (!(enemy[slider] | enemy[Queen])) return;
    for (int d : dirs) {
      int t = uint8_t(k + d);
      while (!(t & 0x88) && b.color[t] == NoColor) t = uint8_t(t + d);
      if ((t & 0x88) || b.color[t] != Side) continue;
      int own = t;
      t = uint8_t(t + d);
      while (!(t & 0x88) && b.color[t] == NoColor) t = uint8_t(t + d);
      if (t & 0x88) continue;
      if (b.color[t] == opponent(Side) && (b.piece[t] == slider || b.piece[t] == Queen))
        mask |= uint64_t(1) << toSquare64(Square(own));
    }
  };
  scan(orthogonalDirs, Rook, pins.orthogonal);
  scan(diagonalDirs, Bishop, pins.diagonal);
}

}  // namespace attack_detail

// Is `s` attacked by colour A? The same answer as findAttacker, found from
// A's list: the vector table rules out almost every man at once, and only a
// slider on a line through s looks at the squares between.
template <Color A>
inline bool isAttacked(const Board_0x88& b, Square s) {
  if (s & 0x88) return false;
  constexpr int p1 = A == White ? -15 : 15;
  constexpr int p2 = A == White ? -17 : 17;
  if (attack_detail::holds(b, uint8_t(s + p1), A, Pawn) || attack_detail::holds(b, uint8_t(s + p2), A, Pawn))
    return true;
  // First the men that stand on a line or a step of their kind toward s,
  // gathered without a branch on each (pawns have no bit in the table);
  // then, for those few, the squares between.
  const PieceSet& set = b.side[A];
  int men = int(set.total) - set.count[Pawn];
  uint32_t lined = 0;
  for (int slot = 0; men > 0 && slot <= LastSlot; ++slot) {
    const Square q = set.square[slot];
    if (q & 0x88) continue;
    const int piece = b.piece[q];
    men -= piece != Pawn;
    lined |= uint32_t((attackVectors[size_t(s - q + 119)].kinds >> piece) & 1) << slot;
  }
  for (; lined; lined &= lined - 1) {
    const Square q = set.square[__builtin_ctz(lined)];
    const int piece = b.piece[q];
    if (piece == Knight || piece == King) return true;
    const int step = attackVectors[size_t(s - q + 119)].step;
    int t = q + step;
    while (t != s && b.color[t] == NoColor) t += step;
    if (t == s) return true;
  }
  // Men outside the lists (an odd set-up with more men than slots).
  return men > 0 && attack_detail::findAttacker<A>(b, s) != NoSquare;
}

// Is the king of C attacked, given that it wasn't before `last`, the
// opponent's move that led to this position (NoMove: a null move)? Only the
// man that moved and the line through the square it left can have changed
// that; castling and en passant, which move two men, take the whole scan.
// Gives the same answer as findCheck under that condition, which every
// position below a search's root meets.
template <Color C>
inline bool attackedAfterMove(const Board_0x88& b, Move last) {
  constexpr Color Them = opponent(C);
  const Square k = b.side[C].square[0];
  if (last == NoMove || (k & 0x88)) return false;
  const unsigned kind = moveKind(last);
  if (kind == MoveCastling || kind == MoveEnPassant) return isAttacked<Them>(b, k);
  const Square from = moveFromSquare(last), to = moveToSquare(last);
  if (attack_detail::attacksSquare<Them>(b, to, k)) return true;
  const AttackVector& line = attackVectors[size_t(vectorIndex(k, from))];
  if (!(line.kinds & kindBit(Queen))) return false;
  int t = uint8_t(k + line.step);
  while (!(t & 0x88) && b.color[t] == NoColor) t = uint8_t(t + line.step);
  if ((t & 0x88) || b.color[t] != Them) return false;
  return (attackVectors[size_t(vectorIndex(t, k))].kinds & kindBit(b.piece[t])) != 0;
}

// Is the king of `Side` on kingSquare attacked? Appends the first checker found.
template <Color Side>
inline bool findCheck(const Board_0x88& b, Square kingSquare, CheckInfo& info) {
  Square found = attack_detail::findAttacker<opponent(Side)>(b, kingSquare);
  if (found == NoSquare) return false;
  if (info.count < 2) info.square[info.count++] = found;
  return true;
}

// Own pieces of `Side` pinned to its king, by rank/file and by diagonal:
// each enemy slider on a line of its kind through the king, with exactly
// one man between, and that one of `Side`.
template <Color Side>
inline void computePins(const Board_0x88& b, PinMasks& pins) {
  pins.orthogonal = pins.diagonal = 0;
  const Square k = b.side[Side].square[0];
  if (k & 0x88) return;
  const PieceSet& enemy = b.side[opponent(Side)];
  uint32_t sliders = uint32_t(enemy.count[Bishop]) + enemy.count[Rook] + enemy.count[Queen];
  for (int slot = 1; sliders && slot <= LastSlot; ++slot) {
    const Square q = enemy.square[slot];
    if (q & 0x88) continue;
    const int type = b.piece[q];
    if (type != Bishop && type != Rook && type != Queen) continue;
    --sliders;
    const AttackVector& line = attackVectors[size_t(vectorIndex(q, k))];
    if (!(line.kinds & kindBit(type))) continue;
    int t = k - line.step;
    while (b.color[t] == NoColor) t -= line.step;
    if (t == q || b.color[t] != Side) continue;
    const int own = t;
    t -= line.step;
    while (b.color[t] == NoColor) t -= line.step;
    if (t != q) continue;
    (line.kinds & kindBit(Rook) ? pins.orthogonal : pins.diagonal) |= uint64_t(1) << toSquare64(Square(own));
  }
  // A slider outside the lists (an odd set-up with more men than slots) is
  // only found by walking the lines.
  if (sliders) attack_detail::pinsByRays<Side>(b, pins);
}

// Plays the move on the bare board and asks whether the own king is then attacked.
template <Color Side>
inline bool passesTrial(Board_0x88& b, Move m) {
  const Square from = moveFromSquare(m);
  if (moveKind(m) == MoveNormal && from == b.side[Side].square[0]) {
    // Only the king leaves its square: lift it and ask about the destination.
    // A piece taken there needn't go, since no scan looks at its own target.
    b.color[from] = NoColor;
    const bool attacked = isAttacked<opponent(Side)>(b, moveToSquare(m));
    b.color[from] = Side;
    return !attacked;
  }
  UndoRecord undo;
  makeLightMove<Side>(b, m, undo);
  bool attacked = isAttacked<opponent(Side)>(b, b.side[Side].square[0]);
  unmakeLightMove<Side>(b, m, undo);
  return !attacked;
}

// The squares of a castling path empty and those that the king passes not
// attacked by `Them`; the king's start and destination are the caller's.
template <Color Them>
inline bool castlingPathIsFree(const Board_0x88& b, const CastlingPath& path) {
  for (unsigned i = 0; i < path.emptyCount; ++i)
    if (b.piece[path.mustBeEmpty[i]] != NoPiece) return false;
  for (unsigned i = 0; i < path.passedCount; ++i)
    if (isAttacked<Them>(b, path.passed[i])) return false;
  return true;
}

// The legality trial of a castling whose path is free: is the king's
// destination attacked once king and rook stand on their new squares? An
// attack scan sees our men only as blockers, by their colour, so only the
// colours of the (up to) four squares change for the question.
template <Color C>
inline bool castlingLandsSafely(Board_0x88& b, const CastlingPath& path, unsigned right) {
  const Square kingTo = castlingKingTo[right], rookTo = castlingRookTo[right];
  b.color[path.kingFrom] = b.color[path.rookFrom] = NoColor;
  b.color[kingTo] = b.color[rookTo] = C;
  const bool attacked = isAttacked<opponent(C)>(b, kingTo);
  b.color[kingTo] = b.color[rookTo] = NoColor;
  b.color[path.kingFrom] = b.color[path.rookFrom] = C;
  return !attacked;
}

// Legality of a pseudo-legal move when not in check: only king moves, pinned
// pieces and en passant pay for a trial.
template <Color Side>
inline bool isLegalWhenNotInCheck(Board_0x88& b, Move m, const PinMasks& pins) {
  Square from = moveFromSquare(m);
  if (b.piece[from] != King && !(pins.any() & (uint64_t(1) << moveFrom(m))) && moveKind(m) != MoveEnPassant)
    return true;
  return passesTrial<Side>(b, m);
}

template <Color Side>
inline bool isLegalEvasion(Board_0x88& b, Move m) {
  return passesTrial<Side>(b, m);
}
