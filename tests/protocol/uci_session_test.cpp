// The UCI front end through the real binary: each row is the input after the
// host's `uci` and what the engine answers to it. Rows that search are
// patterns, the rest exact. The input ends without quit: a search with a
// limit of its own still answers, one that waits for stop is stopped.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <regex>
#include <string>
#include <thread>

#include "board/board_test_support.h"
#include "protocol/perft_suite.h"
#include "protocol/transcript.h"

namespace {

const std::string gtb4 = TOLVA_GAVIOTA_DIR "/gtb4";
const std::string book = TOLVA_TEST_DATA_DIR "/performance.bin";

std::string handshake(const std::string& hash = "256", const std::string& pawnHash = "32",
                      const std::string& ownBook = "true", const std::string& bookFile = "book.bin",
                      const std::string& multiPv = "1", const std::string& overhead = "10",
                      const std::string& ponder = "false", const std::string& chess960 = "false") {
  return "id name Tolva 0.7.0\nid author the Tolva developers\n"
         "option name Hash type spin default " + hash + " min 1 max 1048576\n"
         "option name Threads type spin default 1 min 1 max " + std::to_string(std::thread::hardware_concurrency()) +
         "\noption name PawnHash type spin default " + pawnHash + " min 1 max 1048576\n"
         "option name OwnBook type check default " + ownBook + "\n"
         "option name BookFile type string default " + bookFile + "\n"
         "option name GaviotaTbPath type string default C:/gtb\n"
         "option name GaviotaTbCache type spin default 16 min 0 max 1048576\n"
         "option name MultiPV type spin default " + multiPv + " min 1 max 256\n"
         "option name Move Overhead type spin default " + overhead + " min 0 max 5000\n"
         "option name Ponder type check default " + ponder + "\noption name Clear Hash type button\n"
         "option name UCI_Chess960 type check default " + chess960 + "\nuciok\n";
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
     "setoption name OwnBook value maybe\nsetoption name Pondering value true\nsetoption name GaviotaTbCache value -1\n"
     "setoption name GaviotaTbPath value " + std::string(256, 'x') + "\nsetoption\nsetoption name multipv value 3\n"
     "setoption name MultiPV value 257\nsetoption name move OVERHEAD value 250\n"
     "setoption name Move Overhead value -1\nsetoption name Ponder value True\nsetoption name Clear Hash\n"
     "setoption name uci_chess960 value TRUE\nuci\n",
     info("option Hash not changed: value '0' is not a number from 1 to 1048576") +
         info("option Threads not changed: value 'x' is not a number from 1 to " +
              std::to_string(std::thread::hardware_concurrency())) +
         info("option OwnBook not changed: value 'maybe' is neither true nor false") + info("unknown option Pondering") +
         info("option GaviotaTbCache not changed: value '-1' is not a number from 0 to 1048576") +
         info("option GaviotaTbPath not changed: the path is longer than 255 characters") +
         info("setoption ignored: no option name") +
         info("option MultiPV not changed: value '257' is not a number from 1 to 256") +
         info("option Move Overhead not changed: value '-1' is not a number from 0 to 5000") +
         handshake("16", "8", "false", "my book.bin", "3", "250", "true", "true"),
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
    {"Chess960: Shredder-FEN and X-FEN, castling as the king taking its rook",
     "position fen k3r3/8/8/8/8/6p1/6P1/5KRB w G - 0 1\nsetoption name UCI_Chess960 value true\n"
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1h1 e8a8 f1f8 d8f8\n"
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1 moves e1a1 e8h8 d1d8 f8d8\n"
     "position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1 moves e1g1\n"
     "position fen 4k3/8/8/8/8/8/8/4K3 w K - 0 1\n"
     "position fen k3r3/8/8/8/8/6p1/6P1/5KRB w G - 0 1\ngo depth 2\n",  // castling, king and rook trading squares, is the only move
     quoted(info(refused + "the board refuses the FEN 'k3r3/8/8/8/8/6p1/6P1/5KRB w G - 0 1'") +
            info(refused + "illegal move 'e1g1' (move 1 of the list)") +
            info(refused + "the board refuses the FEN '4k3/8/8/8/8/8/8/4K3 w K - 0 1': castling right 'K': no white rook "
                           "on the king side of rank 1")) + search("f1g1"),
     true},
    // The reference program's counts, in the order of divide; the same in X-FEN.
    {"go perft in Chess960",
     "setoption name UCI_Chess960 value true\nposition fen r1k1r3/8/8/8/8/8/8/R1K1R3 w EAea - 0 1\ngo perft 2\n"
     "position fen r1k1r3/8/8/8/8/8/8/R1K1R3 w KQkq - 0 1\ngo perft 2\n",
     [] {
       const std::string divide =
           "c1b1: 25\nc1c2: 25\nc1d1: 25\nc1b2: 25\nc1d2: 25\na1a2: 24\na1a3: 23\na1a4: 22\na1a5: 21\na1a6: 20\n"
           "a1a7: 16\na1a8: 3\na1b1: 23\ne1d1: 23\ne1e2: 24\ne1e3: 23\ne1e4: 22\ne1e5: 21\ne1e6: 20\ne1e7: 16\n"
           "e1e8: 3\ne1f1: 25\ne1g1: 25\ne1h1: 26\nc1a1: 23\n\nNodes searched: 528\n";
       return divide + divide;
     }(),
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
     "setoption name GaviotaTbPath value /x\nsetoption name clear hash\nstop\n", [] {
       // Thinking lines may come between the answers.
       std::string expected;
       for (const char* text : {"position ignored: a search is running; send stop first", "go ignored: a search is running",
                                "ucinewgame ignored: a search is running", "option GaviotaTbPath not changed during a search",
                                "option clear hash not changed during a search"})
         expected += "(info depth .*\n)*" + quoted(info(text));
       return expected + search();
     }(), true},
    {"go ponder, ponderhit", "go ponder wtime 300 btime 300\nponderhit\n", search(), true},
    {"mate and stalemate", "position fen k7/1Q6/1K6/8/8/8/8/8 b - - 0 1\ngo depth 3\n"
     "position fen k7/2Q5/1K6/8/8/8/8/8 b - - 0 1\ngo infinite\nisready\nstop\n", "info depth 0 score mate 0\n"
     "bestmove 0000\ninfo depth 0 score cp 0\nreadyok\nbestmove 0000\n", false},
    {"a book move with a clock", "setoption name BookFile value " + book + "\ngo wtime 9000 btime 9000\n",
     "bestmove " + uciMove + "\n", true},
    {"no book move for a depth", "setoption name BookFile value " + book + "\ngo depth 1\n", search(), true},
    {"go perft", "position fen 4k3/8/8/8/8/8/8/K6R w - - 0 1\ngo perft 2\ngo perft 0\ngo perft\nisready\n",
     "a1a2: 5\na1b1: 5\na1b2: 5\nh1g1: 5\nh1f1: 3\nh1e1: 4\nh1d1: 3\nh1c1: 5\nh1b1: 5\nh1h2: 5\nh1h3: 5\nh1h4: 5\n"
     "h1h5: 5\nh1h6: 5\nh1h7: 2\nh1h8: 3\n\nNodes searched: 70\n" + info("go refused: bad number for perft: 0") +
     info("go refused: missing number after perft") + "readyok\n", false},
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
  EngineOutcome out = run("uci\nsetoption name GaviotaTbPath value " + gtb4 +
                            "\nposition fen 8/8/8/4k3/8/8/8/KQ6 w - - 0 1\ngo depth 6\n");
  const std::string answer = out.output.substr(sessionStart.size());
  EXPECT_TRUE(std::regex_match(answer, std::regex(search(uciMove, "mate \\d+")))) << answer;
  EXPECT_TRUE(std::regex_search(answer, std::regex("tbhits [1-9]"))) << answer;
}

// `go perft` is divide in UCI's form, move for move, over the suite's
// positions: "m n" lines become "m: n", and the total comes behind a blank line.
TEST(UciProtocolTest, GoPerftCountsAsDivide) {
  std::string xboardInput = "xboard\n", uciInput = "uci\n", expected, line;
  std::vector<SuiteLine> suite = readSuite();
  for (const SuiteLine& p : suite) {
    xboardInput += "setboard " + p.fen + "\ndivide 2\n";
    uciInput += "position fen " + p.fen + "\ngo perft 2\n";
  }
  size_t position = 0;
  std::istringstream divide(run(xboardInput + "quit\n").output);
  static const std::regex moveLine("([a-h][1-8][a-h][1-8][nbrq]?) ([0-9]+)"), total("Total leaves: ([0-9]+)");
  for (std::smatch m; std::getline(divide, line);) {
    if (std::regex_match(line, m, moveLine)) expected += m[1].str() + ": " + m[2].str() + "\n";
    if (!std::regex_match(line, m, total)) continue;
    expected += "\nNodes searched: " + m[1].str() + "\n";
    ASSERT_LT(position, suite.size());
    EXPECT_EQ(std::stoull(m[1]), suite[position++].counts.at(1));
  }
  EXPECT_EQ(position, suite.size());
  const std::string perft = run(uciInput).output;
  EXPECT_EQ(perft.substr(perft.find("uciok\n") + 6), expected);
}

// perft960.epd through `go perft` with UCI_Chess960 on, in Shredder-FEN and
// in X-FEN: the reference program's counts, to depths of up to six million
// leaves (depth 5 of the starts, 4 of the middlegames). The deep run takes
// every depth.
TEST(UciProtocolTest, Chess960GoPerftMatchesTheReference) {
  std::string input = "uci\nsetoption name UCI_Chess960 value true\n";
  std::vector<uint64_t> expected;
  for (const SuiteLine& line : readSuite("perft960.epd")) {
    unsigned depth = 1;
    while (depth < line.counts.size() && line.counts[depth] <= 6'000'000) ++depth;
    for (const std::string& fen : {line.fen, toXFen(line.fen)}) {
      input += "position fen " + fen + "\ngo perft " + std::to_string(depth) + "\n";
      expected.push_back(line.counts[depth - 1]);
    }
  }
  ASSERT_EQ(expected.size(), 108u);
  const std::string output = run(input).output;
  std::vector<uint64_t> counted;
  static const std::regex total("\nNodes searched: ([0-9]+)\n");
  for (auto it = std::sregex_iterator(output.begin(), output.end(), total); it != std::sregex_iterator(); ++it)
    counted.push_back(std::stoull((*it)[1]));
  EXPECT_EQ(counted, expected);
  EXPECT_EQ(output.find("info string"), std::string::npos) << output;
}

// A session that answers one go at a time: each search ends before the next
// command is sent.
struct UciSession : Session {
  UciSession() { send("uci\n"); }
  // Sends the lines, the last a go, and returns what came up to its bestmove line.
  std::string answer(const std::string& lines) {
    const size_t from = output().size(), wanted = count(output(), "bestmove ") + 1;
    send(lines);
    for (int waited = 0; count(output(), "bestmove ") < wanted && waited < 60000; waited += 5) pause(5);
    const std::string text = output().substr(from);
    return text.substr(0, text.find('\n', text.find("bestmove ")) + 1);
  }
};

// The words of each line of `text` that begins with `prefix`.
std::vector<std::vector<std::string>> linesOf(const std::string& text, const std::string& prefix) {
  std::vector<std::vector<std::string>> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(prefix, 0) != 0) continue;
    std::istringstream words(line);
    lines.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
  }
  return lines;
}

