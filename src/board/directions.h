#pragma once

// Ray and step offsets on the 0x88 board; their order is the order in which
// rays and attackers are tried everywhere.
inline constexpr int orthogonalDirs[4] = {-1, +16, +1, -16};
inline constexpr int diagonalDirs[4] = {+15, +17, -15, -17};
inline constexpr int kingDirs[8] = {-1, +16, +1, -16, +15, +17, -15, -17};
inline constexpr int knightDirs[8] = {+14, +31, +33, +18, -14, -31, -33, -18};
inline constexpr int pawnStep[2] = {+16, -16};
