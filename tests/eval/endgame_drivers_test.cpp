// The mate branch: edge and distance drivers and the bishop and knight corner.
#include <gtest/gtest.h>

#include "eval/endgame_drivers.h"
#include "eval_test_support.h"

namespace {

using evaltest::evaluateFen;
using evaltest::mirrorFen;

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

TEST(EndgameDriversTest, EdgeTableAndDistance) {
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("a1"))], 0);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("h5"))], 0);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("b7"))], 1);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("c6"))], 2);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("e5"))], 3);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("d4"))], 3);
  EXPECT_EQ(kingEdgeTable[toSquare64(sq("f3"))], 2);
  int centre = 0;
  for (int s = 0; s < 64; ++s) centre += kingEdgeTable[s] == 3;
  EXPECT_EQ(centre, 4);

  EXPECT_EQ(squareDistance(sq("a1"), sq("h8")), 7);
  EXPECT_EQ(squareDistance(sq("e1"), sq("e5")), 4);
  EXPECT_EQ(squareDistance(sq("c3"), sq("d5")), 2);
  EXPECT_EQ(squareDistance(sq("g2"), sq("g2")), 0);
}

TEST(EndgameDriversTest, RookMatePushesTheKingToTheEdge) {
  // m = 560, phase 2. Weak king on e5: +192 to Black; kings 4 apart: +6 to White.
  EXPECT_EQ(evaluateFen("8/8/8/4k3/8/8/8/R3K3 w - - 0 1"), 560 + 2 + 6 - 192);
  EXPECT_EQ(evaluateFen("8/8/8/4k3/8/8/8/R3K3 b - - 0 1"), 192 + 2 - 560 - 6);
  // Weak king on the edge, kings 7 apart: nothing but material and the move.
  EXPECT_EQ(evaluateFen("4k3/8/8/8/8/8/8/R3K3 w - - 0 1"), 562);
  EXPECT_GT(evaluateFen("4k3/8/8/8/8/8/8/R3K3 w - - 0 1"), evaluateFen("8/8/8/4k3/8/8/8/R3K3 w - - 0 1"));
  // The kings approach: two steps closer is 4 more.
  EXPECT_EQ(evaluateFen("4k3/8/8/8/4K3/8/8/R7 w - - 0 1") - evaluateFen("4k3/8/8/8/8/8/4K3/R7 w - - 0 1"), 4);
}

TEST(EndgameDriversTest, QueenMateKingsInOpposition) {
  // m = taper(1104, 1101) at phase 4 = 1101; distance 2 gives 10.
  EXPECT_EQ(evaluateFen("4k3/8/4K3/8/8/8/8/Q7 w - - 0 1"), 1101 + 4 + 10);
  EXPECT_EQ(evaluateFen("4k3/8/4K3/8/8/8/8/Q7 b - - 0 1"), 4 - 1101 - 10);
}

TEST(EndgameDriversTest, BishopAndKnightCorner) {
  // c1 is of a1's shade (squareShade 1): safe corners for the defender are a8 and h1.
  // m = 650 - 30 = 620, phase 2.
  EXPECT_EQ(evaluateFen("k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1"), 620 + 2 + 6 - 112);
  EXPECT_EQ(evaluateFen("8/8/8/8/3K4/8/8/k1B1N3 w - - 0 1"), 620 + 2 + 8 - 0);  // a1: 7 from a8 and h1
  EXPECT_EQ(evaluateFen("8/8/8/8/3K4/8/8/2B1N2k w - - 0 1"), 620 + 2 + 6 - 112);
  EXPECT_EQ(evaluateFen("7k/8/8/8/3K4/8/8/2B1N3 w - - 0 1"), 620 + 2 + 6 - 0);
  // One step out of the safe corner: 16 less for the defender.
  EXPECT_EQ(evaluateFen("8/k7/8/8/3K4/8/8/2B1N3 w - - 0 1") - evaluateFen("k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1"),
            16 + 2);  // and the kings are one step closer

  // A light bishop (d1, shade 0) turns the corners round.
  EXPECT_EQ(evaluateFen("8/8/8/8/3K4/8/8/k2BN3 w - - 0 1"), 620 + 2 + 8 - 112);
  EXPECT_EQ(evaluateFen("k7/8/8/8/3K4/8/8/3BN3 w - - 0 1"), 620 + 2 + 6 - 0);

  // The strong side prefers the defender in the bishop's corner, from either side's view.
  EXPECT_GT(evaluateFen("8/8/8/8/3K4/8/8/k1B1N3 w - - 0 1"), evaluateFen("k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1"));
  EXPECT_LT(evaluateFen("8/8/8/8/3K4/8/8/k1B1N3 b - - 0 1"), evaluateFen("k7/8/8/8/3K4/8/8/2B1N3 b - - 0 1"));

  // Black with the pieces: the same amounts, seen from the other side.
  EXPECT_EQ(evaluateFen(mirrorFen("k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1")), 620 + 2 + 6 - 112);
}

TEST(EndgameDriversTest, CornerTermOnlyForBishopAndKnightAlone) {
  // Two bishops: no corner term. m = 700, phase 2.
  EXPECT_EQ(evaluateFen("k7/8/8/8/3K4/8/8/2B2B2 w - - 0 1"), 700 + 2 + 6);
  // Bishop and knight against a knight: five men, no corner term.
  // m = 650 - 30 - (325 - 30) = 325 at phase 3.
  EXPECT_EQ(evaluateFen("k6n/8/8/8/3K4/8/8/2B1N3 w - - 0 1"), 325 + 3 + 6);
}

TEST(EndgameDriversTest, DriversSeparately) {
  auto board = evaltest::boardFrom("k7/8/8/8/3K4/8/8/2B1N3 b - - 0 1");
  MateDrivers d = computeMateDrivers(*board, 620);
  EXPECT_EQ(d.strong, White);
  EXPECT_EQ(d.weak, Black);
  EXPECT_EQ(d.kingEdge, 0);
  EXPECT_EQ(d.kingDistance, 6);
  EXPECT_EQ(d.safeCorner, 112);
  EXPECT_EQ(mateBranchScore(*board, 2, 620), 112 + 2 - 620 - 6);

  auto mirrored = evaltest::boardFrom(mirrorFen("k7/8/8/8/3K4/8/8/2B1N3 b - - 0 1"));
  MateDrivers m = computeMateDrivers(*mirrored, -620);
  EXPECT_EQ(m.strong, Black);
  EXPECT_EQ(m.safeCorner, 112);
}

}  // namespace