// The words behind `key` on a line of words (to its end for "pv").
std::vector<std::string> after(const std::vector<std::string>& words, const std::string& key) {
  auto at = std::find(words.begin(), words.end(), key);
  return at == words.end() ? std::vector<std::string>() : std::vector<std::string>(at + 1, words.end());
}

// A score as a number that orders: mates beyond every centipawn score.
int scoreValue(const std::vector<std::string>& words) {
  const std::vector<std::string> score = after(words, "score");
  const int n = std::stoi(score.at(1));
  return score[0] == "cp" ? n : n > 0 ? 100000 - n : -100000 - n;
}

// The last line with a pv before the bestmove starts with the move, and its
// second move is the ponder move.
void expectSoundAnswer(const std::string& answer) {
  const auto pvs = linesOf(answer, "info depth"), best = linesOf(answer, "bestmove");
  ASSERT_EQ(best.size(), 1u) << answer;
  std::vector<std::string> last;
  for (const auto& words : pvs)
    if (!after(words, "pv").empty()) last = after(words, "pv");
  ASSERT_FALSE(last.empty()) << answer;
  EXPECT_EQ(last[0], best[0].at(1)) << answer;
  if (best[0].size() == 4) {
    EXPECT_EQ(last.at(1), best[0][3]) << answer;
  }
}

