#pragma once
#include <cstdint>

#include "board/board.h"
#include "search/pv_line.h"
#include "search/tt_entry.h"

// A mate score's line that a table hit cut short, continued from the table:
// at the line's end the stored move is taken while it is legal and the
// stored score is the mate one ply nearer, until the mate or the line's
// capacity. `board` holds the root position and is left somewhere along the
// line; other scores leave the line as it is.
void extendMateLine(TTHashTable& table, Board_0x88& board, int32_t score, PvLine& line);
