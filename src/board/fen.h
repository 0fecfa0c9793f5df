#pragma once
#include <string>
#include <vector>

#include "board/board.h"

inline constexpr const char* startPositionFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Clears the board and reads a FEN text into it. False on the first field that
// breaks the rules; the board is then left as far as it got.
bool setupFromFen(Board_0x88& board, const char* text);

// Joins the words of a `setboard` line with one blank each and reads them.
bool setPositionFromWords(Board_0x88& board, const std::vector<std::string>& words);
