// Tablebases in play through the real binary: egtpath and its messages, mates
// delivered in exactly the tablebase distance, drawn endings scored 0, and
// the same positions searched normally without tables.
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <sstream>
#include <string>
#include <thread>

#include "board/fen.h"
#include "protocol/engine_process.h"
#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = "/usr/share/gaviotatb/gtb4";

struct Thinking {
  int depth, score;
  long nodes;
};

// The thinking lines: depth, score, time, nodes, ... (in xboard mode, where
// no prompt of the console can come in front of them)
std::vector<Thinking> thinkingLines(const std::string& output) {
  std::vector<Thinking> lines;
  std::istringstream in(output);
  std::smatch m;
  const std::regex pattern("\\s*(\\d+)\\s+(-?\\d+)\\s+\\d+\\s+(\\d+)\\s.*");
  for (std::string line; std::getline(in, line);)
    if (std::regex_match(line, m, pattern)) lines.push_back({std::stoi(m[1]), std::stoi(m[2]), std::stol(m[3])});
  return lines;
}

TEST(TablebasePlayTest, EgtpathMessages) {
  std::vector<std::string> out = repliesTo("egtpath syzygy /tb\negtpath gaviota\negtpath gaviota " + gtb4 + "\n");
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0], "# invalid TB type: syzygy\n# command \"egtpath syzygy /tb\" returned an error code \n");
  EXPECT_EQ(out[1], "Error (missing arguments, expected at least 2): egtpath gaviota\n"
                    "# command \"egtpath gaviota\" returned an error code \n");
  EXPECT_EQ(out[2], "# initializing TB: type=gaviota path=" + gtb4 + "\n");
}

