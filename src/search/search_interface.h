#pragma once
#include <cstdint>

#include "search/pv_line.h"
#include "search/root_request.h"
#include "search/score.h"

// How a running search reaches its owner: the clock and the output.
class SearchInterface {
 public:
  virtual ~SearchInterface() = default;
  // Polled by the nodes of thread 0; true ends the search.
  virtual bool isTimeUp() = 0;
  virtual void reportLine(uint32_t depth, int32_t score, const PvLine& line) = 0;
  virtual void reportStatistics(uint32_t depth) = 0;
  // The line of the move the search hands back, at its end. The score is
  // +-MateScore when the last iteration was cut short before its line had a
  // score; such a line isn't shown.
  virtual void reportFinalLine(uint32_t depth, int32_t score, const PvLine& line) {
    if (score != MateScore && score != -MateScore) reportLine(depth, score, line);
  }
  // With more than one line asked for: the lines of a finished iteration,
  // best first, instead of each new best line as it comes.
  virtual void reportLines(uint32_t, const RootLine*, uint32_t) {}
};
