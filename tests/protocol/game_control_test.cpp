// Game control through the real binary: who plays which colour, take-backs,
// analysis, the end of the game and positions that can't be played.
#include <gtest/gtest.h>

#include <string>

#include "protocol/engine_process.h"

namespace {

const std::string prompt = "# Your move: ";

std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

size_t count(const std::string& text, const std::string& needle) {
  size_t n = 0;
  for (size_t pos = text.find(needle); pos != std::string::npos; pos = text.find(needle, pos + 1)) ++n;
  return n;
}

// The text of the first "move " line after `from`.
std::string engineMoveAfter(const std::string& output, size_t from = 0) {
  size_t pos = output.find("\nmove ", from);
  if (pos == std::string::npos) return "";
  size_t end = output.find('\n', pos + 1);
  return output.substr(pos + 6, end - pos - 6);
}

TEST(GameControlTest, TakeBacksStopAtTheStartAndAtASetUpPosition) {
  EngineRun run = runEngine(
      "xboard\nforce\nundo\nremove\nusermove e2e4\nremove\nundo\nundo\n"
      "usermove d2d4\nsetboard 4k3/8/8/8/8/8/8/4K2R w K - 0 1\nundo\nusermove h1h2\nundo\nundo\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  const std::string& out = run.output;
  EXPECT_NE(out.find(commandError("undo")), std::string::npos);
  EXPECT_NE(out.find(commandError("remove")), std::string::npos);
  // Failures: undo and remove at the start, remove with one move, the second undo,
  // undo right after setboard, and undo past the set-up position.
  EXPECT_EQ(count(out, commandError("undo")), 4u);
  EXPECT_EQ(count(out, commandError("remove")), 2u);
  // After the take-back of h1h2 the set-up position is shown again.
  const std::string setUp =
      "# ....k...\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ....K..R\n#\n";
  EXPECT_EQ(count(out, setUp), 2u);
  EXPECT_EQ(out.find("\nmove "), std::string::npos);  // force mode: the engine never moved
}

TEST(GameControlTest, ExitOnlyInAnalysisAndAnalyzeTwiceIsHarmless) {
  EngineRun run = runEngine("xboard\nnopost\nexit\nanalyze\nanalyze\nusermove e2e4\nexit\nexit\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(count(run.output, commandError("exit")), 2u);
  EXPECT_EQ(count(run.output, commandError("analyze")), 0u);
  EXPECT_NE(run.output.find("# making user move: e2e4"), std::string::npos);
  // Analysis plays no move.
  EXPECT_EQ(run.output.find("\nmove "), std::string::npos);
}

TEST(GameControlTest, ForceThenGoPlaysTheSideToMove) {
  EngineSession engine;
  engine.send("xboard\nnopost\nsd 3\nforce\nusermove e2e4\nusermove e7e5\ngo\n");
  ASSERT_TRUE(engine.waitFor("\nmove ", 60)) << engine.output();
  std::string move = engineMoveAfter(engine.output());
  ASSERT_EQ(move.size(), 4u) << engine.output();
  // It was White's move: Black can answer it.
  engine.send("force\nusermove a7a6\nquit\n");
  EXPECT_EQ(engine.finish(), 0);
  EXPECT_NE(engine.output().find("# making user move: a7a6"), std::string::npos) << engine.output();
  EXPECT_EQ(engine.output().find("Error ("), std::string::npos) << engine.output();
}

TEST(GameControlTest, PlayotherWaitsForTheOpponent) {
  EngineSession engine;
  engine.send("xboard\nnopost\nsd 2\nforce\nusermove e2e4\nplayother\nping 1\n");
  ASSERT_TRUE(engine.waitFor("pong 1", 30));
  // The engine plays White now; nothing happens until Black has moved.
  EXPECT_EQ(engine.output().find("\nmove "), std::string::npos);
  engine.send("usermove e7e5\n");
  ASSERT_TRUE(engine.waitFor("\nmove ", 60)) << engine.output();
  engine.send("quit\n");
  EXPECT_EQ(engine.finish(), 0);
  EXPECT_EQ(count(engine.output(), "\nmove "), 1u);
}

TEST(GameControlTest, NoMoveAfterTheEndOfTheGame) {
  EngineRun run = runEngine(
      "xboard\nforce\nusermove f2f3\nusermove e7e5\nusermove g2g4\nusermove d8h4\ngo\nusermove a2a3\nnew\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_NE(run.output.find("0-1 {Black wins by checkmate}\n"), std::string::npos);
  EXPECT_NE(run.output.find("Error (cannot make a move at end of game)\n" + commandError("go")), std::string::npos);
  EXPECT_NE(run.output.find("Error (cannot make a move at end of game)\n" + commandError("usermove a2a3")),
            std::string::npos);
  EXPECT_EQ(run.output.find("\nmove "), std::string::npos);
}

TEST(GameControlTest, RefusedPositionIsNeverSearched) {
  EngineRun run = runEngine(
      "xboard\nsetboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq - 0 1\ngo\nanalyze\nusermove e2e4\n"
      "perft 2\ndivide 1\nexit\n"
      "setboard 8/8/8/8/8/8/8/K7 w - - 0 1\ngo\nnew\nforce\nusermove e2e4\nquit\n",
      {}, "", 60);
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_NE(run.output.find(commandError("setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq - 0 1")),
            std::string::npos);
  EXPECT_NE(run.output.find("Error (illegal move): e2e4"), std::string::npos);
  // A king alone is accepted as text but is no game.
  EXPECT_NE(run.output.find("# warning: this position can't be played"), std::string::npos);
  EXPECT_EQ(run.output.find("\nmove "), std::string::npos);
  // A new game makes everything normal again.
  EXPECT_NE(run.output.find("# making user move: e2e4"), std::string::npos);
}

TEST(GameControlTest, AGameThatFillsTheRecordEndsCleanly) {
  std::string input = "xboard\nforce\n";
  const char* shuffle[4] = {"g1f3", "g8f6", "f3g1", "f6g8"};
  for (int i = 0; i < 1000; ++i) input += std::string("usermove ") + shuffle[i % 4] + "\n";
  input += "go\nquit\n";
  EngineRun run = runEngine(input, {}, "", 60);
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(count(run.output, "1/2-1/2 {Game too long}\n"), 1u);
  // Every move after the end is refused, and the engine plays none.
  EXPECT_EQ(count(run.output, "Error (cannot make a move at end of game)"), 1000u - 960u + 1u);
  EXPECT_EQ(run.output.find("\nmove "), std::string::npos);
}

TEST(GameControlTest, EndOfInputDuringAnalysisExits) {
  EngineRun run = runEngine("xboard\nnopost\nanalyze\n", {}, "", 30);
  EXPECT_FALSE(run.timedOut);
  EXPECT_EQ(run.exitStatus, 0);
}

TEST(GameControlTest, EndOfInputLetsATimedSearchPlayItsMove) {
  EngineRun run = runEngine("xboard\nnopost\nnew\nlevel 40 0:10 0\nusermove e2e4\n", {}, "", 60);
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(count(run.output, "\nmove "), 1u) << run.output;
}

}  // namespace
