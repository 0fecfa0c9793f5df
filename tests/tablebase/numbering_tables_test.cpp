// The numbering tables of the position index: their counts, orders and gaps.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "tablebase/numbering_tables.h"

namespace {

constexpr uint32_t sq(const char* name) { return uint32_t((name[1] - '1') * 8 + (name[0] - 'a')); }

TEST(NumberingTablesTest, KingPairsFollowTheTriangleAndEndAt462) {
  EXPECT_EQ(kingPairIndex[sq("a1")][sq("c1")], 0u);  // b1 and a2 are neighbours
  EXPECT_EQ(kingPairIndex[sq("d4")][sq("h8")], 461u);
  struct Partners {
    const char* blackKing;
    int count;
  };
  for (Partners p : {Partners{"a1", 33}, {"b1", 58}, {"c1", 58}, {"d1", 58}, {"b2", 30}, {"c2", 55},
                     {"d2", 55}, {"c3", 30}, {"d3", 55}, {"d4", 30}})
    EXPECT_EQ(std::count_if(kingPairIndex[sq(p.blackKing)], kingPairIndex[sq(p.blackKing)] + 64,
                            [](uint32_t n) { return n != noNumber; }),
              p.count)
        << p.blackKing;
  // Every pair of kings apart reaches a number through its normal form, and
  // that form needs no further flags.
  std::set<uint32_t> numbers;
  for (uint32_t bk = 0; bk < 64; ++bk) {
    for (uint32_t wk = 0; wk < 64; ++wk) {
      uint32_t flags = kingPairFlip[bk][wk];
      uint32_t b = pieceFlip(bk, flags), w = pieceFlip(wk, flags);
      bool apart = std::max(std::abs(int(bk % 8) - int(wk % 8)), std::abs(int(bk / 8) - int(wk / 8))) > 1;
      EXPECT_EQ(kingPairIndex[b][w] != noNumber, apart) << bk << " " << wk;
      if (!apart) continue;
      EXPECT_EQ(kingPairFlip[b][w], 0u);
      numbers.insert(kingPairIndex[b][w]);
      EXPECT_EQ(kingPairSquares[kingPairIndex[b][w]].first, b);
      EXPECT_EQ(kingPairSquares[kingPairIndex[b][w]].second, w);
    }
  }
  EXPECT_EQ(numbers.size(), kingPairCount);
  EXPECT_EQ(*numbers.rbegin(), kingPairCount - 1);
}

TEST(NumberingTablesTest, PairsAndTriplesOfSquares) {
  EXPECT_EQ(pairIndex[0][1], 0u);
  EXPECT_EQ(pairIndex[0][2], 1u);
  EXPECT_EQ(pairIndex[62][63], 2015u);
  EXPECT_EQ(pairIndex[5][3], pairIndex[3][5]);
  EXPECT_EQ(pairIndex[9][9], noNumber);
  EXPECT_EQ(tripleIndex(2, 1, 0), 0u);
  EXPECT_EQ(tripleIndex(63, 61, 62), tripleCount - 1);
  EXPECT_EQ(tripleIndex(40, 7, 7), noNumber);
  for (uint32_t n = 0; n < tripleCount; ++n) {
    SquareTriple t = tripleSquares(n);
    ASSERT_EQ(tripleIndex(t.squares[2], t.squares[0], t.squares[1]), n);
  }
  for (uint32_t n = 0; n < pairCount; ++n) ASSERT_EQ(pairIndex[pairSquares[n].second][pairSquares[n].first], n);
}

TEST(NumberingTablesTest, PawnSlotsCountFromTheirSide) {
  struct Slot {
    const char* square;
    uint32_t white, black;
  };
  for (Slot s : {Slot{"a7", 0, 20}, {"b7", 1, 21}, {"d7", 3, 23}, {"a6", 4, 16}, {"d2", 23, 3}, {"a2", 20, 0},
                 {"a3", 16, 4}}) {
    EXPECT_EQ(whitePawnSlot(sq(s.square)), s.white) << s.square;
    EXPECT_EQ(blackPawnSlot(sq(s.square)), s.black) << s.square;
    EXPECT_EQ(whitePawnSquare(s.white), sq(s.square));
    EXPECT_EQ(blackPawnSquare(s.black), sq(s.square));
  }
}

TEST(NumberingTablesTest, PawnPairsAndTriplesNumberEachPlacementUpToTheMirror) {
  // Two pawns: one number per pair of squares and its mirror, none for one square.
  std::set<uint32_t> pairs;
  for (uint32_t u = 8; u < 56; ++u) {
    for (uint32_t v = 8; v < 56; ++v) {
      uint32_t anchor = isPawnPairAnchor(u, v) ? u : v, other = anchor == u ? v : u;
      if (anchor != (isPawnPairAnchor(v, u) ? v : u) && u != v) ADD_FAILURE() << "anchor of " << u << " " << v;
      if (onRightHalf(anchor)) anchor = mirrorFiles(anchor), other = mirrorFiles(other);
      uint32_t n = pawnPairIndex[whitePawnSlot(anchor)][mirrorRanks(other) - 8];
      EXPECT_EQ(n == noNumber, u == v);
      if (n != noNumber) pairs.insert(n);
    }
  }
  EXPECT_EQ(pairs.size(), pawnPairCount);
  EXPECT_EQ(*pairs.rbegin(), pawnPairCount - 1);
  EXPECT_TRUE(isPawnPairAnchor(sq("a2"), sq("h2")));  // mirror files: the smaller square
  EXPECT_TRUE(isPawnPairAnchor(sq("h3"), sq("d3")));  // nearer the edge
  EXPECT_TRUE(isPawnPairAnchor(sq("e5"), sq("a4")));  // higher rank

  EXPECT_EQ(freePawnPairIndex[0][1], 0u);  // h7 and g7
  EXPECT_EQ(freePawnPairSquares[0].first, sq("h7"));
  EXPECT_EQ(freePawnPairSquares[freePawnPairCount - 1].second, sq("a2"));
  EXPECT_EQ(freePawnPairIndex[46][47], freePawnPairCount - 1);

  // Three pawns: a number exactly when two of them stand on files a to d.
  std::set<uint32_t> triples;
  for (uint32_t a = 8; a < 56; ++a) {
    for (uint32_t b = 8; b < 56; ++b) {
      for (uint32_t c = 8; c < 56; ++c) {
        uint32_t n = pawnTripleIndex[a - 8][b - 8][c - 8];
        int left = !onRightHalf(a) + !onRightHalf(b) + !onRightHalf(c);
        ASSERT_EQ(n != noNumber, a != b && b != c && a != c && left >= 2) << a << " " << b << " " << c;
        if (n == noNumber) continue;
        triples.insert(n);
        const uint8_t* s = pawnTripleSquares[n].squares;
        ASSERT_EQ(pawnTripleIndex[s[0] - 8][s[1] - 8][s[2] - 8], n);
      }
    }
  }
  EXPECT_EQ(triples.size(), pawnTripleCount);
  EXPECT_EQ(*triples.rbegin(), pawnTripleCount - 1);
}

}  // namespace
