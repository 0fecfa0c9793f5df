#pragma once
// The positions of perft-suite.epd and their check through the engine's
// `perft` command; shared by the default run and the deep run.
#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "board/board_test_support.h"
#include "protocol/engine_process.h"

// Shown by GoogleTest for a failing position.
inline void PrintTo(const SuiteLine& p, std::ostream* os) { *os << p.fen; }

// Named by the line of the file, from 1.
inline std::string suiteTestName(const ::testing::TestParamInfo<SuiteLine>& info) {
  return "line" + std::to_string(info.index + 1);
}

// Runs `perft` for every depth of the position whose count is at most
// `maxLeaves`, in one engine, and compares the leaves.
inline void checkSuitePosition(const SuiteLine& p, uint64_t maxLeaves, int timeoutSeconds) {
  std::string input = "xboard\nsetboard " + p.fen + "\n";
  std::vector<uint64_t> wanted, got;
  for (size_t d = 0; d < p.counts.size(); ++d)
    if (p.counts[d] <= maxLeaves) wanted.push_back(p.counts[d]), input += "perft " + std::to_string(d + 1) + "\n";
  if (wanted.empty()) GTEST_SKIP() << "every count is above the limit";
  const EngineOutcome run = runEngine(TOLVA_BINARY, input + "quit\n", {}, "", timeoutSeconds);
  ASSERT_EQ(run.status(), 0) << p.fen;
  ASSERT_EQ(run.output.find("returned an error code"), std::string::npos) << p.fen << "\n" << run.output;
  static const std::regex leavesLine("# Total leaves: ([0-9]+)\n");
  for (auto it = std::sregex_iterator(run.output.begin(), run.output.end(), leavesLine); it != std::sregex_iterator(); ++it)
    got.push_back(std::stoull((*it)[1]));
  EXPECT_EQ(got, wanted) << p.fen << " at depths 1 and up";
}
