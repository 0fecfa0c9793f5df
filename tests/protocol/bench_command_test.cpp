// `tolva bench` and the UCI `bench`: the node count is the recorded signature
// (tests/data/bench-signature), read from the output as OpenBench reads it.
// A change of the search tree changes the file in the same commit.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "protocol/transcript.h"

namespace {

uint64_t recordedSignature() {
  std::ifstream in(TOLVA_TEST_DATA_DIR "/bench-signature");
  uint64_t nodes = 0;
  in >> nodes;
  return nodes;
}

// OpenBench's reading: every character but letters, digits and blanks turned
// into a blank, then the lines from the last up, the first "N nodes" and "N nps".
bool readAsOpenBench(const std::string& output, uint64_t& nodes, uint64_t& nps) {
  std::string text = output;
  for (char& c : text)
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != ' ' && c != '\n') c = ' ';
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  bool haveNodes = false, haveNps = false;
  std::smatch match;
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
    if (!haveNodes && std::regex_search(*line, match, std::regex(R"((\d+)\s+nodes)")))
      nodes = std::stoull(match[1]), haveNodes = true;
    if (!haveNps && std::regex_search(*line, match, std::regex(R"((\d+)\s+nps)")))
      nps = std::stoull(match[1]), haveNps = true;
  }
  return haveNodes && haveNps;
}

TEST(BenchCommandTest, CommandLineAndUciGiveTheSignature) {
  const uint64_t signature = recordedSignature();
  ASSERT_GT(signature, 0u);

  const EngineOutcome alone = run("", {"bench"}, "", 600);
  EXPECT_EQ(alone.status(), 0);
  uint64_t nodes = 0, nps = 0;
  ASSERT_TRUE(readAsOpenBench(alone.output, nodes, nps)) << alone.output;
  EXPECT_EQ(nodes, signature) << "the search tree changed: update tests/data/bench-signature and say Bench: " << nodes;
  EXPECT_TRUE(std::regex_search(alone.output, std::regex("\n" + std::to_string(nodes) + " nodes \\d+ nps\n$")));
  EXPECT_EQ(alone.output.find('#'), std::string::npos) << "no comment lines, no banner";

  // In UCI every line of the bench is an info string, and the session goes on.
  const EngineOutcome uci = run("uci\nbench\nisready\n", {}, "", 600);
  const std::string afterHandshake = uci.output.substr(uci.output.find("uciok\n") + 6);
  EXPECT_TRUE(std::regex_match(afterHandshake, std::regex("(info string [^\n]*\n)+readyok\n"))) << afterHandshake;
  EXPECT_NE(afterHandshake.find("info string " + std::to_string(signature) + " nodes "), std::string::npos);
}

}  // namespace
