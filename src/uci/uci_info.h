#pragma once
#include <cstdint>
#include <ostream>
#include <string>

#include "search/pv_line.h"
#include "search/search_statistics.h"

// A search score as UCI shows it: "cp X", or "mate N" in moves, negative
// when the side to move is mated.
std::string uciScore(int32_t score);

// The figures of one UCI thinking line, from explicit inputs.
struct UciInfo {
  uint32_t depth = 0;
  uint32_t multiPv = 0;  // the line's rank with MultiPV above 1; 0: not shown
  int32_t score = 0;
  bool hasScore = true;
  bool lowerBound = false;  // the score is only a bound from below
  int64_t timeMs = 0;
  uint32_t hashfullPermille = 0;
};

// "info depth D seldepth S [multipv K] score ... [lowerbound] nodes N nps N
// time MS hashfull H tbhits T pv ...", one line, not flushed.
void writeUciInfo(std::ostream& out, const UciInfo& info, const SearchTotals& totals, const PvLine& line);
