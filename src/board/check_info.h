#pragma once
#include <cstdint>

#include "board/types.h"

// Attackers of a king found by the check query; count 0 means not in check.
struct CheckInfo {
  uint16_t count = 0;
  Square square[2] = {NoSquare, NoSquare};
};

// Own pieces pinned to the own king; bit number = Square64.
struct PinMasks {
  uint64_t orthogonal = 0;
  uint64_t diagonal = 0;
  uint64_t any() const { return orthogonal | diagonal; }
};
