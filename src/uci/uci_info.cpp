#include "uci/uci_info.h"

#include "board/move_text.h"
#include "search/score.h"

std::string uciScore(int32_t score) {
  if (score > MateThreshold) return "mate " + std::to_string((MateScore - score + 1) / 2);
  if (score < -MateThreshold) return "mate -" + std::to_string((MateScore + score) / 2);
  return "cp " + std::to_string(score);
}

void writeUciInfo(std::ostream& out, const UciInfo& info, const SearchTotals& totals, const PvLine& line) {
  const int64_t timeMs = info.timeMs > 0 ? info.timeMs : 0;
  const uint64_t nps = timeMs > 0 ? totals.nodes * 1000 / uint64_t(timeMs) : 0;
  std::string text = "info depth " + std::to_string(info.depth) + " seldepth " + std::to_string(totals.selDepth);
  if (info.multiPv) text += " multipv " + std::to_string(info.multiPv);
  if (info.hasScore) text += " score " + uciScore(info.score) + (info.lowerBound ? " lowerbound" : "");
  text += " nodes " + std::to_string(totals.nodes) + " nps " + std::to_string(nps) + " time " + std::to_string(timeMs) +
          " hashfull " + std::to_string(info.hashfullPermille) + " tbhits " + std::to_string(totals.tbHits);
  if (!line.empty()) {
    text += " pv";
    for (uint32_t i = 0; i < line.length; ++i) text += " " + moveToString(line.moves[i]);
  }
  out << text << '\n';
}
