// The protocol front end through the real binary: feature negotiation, ping,
// post, and user moves with every error, in force mode so that no search runs.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace {

const std::string prompt = "# Your move: ";

std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

const std::string featureLines =
    "feature ping=1\n"
    "feature setboard=1\n"
    "feature playother=1\n"
    "feature usermove=1\n"
    "feature colors=0\n"
    "feature sigint=0\n"
    "feature sigterm=0\n"
    "feature analyze=1\n"
    "feature name=0\n"
    "feature nps=0\n"
    "feature debug=1\n"
    "feature egt=\"gaviota\"\n"
    "feature smp=1\n"
    "feature variants=\"normal\"\n"
    "feature option=\"ttHashSizeMB -spin 256 1 1048576\"\n"
    "feature option=\"pawnHashSizeMB -spin 32 1 1048576\"\n"
    "feature option=\"gtbCacheSizeMB -spin 16 0 1048576\"\n"
    "feature option=\"gtbPath -path C:/gtb\"\n"
    "feature option=\"bookFilePath -path book.bin\"\n"
    "feature myname=\"Tolva 0.7.0\"\n";

// Start-up, then `xboard`: its empty line, and no prompt from then on.
std::string xboardStart() { return expectedStartup() + prompt + "\n"; }

// The diagram as printBoard draws it, from eight rows of eight characters, rank 8 first.
std::string diagram(const std::vector<std::string>& rows) {
  std::string text;
  for (const std::string& row : rows) text += "# " + row + "\n";
  return text + "#\n";
}

