#pragma once
// The positions of perft-suite.epd and their check through the engine's
// `perft` command; shared by the default run and the deep run.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "protocol/engine_process.h"

struct SuiteDepth { unsigned depth; uint64_t leaves; };

struct SuitePosition {
  unsigned line;  // in the file, from 1
  std::string fen;
  std::vector<SuiteDepth> depths;
};

// Shown by GoogleTest for a failing position.
inline void PrintTo(const SuitePosition& p, std::ostream* os) { *os << p.fen; }

// Lines "FEN ;D1 n ;D2 n ...". An unreadable file gives no positions, which the tests report.
inline std::vector<SuitePosition> loadPerftSuite() {
  std::vector<SuitePosition> positions;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string text, name;
  for (unsigned line = 1; std::getline(in, text); ++line) {
    const size_t semicolon = text.find(';');
    if (semicolon == std::string::npos) continue;
    positions.push_back({line, text.substr(0, text.find_last_not_of(' ', semicolon - 1) + 1), {}});
    std::istringstream fields(text.substr(semicolon));
    for (uint64_t leaves; std::getline(fields, text, ';');)
      if (std::istringstream(text) >> name >> leaves && name.size() > 1 && name[0] == 'D')
        positions.back().depths.push_back({unsigned(std::stoul(name.substr(1))), leaves});
  }
  return positions;
}

inline std::string suiteTestName(const ::testing::TestParamInfo<SuitePosition>& info) {
  return "line" + std::to_string(info.param.line);
}

// Runs `perft` for every depth of the position whose count is at most
// `maxLeaves`, in one engine, and compares the leaves.
inline void checkSuitePosition(const SuitePosition& p, uint64_t maxLeaves, int timeoutSeconds) {
  std::string input = "xboard\nsetboard " + p.fen + "\n";
  std::vector<uint64_t> wanted, got;
  for (const SuiteDepth& d : p.depths)
    if (d.leaves <= maxLeaves) wanted.push_back(d.leaves), input += "perft " + std::to_string(d.depth) + "\n";
  if (wanted.empty()) GTEST_SKIP() << "every count is above the limit";
  const EngineOutcome run = runEngine(TOLVA_BINARY, input + "quit\n", {}, "", timeoutSeconds);
  ASSERT_EQ(run.status(), 0) << p.fen;
  ASSERT_EQ(run.output.find("returned an error code"), std::string::npos) << p.fen << "\n" << run.output;
  static const std::regex leavesLine("# Total leaves: ([0-9]+)\n");
  for (auto it = std::sregex_iterator(run.output.begin(), run.output.end(), leavesLine); it != std::sregex_iterator(); ++it)
    got.push_back(std::stoull((*it)[1]));
  EXPECT_EQ(got, wanted) << p.fen << " at depths 1 and up";
}
