// The UCI front end through the real binary: each row is the input after the
// host's `uci` and what the engine answers to it. Rows that search are
// patterns, the rest exact. The input ends without quit: a search with a
// limit of its own still answers, one that waits for stop is stopped.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <string>
#include <thread>

#include "protocol/transcript.h"

namespace {

const std::string gtb4 = TOLVA_GAVIOTA_DIR "/gtb4";
const std::string book = TOLVA_TEST_DATA_DIR "/performance.bin";

std::string handshake(const std::string& hash = "256", const std::string& pawnHash = "32",
                      const std::string& ownBook = "true", const std::string& bookFile = "book.bin") {
  return "id name Tolva 0.7.0\nid author the Tolva developers\n"
         "option name Hash type spin default " + hash + " min 1 max 1048576\n"
         "option name Threads type spin default 1 min 1 max " + std::to_string(std::thread::hardware_concurrency()) +
         "\noption name PawnHash type spin default " + pawnHash + " min 1 max 1048576\n"
         "option name OwnBook type check default " + ownBook + "\n"
         "option name BookFile type string default " + bookFile + "\n"
         "option name GaviotaTbPath type string default C:/gtb\n"
         "option name GaviotaTbCache type spin default 16 min 0 max 1048576\nuciok\n";
}

// Start-up and the prompt are as in the console; `uci` ends the prompt's line.
const std::string sessionStart = startup + prompt + "\n" + handshake();

std::string info(const std::string& text) { return "info string " + text + "\n"; }
std::string quoted(const std::string& text) { return std::regex_replace(text, std::regex(R"([.^$|()\[\]{}*+?\\])"), R"(\$&)"); }

const std::string uciMove = "[a-h][1-8][a-h][1-8][nbrq]?";
// Thinking lines, then the answer; `best` a pattern of the move.
std::string search(const std::string& best = uciMove, const std::string& score = "(cp|mate) -?\\d+") {
  return "(info depth \\d+ seldepth \\d+ score " + score + " nodes \\d+ nps \\d+ time \\d+ hashfull \\d+ tbhits \\d+( pv( " +
         uciMove + ")+)?\n)+bestmove " + best + "( ponder " + uciMove + ")?\n";
}

const std::string refused = "position refused, the last one stays: ";
const std::string forced = "position fen k7/8/8/8/8/8/1r6/K7 w - - 0 1\n";  // only a1b2 is legal

struct UciRow {
  const char* name;
  std::string input;
  std::string expected;
  bool pattern;
};

const UciRow rows[] = {
    {"isready", "isready\n", "readyok\n", false},
    {"unknown words skipped", "xyzzy\njoho isready\ndebug on\ndebug off\nregister later\n\n \t \nisready\n",
     "readyok\nreadyok\n", false},
    {"options set and shown",
     "setoption name Hash value 16\nsetoption name PAWNHASH value 8\nsetoption name OwnBook value false\n"
     "setoption name BookFile value my book.bin\nsetoption name Hash value 0\nsetoption name Threads value x\n"
     "setoption name OwnBook value maybe\nsetoption name Ponder value true\nsetoption name GaviotaTbCache value -1\n"
     "setoption name GaviotaTbPath value " + std::string(256, 'x') + "\nsetoption\nuci\n",
     info("option Hash not changed: value '0' is not a number from 1 to 1048576") +
         info("option Threads not changed: value 'x' is not a number from 1 to " +
              std::to_string(std::thread::hardware_concurrency())) +
         info("option OwnBook not changed: value 'maybe' is neither true nor false") + info("unknown option Ponder") +
         info("option GaviotaTbCache not changed: value '-1' is not a number from 0 to 1048576") +
         info("option GaviotaTbPath not changed: the path is longer than 255 characters") +
         info("setoption ignored: no option name") + handshake("16", "8", "false", "my book.bin"),
     false},
    {"moves: castling, en passant, promotion",
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1g1 e8c8 f1f8 d8f8\n"
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1c1 e8g8 d1d8 f8d8\n"
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1g1 e1f1\n"
     "position startpos moves e2e4 a7a6 e4e5 d7d5 e5d6 c7d6\n"
     "position startpos moves e2e4 a7a6 e4e5 d7d5 a2a3 a6a5 e5d6\n"
     "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves a7a8n h7g6 a8b6\n"
     "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves a7a8\n"
     "position fen 4k3/8/8/8/8/8/8/4K3 w KQ - 0 1\n",
     info(refused + "illegal move 'e1f1' (move 2 of the list)") + info(refused + "illegal move 'e5d6' (move 7 of the list)") +
         info(refused + "illegal move 'a7a8' (move 1 of the list)") +
         info("warning: castling rights without their king or rook at home dropped: KQ"),
     false},
    {"bad positions leave the last good one", forced + "position fen 8/8/8 w - - 0 1\nposition fen k7/8/8/8/8/8/8/8 w - - 0 1\n"
     "position startpos moves e2e5\nposition startpos e2e4\nposition\nposition fen\n"
     "position fen QQQQQQQQ/PPPPPPPP/8/8/8/8/pppppppp/Q3k2K w - - 0 1\ngo depth 3\n",
     quoted(info(refused + "the board refuses the FEN '8/8/8 w - - 0 1'") + info(refused +
         "the position can't be played: a side lacks its king or has too many pieces, a pawn stands on its first or "
         "last rank, or the side not to move is in check") + info(refused + "illegal move 'e2e5' (move 1 of the list)") +
         info(refused + "expected moves, found 'e2e4'") + info(refused + "expected startpos or fen") +
         info(refused + "the board refuses the FEN ''") +
         info(refused + "the board refuses the FEN 'QQQQQQQQ/PPPPPPPP/8/8/8/8/pppppppp/Q3k2K w - - 0 1'")) + search("a1b2"),
     true},
    {"broken go numbers", "go wtime abc\ngo depth\ngo depth 0\ngo nodes -5\ngo movetime 99999999999999999999\nisready\n",
     info("go refused: bad number for wtime: abc") + info("go refused: missing number after depth") +
         info("go refused: bad number for depth: 0") + info("go refused: bad number for nodes: -5") +
         info("go refused: bad number for movetime: 99999999999999999999") + "readyok\n",
     false},
    {"lines of any length or bytes", std::string(5000, 'x') + "\n\x01\xff\x7f isready\n" + std::string(1100000, 'p') +
     "\nisready\n", "readyok\n" + info("line ignored: longer than 1048576 characters") + "readyok\n", false},
    {"go depth", "position startpos moves e2e4 e7e5 g1f3\ngo depth 4\n", "(.*\n)*info depth 4 .*\n" + search(), true},
    {"go nodes", "go nodes 3000\n", search(), true},
    {"go movetime", "go movetime 200\n", search(), true},
    {"go with clocks and increments", "go wtime 1000 btime 1000 winc 10 binc 10\n", search(), true},
    {"go with the last moves before the control", "position startpos moves e2e4\ngo wtime 300 btime 1 movestogo 1\n",
     search(), true},
    {"go infinite: isready, then stop", "go infinite\nisready\nstop\nisready\n", "(info .*\n)*readyok\n" + search() + "readyok\n",
     true},
    {"a search refuses what would change it", "go infinite\nposition startpos\ngo depth 1\nucinewgame\n"
     "setoption name GaviotaTbPath value /x\nstop\n", "(info .*\n)*" + quoted(info("position ignored: a search is "
     "running; send stop first") + info("go ignored: a search is running") + info("ucinewgame ignored: a search is running") +
     info("option GaviotaTbPath not changed during a search")) + search(), true},
    {"go ponder, ponderhit", "go ponder wtime 300 btime 300\nponderhit\n", search(), true},
    {"mate and stalemate", "position fen k7/1Q6/1K6/8/8/8/8/8 b - - 0 1\ngo depth 3\n"
     "position fen k7/2Q5/1K6/8/8/8/8/8 b - - 0 1\ngo infinite\nisready\nstop\n", "info depth 0 score mate 0\n"
     "bestmove 0000\ninfo depth 0 score cp 0\nreadyok\nbestmove 0000\n", false},
    {"a book move with a clock", "setoption name BookFile value " + book + "\ngo wtime 9000 btime 9000\n",
     "bestmove " + uciMove + "\n", true},
    {"no book move for a depth", "setoption name BookFile value " + book + "\ngo depth 1\n", search(), true},
};

TEST(UciProtocolTest, SessionTranscripts) {
  for (const UciRow& row : rows) {
    SCOPED_TRACE(row.name);
    EngineOutcome out = run("uci\n" + row.input);
    EXPECT_EQ(out.status(), 0);
    ASSERT_EQ(out.output.substr(0, sessionStart.size()), sessionStart);
    const std::string answer = out.output.substr(sessionStart.size());
    if (row.pattern) EXPECT_TRUE(std::regex_match(answer, std::regex(row.expected))) << answer;
    else EXPECT_EQ(answer, row.expected);
  }
}

// A depth ends the search by itself: the input stays open, as a host keeps it.
TEST(UciProtocolTest, ADepthEndsTheSearchWithTheInputOpen) {
  Session engine;
  ASSERT_TRUE(engine.send("uci\ngo depth 1\n"));
  ASSERT_TRUE(engine.waitFor("bestmove ", 20)) << engine.output();
  EXPECT_EQ(engine.output().find("info depth 2 "), std::string::npos) << engine.output();
  EXPECT_EQ(engine.end(), 0);
}

TEST(UciProtocolTest, OnlyAFirstLineChoosesUci) {
  EngineOutcome out = run("xboard\nuci\nquit\n");
  EXPECT_EQ(out.output, startup + prompt + "\n");
}

TEST(UciProtocolTest, TablebaseScoresAreMates) {
  if (access(gtb4.c_str(), R_OK) != 0) GTEST_SKIP() << "no tablebases in " << gtb4;
  EngineOutcome out = run("uci\nsetoption name GaviotaTbPath value " + gtb4 +
                            "\nposition fen 8/8/8/4k3/8/8/8/KQ6 w - - 0 1\ngo depth 6\n");
  const std::string answer = out.output.substr(sessionStart.size());
  EXPECT_TRUE(std::regex_match(answer, std::regex(search(uciMove, "mate \\d+")))) << answer;
  EXPECT_TRUE(std::regex_search(answer, std::regex("tbhits [1-9]"))) << answer;
}

}  // namespace
