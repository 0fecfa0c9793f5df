// Every depth of every position of perft-suite.epd through the real `perft`
// command. Registered only with TOLVA_DEEP_TESTS, label deep.
#include "protocol/perft_suite.h"

namespace {

// No limit: the largest count of the file, 706045033, is part of the run.
constexpr uint64_t deepMaxLeaves = UINT64_MAX;

class PerftSuiteDeepTest : public ::testing::TestWithParam<SuiteLine> {};

TEST_P(PerftSuiteDeepTest, LeafCounts) { checkSuitePosition(GetParam(), deepMaxLeaves, 1800); }

INSTANTIATE_TEST_SUITE_P(Epd, PerftSuiteDeepTest, ::testing::ValuesIn(readSuite()), suiteTestName);

}  // namespace