// At MultiPV 1 a fixed depth searches as it did before MultiPV and
// searchmoves came: every line's depth, nodes and move, as measured then.
TEST(UciProtocolTest, OneLineSearchesAsBefore) {
  const struct { std::string position, lines; } rows[] = {
      {"startpos", "1:2:e2e4 2:94:e2e4 3:192:e2e4 4:425:e2e4 5:1580:e2e4 6:4316:e2e4 7:12480:e2e4 7:13660:e2e4 "
                   "bestmove e2e4 ponder e7e5"},
      {"fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
       "1:491:e2a6 2:1111:e2a6 3:2314:e2a6 4:6806:e2a6 5:21190:e2a6 6:38059:e2a6 6:55604:d5e6 7:113176:d5e6 "
       "7:151733:d5e6 bestmove d5e6 ponder e7e6"},
      {"fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "1:22:b4f4 2:76:b4f4 3:294:b4f4 4:655:b4f4 4:994:b4c4 "
                                                        "5:2125:b4c4 6:3350:b4c4 7:5044:b4c4 7:6783:b4c4 bestmove b4c4 ponder h5c5"},
  };
  for (const auto& row : rows) {
    const std::string output = run("uci\nposition " + row.position + "\ngo depth 7\n").output;
    std::string lines;
    for (const auto& words : linesOf(output, "info depth"))
      lines += words.at(2) + ":" + after(words, "nodes").at(0) + ":" + after(words, "pv").at(0) + " ";
    lines += output.substr(output.find("bestmove"));
    EXPECT_EQ(lines, row.lines + "\n") << row.position;
  }
}

