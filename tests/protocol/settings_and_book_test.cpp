// Settings from tolva.ini and from `option`, and a game that opens from a real
// PolyGlot book, through the real binary.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "board/fen.h"
#include "board/move_generation.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "driver/opening_book.h"
#include "driver/polyglot_key.h"
#include "protocol/engine_process.h"

namespace {

const std::string bookPath = TOLVA_TEST_DATA_DIR "/performance.bin";

// The option lines of protover; the hash sizes show their defaults always.
std::string featureOptions(const std::string& cache, const std::string& gtb, const std::string& book) {
  return "feature option=\"ttHashSizeMB -spin 256 1 1048576\"\n"
         "feature option=\"pawnHashSizeMB -spin 32 1 1048576\"\n"
         "feature option=\"gtbCacheSizeMB -spin " + cache + " 0 1048576\"\n" +
         "feature option=\"gtbPath -path " + gtb + "\"\n" + "feature option=\"bookFilePath -path " + book + "\"\n";
}

TEST(SettingsTest, IniFileLinesInOrderWithTheirWarnings) {
  std::string dir = ::testing::TempDir() + "tolva_ini_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0700);
  // Skipped without a word: no "=", unknown keys (a tab isn't a blank, so it
  // stays in the key), binary bytes, a key cut by a NUL byte. A line over
  // 1023 characters goes on as a line of its own.
  std::ofstream(dir + "/tolva.ini") << "numberOfCores = zero\n"
                                       "numberOfCores = 4\n"
                                       "ttHashSizeMB = 0\n"
                                       "  # ttHashSizeMB = 2\n"
                                       "Foo = 1\n[section]\nno equals sign\nttHashSizeMB\t= 5\n"
                                       "\x01\x02\xff=\xfe\n" + std::string("ttHash\0SizeMB = 3\n", 18) +
                                       "gtbCacheSizeMB=-1\r\n"
                                       "gtbCacheSizeMB = 0   \n" + std::string(1023, 'x') + "gtbCacheSizeMB = 7\n" +
                                       "gtbPath = \"/tb dir\"  \n"
                                       "pawnHashSizeMB =\t8\n"
                                       "ttHashSizeMB=64\n"
                                       "ttHashSizeMB = 1048577\n"
                                       "bookFilePath = \"\n";
  EngineRun run = runEngine("protover 2\nquit\n", {}, dir);
  unsigned max = std::thread::hardware_concurrency();
  std::string cores = std::to_string(4 < max ? 4 : max);
  EXPECT_EQ(run.output.substr(0, run.output.find("# Tolva")),
            "# WARNING: numberOfCores = zero out of range in ini file (min = 1)\n"
            "# will now use " + cores + " cores (requested=4, current=0, max=" + std::to_string(max) + ")\n"
            "# WARNING: ttHashSizeMB = 0 out of range in ini file (min = 1, max = 1048576)\n"
            "# WARNING: gtbCacheSizeMB = -1 out of range in ini file (min = 0, max = 1048576)\n"
            "# WARNING: ttHashSizeMB = 1048577 out of range in ini file (min = 1, max = 1048576)\n");
  EXPECT_NE(run.output.find("# new size of TT hash: 64 MB\n# new size of Pawn hash: 8 MB\n"), std::string::npos);
  EXPECT_NE(run.output.find(featureOptions("7", "/tb dir", "")), std::string::npos) << run.output;
  std::remove((dir + "/tolva.ini").c_str());
  rmdir(dir.c_str());
}

TEST(SettingsTest, OptionSetsPrintsOrRefuses) {
  unsigned max = std::thread::hardware_concurrency();
  const std::string cores = "# will now use " + std::to_string(3 < max ? 3 : max) + " cores (requested=3, current=1, max=" +
                            std::to_string(max) + ")\n";
  const std::string illegal = "Error (illegal value for '", unknown = "Error (unknown option name): ";
  const struct {
    std::string line, reply;
  } cases[] = {
      {"option ttHashSizeMB=1048576", "# setting option: ttHashSizeMB=1048576\n"},
      {"option ttHashSizeMB=16", "# setting option: ttHashSizeMB=16\n"},
      {"option pawnHashSizeMB=4x", "# setting option: pawnHashSizeMB=4\n"},
      {"option gtbCacheSizeMB=0", "# setting option: gtbCacheSizeMB=0\n"},
      // With no value a path is empty.
      {"option gtbPath", "# setting option: gtbPath=\n"},
      {"option gtbPath=/a;/b", "# setting option: gtbPath=/a;/b\n"},
      {"option bookFilePath=", "# setting option: bookFilePath=\n"},
      {"option bookFilePath=my.bin=x", "# setting option: bookFilePath=my.bin\n"},
      {"option ttHashSizeMB=abc", illegal + "ttHashSizeMB' option): abc\n"},
      {"option pawnHashSizeMB=0", illegal + "pawnHashSizeMB' option): 0\n"},
      {"option ttHashSizeMB=1048577", illegal + "ttHashSizeMB' option): 1048577\n"},
      {"option ttHashSizeMB=99999999999999999999", illegal + "ttHashSizeMB' option): 99999999999999999999\n"},
      {"option gtbCacheSizeMB=-1", illegal + "gtbCacheSizeMB' option): -1\n"},
      // With no value a size is illegal.
      {"option ttHashSizeMB", illegal + "ttHashSizeMB' option): \n"},
      {"option pawnHashSizeMB=", illegal + "pawnHashSizeMB' option): \n"},
      {"option gtbCacheSizeMB", illegal + "gtbCacheSizeMB' option): \n"},
      {"option foo=1", unknown + "foo\n"},
      {"option TTHASHSIZEMB=5", unknown + "TTHASHSIZEMB\n"},
      {"option =5", unknown + "\n"},
      {"option gtbPath=C:/a b", "Error (too many arguments, expected at most 1): option gtbPath=C:/a b\n"},
      {"option", "Error (missing arguments, expected at least 1): option\n"},
      {"cores 0", ""},
      {"cores x", ""},
      {"cores 3", cores},
  };
  std::string input;
  for (const auto& c : cases) input += c.line + "\n";
  std::vector<std::string> out = repliesTo(input + "protover 2\n");
  ASSERT_EQ(out.size(), std::size(cases) + 1);
  for (size_t i = 0; i < std::size(cases); ++i) {
    std::string expected = cases[i].reply;
    if (expected.empty() || expected.rfind("Error", 0) == 0) expected += "# command \"" + cases[i].line + "\" returned an error code \n";
    EXPECT_EQ(out[i], expected);
  }
  // The sizes are applied by the next set-up, and the options show the new values.
  EXPECT_NE(out.back().find("# new size of TT hash: 16 MB\n# new size of Pawn hash: 4 MB\n"), std::string::npos);
  EXPECT_NE(out.back().find(featureOptions("0", "/a;/b", "my.bin")), std::string::npos) << out.back();
}

// Sizes and cores sent while a search runs wait for the next set-up, before
// the next search.
TEST(SettingsTest, SizesSentDuringASearchApplyOnlyAfterIt) {
  EngineSession session;
  session.send("xboard\nnew\nanalyze\n");
  ASSERT_TRUE(session.waitFor("\n4 ", 60));
  const size_t sent = session.output().size();
  session.send("option ttHashSizeMB=16\noption pawnHashSizeMB=4\ncores 2\nping 1\n");
  ASSERT_TRUE(session.waitFor("pong 1\n", 30));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  session.send("ping 2\n");
  ASSERT_TRUE(session.waitFor("pong 2\n", 30));
  const std::string during = session.output().substr(sent);
  EXPECT_NE(during.find("# setting option: ttHashSizeMB=16\n"), std::string::npos) << during;
  EXPECT_EQ(during.find("# new size of"), std::string::npos) << during;
  const size_t stopped = session.output().size();
  session.send("exit\nsd 2\ngo\n");
  ASSERT_TRUE(session.waitFor("\nmove ", 60));
  session.send("quit\n");
  ASSERT_EQ(session.finish(30), 0);
  const std::string after = session.output().substr(stopped);
  const size_t sizes = after.find("# new size of TT hash: 16 MB\n# new size of Pawn hash: 4 MB\n");
  ASSERT_NE(sizes, std::string::npos) << after;
  EXPECT_LT(sizes, after.find("\nmove ")) << after;
}

// Where the first move of a `go` comes from: a search prints thinking lines
// (they begin with the depth), a book or random move none. A random move
// comes before the book; `new` and `norandgame` end random mode, `nobook`
// keeps the book closed until `book`.
TEST(OpeningBookGameTest, BookAndRandomModeDecideWithoutSearch) {
  const std::string useBook = "option bookFilePath=" + bookPath + "\n";
  const struct {
    std::string commands;
    bool searched;
  } cases[] = {
      {useBook, false},
      {useBook + "nobook\n", true},
      {useBook + "nobook\nbook\n", false},
      {"randgame\n", false},
      {useBook + "nobook\nrandgame\n", false},
      {"randgame\nnorandgame\n", true},
      {"randgame\nnew\n", true},
  };
  for (const auto& c : cases) {
    EngineRun run = runEngine("xboard\n" + c.commands + "sd 3\ngo\n");
    ASSERT_EQ(run.exitStatus, 0) << c.commands;
    const size_t move = run.output.find("\nmove ");
    ASSERT_NE(move, std::string::npos) << c.commands << run.output;
    bool thought = false;
    std::istringstream lines(run.output.substr(0, move));
    for (std::string line; std::getline(lines, line);) thought = thought || (!line.empty() && std::isdigit(line[0]));
    EXPECT_EQ(thought, c.searched) << c.commands << run.output;
  }
}

// The moves of the book for the position, read straight from the file.
std::vector<std::string> bookMovesOf(const Board_0x88& board) {
  std::vector<std::string> moves;
  std::ifstream in(bookPath, std::ios::binary);
  const uint64_t key = polyglotKey(board);
  unsigned char e[16];
  while (in.read(reinterpret_cast<char*>(e), 16)) {
    uint64_t k = 0;
    for (int i = 0; i < 8; ++i) k = k << 8 | e[i];
    if (k != key) continue;
    unsigned m = e[8] << 8 | e[9];
    std::string text{char('a' + (m >> 6 & 7)), char('1' + (m >> 9 & 7)), char('a' + (m & 7)), char('1' + (m >> 3 & 7))};
    // Castling is stored as the king taking its rook.
    if (text == "e1h1") text = "e1g1";
    if (text == "e1a1") text = "e1c1";
    if (text == "e8h8") text = "e8g8";
    if (text == "e8a8") text = "e8c8";
    moves.push_back(text);
  }
  return moves;
}

TEST(OpeningBookGameTest, FirstMovesComeFromTheBookWithoutSearch) {
  EngineSession session;
  session.send("option bookFilePath=" + bookPath + "\nnew\nlevel 40 5 0\npost\nauto\n");
  // The loop starts a search only after a line, so each ping lets auto play on.
  for (int i = 1; i <= 8; ++i) {
    session.send("ping " + std::to_string(i) + "\n");
    ASSERT_TRUE(session.waitFor("pong " + std::to_string(i) + "\n", 30));
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
  }
  session.send("force\nquit\n");
  ASSERT_EQ(session.finish(30), 0);

  // A move without search has no thinking line since the move before it. The
  // console prompt may land in front of any line, so it is cut out first.
  std::istringstream lines(session.output());
  std::string line;
  auto board = std::make_unique<Board_0x88>();
  setupFromFen(*board, startPositionFen);
  int bookMoves = 0;
  bool inBook = true, thought = false;
  const std::string prompt = "# Your move: ", making = "# making engine move: ";
  while (std::getline(lines, line)) {
    for (size_t at; (at = line.find(prompt)) != std::string::npos;) line.erase(at, prompt.size());
    if (!line.empty() && line[0] >= '0' && line[0] <= '9') thought = true;
    if (line.rfind(making, 0) != 0) continue;
    std::string move = line.substr(making.size());
    if (thought) inBook = false;
    thought = false;
    if (inBook) {
      std::vector<std::string> listed = bookMovesOf(*board);
      EXPECT_NE(std::find(listed.begin(), listed.end(), move), listed.end()) << move << " at move " << bookMoves;
      ++bookMoves;
    }
    MoveList legal;
    bool inCheck;
    generateLegalMoves(*board, legal, inCheck);
    Move played = NoMove;
    for (uint32_t i = 0; i < legal.count; ++i) {
      char text[8];
      moveToText(legal.moves[i].move, text);
      if (move == text) played = legal.moves[i].move;
    }
    ASSERT_NE(played, NoMove) << move;
    UndoRecord undo;
    makeMoveForSide(*board, played, undo);
  }
  EXPECT_GE(bookMoves, 4) << session.output();
}

}  // namespace
