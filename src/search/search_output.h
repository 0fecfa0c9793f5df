#pragma once
#include <cstdint>
#include <ostream>

#include "search/pv_line.h"
#include "search/search_statistics.h"

// The text a search shows the host, from explicit inputs. Times are
// centiseconds since the think began.

// One thinking line: depth, score, time, nodes, selDepth, nps, tbHits, then a
// tab and the moves when the line has any. Not flushed.
void writeThinkingLine(std::ostream& out, uint32_t depth, int32_t score, uint32_t time, const SearchTotals& totals,
                       const PvLine& line);

// The eight "# " lines at the end of a search; the fill figures are
// percentages. Ends with a flush.
void writeStatisticsBlock(std::ostream& out, uint32_t depth, uint32_t time, const SearchTotals& totals,
                          double ttFullPercent, double pawnFullPercent);
