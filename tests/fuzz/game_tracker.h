#pragma once
#include <deque>
#include <string>
#include <vector>

#include "board/game_record.h"

// Follows the game inside the engine from what goes in and what comes out,
// on the engine's own game record, and checks every move that the engine
// plays against the legal moves.
//
// Moves are announced ("move ", "# making user move: "); setboard, undo,
// remove and the commands that start a new game change the position without
// a word of their own, but the board diagram printed after any change tells
// which of them has taken effect. A diagram that nothing explains makes the
// position unknown until a set-up or a new game explains one again.
class GameTracker {
 public:
  GameTracker();
  void onInput(const std::string& bytes, bool atEnd = false);
  void onOutput(const std::string& wholeOutputSoFar);

  // The engine's position when it is known and can be played; null otherwise.
  const Board_0x88* playableBoard() const;
  bool quitRead() const { return quitRead_; }
  std::string problem;  // the first illegal engine move
  uint64_t movesChecked = 0;

 private:
  void take(const std::string& line);
  bool explains(const std::string& command, const std::string& placement);

  GameRecord game_;
  bool known_ = true;
  bool quitRead_ = false;
  std::string pendingInput_, partialOutput_;
  size_t outputSeen_ = 0;
  std::deque<std::string> silent_;  // lines read that may change the position silently
  std::vector<std::string> diagram_;
};
