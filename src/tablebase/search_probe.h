#pragma once
#include <cstdint>

#include "board/board.h"

// What the search knows of the endgame tablebases.
struct TablebaseState {
  bool available = false;
};

// A hard probe of the position on the board; true with a score from the side
// to move's view. No tablebase files are read yet, so every probe misses.
template <Color C>
inline bool probeTablebase(const TablebaseState* state, const Board_0x88&, int32_t&) {
  return state && state->available && false;
}

// The probe from inside the tree, with the rule of when a node may ask.
template <Color C>
inline bool probeInSearch(const TablebaseState* state, const Board_0x88&, uint32_t, uint32_t, int32_t&) {
  return state && state->available && false;
}
