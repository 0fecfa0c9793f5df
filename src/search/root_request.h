#pragma once
#include <cstdint>

#include "board/move.h"
#include "search/pv_line.h"
#include "search/score.h"

// What a host asks of the root beyond a move: the moves it may choose from
// (none listed: every legal move) and how many best lines it wants to see.
// Set before a search starts and only read while it runs.
struct RootRequest {
  static constexpr uint32_t MaxLines = 256;

  Move allowed[MoveList::capacity];
  uint32_t allowedCount = 0;  // 0: no restriction
  uint32_t lines = 1;         // MultiPV: 1 to MaxLines

  bool allows(Move move) const {
    if (allowedCount == 0) return true;
    for (uint32_t i = 0; i < allowedCount; ++i)
      if (sameMove(allowed[i], move)) return true;
    return false;
  }
};

// One line of the root: its moves, its score, and the aspiration window's
// half-width that it grows to.
struct RootLine {
  PvLine line;
  int32_t score = NoScore;
  int32_t delta = 30;
};
