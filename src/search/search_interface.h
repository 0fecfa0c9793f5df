#pragma once
#include <cstdint>

#include "search/pv_line.h"

// How a running search reaches its owner: the clock and the output.
class SearchInterface {
 public:
  virtual ~SearchInterface() = default;
  // Polled by the nodes of thread 0; true ends the search.
  virtual bool isTimeUp() = 0;
  virtual void reportLine(uint32_t depth, int32_t score, const PvLine& line) = 0;
  virtual void reportStatistics(uint32_t depth) = 0;
};
