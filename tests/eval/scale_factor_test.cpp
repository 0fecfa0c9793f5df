// The percent factor: fifty-move taper, no mating material, drawish four-man endings.
#include <gtest/gtest.h>

#include "eval/scale_factor.h"
#include "eval_test_support.h"

namespace {

using evaltest::mirrorFen;

int scaleOf(const std::string& fen) {
  auto board = evaltest::boardFrom(fen);
  MaterialInfo info;
  computeMaterial(info, *board);
  return computeScaleFactor(*board, info);
}

// Every case is checked with colours swapped too.
void expectScale(const std::string& fen, int expected) {
  EXPECT_EQ(scaleOf(fen), expected) << fen;
  EXPECT_EQ(scaleOf(mirrorFen(fen)), expected) << mirrorFen(fen);
}

std::string withClock(const std::string& placement, int clock) {
  return placement + " " + std::to_string(clock) + " 60";
}

TEST(ScaleFactorTest, FiftyMoveTaper) {
  const std::string start = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -";
  expectScale(withClock(start, 0), 100);
  expectScale(withClock(start, 1), 99);  // 9999 / 100, rounded down
  expectScale(withClock(start, 10), 99);
  expectScale(withClock(start, 11), 98);
  expectScale(withClock(start, 50), 75);
  expectScale(withClock(start, 99), 1);
  expectScale(withClock(start, 100), 0);
  expectScale(withClock(start, 200), 0);
}

TEST(ScaleFactorTest, NoMatingMaterialOnEitherSide) {
  expectScale("4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0);
  expectScale("4k3/8/8/8/8/8/8/1N2K3 w - - 0 1", 0);
  expectScale("4k3/8/8/8/8/8/8/1N2K1N1 w - - 0 1", 0);
  expectScale("2b1k3/8/8/8/8/8/8/1N2K3 w - - 0 1", 0);  // one minor each, whatever the table says
  expectScale("2b1k3/8/8/8/8/8/8/2B1K3 w - - 0 1", 0);
  // One side able to mate is enough for the full factor.
  expectScale("4k3/8/8/8/8/8/8/1NB1K3 w - - 0 1", 100);
  expectScale("4k3/7p/8/8/8/8/8/1N2K3 w - - 0 1", 100);
}

TEST(ScaleFactorTest, RookAgainstMinor) {
  expectScale("3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", 25);
  expectScale("3nk3/8/8/8/8/8/8/R3K3 w - - 0 1", 12);
  expectScale("3rk3/8/8/8/8/8/8/2B1K3 b - - 0 1", 25);
  // The fifty-move taper caps the table value: clock 90 gives 19.
  expectScale("3bk3/8/8/8/8/8/8/R3K3 w - - 90 1", 19);
  expectScale("3nk3/8/8/8/8/8/8/R3K3 w - - 90 1", 12);
  // A fifth man leaves the table.
  expectScale("3bk3/7p/8/8/8/8/8/R3K3 w - - 0 1", 100);
}

TEST(ScaleFactorTest, BishopAndRookPawn) {
  // a8 is light; a c1 bishop runs on dark squares and can't cover it.
  expectScale("8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", 0);   // king next to a8
  expectScale("k7/8/8/P7/8/8/8/2B1K3 w - - 0 1", 0);    // king on a8
  expectScale("8/8/2k5/P7/8/8/8/2B1K3 w - - 0 1", 50);  // two steps away
  expectScale("8/1k6/8/P7/8/8/8/3BK3 w - - 0 1", 100);  // right bishop
  expectScale("8/1k6/8/1P6/8/8/8/2B1K3 w - - 0 1", 100);  // b pawn
  expectScale("6k1/8/8/7P/8/8/8/3BK3 w - - 0 1", 0);    // h8 dark, d1 bishop light
  expectScale("6k1/8/8/7P/8/8/8/2B1K3 w - - 0 1", 100);
  // The defender to move or not makes no difference.
  expectScale("8/1k6/8/P7/8/8/8/2B1K3 b - - 0 1", 0);
}

TEST(ScaleFactorTest, QueenAgainstPawnOnTheSeventh) {
  // Black pawn one step from promotion, in normal form already.
  expectScale("8/8/8/8/8/8/2p5/3k2QK w - - 0 1", 25);  // c2, king d1
  expectScale("8/8/8/8/8/8/2pk4/6QK w - - 0 1", 25);   // king d2
  expectScale("8/8/8/8/8/8/1kp5/6QK w - - 0 1", 25);   // king b2
  expectScale("8/8/8/8/8/8/2p5/4k1QK w - - 0 1", 100); // king e1, not in the list
  expectScale("8/8/8/8/8/8/2p5/2k3QK w - - 0 1", 25);  // king c1
  expectScale("8/8/8/8/8/2k5/2p5/6QK w - - 0 1", 100); // king c3
  expectScale("8/8/8/8/8/8/1p6/2k3QK w - - 0 1", 100); // b file isn't in the list
  expectScale("8/8/8/8/8/8/p7/1k4QK w - - 0 1", 25);   // a2, king b1
  expectScale("8/8/8/8/8/8/pk6/6QK w - - 0 1", 25);    // king b2
  expectScale("8/8/8/8/8/8/p7/2k3QK w - - 0 1", 100);  // king c1 is no help on the a file
  expectScale("8/8/8/8/8/2p5/8/2k3QK w - - 0 1", 100); // not yet on the seventh
  // f and h pawns are mirrored onto the c and a files.
  expectScale("8/8/8/8/8/8/5p2/6k1 w - - 0 1", 100);    // no queen: not this ending
  expectScale("K7/Q7/8/8/8/8/5p2/6k1 w - - 0 1", 25);   // f2, king g1 ~ c2, king b1
  expectScale("K7/Q7/8/8/8/8/5pk1/8 w - - 0 1", 25);    // king g2 ~ b2
  expectScale("K7/Q7/8/8/8/8/5p2/7k w - - 0 1", 100);   // king h1 ~ a1, not in c's list
  expectScale("K7/Q7/8/8/8/8/7p/6k1 w - - 0 1", 25);    // h2, king g1 ~ a2, king b1
  expectScale("K7/Q7/8/8/8/8/7p/5k2 w - - 0 1", 100);   // king f1 ~ c1
}

}  // namespace
