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

struct SuiteDepth {
  unsigned depth;
  uint64_t leaves;
};

struct SuitePosition {
  unsigned line;  // in the file, from 1
  std::string fen;
  std::vector<SuiteDepth> depths;
};

// Shown by GoogleTest for a failing position.
inline void PrintTo(const SuitePosition& p, std::ostream* os) { *os << p.fen; }

// Lines "FEN ;D1 n ;D2 n ...". An unreadable file gives no positions, which
// the tests report.
inline std::vector<SuitePosition> loadPerftSuite() {
  std::vector<SuitePosition> positions;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string text;
  for (unsigned line = 1; std::getline(in, text); ++line) {
    size_t semicolon = text.find(';');
    if (semicolon == std::string::npos) continue;
    SuitePosition p{line, text.substr(0, text.find_last_not_of(' ', semicolon - 1) + 1), {}};
    std::istringstream fields(text.substr(semicolon));
    std::string field;
    while (std::getline(fields, field, ';')) {
      std::istringstream words(field);
      std::string name;
      uint64_t leaves;
      if (words >> name >> leaves && name.size() > 1 && name[0] == 'D')
        p.depths.push_back({unsigned(std::stoul(name.substr(1))), leaves});
    }
    positions.push_back(p);
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
  std::vector<SuiteDepth> wanted;
  for (const SuiteDepth& d : p.depths) {
    if (d.leaves > maxLeaves) continue;
    wanted.push_back(d);
    input += "perft " + std::to_string(d.depth) + "\n";
  }
  if (wanted.empty()) GTEST_SKIP() << "every count is above the limit";
  EngineOutcome run = runEngine(TOLVA_BINARY, input + "quit\n", {}, "", timeoutSeconds);
  ASSERT_EQ(run.status(), 0) << p.fen;
  ASSERT_EQ(run.output.find("returned an error code"), std::string::npos) << p.fen << "\n" << run.output;

  static const std::regex leavesLine("# Total leaves: ([0-9]+)\n");
  std::vector<uint64_t> got;
  for (auto it = std::sregex_iterator(run.output.begin(), run.output.end(), leavesLine); it != std::sregex_iterator();
       ++it)
    got.push_back(std::stoull((*it)[1]));
  ASSERT_EQ(got.size(), wanted.size()) << p.fen << "\n" << run.output;
  for (size_t i = 0; i < wanted.size(); ++i)
    EXPECT_EQ(got[i], wanted[i].leaves) << p.fen << " depth " << wanted[i].depth;
}
