// The positions of perft-suite.epd through the real `perft` command, up to the
// depths that keep this run short. The deep run takes all depths.
#include "protocol/perft_suite.h"

namespace {

class PerftSuiteTest : public ::testing::TestWithParam<SuitePosition> {};

// Counts above 30 million leaves are left to the deep run.
TEST_P(PerftSuiteTest, LeafCounts) { checkSuitePosition(GetParam(), 30'000'000, 120); }

INSTANTIATE_TEST_SUITE_P(Epd, PerftSuiteTest, ::testing::ValuesIn(loadPerftSuite()), suiteTestName);

TEST(PerftSuiteFileTest, AllPositionsRead) {
  std::vector<SuitePosition> positions = loadPerftSuite();
  EXPECT_EQ(positions.size(), 134u);
  for (const SuitePosition& p : positions) EXPECT_EQ(p.depths.at(0).depth, 1u) << "line " << p.line;
}

}  // namespace
