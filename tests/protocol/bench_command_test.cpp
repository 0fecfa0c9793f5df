// `tolva bench` and the UCI `bench`: the node count is the recorded signature
// (tests/data/bench-signature), on the last line where OpenBench reads it.
// A change of the search tree changes the file in the same commit.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

#include "protocol/transcript.h"

namespace {

uint64_t recordedSignature() {
  std::ifstream in(TOLVA_TEST_DATA_DIR "/bench-signature");
  uint64_t nodes = 0;
  in >> nodes;
  return nodes;
}

TEST(BenchCommandTest, CommandLineAndUciGiveTheSignature) {
  const uint64_t signature = recordedSignature();
  ASSERT_GT(signature, 0u);

  const EngineOutcome alone = run("", {"bench"}, "", 600);
  EXPECT_EQ(alone.status(), 0);
  // The last line as OpenBench reads it: plain digits before "nodes" and "nps".
  std::smatch last;
  ASSERT_TRUE(std::regex_search(alone.output, last, std::regex("\n(\\d+) nodes \\d+ nps\n$"))) << alone.output;
  EXPECT_EQ(std::stoull(last[1]), signature) << "the search tree changed: update tests/data/bench-signature and say Bench: "
                                             << last[1];
  EXPECT_EQ(alone.output.find('#'), std::string::npos) << "no comment lines, no banner";

  // In UCI every line of the bench is an info string, and the session goes on.
  const EngineOutcome uci = run("uci\nbench\nisready\n", {}, "", 600);
  const std::string afterHandshake = uci.output.substr(uci.output.find("uciok\n") + 6);
  EXPECT_TRUE(std::regex_match(afterHandshake, std::regex("(info string [^\n]*\n)+readyok\n"))) << afterHandshake;
  EXPECT_NE(afterHandshake.find("info string " + std::to_string(signature) + " nodes "), std::string::npos);
}

}  // namespace
