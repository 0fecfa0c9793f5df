// The search through its entry: mates, forced moves, draws, limits and determinism.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "search/time_control.h"
#include "search/search_thread.h"

namespace {

struct ReportedLine {
  uint32_t depth;
  int32_t score;
  std::vector<std::string> moves;
};

// Records what the search reports; time never runs out unless told to.
class RecordingInterface : public SearchInterface {
 public:
  bool isTimeUp() override {
    ++timeChecks;
    return stopAfterChecks != 0 && timeChecks >= stopAfterChecks;
  }
  void reportLine(uint32_t depth, int32_t score, const PvLine& line) override {
    ReportedLine r{depth, score, {}};
    for (uint16_t i = 0; i < line.length; ++i) r.moves.push_back(moveToString(line.moves[i]));
    lines.push_back(r);
  }
  void reportStatistics(uint32_t depth) override { statisticsDepths.push_back(depth); }

  uint64_t timeChecks = 0;
  uint64_t stopAfterChecks = 0;
  std::vector<ReportedLine> lines;
  std::vector<uint32_t> statisticsDepths;
};

struct SearchResult {
  Move best = NoMove;
  Move ponder = NoMove;
  std::string output;
  uint64_t nodes = 0;
};

class SearchRootTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    tt = std::make_unique<TTHashTable>("TT hash");
    tt->sizeFor(16);
    pawns = std::make_unique<PawnHash>();
    pawns->sizeFor(1);
    testing::internal::GetCapturedStdout();
    tc.timed = true;
    tc.maxTime = 1000000;
  }

  SearchResult search(const char* fen, uint32_t maxDepth = 0) {
    EXPECT_TRUE(setupFromFen(game, fen)) << fen;
    tc.depthLimited = maxDepth != 0;
    tc.maxDepth = maxDepth;
    tc.startClock();
    SearchThread thread(0, tt.get(), pawns.get(), nullptr, &tc, &ui);
    SearchResult r;
    testing::internal::CaptureStdout();
    thread.searchRootForSide(game, r.best, r.ponder);
    r.output = testing::internal::GetCapturedStdout();
    tc.stopClock();
    r.nodes = thread.stats.nodes.get();
    return r;
  }

  Board_0x88 game;
  TimeControl tc;
  RecordingInterface ui;
  std::unique_ptr<TTHashTable> tt;
  std::unique_ptr<PawnHash> pawns;
};

TEST_F(SearchRootTest, FindsMatesWithTheExactScore) {
  SearchResult r = search("6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1");
  EXPECT_EQ(moveToString(r.best), "a1a8");
  EXPECT_EQ(r.output, "# forced mate in 1 plies: a1a8\n");
  ASSERT_FALSE(ui.lines.empty());
  EXPECT_EQ(ui.lines.back().score, 31999);

  ui.lines.clear();
  r = search("k7/8/2K5/8/8/8/8/7R w - - 0 1");
  EXPECT_EQ(r.output.rfind("# forced mate in 3 plies: ", 0), 0u) << r.output;
  EXPECT_EQ(ui.lines.back().score, 31997);

  ui.lines.clear();
  r = search("2r3k1/p4p2/3Rp2p/1p2P1pK/8/1P4P1/P3Q2P/1q6 b - - 0 1");
  EXPECT_EQ(r.output, "# forced mate in 5 plies: b1g6\n");
  EXPECT_EQ(ui.lines.back().score, 31995);
  EXPECT_NE(r.ponder, NoMove);

  // A mate seen only in a later iteration lies above that iteration's ceiling:
  // no message then, but the mating move is kept and played.
  ui.lines.clear();
  r = search("r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1", 12);
  EXPECT_EQ(moveToString(r.best), "f8c5");
  EXPECT_EQ(ui.lines.back().score, 31995);
}

TEST_F(SearchRootTest, SideBeingMatedSeesIt) {
  // Whatever the knight does, the rook mates on the sixth ply.
  SearchResult r = search("kn6/8/1K6/8/8/8/8/7R b - - 0 1", 10);
  EXPECT_NE(r.best, NoMove);
  EXPECT_EQ(r.output.rfind("# getting mated in 6 plies: ", 0), 0u) << r.output;
  EXPECT_EQ(ui.lines.back().score, -31994);
}

TEST_F(SearchRootTest, LoneMoveIsForcedAtDepthOne) {
  // The rook covers the f-file and the king g7 and h7: only g8 is left.
  SearchResult r = search("7k/8/6K1/8/8/8/8/5R2 b - - 0 1");
  EXPECT_EQ(moveToString(r.best), "h8g8");
  EXPECT_EQ(r.output, "# forced move: h8g8\n");
  ASSERT_FALSE(ui.lines.empty());
  EXPECT_EQ(ui.lines.front().depth, 1u);
}

