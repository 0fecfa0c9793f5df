#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/move.h"
#include "board/types.h"

// The constants of one side's moves: pawn directions and ranks, and the
// details of its castling moves.
template <Color C>
struct SideGeometry {
  static constexpr Color Them = opponent(C);
  static constexpr int push = C == White ? 16 : -16;
  static constexpr int capture1 = C == White ? 15 : -15;
  static constexpr int capture2 = C == White ? 17 : -17;
  static constexpr int doubleStepRank = C == White ? 1 : 6;
  static constexpr int promotionSourceRank = C == White ? 6 : 1;
  static constexpr unsigned kingSideDetail = C == White ? CastleWhiteKingSide : CastleBlackKingSide;
  static constexpr unsigned queenSideDetail = C == White ? CastleWhiteQueenSide : CastleBlackQueenSide;
};
