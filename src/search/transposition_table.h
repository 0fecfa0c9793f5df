#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/move.h"
#include "eval/pawn_hash.h"
#include "search/tt_entry.h"

// The transposition table shared by all search threads, without a lock. Both
// operations take the key from history[board.ply].hashKey; ply is the
// distance from the root of the search.

// Mate scores beyond this bound count from the node in the table.
constexpr int32_t TTMateBound = 20000;

// Looks the position up. On a hit sets hit and hands out the stored score,
// corrected for ply, and the move if there is one, whatever the entry's
// depth; true only if the entry is deep enough and its bound ends the node
// for the window (alpha, beta). A miss touches no output.
bool ttProbe(TTHashTable& table, const Board_0x88& board, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth,
             int32_t& score, Move& move, bool& hit);

// Stores a result; the bound follows from the window and from what the
// position can still come to (lowestScore, highestScore). Always writes.
void ttStore(TTHashTable& table, const Board_0x88& board, int32_t lowestScore, int32_t highestScore, int32_t alpha,
             int32_t beta, uint32_t ply, uint32_t depth, int32_t score, Move move);

// Mate scores are kept relative to the storing node and read back relative
// to the root of the reading search.
constexpr int32_t ttScoreToTable(int32_t score, uint32_t ply) {
  return score > TTMateBound ? score + int32_t(ply) : score < -TTMateBound ? score - int32_t(ply) : score;
}
constexpr int32_t ttScoreFromTable(int32_t stored, uint32_t ply) {
  return stored > TTMateBound ? stored - int32_t(ply) : stored < -TTMateBound ? stored + int32_t(ply) : stored;
}

// A score that has reached the limit of the position is exact even outside the window.
constexpr TTBound ttBoundFor(int32_t lowestScore, int32_t highestScore, int32_t alpha, int32_t beta, int32_t score) {
  if (score >= beta && score < highestScore) return BoundLower;
  if (score > alpha) return BoundExact;
  if (score > lowestScore) return BoundUpper;
  return BoundExact;
}

// Fill in percent for the statistics, from a sample at the start of the
// table: 16384 buckets (65536 entries) of the TT, 16384 entries of the pawn
// hash; a smaller table counts against the same divisor.
double ttHashFill(const TTHashTable& table);
double pawnHashFill(const PawnHash& table);
