#pragma once
#include <cstdint>

#include "board/attacks.h"
#include "board/board.h"
#include "board/check_info.h"
#include "board/move.h"
#include "board/move_generation.h"

// Hands out the moves of one position one at a time, generating in stages as
// late as it can. Lives in the stack frame of the node that uses it.
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
  static constexpr uint8_t stageTable[5][6] = {
      {StageAllMoves, StageEnd},
      {StageAllEvasions, StageEnd},
      {StagePvMove, StageTTMove, StageScoredEvasions, StageEnd},
      {StagePvMove, StageTTMove, StageCaptures, StageKillers, StageQuiets, StageEnd},
      {StagePvMove, StageQuiescence, StageEnd},
  };

  MoveSelector(uint32_t moveSet, Board_0x88* board, const CheckInfo& checkInfo, Move pvMove);

  // Next move for sets 0, 3 and 4; null when exhausted, and null from then on.
  template <Color C>
  ScoredMove* nextMove();
  // Next move for sets 1 and 2.
  template <Color C>
  ScoredMove* nextEvasion();

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
  ScoredMove deferred[63] = {};
  uint32_t deferredCount = 0;

 private:
  template <Color C, bool Evasions>
  ScoredMove* next();
  // Hands out the list of the running stage in generation order.
  ScoredMove* takeUnsorted() { return current < moves.count ? &moves.moves[current++] : nullptr; }
};

inline MoveSelector::MoveSelector(uint32_t set, Board_0x88* b, const CheckInfo& info, Move pv)
    : checkInfo(info), board(b), moveSet(set) {
  moves.count = 0;
  pvMove.move = pv;
  if (b->sideToMove == White)
    computePins<White>(*b, pins);
  else if (b->sideToMove == Black)
    computePins<Black>(*b, pins);
}

template <Color C, bool Evasions>
inline ScoredMove* MoveSelector::next() {
  for (;;) {
    uint8_t stage = stageTable[moveSet][stagePos];
    ScoredMove* found = nullptr;
    switch (stage) {
      case StageEnd:
        return nullptr;
      case StageAllMoves:
        if constexpr (!Evasions) {
          if (!stageReady) {
            moves.count = 0;
            current = 0;
            generateAllMoves<C>(*board, pins, moves);
            stageReady = true;
          }
          found = takeUnsorted();
        }
        break;
      case StageAllEvasions:
        if constexpr (Evasions) {
          if (!stageReady) {
            moves.count = 0;
            current = 0;
            generateEvasions<C>(*board, moves);
            stageReady = true;
          }
          found = takeUnsorted();
        }
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
