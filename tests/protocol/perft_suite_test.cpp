// The positions of perft-suite.epd through the real `perft` command, up to the
// depths that keep this run short. The deep run takes all depths.
#include "protocol/perft_suite.h"

namespace {

class PerftSuiteTest : public ::testing::TestWithParam<SuiteLine> {};

// Counts above 30 million leaves are left to the deep run.
TEST_P(PerftSuiteTest, LeafCounts) { checkSuitePosition(GetParam(), 30'000'000, 120); }

INSTANTIATE_TEST_SUITE_P(Epd, PerftSuiteTest, ::testing::ValuesIn(readSuite()), suiteTestName);

TEST(PerftSuiteFileTest, AllPositionsRead) {
  const std::vector<SuiteLine> lines = readSuite();
  EXPECT_EQ(lines.size(), 134u);
  for (const SuiteLine& line : lines) EXPECT_FALSE(line.counts.empty()) << line.fen;
}

}  // namespace
