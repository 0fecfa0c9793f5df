#include "board/square_shade.h"

uint32_t squareShade[120];

void initSquareShade() {
  for (int sq = 0; sq < 120; ++sq) {
    if (sq & 0x88) {
      squareShade[sq] = 0;
      continue;
    }
    squareShade[sq] = ((sq & 16) != 0) == ((sq & 1) != 0) ? 1 : 0;
  }
}
