// Starts, cancels and ends searches hundreds of times over, on 1, 2 and 4
// threads, through the real binary. What must hold whatever the timing: the
// engine never hangs, exits with status 0, plays no move after a command that
// cancelled its search, never loses or repeats a move (every board it prints
// agrees with the moves it announced), and writes whole lines only.
//
// Nothing here asserts on time: the limits only turn a hang into a failure,
// so the test means the same under ThreadSanitizer. Commands and delays are
// drawn from fixed seeds, so that a failing cycle's input can be replayed.
#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "protocol/engine_process.h"

namespace {

const int coreCounts[] = {1, 2, 4};
// Long enough that no search ends by itself within a cycle: 40 moves in an hour.
const std::string longLevel = "level 40 60 0";
const int hangSeconds = 60;

// An empty directory, so that no ini file or opening book changes the engine.
class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tolva-stress.XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (mkdtemp(name.data()) != nullptr) path_ = name.data();
  }
  ~ScratchDir() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::vector<std::string> completeLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

size_t countLinesStartingWith(const std::string& text, const std::string& prefix) {
  size_t n = 0;
  for (const std::string& line : completeLines(text))
    if (line.compare(0, prefix.size(), prefix) == 0) ++n;
  return n;
}

// Every line the engine may print in xboard mode. A line that is none of these
// was cut by another or is a sanitizer's report.
bool isWellFormed(const std::string& line) {
  // A pong inside any other line, a comment included, was cut into it.
  static const std::regex pong("pong -?[0-9]+");
  if (line.find("pong") != std::string::npos) return std::regex_match(line, pong);
#define TOLVA_MOVE "[a-h][1-8][a-h][1-8][nbrq]?"
  static const std::regex patterns(
      "|#|# .*|feature .*|pong -?[0-9]+|move " TOLVA_MOVE "|Error \\(.*|offer draw|(1-0|0-1|1/2-1/2) \\{[^}]*\\}|"
      // the thinking line: depth, score, time, nodes, selective depth, nps, tablebase hits, line
      "[0-9]+ -?[0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+(\t" TOLVA_MOVE "( " TOLVA_MOVE ")*)?");
#undef TOLVA_MOVE
  return std::regex_match(line, patterns);
}

// Empty when every line is well formed, else the first bad one.
std::string malformedLines(const std::string& output) {
  std::string bad;
  for (const std::string& line : completeLines(output))
    if (!isWellFormed(line)) bad += "  [" + line + "]\n";
  return bad.substr(0, 2000);
}

// The game as the host sees it: the start position and every move the engine
// announced, its own and the user's.
class ReplayBoard {
 public:
  ReplayBoard() { reset(); }

  void reset() {
    rows_ = {"RNBQKBNR", "PPPPPPPP", "........", "........", "........", "........", "pppppppp", "rnbqkbnr"};
    history_.clear();
  }

  // Plays a move in coordinate text; false if its from-square is empty.
  bool apply(std::string move) {
    for (char& c : move) c = char(std::tolower(static_cast<unsigned char>(c)));
    if (move.size() < 4) return false;
    int fromFile = move[0] - 'a', fromRank = move[1] - '1', toFile = move[2] - 'a', toRank = move[3] - '1';
    if (fromFile < 0 || fromFile > 7 || toFile < 0 || toFile > 7 || fromRank < 0 || fromRank > 7 || toRank < 0 ||
        toRank > 7)
      return false;
    char piece = rows_[fromRank][fromFile];
    if (piece == '.') return false;
    history_.push_back(rows_);
    bool white = std::isupper(static_cast<unsigned char>(piece));
    if ((piece == 'K' || piece == 'k') && std::abs(toFile - fromFile) == 2) {
      int rookFrom = toFile > fromFile ? 7 : 0, rookTo = toFile > fromFile ? 5 : 3;
      rows_[fromRank][rookTo] = rows_[fromRank][rookFrom];
      rows_[fromRank][rookFrom] = '.';
    }
    if ((piece == 'P' || piece == 'p') && fromFile != toFile && rows_[toRank][toFile] == '.')
      rows_[fromRank][toFile] = '.';  // en passant
    if (move.size() == 5) piece = white ? char(std::toupper(static_cast<unsigned char>(move[4]))) : move[4];
    rows_[toRank][toFile] = piece;
    rows_[fromRank][fromFile] = '.';
    return true;
  }

