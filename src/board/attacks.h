#pragma once
#include <cstdint>

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

}  // namespace attack_detail

// Is `target` attacked by `A`? On true, info holds that one attacker.
template <Color A>
inline bool isAttackedBy(const Board_0x88& b, Square target, CheckInfo& info) {
  Square found = attack_detail::findAttacker<A>(b, target);
  if (found == NoSquare) return false;
  info.count = 1;
  info.square[0] = found;
  return true;
}

// Is the king of `Side` on kingSquare attacked? Appends the first checker found.
template <Color Side>
inline bool findCheck(const Board_0x88& b, Square kingSquare, CheckInfo& info) {
  Square found = attack_detail::findAttacker<opponent(Side)>(b, kingSquare);
  if (found == NoSquare) return false;
  if (info.count < 2) info.square[info.count++] = found;
  return true;
}

// Own pieces of `Side` pinned to its king, by rank/file and by diagonal.
template <Color Side>
inline void computePins(const Board_0x88& b, PinMasks& pins) {
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

// Plays the move on the bare board and asks whether the own king is then attacked.
template <Color Side>
inline bool passesTrial(Board_0x88& b, Move m) {
  const Square from = moveFromSquare(m);
  if (moveKind(m) == MoveNormal && from == b.side[Side].square[0]) {
    // Only the king leaves its square: lift it and ask about the destination.
    // A piece taken there needn't go, since no scan looks at its own target.
    b.color[from] = NoColor;
    const bool attacked = attack_detail::findAttacker<opponent(Side)>(b, moveToSquare(m)) != NoSquare;
    b.color[from] = Side;
    return !attacked;
  }
  UndoRecord undo;
  makeLightMove<Side>(b, m, undo);
  bool attacked = attack_detail::findAttacker<opponent(Side)>(b, b.side[Side].square[0]) != NoSquare;
  unmakeLightMove<Side>(b, m, undo);
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
