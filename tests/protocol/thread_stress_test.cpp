// Starts, cancels and ends searches hundreds of times over, on 1, 2 and 4
// threads. What must hold whatever the timing: the engine never hangs, exits
// with status 0, plays no move after a command that cancelled its search,
// answers every ping once, and writes whole lines only. Nothing asserts on
// time, so the test means the same under ThreadSanitizer; the delays come
// from fixed seeds.
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "protocol/transcript.h"

namespace {

const int coreCounts[] = {1, 2, 4};
// Long enough that no search ends by itself within a cycle.
const std::string longSearch = "new\nlevel 40 60 0\nusermove e2e4\n";

// Commands that cancel a search for Black after 1. e4, whether or not it has played.
const char* const cancellers[] = {"force\n", "new\n", "usermove e7e5\nforce\n", "force\nundo\n", "analyze\nexit\nforce\n",
                                  "go\nforce\n", "playother\n", "usermove e7e5\nforce\nundo\n"};
// Take-backs in the middle of a search, safe only while it can't have played.
const char* const searchTakeBacks[] = {"undo\n", "usermove e7e5\nundo\nforce\n"};

// An engine in an empty folder (no ini file, no book) whose output is cut at ping fences.
class StressEngine {
 public:
  explicit StressEngine(int cores, const std::vector<std::string>& args = {})
      : dir_(std::filesystem::temp_directory_path() / ("tolva-stress-" + std::to_string(getpid()))),
        made_(std::filesystem::create_directories(dir_)), engine_(args, dir_.string()) {
    engine_.send("xboard\ncores " + std::to_string(cores) + "\n");
  }
  ~StressEngine() { std::filesystem::remove_all(dir_); }
  void send(const std::string& lines) { engine_.send(lines); }
  void pause(std::mt19937& random, int maxMicroseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (maxMicroseconds + 1)));
  }
  // The output since the last fence, up to the answer to a new ping.
  std::string fence() {
    const std::string pong = "\npong " + std::to_string(++ping_) + "\n";
    engine_.send("ping " + std::to_string(ping_) + "\n");
    if (!engine_.waitFor(pong, 60)) return "no" + pong + "within 60 s:\n" + engine_.output().substr(consumed_);
    const size_t end = engine_.output().find(pong, consumed_ ? consumed_ - 1 : 0) + pong.size();
    std::string segment = engine_.output().substr(consumed_, end - consumed_);
    consumed_ = end;
    return segment;
  }
  void quitAndCheck() {
    engine_.send("quit\n");
    EXPECT_EQ(engine_.end(), 0) << engine_.output().substr(consumed_);
    EXPECT_EQ(malformedLines(engine_.output()), "");
  }

 private:
  std::filesystem::path dir_;
  bool made_;
  Session engine_;
  int ping_ = 0;
  size_t consumed_ = 0;
};

TEST(ThreadStressTest, CancelledSearchesPlayNoMove) {
  std::mt19937 random(20240611);
  for (int cores : coreCounts) {
    StressEngine engine(cores);
    for (int cycle = 0; cycle < 80; ++cycle) {
      const unsigned pick = random() % (std::size(cancellers) + std::size(searchTakeBacks));
      const std::string cancel = pick < std::size(cancellers) ? cancellers[pick] : searchTakeBacks[pick - std::size(cancellers)];
      engine.send(longSearch);
      engine.pause(random, 3000);
      engine.send(cancel);
      const std::string segment = engine.fence();
      ASSERT_EQ(count(segment, "\nmove "), 0u) << "cores " << cores << ", cancelled with " << cancel << segment;
      ASSERT_EQ(count(segment, "# making user move: e7e5\n"), size_t(cancel.rfind("usermove", 0) == 0)) << segment;
    }
    engine.send(longSearch);
    engine.quitAndCheck();
  }
}

// Short searches that sometimes finish before the command that would cancel
// them: a move belongs to this cycle's search, after its user move.
TEST(ThreadStressTest, SearchesThatRaceTheirCancel) {
  std::mt19937 random(77031);
  for (int cores : coreCounts) {
    StressEngine engine(cores);
    for (int cycle = 0; cycle < 100; ++cycle) {
      engine.send("new\nsd " + std::to_string(1 + random() % 6) + "\nusermove e2e4\n");
      engine.pause(random, 20000);
      engine.send(cancellers[random() % std::size(cancellers)]);
      const std::string segment = engine.fence();
      const size_t userMove = segment.find("# making user move: e2e4\n");
      ASSERT_NE(userMove, std::string::npos) << segment;
      ASSERT_GT(segment.find("\nmove "), userMove) << "a move of an earlier search\n" << segment;
    }
    engine.quitAndCheck();
  }
}