  int plies() const { return int(history_.size()); }

  bool takeBack(int plies) {
    if (int(history_.size()) < plies) return false;
    for (int i = 0; i < plies; ++i) {
      rows_ = history_.back();
      history_.pop_back();
    }
    return true;
  }

  // Rows from rank 8 down, as the engine prints them behind "# ".
  std::array<std::string, 8> diagram() const {
    std::array<std::string, 8> d;
    for (int i = 0; i < 8; ++i) d[i] = rows_[7 - i];
    return d;
  }

  std::array<std::string, 8> diagramAfterTakeBack(int plies) const {
    ReplayBoard copy = *this;
    copy.takeBack(plies);
    return copy.diagram();
  }

 private:
  std::array<std::string, 8> rows_;
  std::vector<std::array<std::string, 8>> history_;
};

std::string showDiagram(const std::array<std::string, 8>& d) {
  std::string text;
  for (const std::string& row : d) text += "  " + row + "\n";
  return text;
}

bool isDiagramRow(const std::string& line) {
  if (line.size() != 10 || line.compare(0, 2, "# ") != 0) return false;
  for (size_t i = 2; i < 10; ++i)
    if (std::string(".pnbrqkPNBRQK").find(line[i]) == std::string::npos) return false;
  return true;
}

// Follows the engine's output and checks every diagram against the moves
// announced before it. The diagram printed right after a move must show that
// move. A take-back the host asked for must show up as a diagram of the
// position before the moves taken back.
class GameChecker {
 public:
  void expectTakeBack(int plies) { pendingTakeBack_ = plies; }

  // Returns a description of the first disagreement, or "".
  std::string feed(const std::string& text) {
    for (const std::string& line : completeLines(text)) {
      if (line.rfind("# new size of TT hash: ", 0) == 0) {
        board_.reset();  // `new`
      } else if (line.rfind("# making user move: ", 0) == 0) {
        if (!board_.apply(line.substr(20))) return "user move from an empty square: " + line;
        afterMove_ = true;
        ++userMoves_;
      } else if (line.rfind("move ", 0) == 0) {
        if (!board_.apply(line.substr(5))) return "engine move from an empty square: " + line;
        afterMove_ = true;
        ++engineMoves_;
      } else if (isDiagramRow(line)) {
        if (rowCount_ < 8) rows_[rowCount_] = line.substr(2);
        ++rowCount_;
      } else if (line == "#" && rowCount_ > 0) {
        std::string problem = checkDiagram();
        if (!problem.empty()) return problem;
      }
    }
    return "";
  }

  std::string endOfSegment() {
    if (pendingTakeBack_ != 0) return "the take-back printed no board";
    return "";
  }

  int engineMoves() const { return engineMoves_; }
  int userMoves() const { return userMoves_; }

 private:
  std::string checkDiagram() {
    bool complete = rowCount_ == 8;
    rowCount_ = 0;
    if (!complete) return "a diagram with a wrong number of rows";
    // The board of `new` comes with an empty history and can't be a take-back.
    if (afterMove_ || pendingTakeBack_ == 0 || board_.plies() < pendingTakeBack_) {
      afterMove_ = false;
      if (rows_ != board_.diagram())
        return "diagram disagrees with the moves announced:\n" + showDiagram(rows_) + "expected\n" +
               showDiagram(board_.diagram());
      return "";
    }
    if (rows_ != board_.diagramAfterTakeBack(pendingTakeBack_))
      return "diagram after a take-back of " + std::to_string(pendingTakeBack_) + " disagrees:\n" +
             showDiagram(rows_) + "expected\n" + showDiagram(board_.diagramAfterTakeBack(pendingTakeBack_));
    board_.takeBack(pendingTakeBack_);
    pendingTakeBack_ = 0;
    return "";
  }

