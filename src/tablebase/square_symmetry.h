#pragma once
#include <cstdint>

// The symmetries of the board on Square64 numbers (a1 = 0, h8 = 63), as the
// tablebase index uses them to keep one image of each position.

constexpr uint32_t mirrorFiles(uint32_t s) { return s ^ 7; }   // file f becomes 7 - f
constexpr uint32_t mirrorRanks(uint32_t s) { return s ^ 56; }  // rank r becomes 7 - r
constexpr uint32_t flipDiagonal(uint32_t s) { return (s >> 3) | ((s & 7) << 3); }

constexpr uint32_t fileOf64(uint32_t s) { return s & 7; }
constexpr uint32_t rankOf64(uint32_t s) { return s >> 3; }
constexpr bool onRightHalf(uint32_t s) { return fileOf64(s) >= 4; }  // files e to h
