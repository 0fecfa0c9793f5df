// Searches through the real binary, each from one input that ends where the
// engine is left to finish: what it prints while it thinks, the move it plays
// or doesn't, and what decides where a move comes from (book, random mode,
// tablebases). Every line must be one the host can parse.
#include "protocol/transcript.h"

namespace {

const std::string gtb4 = "/usr/share/gaviotatb/gtb4";
const std::string book = "option bookFilePath=" TOLVA_TEST_DATA_DIR "/performance.bin\n";
const std::string thinking = "\n[0-9]+ -?[0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+\t";
const std::string mateScore = "\n[0-9]+ 319[0-9][0-9] ";
const std::string kqk = "setboard 8/8/8/4k3/8/8/8/KQ6 w - - 0 1\nsd 4\npost\ngo\n";

TEST(GameTest, SearchesAndTheirOutput) {
  std::string tooLong = "xboard\nforce\n";
  const char* shuffle[4] = {"g1f3", "g8f6", "f3g1", "f6g8"};
  for (int i = 0; i < 1000; ++i) tooLong += std::string("usermove ") + shuffle[i % 4] + "\n";
  const struct {
    std::string input;
    int moves, errors;  // "move" lines and refused commands
    std::vector<std::string> present, absent;  // patterns
  } cases[] = {
      // Thinking lines, then the statistics, then the move, announced and played, and the board after it.
      {"xboard\nnobook\nforce\nsd 2\ngo\n", 1, 0,
       {thinking + "[a-h][1-8]", "\n# total nodes = [^\n]+\n# QS checks = 0\n# cutoffs = [^\n]+\n# qsCutoffs = [^\n]+\n"
        "# allCutoffs = [^\n]+\n# singularExtAttempts = [^\n]+\n(#[^\n]+\n)*# ttHashFull% = [^\n]+\n"
        "# pawnHashFull% = [^\n]+\n(#[^\n]+\n)*# making engine move: ([a-h][1-8][a-h][1-8])\nmove \\3\n"
        "(# ponder move: [a-h][1-8][a-h][1-8]\n)?(# [.pnbrqkPNBRQK]{8}\n){8}#\n$"},
       {"offer draw"}},
      {"xboard\nnobook\nforce\nsd 2\nnopost\ngo\n", 1, 0, {}, {thinking, "# total nodes"}},
      // After 1. e4 e5 it is White's move that the engine plays.
      {"xboard\nnopost\nsd 3\nforce\nusermove e2e4\nusermove e7e5\ngo\n", 1, 0, {"\nmove [a-h][12][a-h][1-8]\n"}, {}},
      // The engine plays White after playother, once Black has moved.
      {"xboard\nnopost\nsd 2\nforce\nusermove e2e4\nplayother\nusermove e7e5\n", 1, 0, {}, {}},
      // A mating move ends the game at once.
      {"xboard\nnobook\nsetboard k7/8/1K6/8/8/8/8/7R w - - 0 80\nsd 3\ngo\n", 1, 0,
       {"# making engine move: h1h8\nmove h1h8\n" + diagram({"k......R", "........", ".K......", "........", "........",
                                                           "........", "........", "........"}) +
        "1-0 \\{White wins by checkmate\\}\n$"}, {}},
      // Every legal move completes fifty moves: the draw offer comes before
      // it, and the claim is the host's.
      {"xboard\nnobook\nsetboard 4k3/8/8/8/8/8/8/R3K3 w - - 99 80\nsd 2\ngo\n", 1, 0,
       {"\noffer draw\n# making engine move: ([a-h][1-8][a-h][1-8])\nmove \\1\n"}, {"1/2-1/2"}},
      {"xboard\nnobook\nsetboard 4k3/8/8/8/8/8/8/R3K3 w - - 97 80\nsd 2\ngo\n", 1, 0, {}, {"offer draw"}},
      // exit only in analysis; analysis plays no move and follows user moves.
      {"xboard\nnopost\nexit\nanalyze\nanalyze\nusermove e2e4\nexit\nexit\nquit\n", 0, 2, {"# making user move: e2e4\n"}, {}},
      // End of input stops an analysis, but a timed search plays its move.
      {"xboard\nnopost\nanalyze\n", 0, 0, {}, {}},
      {"xboard\nnopost\nnew\nlevel 40 0:10 0\nusermove e2e4\n", 1, 0, {}, {}},
      // A king alone is accepted as text but is no game; `new` makes all normal again.
      {"xboard\nsetboard 8/8/8/8/8/8/8/K7 w - - 0 1\ngo\nnew\nforce\nusermove e2e4\nquit\n", 0, 1,
       {"# making user move: e2e4\n"}, {}},
      // A game that fills the record ends, and every move after that is refused.
      {tooLong + "go\nquit\n", 0, 41, {"\n1/2-1/2 \\{Game too long\\}\n"}, {}},
      // A search prints thinking lines, a book or random move none. A random
      // move comes before the book; `new` and `norandgame` end random mode,
      // `nobook` keeps the book closed until `book`.
      {"xboard\n" + book + "sd 3\ngo\n", 1, 0, {}, {thinking}},
      {"xboard\n" + book + "nobook\nsd 3\ngo\n", 1, 0, {thinking}, {}},
      {"xboard\nrandgame\nsd 3\ngo\n", 1, 0, {}, {thinking}},
      {"xboard\n" + book + "nobook\nrandgame\nsd 3\ngo\n", 1, 0, {}, {thinking}},
      {"xboard\nrandgame\nnorandgame\nsd 3\ngo\n", 1, 0, {thinking}, {}},
      // With tablebases KQK is a mate at once, found by probes; without them
      // the search runs its iterations.
      {"xboard\n" + kqk, 1, 0, {"\n4 -?[0-9]+ ", "tbHits = 0\n"}, {}},
      {"xboard\negtpath gaviota " + gtb4 + "\n" + kqk, 1, 0, {mateScore}, {"tbHits = 0\n"}},
      {"xboard\negtpath gaviota /nonexistent;;" + gtb4 + "\noption gtbCacheSizeMB=0\n" + kqk, 1, 0, {mateScore}, {"tbHits = 0\n"}},
      {"xboard\noption gtbPath=" + gtb4 + "\n" + kqk, 1, 0, {mateScore}, {"tbHits = 0\n"}},
      {"xboard\negtpath gaviota " + gtb4 + "\noption gtbPath=/nonexistent\n" + kqk, 1, 0, {"tbHits = 0\n"}, {mateScore}},
      // A refused type leaves the tables as they were.
      {"xboard\negtpath gaviota " + gtb4 + "\negtpath syzygy /tb\n" + kqk, 1, 1, {mateScore}, {"tbHits = 0\n"}},
      // A drawn pawn ending with tables: every line scores 0.
      {"xboard\negtpath gaviota " + gtb4 + "\nsetboard 8/8/8/8/8/4k3/4P3/4K3 w - - 0 1\nsd 4\npost\ngo\n", 1, 0,
       {thinking}, {"\n[0-9]+ -?[1-9][0-9]* [0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+\t"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input.substr(0, 300));
    EngineOutcome out = run(c.input);
    EXPECT_EQ(out.status(), 0);
    EXPECT_EQ(malformedLines(out.output), "");
    EXPECT_EQ(int(count(out.output, "\nmove ")), c.moves) << out.output;
    EXPECT_EQ(int(count(out.output, "\" returned an error code")), c.errors) << out.output;
    for (const std::string& p : c.present) EXPECT_TRUE(std::regex_search(out.output, std::regex(p))) << p << "\n" << out.output;
    for (const std::string& p : c.absent) EXPECT_FALSE(std::regex_search(out.output, std::regex(p))) << p << "\n" << out.output;
  }
}

}  // namespace