  ReplayBoard board_;
  std::array<std::string, 8> rows_;
  int rowCount_ = 0;
  bool afterMove_ = false;
  int pendingTakeBack_ = 0;
  int engineMoves_ = 0;
  int userMoves_ = 0;
};

// Waits for a whole line "pong N". Gives up at once when a pong has been cut
// into another line, since the awaited one may be among them.
std::string awaitPong(EngineSession& engine, int number) {
  const std::string pong = "\npong " + std::to_string(number) + "\n";
  for (int second = 0; second < hangSeconds; ++second) {
    if (engine.waitFor(pong, 1)) return "";
    std::string bad = malformedLines(engine.output());
    if (bad.find("pong") != std::string::npos) return "output lines cut into each other:\n" + bad;
  }
  return "no " + pong.substr(1) + "within " + std::to_string(hangSeconds) + " s: the engine hangs or died";
}

// A session that cuts its output into segments at ping fences.
class StressSession {
 public:
  StressSession(int cores, const std::string& dir) : engine_({}, dir) {
    engine_.send("xboard\ncores " + std::to_string(cores) + "\n");
  }

  void send(const std::string& lines) { engine_.send(lines); }

  // Sends a ping and hands back the output since the last fence, up to its
  // pong. Returns what went wrong, or "".
  std::string fence(std::string& segment) {
    ++ping_;
    engine_.send("ping " + std::to_string(ping_) + "\n");
    std::string problem = awaitPong(engine_, ping_);
    if (!problem.empty()) return problem;
    const std::string pong = "\npong " + std::to_string(ping_) + "\n";
    size_t end = engine_.output().find(pong, consumed_ == 0 ? 0 : consumed_ - 1) + pong.size();
    segment = engine_.output().substr(consumed_, end - consumed_);
    consumed_ = end;
    return "";
  }

  int finish() { return engine_.finish(hangSeconds); }
  const std::string& output() const { return engine_.output(); }
  std::string tail() const {
    const std::string& out = engine_.output();
    return out.size() > 3000 ? out.substr(out.size() - 3000) : out;
  }

 private:
  EngineSession engine_;
  int ping_ = 0;
  size_t consumed_ = 0;
};

void pause(std::mt19937& random, int maxMicroseconds) {
  int wait = std::uniform_int_distribution<int>(0, maxMicroseconds)(random);
  if (wait > 0) std::this_thread::sleep_for(std::chrono::microseconds(wait));
}

// Commands that cancel a search for Black after 1. e4 and leave the engine
// idle, whether or not the search has played its move.
struct Canceller {
  const char* lines;
  int takeBack;  // plies the host expects to see taken back
};
const Canceller cancellers[] = {
    {"force\n", 0},
    {"new\n", 0},
    {"usermove e7e5\nforce\n", 0},  // the user's move for Black, then the engine's search for White cancelled
    {"force\nundo\n", 1},
    {"analyze\nexit\nforce\n", 0},
    {"go\nforce\n", 0},
    {"playother\n", 0},
    {"usermove e7e5\nforce\nundo\n", 1},
};
// Take-backs in the middle of a search. They are safe only while the search
// can't have played: after the engine's move, an undo gives it the turn back
// and the new search starts before the board is shown.
const Canceller searchTakeBacks[] = {
    {"undo\n", 1},
    {"usermove e7e5\nundo\nforce\n", 1},
};

