#pragma once
#include <cstdint>
#include <memory>

#include "board/board.h"
#include "board/move.h"

constexpr uint32_t MaxGamePly = 1023;
// The board's record stack holds the game and the deepest search line; a
// game stops growing here so that a search always has room.
constexpr uint32_t MaxBoardGamePly = 960;

// The game as played: its board and the moves that led there, with what
// each move needs to be taken back.
class GameRecord {
 public:
  GameRecord() : board(std::make_unique<Board_0x88>()) {}

  // Records a move of the game and plays it on the game board. False, with
  // nothing changed, when the history is full.
  bool recordMove(Move move);
  // True when there is room for another move in the game record.
  bool gameHasRoom() const;
  // Every piece has a list slot and a side is to move: moves can be generated and made.
  bool hasSafeLists() const;
  // A position that may be searched and played: one king each, no pawn on
  // the first or last rank, and the side that has just moved not in check.
  bool hasPlayablePosition() const;

  std::unique_ptr<Board_0x88> board;
  uint32_t ply = 0;
  Move moveHistory[MaxGamePly] = {};
  UndoRecord undoHistory[MaxGamePly];
  // Plies of the game before which undo may not go: the last set-up position.
  uint32_t setupPly = 0;
};
