// Start-up text, the command loop's parsing and its error lines, through the real binary.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "protocol/engine_process.h"

namespace {

const std::string prompt = "# Your move: ";

std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }
std::string missingArgs(unsigned n, const std::string& line) {
  return "Error (missing arguments, expected at least " + std::to_string(n) + "): " + line + "\n";
}
std::string tooManyArgs(unsigned n, const std::string& line) {
  return "Error (too many arguments, expected at most " + std::to_string(n) + "): " + line + "\n";
}

TEST(StartupTest, BannerSizesBoardAndPromptThenQuit) {
  EngineRun run = runEngine("quit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt);
}

TEST(StartupTest, EndOfInputExitsWithStatusZero) {
  EngineRun run = runEngine("");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt);
  // A last line without a line feed is still a command.
  run = runEngine("quit");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt);
}

TEST(StartupTest, PromptOnlyOutsideXboardMode) {
  EngineRun run = runEngine("\nxboard\n\nforce\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt + prompt + "\n");
}

TEST(StartupTest, CommandLineWarnings) {
  unsigned max = std::thread::hardware_concurrency();
  if (max == 0) max = 1;
  const std::string head =
      "# Tolva 0.7.0\n# a chess engine for the xboard protocol; type 'quit' to leave\n# \nfeature done=0\n";
  const std::string tail = "# new size of TT hash: 256 MB\n# new size of Pawn hash: 32 MB\n" + startBoardDiagram() + prompt;

  EngineRun run = runEngine("quit\n", {"-cores", "0"});
  EXPECT_EQ(run.output,
            head + "# warning: found bad argument \"0\" for command line option \"-cores\", must be a positive number\n" +
                tail);
  run = runEngine("quit\n", {"-cores", "two"});
  EXPECT_EQ(run.output,
            head + "# warning: found bad argument \"0\" for command line option \"-cores\", must be a positive number\n" +
                tail);
  run = runEngine("quit\n", {"-cores", "-3"});
  EXPECT_EQ(run.output,
            head + "# warning: found bad argument \"-3\" for command line option \"-cores\", must be a positive number\n" +
                tail);
  run = runEngine("quit\n", {"-cores"});
  EXPECT_EQ(run.output, head + "# warning: missing argument for command line option \"-cores\"\n" + tail);

  run = runEngine("quit\n", {"-foo", "-cores", "2", "bar"});
  unsigned used = max < 2 ? max : 2;
  EXPECT_EQ(run.output, head + "# warning: found unknown command line option \"-foo\"\n" + "# will now use " +
                            std::to_string(used) + " cores (requested=2, current=0, max=" + std::to_string(max) +
                            ")\n# warning: found unknown command line option \"bar\"\n" + tail);
  EXPECT_EQ(run.exitStatus, 0);
}

TEST(CommandLoopTest, ArgumentCountErrors) {
  EngineRun run = runEngine(
      "protover\nprotover 2 3\nlevel 40 5 0 1\nsetboard 8/8/8/8/8/8/8/K1k5 w\ntune\ntune x\ntune x y\ntune x y z\n"
      "usermove  e2e4\nping\nquit 1\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup() + prompt;
  auto fails = [&](const std::string& message, const std::string& line) {
    expected += message + commandError(line) + prompt;
  };
  fails(missingArgs(1, "protover"), "protover");
  fails(tooManyArgs(1, "protover 2 3"), "protover 2 3");
  fails(tooManyArgs(3, "level 40 5 0 1"), "level 40 5 0 1");
  fails(missingArgs(4, "setboard 8/8/8/8/8/8/8/K1k5 w"), "setboard 8/8/8/8/8/8/8/K1k5 w");
  fails(missingArgs(1, "tune"), "tune");
  expected += prompt + prompt;  // tune x, tune x y succeed silently
  fails(tooManyArgs(2, "tune x y z"), "tune x y z");
  // Two blanks make an empty argument.
  fails(tooManyArgs(1, "usermove  e2e4"), "usermove  e2e4");
  fails(missingArgs(1, "ping"), "ping");
  fails(tooManyArgs(0, "quit 1"), "quit 1");
  EXPECT_EQ(run.output, expected);
}

TEST(CommandLoopTest, HandlerFailureGivesOnlyTheLoopLine) {
  EngineRun run = runEngine("auto 1\nquit\n");
  EXPECT_EQ(run.output, expectedStartup() + prompt + commandError("auto 1") + prompt);
}

TEST(CommandLoopTest, UnknownWordsAndEmptyLinesAreDropped) {
  EngineRun run = runEngine(
      "QUIT\ne2e4\nusermove\t e2e4\n quit\nhello world\n\n   \n\r\n\t\n\t \nst 10\ncomputer\nquit   \n");
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup();
  for (int i = 0; i < 13; ++i) expected += prompt;
  EXPECT_EQ(run.output, expected);
}

TEST(CommandLoopTest, LineEndingsAreTrimmedInOrder) {
  // CR LF and trailing blanks go; a blank before the CR stays and so does a tab.
  EngineRun run = runEngine("tune x \r\nprotover \r\nprotover\t\r\nquit\r\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt + prompt + missingArgs(1, "protover") + commandError("protover") +
                            prompt + prompt);
}

TEST(CommandLoopTest, LongLineIsReadAsSeveralLines) {
  // 1023 characters make the first line; the rest, "protover 1 2", the second.
  std::string line = std::string(1023, 'x') + "protover 1 2";
  std::string longLine = std::string(2000, 'y');
  EngineRun run = runEngine(line + "\n" + longLine + "\nquit\n");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.output, expectedStartup() + prompt + prompt + tooManyArgs(1, "protover 1 2") +
                            commandError("protover 1 2") + prompt + prompt + prompt);
}

TEST(CommandLoopTest, BinaryAndNulBytesNeverStopTheLoop) {
  std::string input = "\x01\x02\xff\xfe garbage\n";
  input += std::string("qu\0it\n", 6);
  input += std::string("\0\0\0\n", 4);
  input += "\x7f\x1b[A\n";
  input += "quit\n";
  EngineRun run = runEngine(input);
  EXPECT_EQ(run.exitStatus, 0);
  std::string expected = expectedStartup();
  for (int i = 0; i < 5; ++i) expected += prompt;
  EXPECT_EQ(run.output, expected);
}

TEST(CommandLoopTest, SetboardShowsThePositionAndSurvivesARefusal) {
  EngineRun run = runEngine(
      "setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 1\n"
      "setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 0\n"
      "setboard 4k3/8/8/8/4X3/8/8/4K2R w K - 0 1\n"
      "setboard 8/8/8/8/8/8/8/K1k5 b - - 17 40\n"
      "quit\n");
  EXPECT_EQ(run.exitStatus, 0);
  const std::string kr = "# ....k...\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ....K..R\n#\n";
  // A refused text leaves an empty board, never a half-filled one.
  const std::string cleared =
      "# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n#\n";
  const std::string kings = "# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# K.k.....\n#\n";
  std::string expected = expectedStartup() + prompt + kr + prompt;
  expected += commandError("setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 0") + cleared + prompt;
  expected += commandError("setboard 4k3/8/8/8/4X3/8/8/4K2R w K - 0 1") + cleared + prompt;
  // Two bare kings: the game is over as soon as the position stands.
  expected += "1/2-1/2 {Draw by insufficient material}\n" + kings + prompt;
  EXPECT_EQ(run.output, expected);
}

TEST(CommandLoopTest, PositionsWithoutKingsAreJudgedButNotPlayed) {
  const std::string empty = "# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n# ........\n";
  EngineRun run = runEngine("setboard 8/8/8/8/8/8/8/8 w - - 0 1\ngo\nsetboard 8/8/8/8/8/8/8/K7 w - - 0 1\nquit\n");
  const std::string warning =
      "# warning: this position can't be played: a side lacks its king or has too many pieces, "
      "a pawn stands on its first or last rank, or the side not to move is in check\n";
  EXPECT_EQ(run.output, expectedStartup() + prompt + warning + "1/2-1/2 {Stalemate}\n" + empty + "# ........\n#\n" +
                            prompt + "Error (cannot make a move at end of game)\n" +
                            commandError("go") + prompt + warning + "1/2-1/2 {Draw by insufficient material}\n" +
                            empty + "# K.......\n#\n" + prompt);
}

}  // namespace