TEST(ThreadStressTest, CancelledSearchesPlayNoMove) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(20240611);
  for (int cores : coreCounts) {
    StressSession session(cores, dir.path());
    GameChecker checker;
    int expectedUserMoves = 0;
    for (int cycle = 0; cycle < 80; ++cycle) {
      SCOPED_TRACE("cores " + std::to_string(cores) + ", cycle " + std::to_string(cycle));
      unsigned pick = random() % (std::size(cancellers) + std::size(searchTakeBacks));
      const Canceller& cancel = pick < std::size(cancellers) ? cancellers[pick]
                                                             : searchTakeBacks[pick - std::size(cancellers)];
      session.send("new\n" + longLevel + "\nusermove e2e4\n");
      pause(random, 3000);
      session.send(cancel.lines);
      checker.expectTakeBack(cancel.takeBack);
      std::string segment;
      ASSERT_EQ(session.fence(segment), "") << "after cancelling with " << cancel.lines << session.tail();
      ASSERT_EQ(checker.feed(segment), "") << segment;
      ASSERT_EQ(checker.endOfSegment(), "") << segment;
      // A search stopped by a command plays nothing, now or later.
      ASSERT_EQ(countLinesStartingWith(segment, "move "), 0u) << "cancelled with " << cancel.lines << segment;
      expectedUserMoves += 1 + (std::string(cancel.lines).rfind("usermove", 0) == 0);
    }
    // Leave a search running and quit in the middle of it.
    session.send("new\n" + longLevel + "\nusermove e2e4\n");
    pause(random, 3000);
    session.send("quit\n");
    EXPECT_EQ(session.finish(), 0) << session.tail();
    EXPECT_EQ(countLinesStartingWith(session.output(), "move "), 0u);
    EXPECT_EQ(checker.userMoves(), expectedUserMoves);
    EXPECT_EQ(malformedLines(session.output()), "");
  }
}

// Short depth-limited searches that sometimes finish before the command that
// would cancel them arrives. Either way the game must stay straight: a move is
// announced once, shown on the board, and nothing follows the cancelling command.
TEST(ThreadStressTest, SearchesThatRaceTheirCancelKeepTheGameStraight) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(77031);
  for (int cores : coreCounts) {
    StressSession session(cores, dir.path());
    GameChecker checker;
    int finished = 0;
    for (int cycle = 0; cycle < 100; ++cycle) {
      SCOPED_TRACE("cores " + std::to_string(cores) + ", cycle " + std::to_string(cycle));
      const Canceller& cancel = cancellers[random() % std::size(cancellers)];
      int depth = 1 + int(random() % 6);
      session.send("new\nsd " + std::to_string(depth) + "\nusermove e2e4\n");
      pause(random, 20000);
      int movesBefore = checker.engineMoves();
      session.send(cancel.lines);
      checker.expectTakeBack(cancel.takeBack);
      std::string segment;
      ASSERT_EQ(session.fence(segment), "") << "after " << cancel.lines << session.tail();
      // A move can only belong to this cycle's searches, after the user's move.
      size_t userMove = segment.find("# making user move: e2e4\n");
      size_t firstMove = segment.find("\nmove ");
      ASSERT_NE(userMove, std::string::npos) << segment;
      ASSERT_TRUE(firstMove == std::string::npos || firstMove > userMove) << "a move from an earlier search\n"
                                                                          << segment;
      std::string problem = checker.feed(segment);
      if (problem.empty()) problem = checker.endOfSegment();
      // An undo after the engine's move takes that move back, not the user's;
      // a take-back with no engine move must show the start position.
      ASSERT_EQ(problem, "") << "cancelled with " << cancel.lines << segment;
      if (checker.engineMoves() > movesBefore) ++finished;
    }
    session.send("quit\n");
    EXPECT_EQ(session.finish(), 0) << session.tail();
    EXPECT_EQ(malformedLines(session.output()), "");
    // Some searches ended on their own and played; the check above then had moves to follow.
    RecordProperty("finished_searches_" + std::to_string(cores), finished);
  }
}

