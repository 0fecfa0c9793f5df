// The thinking line that hosts parse, and the statistics block, to the character.
#include "search/search_output.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

#include "board/move.h"

namespace {

// Squares as file 0-7 and rank 0-7.
Move mv(int f1, int r1, int f2, int r2, unsigned kind = MoveNormal, unsigned detail = 0) {
  return encodeMove(Square64(r1 * 8 + f1), Square64(r2 * 8 + f2), kind, detail);
}

TEST(SearchOutputTest, ThinkingLines) {
  // nodes, qsNodes (not in the line), the counts between, tbHits, selDepth.
  const SearchTotals some{123456, 999, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 17}, ten{10};
  const SearchTotals large{50000000000ull, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4294967296ull, 99};  // rate in 64 bits
  // Double steps; castling as the king's move; promotions with their lower-case letter.
  const std::vector<Move> opening = {mv(4, 1, 4, 3, MoveNormal, DetailDoubleStep),
                                     mv(4, 6, 4, 4, MoveNormal, DetailDoubleStep), mv(6, 0, 5, 2)};
  const std::vector<Move> special = {mv(4, 0, 6, 0, MoveCastling, CastleWhiteKingSide),
                                     mv(0, 6, 1, 7, MovePromotion, Knight - 2), mv(7, 1, 7, 0, MovePromotion, Rook - 2)};
  const struct {
    uint32_t depth;
    int32_t score;
    uint32_t time;
    SearchTotals totals;
    std::vector<Move> moves;
    std::string expected;
  } cases[] = {
      {5, 31, 150, some, opening, "5 31 150 123456 17 82304 3\te2e4 e7e5 g1f3\n"},
      {12, -45, 1, some, special, "12 -45 1 123456 17 12345600 3\te1g1 a7b8n h2h1r\n"},
      {0, 0, 0, SearchTotals{}, {}, "0 0 0 0 0 0 0\n"},  // no moves, no tab; no time, nps 0
      {3, 31999, 0, ten, {}, "3 31999 0 10 0 0 0\n"},   // mate scores unconverted
      {40, -32000, 4000000000u, large, {}, "40 -32000 4000000000 50000000000 99 1250 4294967296\n"},
  };
  for (const auto& c : cases) {
    PvLine line;
    for (Move m : c.moves) line.moves[line.length++] = m;
    std::ostringstream out;
    writeThinkingLine(out, c.depth, c.score, c.time, c.totals, line);
    EXPECT_EQ(out.str(), c.expected);
  }
}

// Shares are truncated, never rounded; every divisor 0 gives 0; the caller's
// stream settings neither change the figures nor are changed.
TEST(SearchOutputTest, StatisticsBlock) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(2);
  writeStatisticsBlock(out, 2, 0, SearchTotals{3, 2, 1, 3, 1, 0, 0, 0, 0, 0, 0, 0, 21}, 100.0, 33.3333333);
  out << 1.0 / 3;
  EXPECT_EQ(out.str(),
            "# total nodes = 3, QS nodes = 2 (66%), time = 0, depth = 2, selDepth = 21, nps = 0, tbHits = 0\n"
            "# QS checks = 1\n# cutoffs = 3, cutoffs on 1st move = 1 (33%)\n"
            "# qsCutoffs = 0, qsCutoffs on 1st move = 0 (0%)\n# allCutoffs = 3, all cutoffs on 1st move = 1 (33%)\n"
            "# singularExtAttempts = 0, singularExtensions = 0\n# ttHashFull% = 100, ttHashHits = 0\n"
            "# pawnHashFull% = 33.3333, pawnHashHits = 0\n0.33");
}

}  // namespace
