// Whole endgames that the engine plays against itself with the tablebases.
#include <chrono>
#include <thread>

#include "board/fen.h"
#include "protocol/transcript.h"
#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = "/usr/share/gaviotatb/gtb4";

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
    // `auto` plays on after each line that the loop reads.
    for (int i = 1; i <= 3 * plies && engine.output().find("1-0 {White wins by checkmate}") == std::string::npos; ++i) {
      engine.send("ping " + std::to_string(i) + "\n");
      ASSERT_TRUE(engine.waitFor("pong " + std::to_string(i) + "\n", 30));
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
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

}  // namespace
