#pragma once
#include <string>

#include "board/board.h"

// The six-field FEN of the position on the board: the inverse of setupFromFen
// (of setupChess960FromFen for a Chess960 position, with Shredder rights).
// The move number counts on from the set-up position by the plies played
// since, so a position reached in a game is written with its real number.
std::string positionToFen(const Board_0x88& board);
