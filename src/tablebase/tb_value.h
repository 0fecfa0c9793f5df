#pragma once
#include <cstdint>

// A tablebase answer: (plies << 3) | kind. Kind 0 draw, 1 White mates,
// 2 Black mates, 3 no information; colours are those of the table.
using TbValue = uint16_t;
constexpr TbValue TbUnknown = 3;

constexpr uint32_t tbKind(TbValue v) { return v & 7; }
constexpr uint32_t tbPlies(TbValue v) { return v >> 3; }

// The value of a byte stored for a position with `side` (0 White, 1 Black) to move.
constexpr TbValue decodeStoredByte(uint8_t b, uint32_t side) {
  if (b == 0) return 0;
  if (b == 3) return TbUnknown;
  const uint32_t p = 2u * (b >> 2);
  uint32_t plies = 0, kind = 0;
  switch (b & 3) {
    case 1: plies = side == 0 ? p + 1 : p, kind = 1; break;
    case 2: plies = side == 0 ? p : p + 1, kind = 2; break;
    case 3: plies = p + 126, kind = side == 0 ? 2 : 1; break;
    default:
      if (side == 1 && (b >> 2) == 63) {
        plies = 254, kind = 1;
      } else {
        plies = p + 127, kind = side == 0 ? 1 : 2;
      }
  }
  return TbValue(plies << 3 | kind);
}
