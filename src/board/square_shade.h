#pragma once
#include <cstdint>

// 1 for a1's shade, 0 for the other; indexed by 0x88 square.
extern uint32_t squareShade[120];

void initSquareShade();