TEST(ProtocolCommandsTest, ProtoverPrintsTheFeaturesInOrder) {
  EngineRun run = runEngine("xboard\nprotover 2\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  // The sizes haven't changed since start-up, so no size line comes between.
  EXPECT_EQ(run.output, xboardStart() + featureLines + "feature done=1\n");

  // The argument's value isn't looked at; the lines come again each time.
  run = runEngine("protover 1\nprotover x\nquit\n");
  EXPECT_EQ(run.output, expectedStartup() + prompt + featureLines + "feature done=1\n" + prompt + featureLines +
                            "feature done=1\n" + prompt);
}

// Needs `option`: hash sizes changed since start-up are applied by protover,
// their size lines standing between the last feature and "feature done=1".
TEST(ProtocolCommandsTest, ProtoverAppliesChangedSizes) {
  EngineRun run = runEngine("xboard\noption ttHashSizeMB=16\noption pawnHashSizeMB=8\nprotover 2\nprotover 2\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, xboardStart() + "# setting option: ttHashSizeMB=16\n# setting option: pawnHashSizeMB=8\n" +
                            featureLines +
                            "# new size of TT hash: 16 MB\n# new size of Pawn hash: 8 MB\nfeature done=1\n" +
                            featureLines + "feature done=1\n");
}

TEST(ProtocolCommandsTest, PingAnswersWithTheNumber) {
  EngineRun run = runEngine("xboard\nping 7\nping x\nping -3\nping 12abc\nping 0007\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, xboardStart() + "pong 7\npong 0\npong -3\npong 12\npong 7\n");
}

TEST(ProtocolCommandsTest, PingDuringASearchAnswersAtOnce) {
  EngineSession session;
  session.send("xboard\nnobook\nanalyze\n");
  // The analysis runs without a limit; only the stop flag of a command ends it.
  ASSERT_TRUE(session.waitFor("\n1 ", 30)) << session.output();
  session.send("ping 7\n");
  ASSERT_TRUE(session.waitFor("pong 7\n", 10)) << session.output();
  session.send("quit\n");
  EXPECT_EQ(session.finish(30), 0);
}

TEST(ProtocolCommandsTest, UsermoveErrors) {
  EngineRun run = runEngine(
      "xboard\nforce\nusermove e2\nusermove e2e4qq\nusermove e2e5\nusermove e2e4e\nusermove i2i4\nusermove e7e5\n"
      "quit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = xboardStart();
  expected += "Error (illegal argument to 'usermove' command): e2\n" + commandError("usermove e2");
  expected += "Error (illegal argument to 'usermove' command): e2e4qq\n" + commandError("usermove e2e4qq");
  expected += "Error (illegal move): e2e5\n" + commandError("usermove e2e5");
  expected += "Error (illegal move): e2e4e\n" + commandError("usermove e2e4e");
  expected += "Error (illegal move): i2i4\n" + commandError("usermove i2i4");
  expected += "Error (illegal move): e7e5\n" + commandError("usermove e7e5");  // not White's pawn
  EXPECT_EQ(run.output, expected);
}

TEST(ProtocolCommandsTest, UsermoveFoldsFilesAndShowsTheTextAsSent) {
  EngineRun run = runEngine("xboard\nforce\nusermove E2E4\nusermove e7E5\nusermove G1f3\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = xboardStart();
  expected += "# making user move: E2E4\n" +
              diagram({"rnbqkbnr", "pppppppp", "........", "........", "....P...", "........", "PPPP.PPP", "RNBQKBNR"});
  expected += "# making user move: e7E5\n" +
              diagram({"rnbqkbnr", "pppp.ppp", "........", "....p...", "....P...", "........", "PPPP.PPP", "RNBQKBNR"});
  expected += "# making user move: G1f3\n" +
              diagram({"rnbqkbnr", "pppp.ppp", "........", "....p...", "....P...", ".....N..", "PPPP.PPP", "RNBQKB.R"});
  EXPECT_EQ(run.output, expected);
}

TEST(ProtocolCommandsTest, PromotionNeedsItsLetter) {
  const std::string before = "setboard k7/4P3/8/8/8/8/8/4K3 w - - 0 1\n";
  const std::string start = diagram({"k.......", "....P...", "........", "........", "........", "........",
                                     "........", "....K..."});
  const std::string queened = diagram({"k...Q...", "........", "........", "........", "........", "........",
                                       "........", "....K..."});
  EngineRun run = runEngine("xboard\n" + before + "usermove e7e8\nusermove e7e8x\nusermove e7e8Q\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, xboardStart() + start + "Error (illegal move): e7e8\n" + commandError("usermove e7e8") +
                            "Error (illegal move): e7e8x\n" + commandError("usermove e7e8x") +
                            "# making user move: e7e8Q\n" + queened);
  run = runEngine("xboard\n" + before + "usermove e7e8q\nquit\n");
  EXPECT_EQ(run.output, xboardStart() + start + "# making user move: e7e8q\n" + queened);
  const std::string knight = diagram({"k...N...", "........", "........", "........", "........", "........",
                                      "........", "....K..."});
  // A knight alone can't mate: the check after the move ends the game.
  run = runEngine("xboard\n" + before + "usermove e7e8N\nquit\n");
  EXPECT_EQ(run.output, xboardStart() + start + "# making user move: e7e8N\n" + knight +
                            "1/2-1/2 {Draw by insufficient material}\n");
}

TEST(ProtocolCommandsTest, MatingUsermoveEndsTheGameAtTheNextCheck) {
  EngineRun run = runEngine(
      "force\nusermove f2f3\nusermove e7e5\nusermove g2g4\nusermove d8h4\nusermove a2a3\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup() + prompt;
  expected += prompt;  // force
  expected += "# making user move: f2f3\n" +
              diagram({"rnbqkbnr", "pppppppp", "........", "........", "........", ".....P..", "PPPPP.PP", "RNBQKBNR"}) +
              prompt;
  expected += "# making user move: e7e5\n" +
              diagram({"rnbqkbnr", "pppp.ppp", "........", "....p...", "........", ".....P..", "PPPPP.PP", "RNBQKBNR"}) +
              prompt;
  expected += "# making user move: g2g4\n" +
              diagram({"rnbqkbnr", "pppp.ppp", "........", "....p...", "......P.", ".....P..", "PPPPP..P", "RNBQKBNR"}) +
              prompt;
  // The result comes after the move's board, before the next prompt.
  expected += "# making user move: d8h4\n" +
              diagram({"rnb.kbnr", "pppp.ppp", "........", "....p...", "......Pq", ".....P..", "PPPPP..P", "RNBQKBNR"}) +
              "0-1 {Black wins by checkmate}\n" + prompt;
  expected += "Error (cannot make a move at end of game)\n" + commandError("usermove a2a3") + prompt;
  EXPECT_EQ(run.output, expected);
}

TEST(ProtocolCommandsTest, PostGatesTheSearchOutput) {
  // A fixed depth of 2 in force mode: `go` makes the engine move for White.
  const std::regex thinking(R"(^\d+ -?\d+ \d+ \d+ \d+ \d+ \d+(\t[a-h][1-8][a-h][1-8][qrbn]?( [a-h][1-8][a-h][1-8][qrbn]?)*)?$)");
  const std::vector<std::string> blockStarts = {
      "# total nodes = ", "# QS checks = 0", "# cutoffs = ", "# qsCutoffs = ",
      "# allCutoffs = ",  "# singularExtAttempts = ", "# ttHashFull% = ", "# pawnHashFull% = "};

  EngineRun run = runEngine("xboard\nnobook\nforce\nsd 2\ngo\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::istringstream lines(run.output);
  std::string line;
  int thinkingLines = 0;
  size_t blockLine = 0;
  bool moved = false;
  while (std::getline(lines, line)) {
    if (std::regex_match(line, thinking)) {
      EXPECT_EQ(blockLine, 0u) << "thinking line after the statistics: " << line;
      ++thinkingLines;
    } else if (blockLine < blockStarts.size() && line.rfind(blockStarts[blockLine], 0) == 0) {
      ++blockLine;
    } else if (line.rfind("move ", 0) == 0) {
      EXPECT_EQ(blockLine, blockStarts.size()) << "the statistics come before the move";
      moved = true;
    }
  }
  EXPECT_GT(thinkingLines, 0) << run.output;
  EXPECT_EQ(blockLine, blockStarts.size()) << run.output;
  EXPECT_TRUE(moved) << run.output;

  run = runEngine("xboard\nnobook\nforce\nsd 2\nnopost\ngo\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::istringstream quiet(run.output);
  moved = false;
  while (std::getline(quiet, line)) {
    EXPECT_FALSE(std::regex_match(line, thinking)) << line;
    EXPECT_EQ(line.find("# total nodes"), std::string::npos) << line;
    if (line.rfind("move ", 0) == 0) moved = true;
  }
  EXPECT_TRUE(moved) << run.output;
}

TEST(ProtocolCommandsTest, EngineMoveIsAnnouncedPlayedAndShown) {
  EngineRun run = runEngine("xboard\nnobook\nforce\nsd 3\ngo\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::smatch found;
  const std::regex announced(
      "# making engine move: ([a-h][1-8][a-h][1-8])\nmove \\1\n(# ponder move: [a-h][1-8][a-h][1-8]\n)?"
      "((# [.pnbrqkPNBRQK]{8}\n){8}#\n)$");
  ASSERT_TRUE(std::regex_search(run.output, found, announced)) << run.output;
  // The board shown is the one after the move: the piece has left its square.
  const std::string move = found[1];
  const std::string board = found[3];
  const size_t fromRow = size_t('8' - move[1]), fromFile = size_t(move[0] - 'a');
  const size_t toRow = size_t('8' - move[3]), toFile = size_t(move[2] - 'a');
  EXPECT_EQ(board[fromRow * 11 + 2 + fromFile], '.') << board;
  EXPECT_NE(board[toRow * 11 + 2 + toFile], '.') << board;
  EXPECT_EQ(run.output.find("offer draw"), std::string::npos);
}

TEST(ProtocolCommandsTest, MatingEngineMoveEndsTheGameAtOnce) {
  EngineSession session;
  session.send("xboard\nnobook\nsetboard k7/8/1K6/8/8/8/8/7R w - - 0 80\nsd 3\ngo\n");
  const std::string mated = "# making engine move: h1h8\nmove h1h8\n" +
                            diagram({"k......R", "........", ".K......", "........", "........", "........",
                                     "........", "........"}) +
                            "1-0 {White wins by checkmate}\n";
  ASSERT_TRUE(session.waitFor(mated, 30)) << session.output();
  // The game is over: no more moves, and the result isn't printed again.
  session.send("usermove a8a7\nping 1\n");
  ASSERT_TRUE(session.waitFor("pong 1\n", 10)) << session.output();
  session.send("quit\n");
  EXPECT_EQ(session.finish(30), 0);
  const std::string& out = session.output();
  EXPECT_EQ(out.substr(out.find(mated) + mated.size()),
            "Error (cannot make a move at end of game)\n" + commandError("usermove a8a7") + "pong 1\n");
  EXPECT_EQ(out.find("offer draw"), std::string::npos);
}

TEST(ProtocolCommandsTest, DrawOfferStandsBeforeTheMoveThatCompletesFiftyMoves) {
  // Every legal move is a quiet rook or king move, so each brings the count to 100.
  EngineRun run = runEngine("xboard\nnobook\nsetboard 4k3/8/8/8/8/8/8/R3K3 w - - 99 80\nsd 2\ngo\n");
  EXPECT_EQ(run.exitStatus, 0);
  const std::regex offered("\noffer draw\n# making engine move: ([a-h][1-8][a-h][1-8])\nmove \\1\n");
  EXPECT_TRUE(std::regex_search(run.output, offered)) << run.output;
  // The game goes on: fifty moves are the host's to claim.
  EXPECT_EQ(run.output.find("1/2-1/2"), std::string::npos) << run.output;

  run = runEngine("xboard\nnobook\nsetboard 4k3/8/8/8/8/8/8/R3K3 w - - 97 80\nsd 2\ngo\n");
  EXPECT_NE(run.output.find("\nmove "), std::string::npos) << run.output;
  EXPECT_EQ(run.output.find("offer draw"), std::string::npos) << run.output;
}

}  // namespace