// Analysis follows the user's moves and take-backs and never plays; pings
// in quick succession while it runs are answered once each, in order.
TEST(ThreadStressTest, AnalysisFollowsTheMovesAndAnswersPings) {
  std::mt19937 random(4242);
  const std::vector<std::string> line = {"e2e4", "c7c5", "g1f3", "d7d6", "d2d4", "c5d4", "f3d4"};
  for (int cores : coreCounts) {
    StressEngine engine(cores);
    for (int cycle = 0; cycle < 60; ++cycle) {
      engine.send("new\nanalyze\n");
      const size_t played = 1 + random() % line.size();
      for (size_t i = 0; i < played; ++i) {
        engine.pause(random, 4000);
        engine.send("usermove " + line[i] + "\n");
      }
      engine.send(played >= 2 && random() % 2 ? "remove\n" : "undo\n");
      std::string pings;
      for (int i = 1000; i < 1010; ++i) pings += "ping " + std::to_string(i) + "\n";
      engine.send(pings);
      engine.pause(random, 4000);
      engine.send("exit\n");
      const std::string segment = engine.fence();
      ASSERT_EQ(count(segment, "\nmove "), 0u) << segment;
      ASSERT_EQ(segment.find("Error ("), std::string::npos) << segment;
      for (int i = 1000; i < 1010; ++i) ASSERT_EQ(count(segment, "\npong " + std::to_string(i) + "\n"), 1u) << segment;
      ASSERT_LT(segment.find("\npong 1000\n"), segment.find("\npong 1009\n")) << segment;
    }
    engine.send("analyze\n");
    engine.quitAndCheck();
  }
}

// Quit and end of input at any moment of a search; a search with a limit
// then plays its move once.
TEST(ThreadStressTest, QuitAndEndOfInputInTheMiddleOfASearch) {
  std::mt19937 random(1234);
  for (int cores : coreCounts) {
    const std::vector<std::string> args = {"-cores", std::to_string(cores)};
    for (int round = 0; round < 15; ++round) {
      const struct {
        std::string input;
        size_t moves;
      } cases[] = {{"xboard\n" + longSearch + "quit\n", 0}, {"xboard\nanalyze\n", 0}, {"xboard\nanalyze\nusermove e2e4\n", 0},
                   {"xboard\nnew\nsd 5\nusermove e2e4\n", 1}, {"xboard\nnew\nlevel 40 0:10 0\nusermove e2e4\n", 1}};
      const auto& c = cases[round % std::size(cases)];
      EngineOutcome out = run(c.input, args, "", 60);
      ASSERT_EQ(out.status(), 0) << out.output;
      EXPECT_EQ(count(out.output, "\nmove "), c.moves) << out.output;
      EXPECT_EQ(malformedLines(out.output), "");
      Session engine(args);
      engine.send(round % 2 ? "xboard\n" + longSearch : "xboard\nanalyze\n");
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
      if (round % 2) engine.send("quit\n");
      ASSERT_EQ(engine.end(), 0) << engine.output();
      EXPECT_EQ(count(engine.output(), "\nmove "), 0u) << engine.output();
    }
  }
}

// Every depth-limited search plays its move while the thread count changes
// between searches and during them.
TEST(ThreadStressTest, EveryMovePlayedWhileTheThreadCountChanges) {
  std::mt19937 random(5150);
  StressEngine engine(1);
  for (int cycle = 0; cycle < 30; ++cycle) {
    engine.send("new\ncores " + std::to_string(coreCounts[random() % 3]) + "\nsd " + std::to_string(3 + cycle % 4) +
                "\nusermove e2e4\n");
    engine.pause(random, 5000);
    engine.send("cores " + std::to_string(coreCounts[random() % 3]) + "\n");
    std::string segment = engine.fence();
    for (int wait = 0; wait < 3000 && count(segment, "\nmove ") == 0; ++wait) segment += engine.fence();
    ASSERT_EQ(count(segment, "\nmove "), 1u) << segment;
  }
  engine.quitAndCheck();
}

}  // namespace
