// Starts, cancels and ends searches hundreds of times over, on 1, 2 and 4
// threads. What must hold whatever the timing: the engine never hangs, exits
// with status 0, plays no move after a command that cancelled its search,
// answers every ping once and in order, and writes whole lines only. Nothing
// asserts on time, so the test means the same under ThreadSanitizer; the
// delays come from fixed seeds.
#include <chrono>
#include <random>
#include <thread>

#include "protocol/transcript.h"

namespace {

// Commands that cancel a search for Black after 1. e4, whether or not it has played.
const std::vector<std::string> cancellers = {"force\n", "new\n", "usermove e7e5\nforce\n", "force\nundo\n",
                                             "analyze\nexit\nforce\n", "go\nforce\n", "playother\n", "usermove e7e5\nforce\nundo\n"};
// Take-backs in the middle of a search, safe only while it can't have played.
const std::vector<std::string> takeBacks = {"undo\n", "usermove e7e5\nundo\nforce\n"};

TEST(ThreadStressTest, CancelledSearchesPlayNoMove) {
  const struct {
    std::string start;  // %d: a depth from 1 to 6
    int maxPauseUs;
    bool canFinish;  // the search may play before it is cancelled
    std::vector<std::string> cancel;
  } scenarios[] = {
      {"new\nlevel 40 60 0\nusermove e2e4\n", 3000, false, cancellers},
      {"new\nlevel 40 60 0\nusermove e2e4\n", 3000, false, takeBacks},
      {"new\nsd %d\nusermove e2e4\n", 20000, true, cancellers},
      {"new\nanalyze\nusermove e2e4\nusermove e7e5\n", 4000, false, {"undo\nexit\n", "remove\nexit\n", "exit\n"}},
      // A change of thread count during a search applies to the next one.
      {"new\ncores %d\nlevel 40 60 0\nusermove e2e4\n", 5000, false, {"cores 1\nforce\n", "cores 4\nforce\n"}},
  };
  std::mt19937 random(20240611);
  for (int cores : {1, 2, 4}) {
    Session engine({"-cores", std::to_string(cores)});
    engine.send("xboard\noption ttHashSizeMB=8\n");  // new games clear the table
    int ping = 0;
    size_t fence = 0;
    for (int cycle = 0; cycle < 150; ++cycle) {
      const auto& s = scenarios[random() % std::size(scenarios)];
      std::string start = s.start;
      if (size_t at = start.find("%d"); at != std::string::npos) start.replace(at, 2, std::to_string(1 + random() % 6));
      engine.send(start);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % (s.maxPauseUs + 1)));
      const std::string cancel = s.cancel[random() % s.cancel.size()];
      // Pings while the search runs, then one behind the cancel as the fence.
      std::string pings;
      for (int i = 0; i < 3; ++i) pings += "ping " + std::to_string(++ping) + "\n";
      engine.send(pings + cancel + "ping " + std::to_string(++ping) + "\n");
      const std::string pong = "\npong " + std::to_string(ping) + "\n";
      ASSERT_TRUE(engine.waitFor(pong, 60)) << "cores " << cores << ", after " << start << cancel << engine.output().substr(fence);
      const size_t end = engine.output().find(pong, fence) + pong.size();
      const std::string segment = engine.output().substr(fence, end - fence);
      fence = end;
      SCOPED_TRACE("cores " + std::to_string(cores) + ", " + start + cancel + segment);
      for (int i = ping - 3; i <= ping; ++i) ASSERT_EQ(count(segment, "\npong " + std::to_string(i) + "\n"), 1u);
      ASSERT_LT(segment.find("\npong " + std::to_string(ping - 3) + "\n"), segment.find(pong));
      const size_t userMove = segment.find("# making user move: e2e4\n"), move = segment.find("\nmove ");
      ASSERT_NE(userMove, std::string::npos);
      if (s.canFinish) ASSERT_TRUE(move == std::string::npos || move > userMove) << "a move of an earlier search";
      else ASSERT_EQ(move, std::string::npos);
    }
    // Quit in the middle of a search.
    engine.send("new\nlevel 40 60 0\nusermove e2e4\nquit\n");
    EXPECT_EQ(engine.end(), 0);
    EXPECT_EQ(malformedLines(engine.output()), "");
  }
}

}  // namespace