// Over the suite's positions: searchmoves keeps the root to its list (of one
// move, and of every other move), and MultiPV 3 shows three lines (fewer
// with fewer moves) of distinct first moves, best first, the first line's
// move the bestmove.
TEST(UciProtocolTest, SearchmovesAndMultiPvOverTheSuite) {
  const std::vector<SuiteLine> suite = readSuite();
  std::vector<std::vector<std::string>> legal;
  for (const SuiteLine& p : suite) {
    Board_0x88 b;
    setupFromFen(b, p.fen.c_str());
    const MoveList list = legalMoves(b);
    legal.emplace_back();
    for (uint32_t m = 0; m < list.count; ++m) legal.back().push_back(moveToString(list.moves[m].move));
  }
  UciSession engine;
  for (size_t i = 0; i < suite.size(); ++i) {
    SCOPED_TRACE(suite[i].fen);
    const std::string position = "position fen " + suite[i].fen + "\n";
    std::vector<std::string> everyOther;
    for (size_t m = i % 2; m < legal[i].size(); m += 2) everyOther.push_back(legal[i][m]);
    for (const std::vector<std::string>& listed : {std::vector<std::string>{legal[i][i % legal[i].size()]}, everyOther}) {
      std::string list;
      for (const std::string& move : listed) list += " " + move;
      const std::string answer = engine.answer(position + "go depth 2 searchmoves" + list + "\n");
      expectSoundAnswer(answer);
      for (const auto& words : linesOf(answer, "info depth"))
        EXPECT_NE(std::find(listed.begin(), listed.end(), after(words, "pv").at(0)), listed.end()) << answer;
    }
    if (i % 3 != 0) continue;
    const std::string answer = engine.answer("setoption name MultiPV value 3\n" + position + "go depth 3\n");
    engine.send("setoption name MultiPV value 1\n");
    std::vector<std::vector<std::string>> lines;
    for (const auto& words : linesOf(answer, "info depth 3 ")) lines.push_back(words);
    ASSERT_EQ(lines.size(), std::min<size_t>(3, legal[i].size())) << answer;
    for (size_t k = 0; k < lines.size(); ++k) {
      EXPECT_EQ(after(lines[k], "multipv").at(0), std::to_string(k + 1)) << answer;
      for (size_t j = 0; j < k; ++j) {
        EXPECT_NE(after(lines[k], "pv").at(0), after(lines[j], "pv").at(0)) << answer;
        EXPECT_GE(scoreValue(lines[j]), scoreValue(lines[k])) << answer;
      }
    }
    EXPECT_EQ(linesOf(answer, "bestmove").at(0).at(1), after(lines[0], "pv").at(0)) << answer;
  }
}

// A mate's line runs to the mate, for the side that mates and for the side
// mated: its length is the mate's distance, and the position at its end is mate.
TEST(UciProtocolTest, MateLinesReachTheMate) {
  const std::string positions[] = {
      "fen 2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",
      "fen 2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1 moves g3g6",
      "fen r2qkb1r/pp2nppp/3p4/2pNN1B1/2BnP3/3P4/PPP2PPP/R2bK2R w KQkq - 1 1",
      "fen 1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 0 1",
      "fen k7/8/2K5/8/8/8/8/1R6 w - - 0 1",
      "fen r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1",
      "fen r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1",
      "fen r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1 moves f6a6",
      "fen 6k1/6p1/6K1/8/8/8/8/7R w - - 0 1",
  };
  UciSession engine;
  for (const std::string& position : positions) {
    const std::string answer = engine.answer("position " + position + "\ngo depth 10\n");
    expectSoundAnswer(answer);
    std::vector<std::string> mateLine;
    for (const auto& words : linesOf(answer, "info depth"))
      if (after(words, "score").at(0) == "mate") mateLine = words;
    ASSERT_FALSE(mateLine.empty()) << answer;
    const int mate = std::stoi(after(mateLine, "mate").at(0));
    const std::vector<std::string> pv = after(mateLine, "pv");
    EXPECT_EQ(int(pv.size()), mate > 0 ? 2 * mate - 1 : -2 * mate) << answer;
    std::string moves = position.find(" moves ") == std::string::npos ? " moves" : "";
    for (const std::string& move : pv) moves += " " + move;
    EXPECT_EQ(engine.answer("position " + position + moves + "\ngo depth 1\n"), "info depth 0 score mate 0\nbestmove 0000\n")
        << answer;
  }
}

}  // namespace
