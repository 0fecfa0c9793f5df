// The search through its entry: mates, forced moves, draws, limits and determinism.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "driver/time_control.h"
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

  // From the FEN, or from the game as it stands.
  SearchResult search(const char* fen, uint32_t maxDepth = 0) {
    if (fen) {
      EXPECT_TRUE(setupFromFen(game, fen)) << fen;
    }
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

// Known results: mates with their exact scores and messages, forced moves,
// draws by stalemate, repetition and bare kings, mate and stalemate at the root.
TEST_F(SearchRootTest, KnownResults) {
  constexpr int32_t Any = 1 << 20;
  const struct {
    const char* what;
    const char* fen;
    std::vector<std::string> before;  // moves played first, part of the game
    uint32_t depth;                   // 0: until a result ends the search
    const char* best;                 // "" for none, "?" for any
    const char* output;               // the start of what is printed
    int32_t score;                    // of the last reported line
  } cases[] = {
      {"mate in 1", "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1", {}, 0, "a1a8", "# forced mate in 1 plies: a1a8\n", 31999},
      {"mate in 3", "k7/8/2K5/8/8/8/8/7R w - - 0 1", {}, 0, "?", "# forced mate in 3 plies: ", 31997},
      {"mate in 5", "2r3k1/p4p2/3Rp2p/1p2P1pK/8/1P4P1/P3Q2P/1q6 b - - 0 1", {}, 0, "b1g6",
       "# forced mate in 5 plies: b1g6\n", 31995},
      // Seen only in a later iteration, above its ceiling: no message, but the move is kept.
      {"a mate found late", "r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1", {}, 12, "f8c5", "",
       31995},
      {"getting mated", "kn6/8/1K6/8/8/8/8/7R b - - 0 1", {}, 10, "?", "# getting mated in 6 plies: ", -31994},
      {"a lone move", "7k/8/6K1/8/8/8/8/5R2 b - - 0 1", {}, 0, "h8g8", "# forced move: h8g8\n", Any},
      {"mated at the root", "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", {}, 0, "", "", -32000},
      {"stalemated at the root", "7k/5Q2/8/8/8/8/8/K7 b - - 0 1", {}, 0, "", "", -32000},
      {"taking the last piece leaves bare kings", "7k/8/8/8/3qK3/8/8/8 w - - 0 1", {}, 0, "e4d4",
       "# forced draw: e4d4\n", 0},
      {"a queen down: stalemate by giving the rook away", "7k/8/8/8/8/6q1/8/5R1K w - - 0 1", {}, 10, "f1f8", "", 0},
      {"a queen down: back into a position of the game", "7k/8/8/8/8/8/q7/6NK w - - 10 40",
       {"g1f3", "h8g8", "f3g1", "g8h8"}, 6, "g1f3", "", 0},
  };
  for (const auto& c : cases) {
    ui.lines.clear();
    ui.statisticsDepths.clear();
    ASSERT_TRUE(setupFromFen(game, c.fen)) << c.what;
    for (const std::string& text : c.before) {
      bool inCheck;
      MoveList list;
      generateLegalMoves(game, list, inCheck);
      for (uint32_t i = 0; i < list.count; ++i)
        if (moveToString(list.moves[i].move) == text) game.history[game.ply].movePlayed = list.moves[i].move;
      UndoRecord undo;
      makeMoveForSide(game, game.history[game.ply].movePlayed, undo);
    }
    SearchResult r = search(nullptr, c.depth);
    if (std::string(c.best) != "?") {
      EXPECT_EQ(r.best == NoMove ? "" : moveToString(r.best), c.best) << c.what;
    }
    EXPECT_NE(r.best == NoMove, *c.best != 0) << c.what;
    EXPECT_EQ(r.output.substr(0, std::strlen(c.output)), c.output) << c.what;
    EXPECT_EQ(r.output.empty(), !*c.output) << c.what;
    ASSERT_FALSE(ui.lines.empty()) << c.what;
    if (c.score != Any) {
      EXPECT_EQ(ui.lines.back().score, c.score) << c.what;
    }
    if (!*c.best) {
      // Nothing to search: one line of depth 0 without moves, statistics of depth 0.
      EXPECT_EQ(ui.lines.size(), 1u);
      EXPECT_EQ(ui.lines[0].depth, 0u);
      EXPECT_TRUE(ui.lines[0].moves.empty());
      EXPECT_EQ(ui.statisticsDepths, std::vector<uint32_t>{0});
      EXPECT_EQ(r.ponder, NoMove);
    }
    if (std::string(c.what) == "a lone move") {
      EXPECT_EQ(ui.lines.front().depth, 1u);
    }
    if (std::string(c.what) == "mate in 5") {
      EXPECT_NE(r.ponder, NoMove);
    }
  }
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

// A fixed depth stops at it and gives the same search twice from empty tables.
TEST_F(SearchRootTest, FixedDepthStopsThereAndIsDeterministic) {
  for (const char* fen : {startPositionFen, "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                          "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"}) {
    SearchResult runs[2];
    for (SearchResult& r : runs) {
      tt->clear();
      pawns->clear();
      ui.lines.clear();
      ui.statisticsDepths.clear();
      r = search(fen, 7);
      EXPECT_EQ(r.output, "") << fen;
      for (const ReportedLine& l : ui.lines) EXPECT_LE(l.depth, 7u) << fen;
      EXPECT_EQ(ui.lines.back().depth, 7u) << fen;
      EXPECT_EQ(ui.statisticsDepths, std::vector<uint32_t>{7}) << fen;
    }
    EXPECT_EQ(runs[0].nodes, runs[1].nodes) << fen;
    EXPECT_EQ(runs[0].best, runs[1].best) << fen;
    EXPECT_GT(runs[0].nodes, 100u) << fen;
  }
}

}  // namespace
