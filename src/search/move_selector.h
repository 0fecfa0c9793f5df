#pragma once
#include <cstdint>
#include <utility>

#include "board/attacks.h"
#include "board/board.h"
#include "board/check_info.h"
#include "board/move.h"
#include "board/move_generation.h"
#include "search/killer_moves.h"
#include "search/move_ordering.h"
#include "search/pseudo_legal.h"

// Hands out the moves of one position one at a time, best guess first, and
// generates in stages as late as it can, so a node cut off by its first moves
// never pays for the rest. Every move handed out is legal, and none twice.
// Lives in the stack frame of the node that uses it.
class MoveSelector {
 public:
  // Stages; a row of the stage table ends with StageEnd.
  enum Stage : uint8_t {
    StageAllMoves = 0,
    StageAllEvasions = 1,
    StagePvMove = 2,
    StageTTMove = 3,
    StageScoredEvasions = 4,
    StageCaptures = 5,
    StageKillers = 6,
    StageQuiets = 7,
    StageQuiescence = 8,
    StageEnd = 9,
  };
  // Rows by move set: 0 all moves (single-reply test, perft), 1 all evasions
  // (perft), 2 in check, 3 full node, 4 quiescence.
  static constexpr uint8_t stageTable[5][6] = {
      {StageAllMoves, StageEnd},
      {StageAllEvasions, StageEnd},
      {StagePvMove, StageTTMove, StageScoredEvasions, StageEnd},
      {StagePvMove, StageTTMove, StageCaptures, StageKillers, StageQuiets, StageEnd},
      {StagePvMove, StageQuiescence, StageEnd},
  };
  static constexpr uint32_t deferredCapacity = 63;

  // The hints pvMove and ttMove may be written into their fields after
  // construction, before the first call.
  MoveSelector(uint32_t moveSet, Board_0x88* board, const CheckInfo& checkInfo, Move pvMove);

  // Next move for sets 0, 3 and 4; null when exhausted, and null from then on.
  template <Color C>
  ScoredMove* nextMove();
  // Next move for sets 1 and 2.
  template <Color C>
  ScoredMove* nextEvasion();

  // The ordering helpers, also for the nodes that use the selector.
  static int32_t mvvLvaValue(const Board_0x88& b, Move m, bool& isCapture) { return ::mvvLvaValue(b, m, isCapture); }
  template <Color C>
  static bool isBadCapture(const Board_0x88& b, Move m, int32_t& gain) {
    return ::isBadCapture<C>(b, m, gain);
  }
  template <Color C>
  static bool isPseudoLegal(const Board_0x88& b, Move m) {
    return ::isPseudoLegal<C>(b, m);
  }
  static void updateKiller(Board_0x88& b, Move m) { ::updateKiller(b, m); }
  static void updateCounterMove(Board_0x88& b, Move previous, Move m) { ::updateCounterMove(b, previous, m); }
  static bool isCounterMove(const Board_0x88& b, Move previous, Move m) { return ::isCounterMove(b, previous, m); }

  MoveList moves;
  PinMasks pins;
  CheckInfo checkInfo;
  uint32_t current = 0;
  Board_0x88* board;
  uint32_t moveSet;
  uint32_t stagePos = 0;
  bool stageReady = false;
  ScoredMove pvMove = {0, 0};
  ScoredMove ttMove = {0, 0};
  ScoredMove killers[4] = {};
  uint32_t killerCount = 0;
  ScoredMove deferred[deferredCapacity];  // only the first deferredCount are meaningful
  uint32_t deferredCount = 0;

 private:
  template <Color C, bool Evasions>
  ScoredMove* next();

  template <Color C>
  ScoredMove* stageAll();
  template <Color C>
  ScoredMove* stageEvasionsUnsorted();
  template <Color C>
  ScoredMove* stagePv();
  // A hint from the line or the table: a torn table entry or a key collision
  // can make it any move at all, so it is tested like a generated one.
  template <Color C>
  bool isUsableHint(Move m) const;
  template <Color C>
  ScoredMove* stageTT();
  template <Color C>
  ScoredMove* stageScoredEvasions();
  template <Color C>
  ScoredMove* stageCaptures();
  template <Color C>
  ScoredMove* stageKillers();
  template <Color C>
  ScoredMove* stageQuiets();
  template <Color C>
  ScoredMove* stageQuiescence();

