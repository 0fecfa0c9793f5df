// The game passes between the command thread and the search thread that
// plays the engine's move. Under ThreadSanitizer a race ends the engine with
// an error status, so every case also checks that the engine exits cleanly.
#include "protocol/transcript.h"

namespace {

const std::string afterE2e4 = diagram({"rnbqkbnr", "pppppppp", "........", "........", "....P...", "........", "PPPP.PPP", "RNBQKBNR"});

// Commands sent right after the engine's move, and random moves on two threads.
TEST(GameHandoverTest, CommandsRightAfterTheEngineMove) {
  // Each makes the engine move once; the second follows the move at once.
  const std::pair<const char*, const char*> cases[] = {{"new\nforce\nsd 3\ngo\n", "auto\n"},
                                                       {"new\nsd 3\nusermove b2b3\n", "time 2764\notim 2764\n"},
                                                       {"cores 2\nnew\nforce\nrandgame\ngo\n", "auto\n"}};
  for (const auto& [start, after] : cases) {
    Session engine({"-cores", "2"});
    engine.send("xboard\n");
    for (int round = 1; round <= 5; ++round) {
      engine.send(start);
      ASSERT_TRUE(engine.waitFor("\nmove ", 60)) << start;
      engine.send(std::string(after) + "ping " + std::to_string(round) + "\n");
      ASSERT_TRUE(engine.waitFor("pong " + std::to_string(round) + "\n", 60)) << start;
      engine.send("force\n");
    }
    engine.send("quit\n");
    EXPECT_EQ(engine.end(), 0) << start << "\n" << engine.output();
  }
}

// The diagram of a changed position comes at once, before the move that a search then answers with.
TEST(GameHandoverTest, TheNewPositionIsShownAtOnceWhileASearchTakesItUp) {
  const struct {
    const char *start, *change;  // a search runs after `start`; `change` gives it a new position
    std::string diagram;
  } cases[] = {
      {"usermove e2e4\nusermove e7e5\nanalyze\n", "undo\n", afterE2e4},
      {"analyze\n", "setboard 4k3/8/8/8/8/8/8/R3K3 w - - 0 1\n",
       diagram({"....k...", "........", "........", "........", "........", "........", "........", "R...K..."})},
      {"usermove e2e4\nusermove e7e5\nplayother\n", "undo\n", afterE2e4},
      {"usermove e2e4\nusermove e7e5\nusermove g1f3\ngo\n", "remove\n", afterE2e4},
  };
  for (const auto& c : cases) {
    Session engine;
    engine.send(std::string("xboard\nnew\nforce\nlevel 40 60 0\npost\n") + c.start + "ping 1\n");
    ASSERT_TRUE(engine.waitFor("pong 1\n")) << c.start;
    engine.send(c.change);
    ASSERT_TRUE(engine.waitFor(c.diagram, 30)) << c.change << "\n" << engine.output();
    EXPECT_EQ(engine.output().find("\nmove ", engine.output().find("pong 1\n")), std::string::npos) << c.change;
    engine.send("force\nquit\n");
    EXPECT_EQ(engine.end(), 0) << c.change;
  }
}

}  // namespace
