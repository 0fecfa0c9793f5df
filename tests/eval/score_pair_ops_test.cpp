// Tapering of middlegame and endgame halves, with its rounding toward zero.
#include <gtest/gtest.h>

#include "eval/score_pair_ops.h"

namespace {

TEST(TaperTest, EndsOfThePhaseTakeOneHalf) {
  EXPECT_EQ(taper(ScorePair{100, -40}, 24), 100);
  EXPECT_EQ(taper(ScorePair{100, -40}, 0), -40);
  EXPECT_EQ(taper(ScorePair{24, 0}, 24), 24);  // the side-to-move bonus in full
  EXPECT_EQ(taper(ScorePair{24, 0}, 0), 0);
  EXPECT_EQ(taper(ScorePair{1104, 1101}, 4), 1101);  // 26436 / 24 = 1101.5
}

TEST(TaperTest, RoundsTowardZeroOnBothSides) {
  EXPECT_EQ(taper(ScorePair{-13, 0}, 1), 0);  // -13 / 24, not -1
  EXPECT_EQ(taper(ScorePair{13, 0}, 1), 0);
  EXPECT_EQ(taper(ScorePair{47, 0}, 12), 23);  // 23.5
  EXPECT_EQ(taper(ScorePair{-47, 0}, 12), -23);
  EXPECT_EQ(taper(ScorePair{0, -25}, 0), -25);
  EXPECT_EQ(taper(ScorePair{-1, -1}, 23), -1);  // exact, no rounding
  EXPECT_EQ(taper(ScorePair{-172, -178}, 16), -174);
  // Two separate roundings differ from one rounding of the sum.
  ScorePair a{47, 0}, b{47, 0};
  EXPECT_EQ(taper(a, 12) + taper(b, 12), 46);
  EXPECT_EQ(taper(a + b, 12), 47);
}

TEST(TaperTest, SixteenBitHalvesDoNotOverflow) {
  EXPECT_EQ(taper(ScorePair{32767, 32767}, 13), 32767);
  EXPECT_EQ(taper(ScorePair{-32768, -32768}, 11), -32768);
  EXPECT_EQ(taper(ScorePair{32767, -32768}, 12), 0);  // (393204 - 393216) / 24 = -0.5
}

TEST(ScorePairOpsTest, HalvesAddAndSubtractApart) {
  ScorePair s{10, -5};
  s += ScorePair{3, 7};
  EXPECT_EQ(s, (ScorePair{13, 2}));
  s -= ScorePair{20, 1};
  EXPECT_EQ(s, (ScorePair{-7, 1}));
  EXPECT_EQ((ScorePair{1, 2}) - (ScorePair{3, 5}), (ScorePair{-2, -3}));
}

}  // namespace
