#pragma once
#include <cstdint>
#include <string>
#include <vector>

// The limits of one UCI `go` command. A number not given is -1.
struct UciGoLimits {
  int64_t whiteTime = -1, blackTime = -1;
  int64_t whiteIncrement = -1, blackIncrement = -1;
  int64_t movesToGo = -1;
  int64_t depth = -1;
  int64_t nodes = -1;
  int64_t moveTime = -1;
  int64_t perft = -1;  // go perft N: a count, no search
  bool infinite = false;
  bool ponder = false;
  std::vector<std::string> searchMoves;  // the words behind searchmoves, up to the next keyword

  // The side to move has a clock (or a fixed move time): a game move, which
  // may come from the book.
  bool hasClockFor(bool whiteToMove) const { return (whiteToMove ? whiteTime : blackTime) >= 0 || moveTime >= 0; }
};

// Reads the words behind `go`. Unknown words are skipped, as the protocol
// asks; a keyword whose number is missing
// or broken makes the whole command fail, with the reason in `error`.
bool parseGoLimits(const std::vector<std::string>& words, UciGoLimits& limits, std::string& error);
