// Settings from tolva.ini and from `option`, and a game that opens from a real
// PolyGlot book, through the real binary.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

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
  std::ofstream(dir + "/tolva.ini") << "numberOfCores = zero\n"
                                       "numberOfCores = 4\n"
                                       "ttHashSizeMB = 0\n"
                                       "  # ttHashSizeMB = 2\n"
                                       "Foo = 1\n[section]\nno equals sign\n"
                                       "gtbCacheSizeMB=-1\r\n"
                                       "gtbCacheSizeMB = 0   \n"
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
  EXPECT_NE(run.output.find(featureOptions("0", "/tb dir", "")), std::string::npos) << run.output;
  std::remove((dir + "/tolva.ini").c_str());
  rmdir(dir.c_str());
}

TEST(SettingsTest, OptionSetsPrintsOrRefuses) {
  const struct {
    const char* line;
    const char* reply;
  } cases[] = {
      {"option ttHashSizeMB=16", "# setting option: ttHashSizeMB=16\n"},
      {"option pawnHashSizeMB=4x", "# setting option: pawnHashSizeMB=4\n"},
      {"option gtbCacheSizeMB=0", "# setting option: gtbCacheSizeMB=0\n"},
      {"option gtbPath=/a;/b", "# setting option: gtbPath=/a;/b\n"},
      {"option bookFilePath=my.bin=x", "# setting option: bookFilePath=my.bin\n"},
      {"option ttHashSizeMB=abc", "Error (illegal value for 'ttHashSizeMB' option): abc\n"},
      {"option pawnHashSizeMB=0", "Error (illegal value for 'pawnHashSizeMB' option): 0\n"},
      {"option ttHashSizeMB=1048577", "Error (illegal value for 'ttHashSizeMB' option): 1048577\n"},
      {"option gtbCacheSizeMB=-1", "Error (illegal value for 'gtbCacheSizeMB' option): -1\n"},
      {"option ttHashSizeMB", "Error (illegal value for 'ttHashSizeMB' option): \n"},
      {"option foo=1", "Error (unknown option name): foo\n"},
      {"option gtbPath=C:/a b", "Error (too many arguments, expected at most 1): option gtbPath=C:/a b\n"},
      {"cores 0", ""},
  };
  std::string input;
  for (const auto& c : cases) input += std::string(c.line) + "\n";
  std::vector<std::string> out = repliesTo(input + "protover 2\n");
  ASSERT_EQ(out.size(), std::size(cases) + 1);
  for (size_t i = 0; i < std::size(cases); ++i) {
    std::string expected = cases[i].reply;
    if (expected.empty() || expected.rfind("Error", 0) == 0)
      expected += "# command \"" + std::string(cases[i].line) + "\" returned an error code \n";
    EXPECT_EQ(out[i], expected);
  }
  // The sizes are applied by the next set-up, and the options show the new values.
  EXPECT_NE(out.back().find("# new size of TT hash: 16 MB\n# new size of Pawn hash: 4 MB\n"), std::string::npos);
  EXPECT_NE(out.back().find(featureOptions("0", "/a;/b", "my.bin")), std::string::npos) << out.back();
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
