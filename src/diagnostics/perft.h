#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/board.h"
#include "board/check_info.h"
#include "board/make_move.h"
#include "board/move.h"
#include "diagnostics/perft_entry.h"
#include "search/move_selector.h"
#include "search/time_control.h"

// Counters of one perft or divide run.
struct PerftStats {
  uint64_t nodes = 0;     // calls of perftNode and of the divide root
  uint64_t hashHits = 0;  // probes that returned a stored count
  // Below a sound root (every man in a list slot, the side not to move not
  // in check) a check can only come from the last move; an odd set-up is
  // asked about in full at every node.
  bool checkFromLastMove = false;
};

// Same key: overwrite whatever the depth; else the first free entry; else the
// entry of least depth, the lowest slot among equals.
void perftHashStore(PerftHashTable& table, uint64_t key, uint64_t count, uint32_t depth);

// Empties the table, creating it (with its size line) on first use.
void preparePerftHash(PerftTable& perft);

// Share of used entries in the first 16384 buckets, in percent of 65536.
double perftHashFill(const PerftHashTable& table);

// Leaves below the position on `board` at `depth` (at least 1). `color` moves,
// `inCheck` tells whether its king is attacked, and `checkInfo` holds the
// checkers. A null table counts without probing or storing.
template <Color C, bool InCheck>
uint64_t perftNode(PerftStats& stats, Board_0x88& board, const CheckInfo& checkInfo, PerftHashTable* perftHash,
                   uint32_t depth);

// Plays one move, counts below it and takes it back.
template <Color C>
inline uint64_t perftChild(PerftStats& stats, Board_0x88& board, Move move, PerftHashTable* perftHash,
                           uint32_t depth) {
  constexpr Color Them = opponent(C);
  UndoRecord undo{};
  CheckInfo childCheck{};
  makePerftMove<C>(board, move, undo);
  const bool check = (!stats.checkFromLastMove || attackedAfterMove<Them>(board, move)) &&
                     findCheck<Them>(board, board.side[Them].square[0], childCheck);
  uint64_t count = check ? perftNode<Them, true>(stats, board, childCheck, perftHash, depth)
                         : perftNode<Them, false>(stats, board, childCheck, perftHash, depth);
  unmakePerftMove<C>(board, move, undo);
  return count;
}

template <Color C, bool InCheck>
uint64_t perftNode(PerftStats& stats, Board_0x88& board, const CheckInfo& checkInfo, PerftHashTable* perftHash,
                   uint32_t depth) {
  ++stats.nodes;
  auto next = [](MoveSelector& selector) {
    if constexpr (InCheck)
      return selector.template nextEvasion<C>();
    else
      return selector.template nextMove<C>();
  };

  // The generators are legal, so the last ply costs one generation, counted
  // without keeping the moves, and no make.
  if (depth == 1) {
    MoveTally tally;
    if constexpr (InCheck) {
      generateEvasions<C>(board, tally);
    } else {
      PinMasks pins;
      computePins<C>(board, pins);
      generateAllMoves<C>(board, pins, tally);
    }
    return tally.count;
  }

  // The probe comes before the selector, whose set-up a hit doesn't need.
  const uint64_t key = board.history[board.ply].hashKey;
  if (perftHash) {
    const PerftHashTable::Bucket& bucket = perftHash->bucketFor(key);
    for (const PerftEntry& entry : bucket.entries) {
      if (perftEntryKey(entry) != (key & PerftKeyMask)) continue;
      if (entry.depth == depth) {
        ++stats.hashHits;
        return entry.count;
      }
      break;  // the same position stored at another depth: a miss
    }
  }

  MoveSelector selector(InCheck ? 1 : 0, &board, checkInfo, NoMove);
  uint64_t total = 0;
  while (const ScoredMove* sm = next(selector)) {
    // The whole list is there: while one child is counted, the table bucket
    // of the next one is on its way.
    if (perftHash && depth >= 3) {
      if (selector.current == 1) perftHash->prefetch(plainKeyAfter<C>(board, sm->move));
      if (selector.current < selector.moves.count)
        perftHash->prefetch(plainKeyAfter<C>(board, selector.moves.moves[selector.current].move));
    }
    total += perftChild<C>(stats, board, sm->move, perftHash, depth - 1);
  }

  if (perftHash) perftHashStore(*perftHash, key, total, depth);
  return total;
}

// Takes the count of each root move of divide, in generation order; each
// front end writes it in its own protocol's form.
using RootMoveCounts = std::function<void(Move move, uint64_t count)>;

// The root of divide: one count per root move, handed to `perMove`.
template <Color C, bool InCheck>
uint64_t divideRoot(PerftStats& stats, Board_0x88& board, const CheckInfo& checkInfo, PerftHashTable* perftHash,
                    uint32_t depth, const RootMoveCounts& perMove);

// Finds whether the side to move is in check and runs the fitting instance of
// perftNode (or, with `perMove`, divideRoot) on the position. A board without
// a side to move (cleared by a refused FEN) counts 0 and no node.
uint64_t countLeaves(PerftStats& stats, Board_0x88& board, PerftHashTable* perftHash, uint32_t depth,
                     const RootMoveCounts* perMove);
// The same; divide prints one line "move count" per root move.
uint64_t countLeaves(PerftStats& stats, Board_0x88& board, PerftHashTable* perftHash, uint32_t depth, bool divide);

// A count on the game's board with the perft table, emptied first (made on
// first use); the position's keys are rebuilt, as a set-up may have left them
// stale. With `perMove`, divide.
uint64_t countFromPosition(PerftStats& stats, Board_0x88& board, PerftTable& perft, uint32_t depth,
                           const RootMoveCounts* perMove);

// The perft and divide commands on the player's board: false when the depth is
// below 1. Prints the report.
bool runPerftCommand(Board_0x88& board, TimeControl& clock, PerftTable& perft, const std::vector<std::string>& args);
bool runDivideCommand(Board_0x88& board, TimeControl& clock, PerftTable& perft, const std::vector<std::string>& args);
