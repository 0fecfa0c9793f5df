#pragma once

#include "board/move.h"

// What the search side calls back into the protocol front end.
class EngineInterface {
 public:
  virtual ~EngineInterface() = default;
  // Plays and announces the move that the engine has decided on.
  virtual void makeEngineMove(Move& move) = 0;
  // A think that ended with no move to play (and wasn't cancelled). The
  // xboard front end has nothing to say then; a UCI host still waits for
  // its answer.
  virtual void searchEndedWithoutMove() {}
};
