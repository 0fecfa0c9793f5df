#include "search/search_output.h"

#include <ios>

#include "board/move_text.h"

namespace {

// Integer percentage or rate, 0 for a zero divisor.
uint64_t ratio(uint64_t numerator, uint64_t denominator) { return denominator ? numerator / denominator : 0; }

}  // namespace

void writeThinkingLine(std::ostream& out, uint32_t depth, int32_t score, uint32_t time, const SearchTotals& totals,
                       const PvLine& line) {
  out << depth << ' ' << score << ' ' << time << ' ' << totals.nodes << ' ' << totals.selDepth << ' '
      << ratio(totals.nodes * 100, time) << ' ' << totals.tbHits;
  char text[6];
  for (uint16_t i = 0; i < line.length; ++i) {
    moveToText(line.moves[i], text);
    out << (i == 0 ? '\t' : ' ') << text;
  }
  out << '\n';
}

void writeStatisticsBlock(std::ostream& out, uint32_t depth, uint32_t time, const SearchTotals& totals,
                          double ttFullPercent, double pawnFullPercent) {
  const uint64_t allCutoffs = totals.cutoffs + totals.qsCutoffs;
  const uint64_t allFirst = totals.cutoffsOnFirstMove + totals.qsCutoffsOnFirstMove;
  out << "# total nodes = " << totals.nodes << ", QS nodes = " << totals.qsNodes << " ("
      << ratio(totals.qsNodes * 100, totals.nodes) << "%), time = " << time << ", depth = " << depth
      << ", selDepth = " << totals.selDepth << ", nps = " << ratio(totals.nodes * 100, time)
      << ", tbHits = " << totals.tbHits << '\n';
  out << "# QS checks = " << totals.qsChecks << '\n';
  out << "# cutoffs = " << totals.cutoffs << ", cutoffs on 1st move = " << totals.cutoffsOnFirstMove << " ("
      << ratio(totals.cutoffsOnFirstMove * 100, totals.cutoffs) << "%)\n";
  out << "# qsCutoffs = " << totals.qsCutoffs << ", qsCutoffs on 1st move = " << totals.qsCutoffsOnFirstMove << " ("
      << ratio(totals.qsCutoffsOnFirstMove * 100, totals.qsCutoffs) << "%)\n";
  out << "# allCutoffs = " << allCutoffs << ", all cutoffs on 1st move = " << allFirst << " ("
      << ratio(allFirst * 100, allCutoffs) << "%)\n";
  out << "# singularExtAttempts = " << totals.singularExtAttempts
      << ", singularExtensions = " << totals.singularExtensions << '\n';

  // The fill figures in the stream's default form for a double, whatever
  // the caller left set: six significant digits, no trailing zeros.
  const std::ios_base::fmtflags flags = out.flags();
  const std::streamsize precision = out.precision();
  out.unsetf(std::ios_base::floatfield | std::ios_base::showpoint);
  out.precision(6);
  out << "# ttHashFull% = " << ttFullPercent << ", ttHashHits = " << totals.ttHashHits << '\n';
  out << "# pawnHashFull% = " << pawnFullPercent << ", pawnHashHits = " << totals.pawnHashHits << '\n';
  out.flags(flags);
  out.precision(precision);
  out.flush();
}
