#pragma once
#include <string>

#include "board/board.h"

// The test command's work: tries every line of a FEN file on `board`, with a
// header per line and an error line for each FEN that doesn't set up. Lines
// longer than the 128-byte buffer come as several pieces. False, with the
// error printed, when the file can't be opened for reading (a directory
// included).
bool checkFenFile(Board_0x88& board, const std::string& fileName);
