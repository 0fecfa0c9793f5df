#include "search/search_output.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "board/move.h"

namespace {

// Coordinates as in the move text: file 0-7, rank 0-7.
constexpr Square64 sq(int file, int rank) { return Square64(rank * 8 + file); }

PvLine lineOf(std::initializer_list<Move> moves) {
  PvLine line;
  for (Move m : moves) line.moves[line.length++] = m;
  return line;
}

std::string thinking(uint32_t depth, int32_t score, uint32_t time, const SearchTotals& totals, const PvLine& line) {
  std::ostringstream out;
  writeThinkingLine(out, depth, score, time, totals, line);
  return out.str();
}

std::string statistics(uint32_t depth, uint32_t time, const SearchTotals& totals, double tt, double pawn) {
  std::ostringstream out;
  writeStatisticsBlock(out, depth, time, totals, tt, pawn);
  return out.str();
}

TEST(SearchOutputTest, ThinkingLines) {
  SearchTotals some;
  some.nodes = 123456;
  some.selDepth = 17;
  some.tbHits = 3;
  some.qsNodes = 999;  // not part of the line
  SearchTotals large;
  large.nodes = 50000000000ull;  // the rate needs 64 bits
  large.selDepth = 99;
  large.tbHits = 4294967296ull;
  SearchTotals ten;
  ten.nodes = 10;
  const Move e2e4 = encodeMove(sq(4, 1), sq(4, 3), MoveNormal, DetailDoubleStep);
  const Move e7e5 = encodeMove(sq(4, 6), sq(4, 4), MoveNormal, DetailDoubleStep);
  const Move g1f3 = encodeMove(sq(6, 0), sq(5, 2));
  // Castling is the king's move; promotions carry their lower-case letter.
  const Move castle = encodeMove(sq(4, 0), sq(6, 0), MoveCastling, CastleWhiteKingSide);
  const Move promote = encodeMove(sq(0, 6), sq(1, 7), MovePromotion, Knight - 2);
  const Move underRook = encodeMove(sq(7, 1), sq(7, 0), MovePromotion, Rook - 2);
  PvLine full;  // 63 moves, written whole
  std::string fullText;
  for (uint16_t i = 0; i < PvLine::capacity; ++i) {
    full.moves[full.length++] = i % 2 ? encodeMove(sq(0, 1), sq(0, 0)) : encodeMove(sq(0, 0), sq(0, 1));
    fullText += std::string(i ? " " : "\t") + (i % 2 ? "a2a1" : "a1a2");
  }
  const struct {
    uint32_t depth;
    int32_t score;
    uint32_t time;
    SearchTotals totals;
    PvLine line;
    std::string expected;
  } cases[] = {
      {5, 31, 150, some, lineOf({e2e4, e7e5, g1f3}), "5 31 150 123456 17 82304 3\te2e4 e7e5 g1f3\n"},
      {12, -45, 1, some, lineOf({castle, promote, underRook}), "12 -45 1 123456 17 12345600 3\te1g1 a7b8n h2h1r\n"},
      {1, 0, 3, some, lineOf({g1f3}), "1 0 3 123456 17 4115200 3\tg1f3\n"},
      {0, 0, 0, SearchTotals{}, PvLine{}, "0 0 0 0 0 0 0\n"},  // no moves, no tab; no time, nps 0
      {3, 31999, 0, ten, PvLine{}, "3 31999 0 10 0 0 0\n"},  // mate scores unconverted
      {4, -31998, 7, ten, PvLine{}, "4 -31998 7 10 0 142 0\n"},
      {40, -32000, 4000000000u, large, PvLine{}, "40 -32000 4000000000 50000000000 99 1250 4294967296\n"},
      {1, 1, 1, SearchTotals{}, full, "1 1 1 0 0 0 0" + fullText + "\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(thinking(c.depth, c.score, c.time, c.totals, c.line), c.expected);
}

TEST(SearchOutputTest, StatisticsBlock) {
  SearchTotals t;
  t.nodes = 1000;
  t.qsNodes = 250;
  t.qsChecks = 0;
  t.cutoffs = 300;
  t.cutoffsOnFirstMove = 270;
  t.qsCutoffs = 100;
  t.qsCutoffsOnFirstMove = 85;
  t.singularExtAttempts = 12;
  t.singularExtensions = 3;
  t.ttHashHits = 77;
  t.pawnHashHits = 9;
  t.tbHits = 4;
  t.selDepth = 21;
  EXPECT_EQ(statistics(9, 200, t, 12.5, 6 * 100.0 / 16384),
            "# total nodes = 1000, QS nodes = 250 (25%), time = 200, depth = 9, selDepth = 21, nps = 500, tbHits = 4\n"
            "# QS checks = 0\n"
            "# cutoffs = 300, cutoffs on 1st move = 270 (90%)\n"
            "# qsCutoffs = 100, qsCutoffs on 1st move = 85 (85%)\n"
            "# allCutoffs = 400, all cutoffs on 1st move = 355 (88%)\n"
            "# singularExtAttempts = 12, singularExtensions = 3\n"
            "# ttHashFull% = 12.5, ttHashHits = 77\n"
            "# pawnHashFull% = 0.0366211, pawnHashHits = 9\n");

  // Shares are truncated, never rounded; a full table shows 100.
  t.nodes = 3;
  t.qsNodes = 2;
  t.cutoffs = 3;
  t.cutoffsOnFirstMove = 1;
  t.qsCutoffs = 0;
  t.qsCutoffsOnFirstMove = 0;
  EXPECT_EQ(statistics(2, 3, t, 100.0, 33.3333333),
            "# total nodes = 3, QS nodes = 2 (66%), time = 3, depth = 2, selDepth = 21, nps = 100, tbHits = 4\n"
            "# QS checks = 0\n"
            "# cutoffs = 3, cutoffs on 1st move = 1 (33%)\n"
            "# qsCutoffs = 0, qsCutoffs on 1st move = 0 (0%)\n"
            "# allCutoffs = 3, all cutoffs on 1st move = 1 (33%)\n"
            "# singularExtAttempts = 12, singularExtensions = 3\n"
            "# ttHashFull% = 100, ttHashHits = 77\n"
            "# pawnHashFull% = 33.3333, pawnHashHits = 9\n");
}

TEST(SearchOutputTest, StatisticsBlockOfAnEmptySearch) {
  // Every divisor is 0: shares and nps print 0, empty tables print 0.
  EXPECT_EQ(statistics(0, 0, SearchTotals{}, 0.0, 0.0),
            "# total nodes = 0, QS nodes = 0 (0%), time = 0, depth = 0, selDepth = 0, nps = 0, tbHits = 0\n"
            "# QS checks = 0\n"
            "# cutoffs = 0, cutoffs on 1st move = 0 (0%)\n"
            "# qsCutoffs = 0, qsCutoffs on 1st move = 0 (0%)\n"
            "# allCutoffs = 0, all cutoffs on 1st move = 0 (0%)\n"
            "# singularExtAttempts = 0, singularExtensions = 0\n"
            "# ttHashFull% = 0, ttHashHits = 0\n"
            "# pawnHashFull% = 0, pawnHashHits = 0\n");
  // Nodes but no time: nps stays 0 while the shares are computed.
  SearchTotals t;
  t.nodes = 40;
  t.qsNodes = 40;
  std::string text = statistics(1, 0, t, 0.0, 0.0);
  EXPECT_EQ(text.substr(0, text.find('\n') + 1),
            "# total nodes = 40, QS nodes = 40 (100%), time = 0, depth = 1, selDepth = 0, nps = 0, tbHits = 0\n");
}

TEST(SearchOutputTest, FillFiguresIgnoreAndKeepTheStreamFormat) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(2);
  writeStatisticsBlock(out, 1, 1, SearchTotals{}, 12.5, 0.0366210937);
  const std::string text = out.str();
  EXPECT_NE(text.find("# ttHashFull% = 12.5, ttHashHits = 0\n"), std::string::npos) << text;
  EXPECT_NE(text.find("# pawnHashFull% = 0.0366211, pawnHashHits = 0\n"), std::string::npos) << text;
  // The caller's settings are back afterwards.
  out.str("");
  out << 1.0 / 3;
  EXPECT_EQ(out.str(), "0.33");
}

}  // namespace
