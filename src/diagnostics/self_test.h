#pragma once
#include <cstdint>

#include "board/board.h"
#include "diagnostics/perft_entry.h"

// One row of the built-in perft table.
struct SelfTestCase {
  uint32_t number;
  const char* fen;
  uint32_t depth;
  uint64_t expectedLeaves;
};

// The 18 rows, in the order they run.
extern const SelfTestCase selfTestCases[18];

// Runs every row on the game board, each with an emptied perft
// table, and prints a verdict per row, the summary and the speed. The board
// holds the last row's position afterwards.
void runSelfTests(Board_0x88& board, PerftTable& perft);
