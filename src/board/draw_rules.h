#pragma once
#include <cstdint>

#include "board/board.h"

// How a game ends, or why a node counts as drawn. Mate and stalemate are found
// by the callers from an empty move list; the draw test below sets the others.
enum GameEndReason : uint32_t {
  ReasonNone = 0,  // also the code of a first repetition
  ReasonCheckmate = 1,
  ReasonStalemate = 2,
  ReasonFiftyMoves = 3,
  ReasonInsufficientMaterial = 4,
  ReasonRepetition = 5,
};

// True when the search may score this node as a draw; `reason` tells whether
// the rules of the game give a draw. A repetition found here is counted in
// `history[ply].repetitionCount`, so the test must run at every occurrence.
bool isDrawByRule(Board_0x88& board, GameEndReason& reason);
