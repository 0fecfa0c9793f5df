// The game passes between the command thread and the search thread that
// plays the engine's move. Commands sent right after that move, random moves
// on several threads, and the diagram of a position that a search then takes
// up. Under ThreadSanitizer a race ends the engine with an error status, so
// every case also checks that the engine exits cleanly.
#include <gtest/gtest.h>

#include <string>

#include "protocol/engine_process.h"

namespace {

const std::string afterE2e4 =
    "# rnbqkbnr\n# pppppppp\n# ........\n# ........\n# ....P...\n# ........\n# PPPP.PPP\n# RNBQKBNR\n#\n";

TEST(GameHandoverTest, CommandsRightAfterTheEngineMoveAndRandomMovesOnTwoThreads) {
  const struct {
    const char* name;
    const char* start;  // makes the engine move once
    const char* after;  // sent as soon as the move has come
  } cases[] = {
      {"auto after go", "new\nforce\nsd 3\ngo\n", "auto\n"},
      {"time after the answer", "new\nsd 3\nusermove b2b3\n", "time 2764\notim 2764\n"},
      {"random moves on two threads", "cores 2\nnew\nforce\nrandgame\ngo\n", "auto\n"},
  };
  for (const auto& c : cases) {
    EngineSession session({"-cores", "2"});
    session.send("xboard\n");
    for (int round = 1; round <= 5; ++round) {
      session.send(c.start);
      ASSERT_TRUE(session.waitFor("\nmove ", 60)) << c.name;
      session.send(c.after);
      session.send("ping " + std::to_string(round) + "\n");
      ASSERT_TRUE(session.waitFor("pong " + std::to_string(round) + "\n", 60)) << c.name;
      session.send("force\n");
    }
    session.send("quit\n");
    EXPECT_EQ(session.finish(60), 0) << c.name << "\n" << session.output();
  }
}

TEST(GameHandoverTest, TheNewPositionIsShownAtOnceWhileASearchTakesItUp) {
  const struct {
    const char* name;
    const char* start;   // a search running at the end
    const char* change;  // changes the position; a search takes up the new one
    std::string diagram;
  } cases[] = {
      {"undo in analysis", "usermove e2e4\nusermove e7e5\nanalyze\n", "undo\n", afterE2e4},
      {"setboard in analysis", "analyze\n", "setboard 4k3/8/8/8/8/8/8/R3K3 w - - 0 1\n",
       "# ....k...\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# R...K...\n#\n"},
      {"undo hands the move to the engine", "usermove e2e4\nusermove e7e5\nplayother\n", "undo\n", afterE2e4},
      {"remove while the engine thinks", "usermove e2e4\nusermove e7e5\nusermove g1f3\ngo\n", "remove\n",
       afterE2e4},
  };
  for (const auto& c : cases) {
    EngineSession session;
    session.send(std::string("xboard\nnew\nforce\nlevel 40 60 0\npost\n") + c.start + "ping 1\n");
    ASSERT_TRUE(session.waitFor("pong 1\n")) << c.name;
    session.send(c.change);
    // Nothing else is sent: the diagram must come while the search runs, and
    // before the move that the search may answer with.
    ASSERT_TRUE(session.waitFor(c.diagram, 30)) << c.name << "\n" << session.output();
    size_t shown = session.output().rfind(c.diagram);
    EXPECT_EQ(session.output().find("\nmove ", session.output().find("pong 1\n")), std::string::npos)
        << c.name << ": the move came before the diagram";
    EXPECT_NE(shown, std::string::npos);
    session.send("force\nquit\n");
    EXPECT_EQ(session.finish(60), 0) << c.name;
  }
}

}  // namespace
