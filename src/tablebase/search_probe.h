#pragma once
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "board/board.h"

// What the search knows of the endgame tablebases. The record lives as long
// as its player; set-ups change it in place, so threads keep its address.
struct TablebaseState {
  std::atomic<bool> available{false};  // read by the search without a lock
  std::vector<std::string> paths;
};

// Closes the store, empties the cache and the directory list: tablebases off.
void closeTablebases(TablebaseState& state);

// Sets the tablebases up from the directories of `gtbPath` (";" between
// them, empty pieces skipped) with a cache of `cacheSizeMB`. Any type but
// "gaviota" leaves them off.
void initTablebases(TablebaseState& state, const std::string& type, const char* gtbPath, uint32_t cacheSizeMB);

// A probe of the board's position with `side` to move: true with the score
// from that side's view (0 draw, 32000 - plies for a win, plies - 32000 for
// a loss). Never with castling rights.
bool probePosition(const TablebaseState* state, const Board_0x88& board, Color side, bool hard, int32_t& score);

// A hard probe, as the root asks it.
template <Color C>
inline bool probeTablebase(const TablebaseState* state, const Board_0x88& board, int32_t& score) {
  return state && state->available.load(std::memory_order_relaxed) && probePosition(state, board, C, true, score);
}

// The probe from inside the tree: not at depth 0 nor with six men or more;
// hard in early iterations and near the root of middle ones, soft (cache
// only) deeper and later.
template <Color C>
inline bool probeInSearch(const TablebaseState* state, const Board_0x88& board, uint32_t depth,
                          uint32_t iterationDepth, int32_t& score) {
  if (!state || !state->available.load(std::memory_order_relaxed)) return false;
  if (depth == 0 || board.side[White].total + board.side[Black].total >= 6) return false;
  const bool hard = iterationDepth <= 6 || (iterationDepth <= 11 && depth + 6 >= iterationDepth);
  return probePosition(state, board, C, hard, score);
}
