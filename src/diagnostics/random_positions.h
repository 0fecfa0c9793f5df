#pragma once
#include <cstdio>
#include <string>

#include "board/board.h"

// A random legal position as FEN: a game of random legal moves of random
// length from the start position, played on `scratch`, so that rights,
// en-passant square and clocks are those of a real game.
std::string randomPositionFen(Board_0x88& scratch);

// Writes `count` random positions, one FEN a line, to `out`.
void writeRandomPositions(FILE* out, int count);