TEST(ThreadStressTest, AnalysisFollowsTheMovesAndNeverPlays) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(4242);
  const std::vector<std::vector<std::string>> openings = {
      {"e2e4", "e7e5", "g1f3", "b8c6", "f1b5", "a7a6"},
      {"d2d4", "d7d5", "c2c4", "e7e6", "b1c3", "g8f6"},
      {"e2e4", "c7c5", "g1f3", "d7d6", "d2d4", "c5d4", "f3d4"},
      {"e2e4", "d7d5", "e4d5", "d8d5", "b1c3", "d5a5"},
  };
  for (int cores : coreCounts) {
    StressSession session(cores, dir.path());
    GameChecker checker;
    for (int cycle = 0; cycle < 60; ++cycle) {
      SCOPED_TRACE("cores " + std::to_string(cores) + ", cycle " + std::to_string(cycle));
      const std::vector<std::string>& line = openings[random() % openings.size()];
      size_t played = 1 + random() % line.size();
      session.send("new\nanalyze\n");
      for (size_t i = 0; i < played; ++i) {
        pause(random, 4000);
        session.send("usermove " + line[i] + "\n");
      }
      pause(random, 4000);
      // Take back one or two plies while the analysis runs, or leave the position.
      int takeBack = int(random() % 3);
      if (takeBack > int(played)) takeBack = 0;
      if (takeBack == 1) session.send("undo\n");
      if (takeBack == 2) session.send("remove\n");
      pause(random, 4000);
      session.send("exit\n");
      checker.expectTakeBack(takeBack);
      std::string segment;
      ASSERT_EQ(session.fence(segment), "") << session.tail();
      ASSERT_EQ(checker.feed(segment), "") << segment;
      ASSERT_EQ(checker.endOfSegment(), "") << segment;
      ASSERT_EQ(countLinesStartingWith(segment, "move "), 0u) << segment;
      ASSERT_EQ(segment.find("Error ("), std::string::npos) << segment;
    }
    // Quit while analysing.
    session.send("analyze\n");
    pause(random, 4000);
    session.send("quit\n");
    EXPECT_EQ(session.finish(), 0) << session.tail();
    EXPECT_EQ(countLinesStartingWith(session.output(), "move "), 0u);
    EXPECT_EQ(malformedLines(session.output()), "");
  }
}

TEST(ThreadStressTest, PingIsAnsweredDuringASearch) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(99);
  for (int cores : coreCounts) {
    SCOPED_TRACE("cores " + std::to_string(cores));
    EngineSession engine({}, dir.path());
    engine.send("xboard\ncores " + std::to_string(cores) + "\nnew\n" + longLevel + "\nusermove e2e4\n");
    int ping = 0;
    for (int round = 0; round < 2; ++round) {
      // Pings in quick succession while the engine thinks, then in analysis.
      for (int i = 0; i < 40; ++i) {
        pause(random, 2000);
        engine.send("ping " + std::to_string(++ping) + "\n");
      }
      ASSERT_EQ(awaitPong(engine, ping), "");
      if (round == 0) engine.send("analyze\n");
    }
    // Every ping answered once, on a line of its own and in order; the search
    // went on meanwhile.
    ASSERT_EQ(malformedLines(engine.output()), "") << "output lines cut into each other";
    size_t at = 0;
    for (int i = 1; i <= ping; ++i) {
      std::string pong = "\npong " + std::to_string(i) + "\n";
      size_t found = engine.output().find(pong, at);
      ASSERT_NE(found, std::string::npos) << pong << engine.output();
      EXPECT_EQ(engine.output().find(pong, found + 1), std::string::npos) << "twice: " << pong;
      at = found + 1;
    }
    EXPECT_EQ(countLinesStartingWith(engine.output(), "move "), 0u);
    engine.send("exit\nquit\n");
    EXPECT_EQ(engine.finish(hangSeconds), 0);
  }
}