  // Hands out the list of the running stage in generation order.
  ScoredMove* takeUnsorted() { return current < moves.count ? &moves.moves[current++] : nullptr; }

  // Partial selection: every later entry that is strictly better than the
  // one at `current` is swapped into its place. Ties keep the entry there.
  static ScoredMove* selectNext(ScoredMove* entries, uint32_t count, uint32_t& current) {
    if (current >= count) return nullptr;
    ScoredMove* head = &entries[current];
    for (uint32_t j = current + 1; j < count; ++j)
      if (entries[j].value > head->value) std::swap(*head, entries[j]);
    ++current;
    return head;
  }

  bool isHint(Move m) const { return sameMove(m, pvMove.move) || sameMove(m, ttMove.move); }
  bool isAcceptedKiller(Move m) const {
    for (uint32_t i = 0; i < killerCount; ++i)
      if (sameMove(m, killers[i].move)) return true;
    return false;
  }
};

inline MoveSelector::MoveSelector(uint32_t set, Board_0x88* b, const CheckInfo& info, Move pv)
    : checkInfo(info), board(b), moveSet(set) {
  moves.count = 0;
  pvMove.move = pv;
  // Evasions are all tried on the board; only the other sets use pins.
  if (set == 1 || set == 2) return;
  if (b->sideToMove == White)
    computePins<White>(*b, pins);
  else if (b->sideToMove == Black)
    computePins<Black>(*b, pins);
}

template <Color C>
inline ScoredMove* MoveSelector::stageAll() {
  if (!stageReady) {
    moves.count = 0;
    current = 0;
    generateAllMoves<C>(*board, pins, moves);
    stageReady = true;
  }
  return takeUnsorted();
}

template <Color C>
inline ScoredMove* MoveSelector::stageEvasionsUnsorted() {
  if (!stageReady) {
    moves.count = 0;
    current = 0;
    generateEvasions<C>(*board, moves);
    stageReady = true;
  }
  return takeUnsorted();
}

template <Color C>
inline bool MoveSelector::isUsableHint(Move m) const {
  return ::isPseudoLegal<C>(*board, m) &&
         (checkInfo.count != 0 ? isLegalEvasion<C>(*board, m) : isLegalWhenNotInCheck<C>(*board, m, pins));
}

// The line's first move comes from a table cut-off of the last iteration as
// often as from a search, so it passes the same test as the table move.
template <Color C>
inline ScoredMove* MoveSelector::stagePv() {
  if (stageReady || pvMove.move == NoMove) return nullptr;
  stageReady = true;
  if (isUsableHint<C>(pvMove.move)) return &pvMove;
  pvMove.move = NoMove;
  return nullptr;
}

template <Color C>
inline ScoredMove* MoveSelector::stageTT() {
  if (stageReady) return nullptr;
  stageReady = true;
  if (ttMove.move == NoMove || sameMove(ttMove.move, pvMove.move)) return nullptr;
  if (isUsableHint<C>(ttMove.move)) return &ttMove;
  // A stale hint is dropped, and must not shadow a generated move that merely
  // shares its squares.
  ttMove.move = NoMove;
  return nullptr;
}

template <Color C>
inline ScoredMove* MoveSelector::stageScoredEvasions() {
  if (!stageReady) {
    moves.count = 0;
    current = 0;
    generateEvasions<C>(*board, moves);
    for (uint32_t i = 0; i < moves.count; ++i)
      moves.moves[i].value = evasionOrderValue<C>(*board, moves.moves[i].move);
    stageReady = true;
  }
  while (ScoredMove* candidate = selectNext(moves.moves, moves.count, current))
    if (!isHint(candidate->move)) return candidate;
  return nullptr;
}

template <Color C>
inline ScoredMove* MoveSelector::stageCaptures() {
  if (!stageReady) {
    moves.count = 0;
    deferredCount = 0;
    current = 0;
    generateCaptures<C>(*board, pins, moves, PromotionsAll);
    for (uint32_t i = 0; i < moves.count; ++i)
      moves.moves[i].value = captureOrderValue(*board, moves.moves[i].move);
    stageReady = true;
  }
  while (ScoredMove* candidate = selectNext(moves.moves, moves.count, current)) {
    if (isHint(candidate->move)) continue;
    int32_t gain;
    if (!::isBadCapture<C>(*board, candidate->move, gain)) return candidate;
    // Put off to the quiet stage; beyond the buffer's room it isn't tried at all.
    if (deferredCount < deferredCapacity)
      deferred[deferredCount++] =
          ScoredMove{candidate->move, int16_t(candidate->value - GoodCaptureBonus + BadCaptureBonus)};
  }
  return nullptr;
}

