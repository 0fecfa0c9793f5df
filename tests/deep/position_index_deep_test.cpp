// The position index over every placement of up to four men and every index
// of their families, and 200,000 random placements of each five-man endgame.
// Registered only with TOLVA_DEEP_TESTS, label deep.
#include <gtest/gtest.h>

#include "tablebase/index_properties.h"

namespace {

using indextest::expectPasses;
using indextest::IndexChecker;
using indextest::Placement;

std::vector<EndgameFamily> familiesOfUpToFourMen() {
  std::vector<EndgameFamily> families;
  for (int f = 0; f < FamilyCount; ++f)
    if (indexFamilies[f].whiteMen + indexFamilies[f].blackMen <= 4) families.push_back(EndgameFamily(f));
  return families;
}

// Every row of a family uses the family's functions (the catalogue test holds
// that), so a sweep per family covers each of its rows.
class SmallFamilyDeepTest : public ::testing::TestWithParam<EndgameFamily> {};

TEST_P(SmallFamilyDeepTest, EveryPlacement) {
  const IndexFamily& family = indexFamilies[GetParam()];
  IndexChecker checker(family.name, family);
  int failures = 0;
  checker.forEachLegal([&](const Placement& p) { expectPasses(checker, p, family.name, failures); });
}

TEST_P(SmallFamilyDeepTest, EveryIndex) {
  const IndexFamily& family = indexFamilies[GetParam()];
  uint32_t w[5], b[3], again = 0, failures = 0;
  for (uint32_t index = 0; index < family.indexCount && failures < 5; ++index) {
    bool back = family.indexToPosition(index, w, b) && family.positionToIndex(w, b, again) && again == index;
    if (!back && ++failures) ADD_FAILURE() << family.name << " index " << index;
  }
}

INSTANTIATE_TEST_SUITE_P(UpToFourMen, SmallFamilyDeepTest, ::testing::ValuesIn(familiesOfUpToFourMen()),
                         [](const auto& info) { return std::string(indexFamilies[info.param].name); });

class FiveMenDeepTest : public ::testing::TestWithParam<int32_t> {};

TEST_P(FiveMenDeepTest, RandomPlacements) {
  const EndgameRow& row = endgameCatalogue[GetParam()];
  IndexChecker checker(row.name, indexFamilies[row.family]);
  std::mt19937_64 random(uint64_t(GetParam()) * 7919);
  int failures = 0;
  for (int n = 0; n < 200000; ++n) expectPasses(checker, checker.randomLegal(random), row.name, failures);
}

INSTANTIATE_TEST_SUITE_P(Endgames, FiveMenDeepTest, ::testing::Range(int32_t(35), int32_t(endgameCount)),
                         [](const auto& info) { return std::string(endgameCatalogue[info.param].name); });

}  // namespace
