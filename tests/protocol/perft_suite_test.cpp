// The positions of perft-suite.epd through the real `perft` command, up to the
// depths that keep this run short. The deep run takes all depths.
#include "protocol/perft_suite.h"

namespace {

// Counts above this are left to the deep run.
constexpr uint64_t defaultMaxLeaves = 30'000'000;

class PerftSuiteTest : public ::testing::TestWithParam<SuitePosition> {};

TEST_P(PerftSuiteTest, LeafCounts) { checkSuitePosition(GetParam(), defaultMaxLeaves, 120); }

INSTANTIATE_TEST_SUITE_P(Epd, PerftSuiteTest, ::testing::ValuesIn(loadPerftSuite()), suiteTestName);

TEST(PerftSuiteFileTest, AllPositionsRead) {
  std::vector<SuitePosition> positions = loadPerftSuite();
  EXPECT_EQ(positions.size(), 134u);
  for (const SuitePosition& p : positions) {
    EXPECT_FALSE(p.depths.empty()) << "line " << p.line;
    EXPECT_EQ(p.depths.front().depth, 1u) << "line " << p.line;
  }
}

}  // namespace
