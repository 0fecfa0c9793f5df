// Transcripts that wait for the engine between lines: commands while it
// searches, and a whole game that it plays against itself.
#include <chrono>
#include <thread>

#include "board/fen.h"
#include "protocol/transcript.h"
#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = "/usr/share/gaviotatb/gtb4";

// Lets `auto` play on: the loop starts a search only after a line. Stops once `until` is printed.
void playOn(Session& engine, int lines, const std::string& until = "\n# never printed\n") {
  for (int i = 1; i <= lines && engine.output().find(until) == std::string::npos; ++i) {
    engine.send("ping " + std::to_string(i) + "\n");
    ASSERT_TRUE(engine.waitFor("pong " + std::to_string(i) + "\n", 30));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

// Sizes and cores sent while a search runs wait for the next set-up, before
// the next search; ping is answered at once.
TEST(ProtocolSessionTest, SizesSentDuringASearchApplyOnlyAfterIt) {
  Session engine;
  engine.send("xboard\nnew\nanalyze\n");
  ASSERT_TRUE(engine.waitFor("\n4 ", 60));
  const size_t sent = engine.output().size();
  engine.send("option ttHashSizeMB=16\noption pawnHashSizeMB=4\ncores 2\nping 1\n");
  ASSERT_TRUE(engine.waitFor("pong 1\n", 30));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  engine.send("ping 2\n");
  ASSERT_TRUE(engine.waitFor("pong 2\n", 30));
  const std::string during = engine.output().substr(sent);
  EXPECT_NE(during.find("# setting option: ttHashSizeMB=16\n"), std::string::npos) << during;
  EXPECT_EQ(during.find("# new size of"), std::string::npos) << during;
  const size_t stopped = engine.output().size();
  engine.send("exit\nsd 2\ngo\n");
  ASSERT_TRUE(engine.waitFor("\nmove ", 60));
  engine.send("quit\n");
  ASSERT_EQ(engine.end(), 0);
  const std::string after = engine.output().substr(stopped);
  const size_t sizes = after.find("# new size of TT hash: 16 MB\n# new size of Pawn hash: 4 MB\n");
  ASSERT_NE(sizes, std::string::npos) << after;
  EXPECT_LT(sizes, after.find("\nmove ")) << after;
}

// The engine plays both sides and mates in exactly the tablebase distance,
// announced from its first move.
TEST(TablebasePlayTest, MatesInExactlyTheTablebaseDistance) {
  TablebaseState tables;
  initTablebases(tables, "gaviota", gtb4.c_str(), 16);
  for (const char* fen : {"8/8/8/4k3/8/8/8/KQ6 w - - 0 1", "8/8/3k4/8/8/8/8/1R2K3 w - - 0 1", "8/8/8/8/1k6/8/4P3/4K3 w - - 0 1"}) {
    auto board = std::make_unique<Board_0x88>();
    ASSERT_TRUE(setupFromFen(*board, fen));
    int32_t score;
    ASSERT_TRUE(probeTablebase<White>(&tables, *board, score)) << fen;
    const int plies = 32000 - score;
    Session engine;
    engine.send("xboard\negtpath gaviota " + gtb4 + "\nsetboard " + fen + "\nlevel 0 5 0\npost\nauto\n");
    playOn(engine, 3 * plies, "1-0 {White wins by checkmate}");
    engine.send("force\nquit\n");
    ASSERT_EQ(engine.end(), 0);
    EXPECT_NE(engine.output().find("1-0 {White wins by checkmate}"), std::string::npos) << fen << engine.output();
    EXPECT_EQ(int(count(engine.output(), "\nmove ")), plies) << fen;
    std::smatch first;
    ASSERT_TRUE(std::regex_search(engine.output(), first, std::regex("\n[0-9]+ (-?[0-9]+) "))) << fen;
    EXPECT_EQ(std::stoi(first[1]), 32000 - plies) << fen;
  }
  closeTablebases(tables);
}

// The analysis is stopped before the tables are replaced, and goes on with
// the new ones. Under AddressSanitizer a probe into freed tables ends the engine.
TEST(TablebasePlayTest, EgtpathAndOptionsDuringAnAnalysis) {
  Session engine;
  // Queen against pawn: Qxc3 at the root is answered by kqk, whatever the hash table holds.
  engine.send("xboard\nprotover 2\npost\negtpath gaviota " + gtb4 + "\nsetboard 8/8/8/4k3/8/2p5/8/K1Q5 w - - 0 1\nanalyze\n");
  for (int round = 0; round < 3; ++round)
    for (const std::string& command : {"egtpath gaviota " + gtb4, std::string("option gtbCacheSizeMB=0"),
                                       "option gtbPath=/nonexistent;" + gtb4, std::string("egtpath gaviota /nonexistent"),
                                       std::string("option gtbCacheSizeMB=1")}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      engine.send(command + "\n");
    }
  engine.send("egtpath gaviota " + gtb4 + "\nping 1\n");
  ASSERT_TRUE(engine.waitFor("pong 1\n", 60)) << engine.output();
  // The analysis starts again; its root already asks the tables.
  const size_t restart = engine.output().find("pong 1\n");
  for (int second = 0; second < 60; ++second)
    if (std::regex_search(engine.output().substr(restart), std::regex("\n[0-9]+ -?[0-9]+ [0-9]+ [0-9]+ ")) ||
        engine.waitFor("\n# never printed\n", 1))
      break;
  engine.send("exit\nping 2\n");
  ASSERT_TRUE(engine.waitFor("pong 2\n", 60)) << engine.output();
  engine.send("quit\n");
  ASSERT_EQ(engine.end(), 0) << engine.output();
  const std::string last = engine.output().substr(engine.output().rfind("# total nodes"));
  EXPECT_EQ(last.find("tbHits = 0\n"), std::string::npos) << last;
}

}  // namespace
