#pragma once
#include <cstdint>

#include "board/move.h"
#include "board/types.h"

// Castling right bits, in FEN letter order K, Q, k, q. The index of a bit
// (0 to 3) is also the `detail` of its castling move.
constexpr uint8_t CastleWK = 1;
constexpr uint8_t CastleWQ = 2;
constexpr uint8_t CastleBK = 4;
constexpr uint8_t CastleBQ = 8;

// Where king and rook end, by right: g1 f1, c1 d1, g8 f8, c8 d8, wherever they start.
inline constexpr Square castlingKingTo[4] = {6, 2, 118, 114};
inline constexpr Square castlingRookTo[4] = {5, 3, 117, 115};

// What one castling right asks of the board. Standard chess is the case of
// the king on e1 (e8) with its rooks on a1 and h1 (a8, h8).
struct CastlingPath {
  Square kingFrom = NoSquare;
  Square rookFrom = NoSquare;
  // The move's target square: the king's destination in standard chess; in
  // Chess960 the rook's square (the king takes its own rook), so that no
  // castling can look like a plain king move.
  Square moveTo = NoSquare;
  // The castling move as the generator makes it.
  Move move = NoMove;
  uint8_t emptyCount = 0;
  uint8_t passedCount = 0;
  // Every square that king or rook passes over or lands on, their own two aside.
  Square mustBeEmpty[6] = {};
  // The squares the king passes over on its way, destination excluded: its
  // start is safe since castling isn't generated in check, and its
  // destination is tested by the trial of every king move.
  Square passed[5] = {};
};

// The castling rules of a position, fixed when it is set up.
struct CastlingRules {
  bool chess960 = false;
  CastlingPath path[4];
  // The rights that survive a move from or to each square: the king's square
  // clears both of its side's, a rook's square its own.
  uint8_t keepRights[128];
  // The key of every set of rights: one key per colour and rook file, so
  // that positions with rights on other rooks never hash alike.
  uint64_t rightsKey[16];
};

// The rules of standard chess.
void setStandardCastling(CastlingRules& rules);

// Chess960 rules for kings on `king[colour]` and, per right, its rook on
// `rook[bit index]` (NoSquare for a right the position hasn't).
void setChess960Castling(CastlingRules& rules, const Square king[2], const Square rook[4]);
