// The diagnostic commands through the real binary: perft and divide reports,
// selftest, randgames, test and randpos.
#include <unistd.h>

#include <fstream>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "driver/chess_player.h"
#include "protocol/transcript.h"

namespace {

const std::string newGame = "# new size of TT hash: 256 MB\n# new size of Pawn hash: 32 MB\n" + startBoardDiagram();

std::string tempPath(const std::string& name) { return ::testing::TempDir() + "tolva_" + std::to_string(getpid()) + name; }

// Times and rates vary: the rate must follow from the time and the node
// count, then both are masked as "T" and "R". The fill of one entry among the
// sampled buckets (the root at depth 2) is masked as "F".
std::string maskTimes(const std::string& output) {
  static const std::regex report("Total nodes:  ([0-9]+)\n(# )?Time elapsed: ([0-9]+)\\.([0-9]{2}) s\n(# )?Nodes/second: ([0-9]+)\n");
  std::string masked;
  size_t last = 0;
  for (auto it = std::sregex_iterator(output.begin(), output.end(), report); it != std::sregex_iterator(); ++it) {
    const std::smatch& m = *it;
    const uint64_t centis = std::stoull(m[3]) * 100 + std::stoull(m[4]);
    EXPECT_EQ(std::stoull(m[6]), centis == 0 ? 0 : std::stoull(m[1]) * 100 / centis) << m.str();
    masked += output.substr(last, size_t(m.position()) - last) + "Total nodes:  " + m[1].str() + "\n" + m[2].str() +
              "Time elapsed: T s\n" + m[5].str() + "Nodes/second: R\n";
    last = size_t(m.position() + m.length());
  }
  return std::regex_replace(masked + output.substr(last), std::regex("Full%:  (0|0\\.00152588)\n(# perftHashHits:   0\n# Your move: b1a3)"),
                            "Full%:  F\n$2");
}

TEST(DiagnosticCommandsTest, PerftAndDivideReports) {
  auto perft = [](uint64_t leaves, uint64_t nodes, const std::string& fill) {
    return "# Total leaves: " + std::to_string(leaves) + "\n# Total nodes:  " + std::to_string(nodes) +
           "\n# Time elapsed: T s\n# Nodes/second: R\n# perftHashFull%:  " + fill + "\n# perftHashHits:   0\n";
  };
  auto divide = [](uint64_t leaves, uint64_t nodes, const std::string& fill) {
    return "Total leaves: " + std::to_string(leaves) + "\nTotal nodes:  " + std::to_string(nodes) +
           "\nTime elapsed: T s\nNodes/second: R\n# perftHashFull%:  " + fill + "\n";
  };
  const std::string table = "# new size of Perft hash: 64 MB\n";
  // The size line comes with the first command that runs; the fool's mate leaves no moves.
  expectTranscript({{"perft 0", commandError("perft 0")},
                    {"perft 1", table + perft(20, 1, "0")},
                    {"perft 2", perft(400, 21, "F")},
                    {"divide 1", "b1a3 1\nb1c3 1\ng1f3 1\ng1h3 1\na2a3 1\na2a4 1\nb2b3 1\nb2b4 1\nc2c3 1\nc2c4 1\nd2d3 1\n"
                                 "d2d4 1\ne2e3 1\ne2e4 1\nf2f3 1\nf2f4 1\ng2g3 1\ng2g4 1\nh2h3 1\nh2h4 1\n" + divide(20, 1, "0")},
                    {"setboard rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3",
                     "0-1 {Black wins by checkmate}\n" + diagram({"rnb.kbnr", "pppp.ppp", "........", "....p...", "......Pq",
                                                                   ".....P..", "PPPPP..P", "RNBQKBNR"})},
                    {"perft 1", perft(0, 1, "0")}, {"divide 2", divide(0, 1, "0")}},
                   {}, "", maskTimes);
}

// The self-test's 18 rows pass, its table is made once, and a new game begins after it.
TEST(DiagnosticCommandsTest, SelftestPassesAndStartsAfresh) {
  EngineOutcome out = run("xboard\nsetboard 8/8/8/8/8/8/8/K1k5 b - - 17 40\nperft 1\nselftest\ndivide 1\nquit\n", {}, "", 600);
  EXPECT_EQ(out.status(), 0);
  EXPECT_EQ(count(out.output, "# new size of Perft hash"), 1u);
  EXPECT_EQ(count(out.output, " passed: n="), 18u);
  const size_t summary = out.output.find("18 tests passed, 0 tests failed, 0 tests skipped, total 18 tests run:\n");
  ASSERT_NE(summary, std::string::npos) << out.output;
  EXPECT_TRUE(std::regex_search(out.output.substr(summary), std::regex("^[^\n]*\nn=[0-9]+, t=[0-9]+, lps=[0-9]+, nps=[0-9]+\n" +
                                                                            newGame + "b1a3 1\nb1c3 1\n")));
}

TEST(DiagnosticCommandsTest, RandgamesReportFormat) {
  std::vector<std::string> out = repliesTo("randgames 50\nrandgames 3\n");
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0].rfind("# Playing 50 random games ...\n" + std::string(50, '#') + "\ncalculate average values ...\n", 0), 0u);
  const std::string a = "[ 0-9]{2}[0-9]\\.[0-9]{2}", v = "[ 0-9]{2}[0-9]\\.[0-9]", row8 = v + "( " + v + "){7}\n";
  std::string p = "# Playing 3 random games \\.\\.\\.\n\ncalculate average values \\.\\.\\.\nTotal games: {33}3\nTotal positions: {20}[ 0-9]{10}\n";
  for (const char* label : {"moves", "captures", "promotions", "castlings", "ep captures", "double steps"})
    p += "Avg\\. " + std::string(label) + "/game: {" + std::to_string(25 - std::string(label).size()) + "}" + a + "\n";
  for (const char* label : {"moves of piece", "captures of piece", "promotions into piece"})
    p += "Avg\\. " + std::string(label) + "/game: {" + std::to_string(25 - std::string(label).size()) + "}" + a + "( " + a + "){5}\n";
  // Each side has exactly one king in every position.
  for (int c = 0; c < 2; ++c)
    for (int piece = 1; piece <= 6; ++piece)
      p += "Avg\\. presence of " + std::to_string(c) + " " + std::to_string(piece) + ":\n(" + row8 + "){8}" +
           (piece == 6 ? "\\[100\\.0\\]\n" : "\\[" + v + "\\]\n");
  for (const char* side : {"white", "black"})
    p += "Frequency of positions with given number of " + std::string(side) + " pieces:\n" + row8 + row8;
  p += "Game length:\n";
  for (int c = 0; c < 40; ++c) {
    char label[32];
    std::snprintf(label, sizeof label, "%4d \\.\\. %4d: ", 20 * c, 20 * c + 19);
    p += label + std::string("[ 0-9]{1,2}[0-9]\\.[0-9]{2}\n");
  }
  EXPECT_TRUE(std::regex_match(out[1], std::regex(p))) << out[1];
}

