// randgames, test and randpos through the real binary: report formats, the
// FEN file messages, the random positions, and the errors that leave the
// engine working.
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "driver/chess_player.h"
#include "protocol/engine_process.h"

namespace {

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string tempPath(const std::string& name) {
  return ::testing::TempDir() + "tolva_" + std::to_string(getpid()) + "_" + name;
}

std::string errorCode(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

TEST(RandomGamesCommandTest, ProgressMarksAndEveryReportLineInItsFormat) {
  std::vector<std::string> out = repliesTo("randgames 50\nrandgames 3\n");
  ASSERT_EQ(out.size(), 2u);
  const std::string head = "# Playing 50 random games ...\n" + std::string(50, '#') + "\ncalculate average values ...\n";
  EXPECT_EQ(out[0].substr(0, head.size()), head);

  const std::string v = "[ 0-9]{2}[0-9]\\.[0-9]";  // %5.1f
  const std::string a = "[ 0-9]{2}[0-9]\\.[0-9]{2}";  // %6.2f below 1000
  std::vector<std::string> patterns = {
      "# Playing 3 random games \\.\\.\\.", "", "calculate average values \\.\\.\\.",
      "Total games:                                 3", "Total positions:                    [ 0-9]{10}",
      "Avg\\. moves/game:                    " + a, "Avg\\. captures/game:                 " + a,
      "Avg\\. promotions/game:               " + a, "Avg\\. castlings/game:                " + a,
      "Avg\\. ep captures/game:              " + a, "Avg\\. double steps/game:             " + a};
  for (const char* label : {"moves of piece", "captures of piece", "promotions into piece"}) {
    std::string row = "Avg\\. " + std::string(label) + "/game:";
    row += std::string(36 - row.size() + 1, ' ') + a;  // labels fill 36 columns; "\\." counts one extra
    for (int i = 0; i < 5; ++i) row += " " + a;
    patterns.push_back(row);
  }
  for (int c = 0; c < 2; ++c)
    for (int piece = 1; piece <= 6; ++piece) {
      patterns.push_back("Avg\\. presence of " + std::to_string(c) + " " + std::to_string(piece) + ":");
      for (int rank = 0; rank < 8; ++rank) patterns.push_back(v + "( " + v + "){7}");
      // Each side has exactly one king in every position.
      patterns.push_back(piece == 6 ? "\\[100\\.0\\]" : "\\[" + v + "\\]");
    }
  for (const char* side : {"white", "black"}) {
    patterns.push_back("Frequency of positions with given number of " + std::string(side) + " pieces:");
    patterns.push_back(v + "( " + v + "){7}");
    patterns.push_back(v + "( " + v + "){7}");
  }
  patterns.push_back("Game length:");
  for (int c = 0; c < 40; ++c) {
    char label[32];
    std::snprintf(label, sizeof label, "%4d \\.\\. %4d: ", 20 * c, 20 * c + 19);
    patterns.push_back(label + std::string("[ 0-9]{1,2}[0-9]\\.[0-9]{2}"));
  }
  std::vector<std::string> lines = linesOf(out[1]);
  ASSERT_EQ(lines.size(), patterns.size());
  for (size_t i = 0; i < lines.size(); ++i)
    EXPECT_TRUE(std::regex_match(lines[i], std::regex(patterns[i]))) << "line " << i << ": " << lines[i] << " vs " << patterns[i];
}

TEST(FenFileCommandTest, EachLineTriedWithItsMessagesThenNew) {
  const std::string newText = repliesTo("new\n").at(0);
  const std::string good = "4k3/8/8/8/8/8/8/4K3 w - - 0 1";
  const std::string longLine = "8/8/8/8/8/8/8/8 w - - 0 1" + std::string(120, ' ') + "x";  // 146 bytes
  const std::string path = tempPath("fens.txt");
  std::ofstream(path) << good << "\r\n" << "not a fen\n" << "    \n" << longLine << "\n";
  const std::string empty = tempPath("empty.txt");
  std::ofstream{empty};

  std::vector<std::string> out = repliesTo("test " + path + "\ntest " + empty + "\ntest\ntest /nonexistent/x.fen\ntest /etc\n");
  ASSERT_EQ(out.size(), 5u);
  auto tried = [](unsigned n, const std::string& line, bool ok) {
    return "Running test no. " + std::to_string(n) + " for FEN:\n" + line + "\n\n" +
           (ok ? "" : "# ERROR: illegal FEN: \"" + line + "\"\n") + "\n";
  };
  // The long line comes as a 127-byte piece and its rest; blanks are trimmed from both.
  std::string firstPiece = longLine.substr(0, 127);
  while (firstPiece.back() == ' ') firstPiece.pop_back();
  std::string rest = longLine.substr(127);
  EXPECT_EQ(out[0], tried(1, good, true) + tried(2, "not a fen", false) + tried(3, "", false) +
                        tried(4, firstPiece, true) + tried(5, rest, false) + newText);
  EXPECT_EQ(out[1], newText);
  EXPECT_EQ(out[2], newText);
  EXPECT_EQ(out[3], "# ERROR: failed to open file \"/nonexistent/x.fen\" for reading\n" + errorCode("test /nonexistent/x.fen"));
  EXPECT_EQ(out[4], "# ERROR: failed to open file \"/etc\" for reading\n" + errorCode("test /etc"));
  std::remove(path.c_str());
  std::remove(empty.c_str());
}

TEST(RandomPositionsCommandTest, WritesLegalFensThatSetboardAccepts) {
  const std::string path = tempPath("positions.fen");
  const std::string newText = repliesTo("new\n").at(0);
  std::vector<std::string> out = repliesTo("randpos\nrandpos 1000 " + path + "\nrandpos 5\n");
  ASSERT_EQ(out.size(), 3u);
  // Without a count: the board as it stands and an empty line.
  EXPECT_EQ(out[0], startBoardDiagram() + "\n");
  EXPECT_EQ(out[1], "Wrote 1000 random FENs to file \"" + path + "\"\n" + newText);
  std::vector<std::string> stdoutLines = linesOf(out[2]);
  ASSERT_GT(stdoutLines.size(), 5u);
  EXPECT_EQ(out[2].substr(out[2].size() - newText.size()), newText);

  std::ifstream in(path);
  std::vector<std::string> fens;
  for (std::string line; std::getline(in, line);) fens.push_back(line);
  ASSERT_EQ(fens.size(), 1000u);
  for (int i = 0; i < 5; ++i) fens.push_back(stdoutLines[i]);
  // Each one sets up, is a position the engine can play, and is written back unchanged.
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  std::string input;
  for (const std::string& fen : fens) {
    EXPECT_TRUE(std::regex_match(fen, std::regex("([1-8pnbrqkPNBRQK]+/){7}[1-8pnbrqkPNBRQK]+ [wb] (-|K?Q?k?q?) (-|[a-h][36]) [0-9]+ [1-9][0-9]*"))) << fen;
    ASSERT_TRUE(setupFromFen(*player.board, fen.c_str())) << fen;
    EXPECT_TRUE(player.hasPlayablePosition()) << fen;
    EXPECT_EQ(positionToFen(*player.board), fen);
    input += "setboard " + fen + "\n";
  }
  // Every position sets up and can be played: no error, no warning.
  std::vector<std::string> setups = repliesTo(input);
  ASSERT_EQ(setups.size(), fens.size());
  for (size_t i = 0; i < setups.size(); ++i) EXPECT_EQ(setups[i].find("# warning"), std::string::npos) << fens[i];
  for (size_t i = 0; i < setups.size(); ++i) EXPECT_EQ(setups[i].find("error"), std::string::npos) << fens[i];
  std::remove(path.c_str());
}

TEST(DiagnosticCommandsTest, BadArgumentsGiveErrorsAndLeaveTheEngineWorking) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"randgames 0", ""},
      {"randgames -5", ""},
      {"randgames x", ""},
      {"randpos 0", ""},
      {"randpos 3 /nonexistent/dir/file", "# ERROR: failed to open file \"/nonexistent/dir/file\" for writing"},
  };
  std::string input;
  for (const auto& c : cases) input += c.first + "\n";
  std::vector<std::string> out = repliesTo(input + "ping 7\n");
  ASSERT_EQ(out.size(), cases.size() + 1);
  for (size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(out[i], cases[i].second + errorCode(cases[i].first));
  EXPECT_EQ(out.back(), "pong 7\n");
}

}  // namespace