TEST(ThreadStressTest, QuitAndEndOfInputInTheMiddleOfASearch) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(1234);
  for (int cores : coreCounts) {
    const std::vector<std::string> args = {"-cores", std::to_string(cores)};
    for (int round = 0; round < 15; ++round) {
      SCOPED_TRACE("cores " + std::to_string(cores) + ", round " + std::to_string(round));
      // All input at once: the search is cancelled before or just after it starts.
      EngineRun run = runEngine("xboard\nnew\n" + longLevel + "\nusermove e2e4\nquit\n", args, dir.path(), hangSeconds);
      ASSERT_EQ(run.exitStatus, 0) << run.output;
      EXPECT_EQ(countLinesStartingWith(run.output, "move "), 0u) << run.output;

      // End of input while analysing: the analysis is stopped, no move.
      run = runEngine(round % 2 ? "xboard\nanalyze\n" : "xboard\nanalyze\nusermove e2e4\n", args, dir.path(),
                      hangSeconds);
      ASSERT_EQ(run.exitStatus, 0) << run.output;
      EXPECT_EQ(countLinesStartingWith(run.output, "move "), 0u) << run.output;
      EXPECT_EQ(malformedLines(run.output), "");

      // The same with the search well under way.
      {
        EngineSession engine(args, dir.path());
        engine.send(round % 2 ? "xboard\nnew\n" + longLevel + "\nusermove e2e4\n" : "xboard\nanalyze\n");
        pause(random, 30000);
        if (round % 2) engine.send("quit\n");
        ASSERT_EQ(engine.finish(hangSeconds), 0) << engine.output();
        EXPECT_EQ(countLinesStartingWith(engine.output(), "move "), 0u) << engine.output();
        EXPECT_EQ(malformedLines(engine.output()), "");
      }

      // End of input during a search with a limit: it ends by that limit,
      // plays its move once, and the engine exits.
      if (round < 3) {
        const std::string limit = round == 0 ? "sd 5" : "level 40 0:10 0";
        run = runEngine("xboard\nnew\n" + limit + "\nusermove e2e4\n", args, dir.path(), hangSeconds);
        ASSERT_EQ(run.exitStatus, 0) << run.output;
        ASSERT_EQ(countLinesStartingWith(run.output, "move "), 1u) << run.output;
        GameChecker checker;
        EXPECT_EQ(checker.feed(run.output), "") << run.output;
        EXPECT_EQ(malformedLines(run.output), "");
      }
    }
  }
}

// The engine's answer to 1. e4, with the engine on Black, at several core
// counts and with the thread count changed between searches, also while one runs.
TEST(ThreadStressTest, EngineMovesAgreeWithTheBoardWhileTheThreadCountChanges) {
  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  std::mt19937 random(5150);
  StressSession session(1, dir.path());
  GameChecker checker;
  for (int cycle = 0; cycle < 30; ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    int cores = coreCounts[random() % std::size(coreCounts)];
    session.send("new\ncores " + std::to_string(cores) + "\nsd " + std::to_string(3 + cycle % 4) +
                 "\nusermove e2e4\n");
    pause(random, 5000);
    // A change of thread count during the search applies to the next one.
    session.send("cores " + std::to_string(coreCounts[random() % std::size(coreCounts)]) + "\n");
    // Wait for the move: nothing cancels this search.
    int moves = checker.engineMoves();
    std::string segment;
    ASSERT_EQ(session.fence(segment), "") << session.tail();
    ASSERT_EQ(checker.feed(segment), "") << segment;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(hangSeconds);
    while (checker.engineMoves() == moves && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      ASSERT_EQ(session.fence(segment), "") << session.tail();
      ASSERT_EQ(checker.feed(segment), "") << segment;
    }
    ASSERT_EQ(checker.engineMoves(), moves + 1) << "no move after a depth-limited search\n" << session.tail();
  }
  session.send("quit\n");
  EXPECT_EQ(session.finish(), 0) << session.tail();
  EXPECT_EQ(countLinesStartingWith(session.output(), "move "), 30u);
  EXPECT_EQ(malformedLines(session.output()), "");
}

}  // namespace