template <Color C>
inline ScoredMove* MoveSelector::stageKillers() {
  if (!stageReady) {
    current = 0;
    killerCount = 0;
    // The killers of this ply, then those of two plies deeper.
    Move candidates[4];
    uint32_t candidateCount = 0;
    const uint32_t ply = board->ply;
    candidates[candidateCount++] = board->history[ply].killer[0];
    candidates[candidateCount++] = board->history[ply].killer[1];
    if (ply + 2 < uint32_t(HistorySize)) {
      candidates[candidateCount++] = board->history[ply + 2].killer[0];
      candidates[candidateCount++] = board->history[ply + 2].killer[1];
    }
    for (uint32_t i = 0; i < candidateCount; ++i) {
      const Move m = candidates[i];
      if (m == NoMove || isHint(m) || isAcceptedKiller(m)) continue;
      if (!isQuietForMemory(*board, m)) continue;
      if (!::isPseudoLegal<C>(*board, m) || !isLegalWhenNotInCheck<C>(*board, m, pins)) continue;
      bool isCapture;
      killers[killerCount++] = ScoredMove{m, int16_t(::mvvLvaValue(*board, m, isCapture) + KillerBonus)};
    }
    stageReady = true;
  }
  return selectNext(killers, killerCount, current);
}

template <Color C>
inline ScoredMove* MoveSelector::stageQuiets() {
  if (!stageReady) {
    moves.count = 0;
    current = 0;
    generateQuiets<C>(*board, pins, moves);
    for (uint32_t i = 0; i < moves.count; ++i)
      moves.moves[i].value = quietOrderValue<C>(*board, moves.moves[i].move);
    // Bad captures run among the quiet moves by their value.
    for (uint32_t i = 0; i < deferredCount && moves.count < MoveList::capacity; ++i)
      moves.moves[moves.count++] = deferred[i];
    deferredCount = 0;
    stageReady = true;
  }
  while (ScoredMove* candidate = selectNext(moves.moves, moves.count, current))
    if (!isHint(candidate->move) && !isAcceptedKiller(candidate->move)) return candidate;
  return nullptr;
}

template <Color C>
inline ScoredMove* MoveSelector::stageQuiescence() {
  if (!stageReady) {
    moves.count = 0;
    current = 0;
    generateCaptures<C>(*board, pins, moves, PromotionsQueenOnly);
    for (uint32_t i = 0; i < moves.count; ++i) {
      bool isCapture;
      moves.moves[i].value = int16_t(::mvvLvaValue(*board, moves.moves[i].move, isCapture));
    }
    stageReady = true;
  }
  while (ScoredMove* candidate = selectNext(moves.moves, moves.count, current))
    if (!sameMove(candidate->move, pvMove.move)) return candidate;
  return nullptr;
}

template <Color C, bool Evasions>
inline ScoredMove* MoveSelector::next() {
  for (;;) {
    ScoredMove* found = nullptr;
    switch (stageTable[moveSet][stagePos]) {
      case StageEnd:
        return nullptr;
      case StageAllMoves:
        if constexpr (!Evasions) found = stageAll<C>();
        break;
      case StageAllEvasions:
        if constexpr (Evasions) found = stageEvasionsUnsorted<C>();
        break;
      case StagePvMove:
        found = stagePv<C>();
        break;
      case StageTTMove:
        found = stageTT<C>();
        break;
      case StageScoredEvasions:
        if constexpr (Evasions) found = stageScoredEvasions<C>();
        break;
      case StageCaptures:
        if constexpr (!Evasions) found = stageCaptures<C>();
        break;
      case StageKillers:
        if constexpr (!Evasions) found = stageKillers<C>();
        break;
      case StageQuiets:
        if constexpr (!Evasions) found = stageQuiets<C>();
        break;
      case StageQuiescence:
        if constexpr (!Evasions) found = stageQuiescence<C>();
        break;
      default:
        break;
    }
    if (found) return found;
    ++stagePos;
    stageReady = false;
  }
}

template <Color C>
inline ScoredMove* MoveSelector::nextMove() {
  return next<C, false>();
}

template <Color C>
inline ScoredMove* MoveSelector::nextEvasion() {
  return next<C, true>();
}