TEST_F(SearchRootTest, MateAndStalemateAtTheRootReportDepthZero) {
  SearchResult r = search("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1");  // mated
  EXPECT_EQ(r.best, NoMove);
  EXPECT_EQ(r.ponder, NoMove);
  EXPECT_EQ(r.output, "");
  ASSERT_EQ(ui.lines.size(), 1u);
  EXPECT_EQ(ui.lines[0].depth, 0u);
  EXPECT_EQ(ui.lines[0].score, -32000);
  EXPECT_TRUE(ui.lines[0].moves.empty());
  EXPECT_EQ(ui.statisticsDepths, std::vector<uint32_t>{0});

  ui.lines.clear();
  r = search("7k/5Q2/8/8/8/8/8/K7 b - - 0 1");  // stalemated
  EXPECT_EQ(r.best, NoMove);
  EXPECT_EQ(ui.lines.at(0).depth, 0u);
  EXPECT_EQ(ui.lines.at(0).score, -32000);
}

TEST_F(SearchRootTest, BareKingCanOnlyDraw) {
  // Taking the last black piece leaves two bare kings: a forced draw at the ceiling.
  SearchResult r = search("7k/8/8/8/3qK3/8/8/8 w - - 0 1");
  EXPECT_EQ(moveToString(r.best), "e4d4");
  EXPECT_EQ(r.output, "# forced draw: e4d4\n");
  for (const ReportedLine& l : ui.lines) EXPECT_LE(l.score, 0);
}

TEST_F(SearchRootTest, StalemateAndRepetitionScoreZero) {
  // A queen down, White gives its rook away or checks for ever: stalemate or repetition.
  SearchResult r = search("7k/8/8/8/8/6q1/8/5R1K w - - 0 1", 10);
  EXPECT_EQ(moveToString(r.best), "f1f8");
  EXPECT_EQ(ui.lines.back().score, 0);

  // A queen down again, but the knight can step back into a position of the game.
  ui.lines.clear();
  ASSERT_TRUE(setupFromFen(game, "7k/8/8/8/8/8/q7/6NK w - - 10 40"));
  const Move shuffle[4] = {encodeMove88(0x06, 0x25), encodeMove88(0x77, 0x76), encodeMove88(0x25, 0x06),
                           encodeMove88(0x76, 0x77)};
  UndoRecord undo[4];
  for (int i = 0; i < 4; ++i) {
    game.history[game.ply].movePlayed = shuffle[i];
    makeMoveForSide(game, shuffle[i], undo[i]);
  }
  tc.depthLimited = true;
  tc.maxDepth = 6;
  SearchThread thread(0, tt.get(), pawns.get(), nullptr, &tc, &ui);
  Move best, ponder;
  testing::internal::CaptureStdout();
  thread.searchRootForSide(game, best, ponder);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(moveToString(best), "g1f3");
  EXPECT_EQ(ui.lines.back().score, 0);
}

TEST_F(SearchRootTest, DepthLimitStopsAtItsDepth) {
  SearchResult r = search(startPositionFen, 4);
  EXPECT_NE(r.best, NoMove);
  EXPECT_EQ(r.output, "");
  ASSERT_FALSE(ui.lines.empty());
  for (const ReportedLine& l : ui.lines) EXPECT_LE(l.depth, 4u);
  EXPECT_EQ(ui.lines.back().depth, 4u);
  EXPECT_EQ(ui.statisticsDepths, std::vector<uint32_t>{4});
}

TEST_F(SearchRootTest, UntimedOrDiscardedSearchGivesNoMove) {
  tc.timed = false;
  SearchResult r = search(startPositionFen, 3);
  EXPECT_EQ(r.best, NoMove);
  EXPECT_EQ(r.ponder, NoMove);
  tc.timed = true;

  // Time running out in the first iteration still leaves the move of the first scoring.
  ui.stopAfterChecks = 5;
  r = search(startPositionFen);
  EXPECT_NE(r.best, NoMove);
}

TEST_F(SearchRootTest, FixedDepthIsDeterministic) {
  const char* fens[] = {startPositionFen, "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"};
  for (const char* fen : fens) {
    tt->clear();
    pawns->clear();
    SearchResult first = search(fen, 7);
    tt->clear();
    pawns->clear();
    SearchResult second = search(fen, 7);
    EXPECT_EQ(first.nodes, second.nodes) << fen;
    EXPECT_EQ(first.best, second.best) << fen;
    EXPECT_GT(first.nodes, 100u);
  }
}

}  // namespace
