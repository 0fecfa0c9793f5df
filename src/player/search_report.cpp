#include <iostream>

#include "player/chess_player.h"
#include "search/search_output.h"
#include "search/transposition_table.h"

namespace {

uint32_t thinkTime(const TimeControl& clock) { return clock.currentElapsed() - clock.elapsedAtMoveStart; }

}  // namespace

void ChessPlayer::reportLine(uint32_t depth, int32_t score, const PvLine& line) {
  if (!post) return;
  collectStatistics();
  writeThinkingLine(std::cout, depth, score, thinkTime(*timeControl), totals, line);
}

void ChessPlayer::reportStatistics(uint32_t depth) {
  if (!post) return;
  collectStatistics();
  const double ttFull = ttHash ? ttHashFill(*ttHash) : 0.0;
  const double pawnFull = pawnHash ? pawnHashFill(*pawnHash) : 0.0;
  writeStatisticsBlock(std::cout, depth, thinkTime(*timeControl), totals, ttFull, pawnFull);
}
