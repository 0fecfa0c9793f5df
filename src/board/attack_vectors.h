#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

#include "board/directions.h"
#include "board/types.h"

// The 0x88 vector table: for every difference between two squares (target
// minus origin), which piece kinds attack along it and the unit step of its
// line. A difference of two 0x88 squares tells rank and file distance apart,
// so one entry serves every pair of squares with that difference.
struct AttackVector {
  uint8_t kinds;  // bit (1 << PieceType) for knight, bishop, rook, queen, king; pawns aside
  int8_t step;    // unit step from origin toward target on a rank, file or diagonal; 0 off them
};

constexpr uint8_t kindBit(int type) { return uint8_t(1u << type); }
constexpr int vectorIndex(int from, int to) { return to - from + 119; }

inline constexpr std::array<AttackVector, 239> attackVectors = [] {
  std::array<AttackVector, 239> table{};
  for (int i = 0; i < 8; ++i) {
    const int d = kingDirs[i];
    const uint8_t line = i < 4 ? kindBit(Rook) : kindBit(Bishop);
    for (int n = 1; n < 8; ++n) {
      AttackVector& v = table[size_t(d * n + 119)];
      v.kinds = uint8_t(line | kindBit(Queen) | (n == 1 ? kindBit(King) : 0));
      v.step = int8_t(d);
    }
    table[size_t(knightDirs[i] + 119)].kinds = kindBit(Knight);
  }
  return table;
}();
