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

// The thinking lines: depth, score, time, nodes, ...
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
    session.send("egtpath gaviota " + gtb4 + "\nsetboard " + fen + "\nlevel 0 5 0\npost\nauto\n");
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
  EngineRun run = runEngine("egtpath gaviota " + gtb4 + "\nsetboard 8/8/8/8/8/4k3/4P3/4K3 w - - 0 1\nsd 4\npost\ngo\n");
  std::vector<Thinking> lines = thinkingLines(run.output);
  ASSERT_FALSE(lines.empty()) << run.output;
  for (const Thinking& t : lines) EXPECT_EQ(t.score, 0);

  for (std::string setup : {"", "egtpath gaviota /nonexistent\n"}) {
    EngineRun run = runEngine(setup + "setboard 8/8/8/4k3/8/8/8/KQ6 w - - 0 1\nsd 4\npost\ngo\n", {}, "", 60);
    std::vector<Thinking> lines = thinkingLines(run.output);
    ASSERT_FALSE(lines.empty()) << run.output;
    EXPECT_EQ(lines.back().depth, 4) << run.output;
    EXPECT_GT(lines.back().nodes, 0) << run.output;
    EXPECT_NE(run.output.find("tbHits = 0\n"), std::string::npos) << run.output;
  }
}

}  // namespace
