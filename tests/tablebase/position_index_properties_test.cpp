// Properties of the position index over many placements: a sample of every
// row here, every placement of up to four men under the label deep.
#include <gtest/gtest.h>

#include "index_properties.h"

namespace {

using indextest::IndexChecker;
using indextest::Placement;

void expectPasses(const IndexChecker& checker, const Placement& p, const std::string& name, int& failures) {
  std::string failure = checker.check(p);
  if (failure.empty() || ++failures > 5) return;
  ADD_FAILURE() << name << " " << IndexChecker::describe(p) << ": " << failure;
}

TEST(PositionIndexPropertiesTest, RandomPlacementsOfEveryRow) {
  std::mt19937_64 random(12);
  for (int32_t id = 0; id < endgameCount; ++id) {
    const EndgameRow& row = endgameCatalogue[id];
    IndexChecker checker(row.name, indexFamilies[row.family]);
    int failures = 0;
    for (int n = 0; n < 3000; ++n) expectPasses(checker, checker.randomLegal(random), row.name, failures);
  }
}

TEST(PositionIndexPropertiesTest, EveryPlacementOfThreeMen) {
  for (EndgameFamily f : {FamilyKxk, FamilyKpk}) {
    IndexChecker checker(indexFamilies[f].name, indexFamilies[f]);
    int failures = 0;
    checker.forEachLegal([&](const Placement& p) { expectPasses(checker, p, indexFamilies[f].name, failures); });
  }
}

// Every index below the count, sampled, names a position that maps back to it.
TEST(PositionIndexPropertiesTest, IndicesMapToPositionsAndBack) {
  std::mt19937_64 random(7);
  for (const IndexFamily& family : indexFamilies) {
    uint32_t w[5], b[3], index = 0, again = 0;
    for (uint32_t edge : {0u, family.indexCount - 1}) {
      ASSERT_TRUE(family.indexToPosition(edge, w, b)) << family.name;
      ASSERT_TRUE(family.positionToIndex(w, b, again)) << family.name;
      EXPECT_EQ(again, edge) << family.name;
    }
    EXPECT_FALSE(family.indexToPosition(family.indexCount, w, b)) << family.name;
    EXPECT_FALSE(family.indexToPosition(0xFFFFFFFF, w, b)) << family.name;
    for (int n = 0; n < 20000; ++n) {
      index = uint32_t(random() % family.indexCount);
      ASSERT_TRUE(family.indexToPosition(index, w, b));
      EXPECT_EQ(w[family.whiteMen], 64u);
      EXPECT_EQ(b[family.blackMen], 64u);
      ASSERT_TRUE(family.positionToIndex(w, b, again)) << family.name << " " << index;
      ASSERT_EQ(again, index) << family.name;
    }
  }
}

// Any squares at all, 64 and above included: an index below the count or a
// refusal with all ones, and no read beyond the men of the family.
TEST(PositionIndexPropertiesTest, ArbitraryListsGiveAnIndexInRangeOrAllOnes) {
  std::mt19937_64 random(3);
  for (const IndexFamily& family : indexFamilies) {
    for (int n = 0; n < 20000; ++n) {
      uint32_t w[5], b[3], index = 0;
      for (uint32_t& s : w) s = uint32_t(random() % (n % 2 ? 64 : 80));
      for (uint32_t& s : b) s = uint32_t(random() % (n % 2 ? 64 : 80));
      w[family.whiteMen] = b[family.blackMen] = 64;
      if (family.positionToIndex(w, b, index))
        EXPECT_LT(index, family.indexCount) << family.name;
      else
        EXPECT_EQ(index, 0xFFFFFFFFu) << family.name;
    }
  }
}

}  // namespace
