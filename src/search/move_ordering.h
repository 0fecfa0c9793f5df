#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/directions.h"
#include "board/move.h"
#include "board/psq_table.h"
#include "search/killer_moves.h"

// Order values of the staged move selector and the cheap bad-capture test.
// All tables are indexed by PieceType.

inline constexpr int32_t orderRank[7] = {0, 1, 2, 2, 3, 4, 5};
inline constexpr int32_t exchangeClass[7] = {0, 1, 3, 3, 4, 5, 0};
inline constexpr int32_t exchangeValue[7] = {0, 125, 400, 400, 600, 1125, 0};

// Offsets that order the stages against each other.
constexpr int32_t GoodCaptureBonus = 1000;
constexpr int32_t BadCaptureBonus = -50;
constexpr int32_t KillerBonus = 150;
constexpr int32_t CounterMoveBonus = 50;

// Most valuable victim, least valuable attacker. Promotions count as captures,
// with the new piece as a second victim.
inline int32_t mvvLvaValue(const Board_0x88& b, Move m, bool& isCapture) {
  const int attacker = b.piece[moveFromSquare(m)];
  const int victim = b.piece[moveToSquare(m)];
  switch (moveKind(m)) {
    case MoveEnPassant:
      isCapture = true;
      return 64 - orderRank[attacker];
    case MovePromotion:
      isCapture = true;
      return (orderRank[victim] * 8 + orderRank[promotionPiece(m)]) * 8 - orderRank[attacker];
    default:
      isCapture = victim != NoPiece;
      return orderRank[victim] * 64 - orderRank[attacker];
  }
}

// Whether a capture by side C should be put off: a cheaper victim guarded by
// an enemy pawn, or, for a rook taking a pawn or a queen taking anything, by
// an enemy knight. No exchange evaluation. gain is what the move wins at most.
template <Color C>
inline bool isBadCapture(const Board_0x88& b, Move m, int32_t& gain) {
  switch (moveKind(m)) {
    case MovePromotion:
      gain = exchangeValue[promotionPiece(m)] - exchangeValue[Pawn];
      return false;
    case MoveEnPassant:
      gain = exchangeValue[Pawn];
      return false;
    case MoveCastling:
      return false;
    default:
      break;
  }
  constexpr Color Them = opponent(C);
  const Square to = moveToSquare(m);
  const int attacker = b.piece[moveFromSquare(m)];
  const int victim = b.piece[to];
  gain = exchangeValue[victim];
  if (exchangeClass[victim] == 0 || exchangeClass[victim] >= exchangeClass[attacker]) return false;

  // An enemy pawn guards `to` from the squares its own captures come from.
  constexpr int guard1 = C == White ? 15 : -15;
  constexpr int guard2 = C == White ? 17 : -17;
  for (int offset : {guard1, guard2}) {
    int sq = uint8_t(to + offset);
    if (!(sq & 0x88) && b.piece[sq] == Pawn && b.color[sq] == Them) return true;
  }
  if (!(attacker == Queen || (attacker == Rook && victim == Pawn))) return false;
  for (int d : knightDirs) {
    int sq = uint8_t(to + d);
    if (!(sq & 0x88) && b.piece[sq] == Knight && b.color[sq] == Them) return true;
  }
  return false;
}

// Order value of a quiet move (castling included): the counter move first,
// else the middlegame piece-square gain, cheaper pieces ahead on ties.
template <Color C>
inline int16_t quietOrderValue(const Board_0x88& b, Move m) {
  const Square64 from = moveFrom(m), to = moveTo(m);
  const int attacker = b.piece[toSquare88(from)];
  const int32_t base = -orderRank[attacker];
  if (b.ply != 0) {
    Move previous = b.history[b.ply - 1].movePlayed;
    if (previous != NoMove && isCounterMove(b, previous, m)) return int16_t(base + CounterMoveBonus);
  }
  const ScorePair(&table)[64] = psqTable[C][attacker - 1];
  const int16_t psqGain = int16_t(table[to].mg - table[from].mg);
  return int16_t(base + psqGain);
}

// Order value of a capture or promotion in the main search.
inline int16_t captureOrderValue(const Board_0x88& b, Move m) {
  bool isCapture;
  return int16_t(mvvLvaValue(b, m, isCapture) + GoodCaptureBonus);
}

// Whether m is one of the killers of the record at index ply.
inline bool isKillerAt(const Board_0x88& b, uint32_t ply, Move m) {
  const PositionRecord& record = b.history[ply];
  return sameMove(m, record.killer[0]) || sameMove(m, record.killer[1]);
}

// Order value of an evasion: good captures, then killers of this ply and of
// two plies deeper, the counter move, quiet moves by piece-square gain, and
// bad captures among them.
template <Color C>
inline int16_t evasionOrderValue(const Board_0x88& b, Move m) {
  bool isCapture;
  const int32_t base = mvvLvaValue(b, m, isCapture);
  if (isCapture) {
    int32_t gain;
    return int16_t(base + (isBadCapture<C>(b, m, gain) ? BadCaptureBonus : GoodCaptureBonus));
  }
  const uint32_t ply = b.ply;
  if (isKillerAt(b, ply, m) || (ply + 2 < uint32_t(HistorySize) && isKillerAt(b, ply + 2, m)))
    return int16_t(base + KillerBonus);
  return quietOrderValue<C>(b, m);
}
