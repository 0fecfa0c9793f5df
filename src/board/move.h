#pragma once
#include <cstdint>

#include "board/types.h"

// 16 bits: from (0-5), to (6-11), kind (12-13), detail (14-15). 0 is no move.
using Move = uint16_t;

enum MoveKind : uint8_t { MoveNormal = 0, MovePromotion = 1, MoveCastling = 2, MoveEnPassant = 3 };

constexpr Move NoMove = 0;

// Details of a normal move.
constexpr unsigned DetailDoubleStep = 1;
// Details of a castling move.
constexpr unsigned CastleWhiteKingSide = 0;
constexpr unsigned CastleWhiteQueenSide = 1;
constexpr unsigned CastleBlackKingSide = 2;
constexpr unsigned CastleBlackQueenSide = 3;

constexpr Move encodeMove(Square64 from, Square64 to, unsigned kind = MoveNormal, unsigned detail = 0) {
  return Move(from | (to << 6) | (kind << 12) | (detail << 14));
}
constexpr Move encodeMove88(Square from, Square to, unsigned kind = MoveNormal, unsigned detail = 0) {
  return encodeMove(toSquare64(from), toSquare64(to), kind, detail);
}
// Promotion to `piece` (Knight to Queen).
constexpr Move encodePromotion(Square from, Square to, PieceType piece) {
  return encodeMove88(from, to, MovePromotion, unsigned(piece) - 2);
}

constexpr Square64 moveFrom(Move m) { return Square64(m & 63); }
constexpr Square64 moveTo(Move m) { return Square64((m >> 6) & 63); }
constexpr Square moveFromSquare(Move m) { return toSquare88(moveFrom(m)); }
constexpr Square moveToSquare(Move m) { return toSquare88(moveTo(m)); }
constexpr unsigned moveKind(Move m) { return (m >> 12) & 3; }
constexpr unsigned moveDetail(Move m) { return (m >> 14) & 3; }
constexpr PieceType promotionPiece(Move m) { return PieceType(moveDetail(m) + 2); }

// Same squares, and either no promotion on both sides or the same promoted piece.
// Kind and detail of other moves take no part, so table moves match generated ones.
constexpr bool sameMove(Move a, Move b) {
  if ((a & 0x0FFF) != (b & 0x0FFF)) return false;
  bool promoA = moveKind(a) == MovePromotion;
  bool promoB = moveKind(b) == MovePromotion;
  if (promoA != promoB) return false;
  return !promoA || moveDetail(a) == moveDetail(b);
}

struct ScoredMove {
  Move move;
  int16_t value;
};

// Fixed capacity of 255; an append to a full list is dropped.
struct MoveList {
  static constexpr uint32_t capacity = 255;
  static constexpr bool kingLast = false;  // the generators' order: slot 0, the king, first
  ScoredMove moves[capacity];
  uint32_t count = 0;

  void add(Move m) {
    if (count < capacity) moves[count++] = ScoredMove{m, 0};
  }
  void clear() { count = 0; }
  bool contains(Move m) const {
    for (uint32_t i = 0; i < count; ++i)
      if (sameMove(moves[i].move, m)) return true;
    return false;
  }
};
