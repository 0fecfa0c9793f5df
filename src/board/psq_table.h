#pragma once

#include "board/score_pair.h"

// Piece-square values, no material: psqTable[colour][piece code - 1][Square64].
struct PsqTable {
  ScorePair v[2][6][64];
  constexpr const ScorePair (&operator[](int color) const)[6][64] { return v[color]; }
};

extern const PsqTable psqTable;