TEST(DiagnosticCommandsTest, FenFileLinesEachTriedThenNewGame) {
  const std::string good = "4k3/8/8/8/8/8/8/4K3 w - - 0 1", longLine = "8/8/8/8/8/8/8/8 w - - 0 1" + std::string(120, ' ') + "x";
  const std::string path = tempPath("fens.txt"), empty = tempPath("empty.txt");
  std::ofstream(path) << good << "\r\nnot a fen\n    \n" << longLine << "\n";
  std::ofstream{empty};
  auto tried = [](unsigned n, const std::string& line, bool ok) {
    return "Running test no. " + std::to_string(n) + " for FEN:\n" + line + "\n\n" + (ok ? "" : "# ERROR: illegal FEN: \"" + line + "\"\n") + "\n";
  };
  // A long line comes as a 127-byte piece and its rest; blanks are trimmed from both.
  expectTranscript({{"test " + path, tried(1, good, true) + tried(2, "not a fen", false) + tried(3, "", false) +
                                         tried(4, "8/8/8/8/8/8/8/8 w - - 0 1", true) + tried(5, std::string(18, ' ') + "x", false) + newGame},
                    {"test " + empty, newGame}, {"test", newGame}});
  std::remove(path.c_str());
  std::remove(empty.c_str());
}

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

// Each random position is legal, playable, written back unchanged, and set up without a warning.
TEST(DiagnosticCommandsTest, RandposWritesPlayablePositions) {
  const std::string path = tempPath("positions.fen");
  std::vector<std::string> out = repliesTo("randpos\nrandpos 1000 " + path + "\nrandpos 5\n");
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0], startBoardDiagram() + "\n");  // without a count: the board as it stands
  EXPECT_EQ(out[1], "Wrote 1000 random FENs to file \"" + path + "\"\n" + newGame);
  std::ifstream in(path);
  std::vector<std::string> fens;
  for (std::string line; std::getline(in, line);) fens.push_back(line);
  std::istringstream printed(out[2]);
  for (std::string line; fens.size() < 1005 && std::getline(printed, line);) fens.push_back(line);
  ASSERT_EQ(fens.size(), 1005u);
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  std::string input;
  for (const std::string& fen : fens) {
    ASSERT_TRUE(setupFromFen(*player.board, fen.c_str())) << fen;
    EXPECT_TRUE(player.hasPlayablePosition()) << fen;
    EXPECT_EQ(positionToFen(*player.board), fen);
    input += "setboard " + fen + "\n";
  }
  std::vector<std::string> setups = repliesTo(input);
  ASSERT_EQ(setups.size(), fens.size());
  for (const std::string& setup : setups) EXPECT_TRUE(setup.find("warning") + 1 == 0 && setup.find("rror") + 1 == 0) << setup;
  std::remove(path.c_str());
}

}  // namespace