TEST(TablebasePlayTest, MatesInExactlyTheTablebaseDistance) {
  TablebaseState tables;
  initTablebases(tables, "gaviota", gtb4.c_str(), 16);
  for (const char* fen : {"8/8/8/4k3/8/8/8/KQ6 w - - 0 1", "8/8/3k4/8/8/8/8/1R2K3 w - - 0 1",
                          "8/8/8/8/1k6/8/4P3/4K3 w - - 0 1"}) {
    auto board = std::make_unique<Board_0x88>();
    ASSERT_TRUE(setupFromFen(*board, fen));
    int32_t score;
    ASSERT_TRUE(probeTablebase<White>(&tables, *board, score)) << fen;
    const int plies = 32000 - score;

    // The engine plays both sides; each ping lets it make its next move.
    EngineSession session;
    session.send("xboard\negtpath gaviota " + gtb4 + "\nsetboard " + fen + "\nlevel 0 5 0\npost\nauto\n");
    for (int i = 0; i < 3 * plies && session.output().find("1-0 {White wins by checkmate}") == std::string::npos; ++i) {
      session.send("ping " + std::to_string(i) + "\n");
      ASSERT_TRUE(session.waitFor("pong " + std::to_string(i) + "\n", 30));
      std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    session.send("force\nquit\n");
    ASSERT_EQ(session.finish(30), 0);
    const std::string& out = session.output();
    ASSERT_NE(out.find("1-0 {White wins by checkmate}"), std::string::npos) << fen << out;
    int moves = 0;
    for (size_t at = out.find("\nmove "); at != std::string::npos; at = out.find("\nmove ", at + 1)) ++moves;
    EXPECT_EQ(moves, plies) << fen;
    // Announced from the first move: mate in that many plies.
    std::vector<Thinking> lines = thinkingLines(out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().score, 32000 - plies) << fen;
  }
  closeTablebases(tables);
}

TEST(TablebasePlayTest, DrawnEndingsScoreZeroAndNoTablesMeansSearch) {
  // King and bishop or knight against king end the game at once; the tables
  // score them 0 (every such position is checked in the unit tests). A drawn
  // pawn ending is played on: every line says 0.
  TablebaseState tables;
  initTablebases(tables, "gaviota", gtb4.c_str(), 16);
  for (const char* fen : {"8/8/8/4k3/8/8/8/KB6 w - - 0 1", "8/8/8/4k3/8/8/8/KN6 b - - 0 1",
                          "8/8/8/8/8/4k3/4P3/4K3 w - - 0 1"}) {
    auto board = std::make_unique<Board_0x88>();
    ASSERT_TRUE(setupFromFen(*board, fen));
    int32_t score = 1;
    EXPECT_TRUE(board->sideToMove == White ? probeTablebase<White>(&tables, *board, score)
                                           : probeTablebase<Black>(&tables, *board, score));
    EXPECT_EQ(score, 0) << fen;
  }
  closeTablebases(tables);
  EngineRun run = runEngine("xboard\negtpath gaviota " + gtb4 + "\nsetboard 8/8/8/8/8/4k3/4P3/4K3 w - - 0 1\nsd 4\npost\ngo\n");
  std::vector<Thinking> lines = thinkingLines(run.output);
  ASSERT_FALSE(lines.empty()) << run.output;
  for (const Thinking& t : lines) EXPECT_EQ(t.score, 0);
}

// What turns the tables on, off, or leaves them: with them every root move of
// KQK is answered at once and the score is a mate; without them the search
// runs its iterations and counts no tablebase hit.
TEST(TablebasePlayTest, EgtpathAndOptionsDecideWhetherTablesAreUsed) {
  const std::string on = "egtpath gaviota " + gtb4 + "\n";
  const struct {
    std::string setup;
    bool used;
  } cases[] = {
      {"", false},
      {"egtpath gaviota /nonexistent\n", false},
      {on, true},
      {"egtpath gaviota /nonexistent;;" + gtb4 + "\n", true},
      {"option gtbPath=" + gtb4 + "\n", true},
      {on + "option gtbCacheSizeMB=0\n", true},
      {on + "option gtbPath=/nonexistent\n", false},
      {on + "egtpath syzygy /tb\n", true},  // refused: the tables stay as they were
  };
  for (const auto& c : cases) {
    EngineRun run = runEngine("xboard\n" + c.setup + "setboard 8/8/8/4k3/8/8/8/KQ6 w - - 0 1\nsd 4\npost\ngo\n", {}, "", 60);
    std::vector<Thinking> lines = thinkingLines(run.output);
    ASSERT_FALSE(lines.empty()) << c.setup << run.output;
    EXPECT_EQ(run.output.find("tbHits = 0\n") == std::string::npos, c.used) << c.setup << run.output;
    if (c.used) {
      EXPECT_GT(lines.back().score, 31900) << c.setup;
    } else {
      EXPECT_EQ(lines.back().depth, 4) << c.setup;
      EXPECT_GT(lines.back().nodes, 0) << c.setup;
    }
  }
}

// egtpath and the tablebase options while the engine analyses: the analysis
// is stopped before the tables are replaced, and goes on with the new ones.
// Run under AddressSanitizer in CI, where a probe into freed tables would end the engine.
TEST(TablebasePlayTest, EgtpathAndOptionsDuringAnAnalysis) {
  EngineSession session;
  // Queen against pawn: Qxc3 at the root is answered by kqk, whatever the hash table holds.
  session.send("xboard\nprotover 2\npost\negtpath gaviota " + gtb4 + "\nsetboard 8/8/8/4k3/8/2p5/8/K1Q5 w - - 0 1\nanalyze\n");
  const std::string commands[] = {"egtpath gaviota " + gtb4, "option gtbCacheSizeMB=0", "option gtbPath=/nonexistent;" + gtb4,
                                  "egtpath gaviota /nonexistent", "option gtbCacheSizeMB=1"};
  for (int round = 0; round < 3; ++round)
    for (const std::string& command : commands) {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      session.send(command + "\n");
    }
  session.send("egtpath gaviota " + gtb4 + "\nping 1\n");
  ASSERT_TRUE(session.waitFor("pong 1\n", 60)) << session.output();
  // The analysis starts again; its root already asks the tables.
  const size_t restart = session.output().find("pong 1\n");
  const std::regex thinking("\n\\s*\\d+\\s+-?\\d+\\s+\\d+\\s+\\d+\\s");
  for (int second = 0; second < 60; ++second) {
    if (std::regex_search(session.output().substr(restart), thinking)) break;
    session.waitFor("\n# never printed\n", 1);
  }
  session.send("exit\nping 2\n");
  ASSERT_TRUE(session.waitFor("pong 2\n", 60)) << session.output();
  session.send("quit\n");
  ASSERT_EQ(session.finish(60), 0) << session.output();
  const std::string last = session.output().substr(session.output().rfind("# total nodes"));
  EXPECT_EQ(last.find("tbHits = 0\n"), std::string::npos) << last;
}

}  // namespace
