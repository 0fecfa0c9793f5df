#pragma once
#include <cstdint>

#include "board/move.h"
#include "board/score_pair.h"
#include "board/types.h"

// What make saves and unmake restores; owned by the caller.
struct UndoRecord {
  uint8_t castlingRights = 0;
  uint8_t epSquare = NoSquare;
  uint8_t halfMoveClock = 0;
  // Captured piece code in the high four bits, its list slot & 15 in the low four; 0 for none.
  uint8_t captured = 0;
  // The piece-square sums before the move (full make only): unmake puts them
  // back instead of working them out again.
  ScorePair psq[2] = {};
};

// One record per ply of the game and the search line.
struct PositionRecord {
  uint64_t hashKey;
  uint64_t pawnHashKey;
  uint16_t repetitionCount;
  Move killer[2];  // [0] newest
  Move movePlayed;
};
