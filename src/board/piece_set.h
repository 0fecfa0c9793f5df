#pragma once
#include <cstdint>

#include "board/types.h"

// A side's piece list: slot 0 king, 1 queen, 2-3 rooks, 4-5 bishops, 6-7 knights,
// 8-15 pawns and any officer whose class slots are taken. Slots are never compacted.
struct PieceSet {
  uint8_t square[16];  // 255 = free slot
  uint8_t count[7];    // per PieceType; entry 0 unused
  uint8_t total;       // pieces of this side, king included
};

constexpr int NoSlot = 16;
constexpr int FirstPawnSlot = 8;
constexpr int LastSlot = 15;

// Last slot of each class, indexed by PieceType.
inline constexpr uint32_t lastSlotOfClass[7] = {0, 15, 7, 5, 3, 1, 0};
