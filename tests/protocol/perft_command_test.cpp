// perft, divide and selftest through the real binary.
#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <string>

#include "protocol/engine_process.h"

namespace {

const std::string prompt = "# Your move: ";
const std::string sizeLine = "# new size of Perft hash: 64 MB\n";
const char* const foolsMate = "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3";

std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

// Checks the time and rate lines of a report (their values vary from run to
// run) and puts fixed placeholders in their place: "T" for the time and "R"
// for the rate. The rate must follow from the time and the node count.
std::string maskTimes(const std::string& output) {
  static const std::regex report(
      "(# )?Total nodes:  ([0-9]+)\n"
      "(# )?Time elapsed: ([0-9]+)\\.([0-9]{2}) s\n"
      "(# )?Nodes/second: ([0-9]+)\n");
  std::string masked;
  auto begin = std::sregex_iterator(output.begin(), output.end(), report);
  size_t last = 0;
  for (auto it = begin; it != std::sregex_iterator(); ++it) {
    const std::smatch& m = *it;
    uint64_t nodes = std::stoull(m[2]);
    uint64_t centis = std::stoull(m[4]) * 100 + std::stoull(m[5]);
    uint64_t rate = std::stoull(m[7]);
    EXPECT_EQ(rate, centis == 0 ? 0 : nodes * 100 / centis) << m.str();
    std::string p = m[1].str();
    masked += output.substr(last, size_t(m.position()) - last);
    masked += p + "Total nodes:  " + m[2].str() + "\n" + p + "Time elapsed: T s\n" + p + "Nodes/second: R\n";
    last = size_t(m.position() + m.length());
  }
  return masked + output.substr(last);
}

std::string perftReport(uint64_t leaves, uint64_t nodes, const std::string& fill, uint64_t hits) {
  return "# Total leaves: " + std::to_string(leaves) + "\n# Total nodes:  " + std::to_string(nodes) +
         "\n# Time elapsed: T s\n# Nodes/second: R\n# perftHashFull%:  " + fill + "\n# perftHashHits:   " +
         std::to_string(hits) + "\n";
}

std::string divideReport(uint64_t leaves, uint64_t nodes, const std::string& fill) {
  return "Total leaves: " + std::to_string(leaves) + "\nTotal nodes:  " + std::to_string(nodes) +
         "\nTime elapsed: T s\nNodes/second: R\n# perftHashFull%:  " + fill + "\n";
}

TEST(PerftCommandTest, ReportsOfPerftAndDivide) {
  EngineRun run = runEngine("perft 0\nperft 1\nperft 2\ndivide 1\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup() + prompt;
  // A failed command makes no table, so the size line comes with the first
  // command that runs.
  expected += commandError("perft 0") + prompt;
  expected += sizeLine + perftReport(20, 1, "0", 0) + prompt;
  // One entry at most is stored (the root), and a 64 MB table rarely has it
  // among the buckets that the fill samples; the fill stands in for it below.
  expected += perftReport(400, 21, "F", 0) + prompt;
  expected +=
      "b1a3 1\nb1c3 1\ng1f3 1\ng1h3 1\na2a3 1\na2a4 1\nb2b3 1\nb2b4 1\nc2c3 1\nc2c4 1\n"
      "d2d3 1\nd2d4 1\ne2e3 1\ne2e4 1\nf2f3 1\nf2f4 1\ng2g3 1\ng2g4 1\nh2h3 1\nh2h4 1\n" +
      divideReport(20, 1, "0") + prompt;
  std::string output = maskTimes(run.output);
  // The fill of one entry among 65536 sampled is 0.00152588 in the stream's format.
  static const std::regex oneOrNone("(# perftHashFull%:  )(0|0\\.00152588)\n(# perftHashHits:   0\n# Your move: b1a3)");
  output = std::regex_replace(output, oneOrNone, "$1F\n$3");
  EXPECT_EQ(output, expected);
}

TEST(PerftCommandTest, DeeperCountsAndFill) {
  EngineRun run = runEngine("perft 4\ndivide 3\nperft 5\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string output = maskTimes(run.output);
  // Nodes below depth 4 from the start: 1 + 20 + 400 + 8902, none of them a
  // transposition that the table could catch.
  EXPECT_NE(output.find(sizeLine + "# Total leaves: 197281\n# Total nodes:  9323\n# Time elapsed: T s\n"
                                   "# Nodes/second: R\n# perftHashFull%:  "),
            std::string::npos)
      << output;
  EXPECT_NE(output.find("\n# perftHashHits:   0\n" + prompt + "b1a3 "), std::string::npos) << output;
  EXPECT_NE(output.find("h2h4 420\nTotal leaves: 8902\nTotal nodes:  421\n"), std::string::npos) << output;
  // At depth 5 the table pays.
  std::smatch m;
  ASSERT_TRUE(std::regex_search(output, m,
                                std::regex("# Total leaves: 4865609\n# Total nodes:  ([0-9]+)\n# Time elapsed: T s\n"
                                           "# Nodes/second: R\n# perftHashFull%:  ([0-9.e-]+)\n"
                                           "# perftHashHits:   ([0-9]+)\n")))
      << output;
  EXPECT_LT(std::stoull(m[1]), 1u + 20u + 400u + 8902u + 197281u);
  EXPECT_GT(std::stod(m[2]), 0.0);
  EXPECT_LT(std::stod(m[2]), 100.0);
  EXPECT_GT(std::stoull(m[3]), 0u);
  EXPECT_EQ(output.find(sizeLine), output.rfind(sizeLine));
}

TEST(PerftCommandTest, BadDepthsFailThroughTheLoop) {
  EngineRun run = runEngine("xboard\nperft x\ndivide -3\ndivide 0\nperft\nperft 1 2\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt + "\n" + commandError("perft x") + commandError("divide -3") +
                            commandError("divide 0") + "Error (missing arguments, expected at least 1): perft\n" +
                            commandError("perft") + "Error (too many arguments, expected at most 1): perft 1 2\n" +
                            commandError("perft 1 2"));
}

TEST(PerftCommandTest, MatedPositionHasNoLeaves) {
  EngineRun run = runEngine("xboard\nsetboard " + std::string(foolsMate) + "\nperft 1\nperft 3\ndivide 2\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string output = maskTimes(run.output);
  std::string head = expectedStartup() + prompt + "\n";
  ASSERT_EQ(output.substr(0, head.size()), head);
  output = output.substr(head.size());
  // The board diagram of setboard comes first.
  size_t report = output.find(sizeLine);
  ASSERT_NE(report, std::string::npos) << output;
  // At depth 3 the mated root stores its 0; the fill depends on where its key
  // lands, so only its format is checked.
  std::string rest = std::regex_replace(output.substr(report), std::regex("Full%:  [0-9.e-]+\n"), "Full%:  F\n");
  EXPECT_EQ(rest, sizeLine + perftReport(0, 1, "F", 0) + perftReport(0, 1, "F", 0) + divideReport(0, 1, "F"));
}

TEST(PerftCommandTest, PositionSurvivesTheCount) {
  // Kiwipete, with castling and en passant below the root: divide 1 after a
  // perft lists the same 48 moves as before it.
  const std::string fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
  EngineRun run = runEngine("xboard\nsetboard " + fen + "\ndivide 1\nperft 3\ndivide 1\nquit\n");
  std::string output = maskTimes(run.output);
  std::regex lines("((?:[a-h][1-8][a-h][1-8][qrbn]? 1\n)+)Total leaves: 48\n");
  auto it = std::sregex_iterator(output.begin(), output.end(), lines);
  ASSERT_NE(it, std::sregex_iterator()) << output;
  std::string first = (*it)[1];
  ++it;
  ASSERT_NE(it, std::sregex_iterator()) << output;
  EXPECT_EQ((*it)[1].str(), first);
  EXPECT_NE(output.find("# Total leaves: 97862\n"), std::string::npos);
}

// All 18 rows take a few seconds in a release build.
TEST(SelftestCommandTest, AllRowsPassAndTheGameStartsAfresh) {
  EngineRun run = runEngine("selftest\nquit\n", {}, "", 600);
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup() + prompt + sizeLine;
  const struct {
    unsigned number;
    uint64_t leaves;
  } rows[] = {{1, 20},        {2, 400},       {3, 8902},     {4, 197281},     {5, 4865609},    {6, 119060324},
              {8, 48},        {9, 2039},      {10, 97862},   {11, 4085603},   {12, 193690690}, {14, 50},
              {15, 279},      {16, 38633283}, {17, 11139762}, {18, 11030083}, {19, 178633661}, {20, 193690690}};

  // Each row: its leaves, its time in centiseconds and two rates that follow from them.
  std::regex rowLine("# Self-test no\\. ([0-9]+) passed: n=([0-9]+), t=([0-9]+), lps=([0-9]+), nps=([0-9]+)\n");
  std::string output = run.output;
  std::string masked;
  size_t pos = 0;
  uint64_t totalTime = 0, totalLeaves = 0;
  for (auto it = std::sregex_iterator(output.begin(), output.end(), rowLine); it != std::sregex_iterator(); ++it) {
    const std::smatch& m = *it;
    uint64_t leaves = std::stoull(m[2]), t = std::stoull(m[3]);
    EXPECT_EQ(std::stoull(m[4]), t ? leaves * 100 / t : 0) << m.str();
    if (t == 0) {
      EXPECT_EQ(std::stoull(m[5]), 0u) << m.str();
    }
    totalTime += t;
    totalLeaves += leaves;
    masked += output.substr(pos, size_t(m.position()) - pos) + "# Self-test no. " + m[1].str() +
              " passed: n=" + m[2].str() + "\n";
    pos = size_t(m.position() + m.length());
  }
  masked += output.substr(pos);
  for (const auto& row : rows)
    expected += "# Self-test no. " + std::to_string(row.number) + " passed: n=" + std::to_string(row.leaves) + "\n";
  expected += "18 tests passed, 0 tests failed, 0 tests skipped, total 18 tests run:\n";

  // The total line gives nodes, not leaves, as n.
  std::smatch total;
  ASSERT_TRUE(std::regex_search(masked, total, std::regex("n=([0-9]+), t=([0-9]+), lps=([0-9]+), nps=([0-9]+)\n")))
      << output;
  uint64_t nodes = std::stoull(total[1]), t = std::stoull(total[2]);
  EXPECT_EQ(t, totalTime);
  EXPECT_EQ(std::stoull(total[3]), t ? totalLeaves * 100 / t : 0);
  EXPECT_EQ(std::stoull(total[4]), t ? nodes * 100 / t : 0);
  EXPECT_GT(nodes, 18u);
  EXPECT_LT(nodes, totalLeaves / 10);
  masked.replace(size_t(total.position()), size_t(total.length()), "n=N\n");
  expected += "n=N\n";
  // Afterwards a new game begins: fresh tables and the start position, shown.
  expected += "# new size of TT hash: 256 MB\n# new size of Pawn hash: 32 MB\n" + startBoardDiagram() + prompt;
  EXPECT_EQ(masked, expected);
}

TEST(SelftestCommandTest, TableIsMadeOnceAndPositionRestored) {
  // A perft before the self-test made the table: no second size line. After
  // it the start position stands again, at game ply 0.
  EngineRun run = runEngine(
      "xboard\nsetboard 8/8/8/8/8/8/8/K1k5 b - - 17 40\nperft 1\nselftest\ndivide 1\nquit\n", {}, "", 600);
  EXPECT_EQ(run.exitStatus, 0);
  std::string output = run.output;
  EXPECT_EQ(output.find(sizeLine), output.rfind(sizeLine));
  size_t summary = output.find("18 tests passed, 0 tests failed, 0 tests skipped, total 18 tests run:\n");
  ASSERT_NE(summary, std::string::npos) << output;
  std::string after = output.substr(summary);
  EXPECT_NE(after.find(startBoardDiagram() + "b1a3 1\nb1c3 1\n"), std::string::npos) << after;
}

}  // namespace
