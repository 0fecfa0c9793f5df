#include "board/draw_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"

namespace {

// A game on one board: moves are made as the game layer makes them, and the
// draw test runs after every one of them, which the repetition count relies on.
class Game {
 public:
  explicit Game(const char* fen) { EXPECT_TRUE(setupFromFen(board, fen)) << fen; }

  // Plays a legal move given in coordinate notation; returns the draw test's bool.
  bool play(const std::string& text) {
    MoveList list;
    bool inCheck;
    generateLegalMoves(board, list, inCheck);
    for (uint32_t i = 0; i < list.count; ++i) {
      Move m = list.moves[i].move;
      if (moveToString(m) != text) continue;
      board.history[board.ply].movePlayed = m;
      moves.push_back(m);
      undos.emplace_back();
      makeMoveForSide(board, m, undos.back());
      return test();
    }
    ADD_FAILURE() << "no legal move " << text;
    return false;
  }
  // Plays several moves; the draw test's bool after each of them.
  std::vector<bool> playAll(const std::vector<std::string>& texts) {
    std::vector<bool> results;
    for (const std::string& t : texts) results.push_back(play(t));
    return results;
  }
  bool nullMove() {
    moves.push_back(NoMove);
    undos.emplace_back();
    makeNullMove(board, undos.back());
    return test();
  }
  void takeBack() {
    Move m = moves.back();
    if (m == NoMove)
      unmakeNullMove(board, undos.back());
    else
      unmakeMoveForSide(board, m, undos.back());
    moves.pop_back();
    undos.pop_back();
  }
  bool test() { return isDrawByRule(board, reason); }

  Board_0x88 board;
  GameEndReason reason = ReasonCheckmate;  // anything the test must overwrite
  std::vector<Move> moves;
  std::vector<UndoRecord> undos;
};

const std::vector<std::string> knightDance = {"g1f3", "g8f6", "f3g1", "f6g8"};

TEST(DrawRulesTest, CodesAreNumberedAsTheCallersExpect) {
  EXPECT_EQ(ReasonNone, 0u);
  EXPECT_EQ(ReasonCheckmate, 1u);
  EXPECT_EQ(ReasonStalemate, 2u);
  EXPECT_EQ(ReasonFiftyMoves, 3u);
  EXPECT_EQ(ReasonInsufficientMaterial, 4u);
  EXPECT_EQ(ReasonRepetition, 5u);
  EXPECT_EQ(sizeof(GameEndReason), 4u);
}

TEST(DrawRulesTest, SecondOccurrenceIsADrawForTheSearchThirdForTheGame) {
  Game g(startPositionFen);
  EXPECT_FALSE(g.test());
  EXPECT_EQ(g.reason, ReasonNone);

  // Positions 1 to 3 are new.
  EXPECT_EQ(g.playAll({"g1f3", "g8f6", "f3g1"}), (std::vector<bool>{false, false, false}));
  EXPECT_EQ(g.reason, ReasonNone);
  // Back at the start: the second occurrence. The search scores it as a draw,
  // the game goes on.
  EXPECT_TRUE(g.play("f6g8"));
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[4].repetitionCount, 1);
  EXPECT_EQ(g.board.halfMoveClock, 4);

  // The positions after the first two moves repeat too, each a second time.
  EXPECT_TRUE(g.play("g1f3"));
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[5].repetitionCount, 1);
  EXPECT_TRUE(g.play("g8f6"));
  EXPECT_TRUE(g.play("f3g1"));
  EXPECT_EQ(g.reason, ReasonNone);

  // Third occurrence of the start position: the match is the most recent
  // one (ply 4), whose count carries on to 2.
  EXPECT_TRUE(g.play("f6g8"));
  EXPECT_EQ(g.reason, ReasonRepetition);
  EXPECT_EQ(g.board.history[8].repetitionCount, 2);

  // A fourth occurrence still is one.
  g.playAll(knightDance);
  EXPECT_TRUE(g.test());
  EXPECT_EQ(g.reason, ReasonRepetition);
  EXPECT_EQ(g.board.history[12].repetitionCount, 3);

  // Taken back, the position before is no repetition of a third time.
  for (int i = 0; i < 4; ++i) g.takeBack();
  EXPECT_EQ(g.board.ply, 8u);
  g.takeBack();
  EXPECT_TRUE(g.test());
  EXPECT_EQ(g.reason, ReasonNone);
}

TEST(DrawRulesTest, OtherCastlingRightsMakeAnotherPosition) {
  Game g("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
  // Same squares as at the start, but both kings have lost their rights.
  EXPECT_EQ(g.playAll({"e1f1", "e8f8", "f1e1", "f8e8"}), (std::vector<bool>{false, false, false, false}));
  EXPECT_EQ(g.board.halfMoveClock, 4);
  // Now without rights on both sides, the same dance repeats.
  EXPECT_TRUE(g.playAll({"e1f1", "e8f8", "f1e1", "f8e8"}).back());
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[8].repetitionCount, 1);
}

TEST(DrawRulesTest, UnusableDoubleStepLeavesNoEnPassantKey) {
  // After 1. e4 no black pawn can take en passant: the position after
  // 1... Nf6 2. Nf3 Ng8 3. Ng1 repeats the one after 1. e4.
  Game g(startPositionFen);
  g.play("e2e4");
  EXPECT_EQ(g.board.epSquare, NoSquare);
  EXPECT_EQ(g.playAll({"g8f6", "g1f3", "f6g8"}), (std::vector<bool>{false, false, false}));
  EXPECT_TRUE(g.play("f3g1"));
  EXPECT_EQ(g.board.history[5].repetitionCount, 1);

  // With a black pawn on d4 the double step e2e4 leaves e3 as a usable
  // en-passant square, so the same dance doesn't return to that position.
  Game h("rnbqkbnr/ppp1pppp/8/8/3p4/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
  h.play("e2e4");
  EXPECT_NE(h.board.epSquare, NoSquare);
  EXPECT_FALSE(h.playAll({"g8f6", "g1f3", "f6g8", "f3g1"}).back());
  EXPECT_EQ(h.reason, ReasonNone);
}

TEST(DrawRulesTest, FiftyMoveRule) {
  Game g("4k3/8/8/8/8/8/8/R3K3 w - - 98 80");
  EXPECT_FALSE(g.test());
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_FALSE(g.play("a1a2"));  // clock 99
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_TRUE(g.play("e8d8"));  // clock 100
  EXPECT_EQ(g.reason, ReasonFiftyMoves);
  EXPECT_TRUE(g.play("a2a3"));
  EXPECT_EQ(g.reason, ReasonFiftyMoves);

  // A capture sets the clock back.
  Game c("4k3/8/8/8/8/8/r7/R3K3 w - - 99 80");
  EXPECT_FALSE(c.play("a1a2"));
  EXPECT_EQ(c.board.halfMoveClock, 0);

  // The move that mates with the 100th half-move still counts as the draw
  // code here: mate is the callers' business.
  Game m("6k1/5ppp/8/8/8/8/8/R5K1 w - - 99 60");
  EXPECT_TRUE(m.play("a1a8"));
  EXPECT_EQ(m.reason, ReasonFiftyMoves);
  MoveList list;
  bool inCheck;
  generateLegalMoves(m.board, list, inCheck);
  EXPECT_TRUE(inCheck);
  EXPECT_EQ(list.count, 0u);

  // The clock is a byte: after 255 it wraps to 0 and the rule lets go.
  Game w("4k3/8/8/8/8/8/8/R3K3 w - - 255 200");
  EXPECT_TRUE(w.test());
  EXPECT_FALSE(w.play("a1a2"));
  EXPECT_EQ(w.board.halfMoveClock, 0);
}

TEST(DrawRulesTest, InsufficientMaterial) {
  struct Case {
    const char* fen;
    bool insufficient;
  };
  const Case cases[] = {
      {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", true},      // bare kings
      {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", true},     // knight for White
      {"4k3/8/8/8/8/8/8/4K1n1 b - - 0 1", true},    // knight for Black
      {"4k3/8/8/8/8/8/8/4KB2 w - - 0 1", true},     // bishop for White
      {"4kb2/8/8/8/8/8/8/4K3 w - - 0 1", true},     // bishop for Black
      {"4kb2/8/8/8/8/8/8/2B1K3 w - - 0 1", false},  // bishops on squares of the same colour
      {"4kb2/8/8/8/8/8/8/3BK3 w - - 0 1", false},   // and of opposite colours
      {"4k3/8/8/8/8/8/8/4KNN1 w - - 0 1", false},   // two knights
      {"3knn2/8/8/8/8/8/8/4K3 b - - 0 1", false},
      {"4kn2/8/8/8/8/8/8/4KN2 w - - 0 1", false},   // a minor piece each
      {"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", false},   // a pawn
      {"4k3/4p3/8/8/8/8/8/4K3 w - - 0 1", false},
      {"4k3/8/8/8/8/8/8/4K2R w - - 0 1", false},    // a rook
      {"4k3/8/8/8/8/8/8/3QK3 w - - 0 1", false},    // a queen
      {"3qk3/8/8/8/8/8/8/4KN2 w - - 0 1", false},   // a queen against a knight
  };
  for (const Case& c : cases) {
    Game g(c.fen);
    EXPECT_EQ(g.test(), c.insufficient) << c.fen;
    EXPECT_EQ(g.reason, c.insufficient ? ReasonInsufficientMaterial : ReasonNone) << c.fen;
  }

  // A capture that leaves K+N against K ends it; the fifty-move test comes first.
  Game g("4k3/8/8/8/8/8/8/r3KN2 w - - 0 1");
  EXPECT_FALSE(g.test());
  Game x("4k3/8/8/8/8/8/3r4/4KN2 w - - 0 1");
  EXPECT_TRUE(x.play("e1d2"));
  EXPECT_EQ(x.reason, ReasonInsufficientMaterial);
  Game f("4k3/8/8/8/8/8/8/4KN2 w - - 100 80");
  EXPECT_TRUE(f.test());
  EXPECT_EQ(f.reason, ReasonFiftyMoves);
}

TEST(DrawRulesTest, ScanStaysWithinTheClock) {
  // A six-ply cycle: each king walks a triangle, so the start position comes
  // back at ply 6 and nowhere between.
  Game g("k6r/8/8/8/8/8/8/K6R w - - 0 1");
  EXPECT_EQ(g.playAll({"a1b1", "a8b8", "b1b2", "b8b7", "b2a1"}), (std::vector<bool>(5, false)));
  EXPECT_TRUE(g.play("b7a8"));
  EXPECT_EQ(g.board.history[6].repetitionCount, 1);

  // The scan may reach exactly `halfMoveClock` plies back, and no further.
  g.board.history[6].repetitionCount = 0;
  g.board.halfMoveClock = 5;
  EXPECT_FALSE(g.test());
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[6].repetitionCount, 0);
  g.board.halfMoveClock = 6;
  EXPECT_TRUE(g.test());

  // A clock of 3 never scans, even with a match four plies back.
  Game k(startPositionFen);
  k.playAll(knightDance);
  k.board.history[4].repetitionCount = 0;
  k.board.halfMoveClock = 3;
  EXPECT_FALSE(k.test());
  EXPECT_EQ(k.board.history[4].repetitionCount, 0);
  k.board.halfMoveClock = 4;
  EXPECT_TRUE(k.test());
}

TEST(DrawRulesTest, FenClockDoesNotReachBehindTheFirstRecord) {
  // Clock 20 from the FEN text: the first record is ply 0 all the same.
  Game g("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 20 11");
  EXPECT_FALSE(g.play("g1f3"));
  EXPECT_FALSE(g.play("g8f6"));
  EXPECT_EQ(g.board.ply, 2u);
  EXPECT_EQ(g.board.halfMoveClock, 22);
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_FALSE(g.play("f3g1"));
  EXPECT_TRUE(g.play("f6g8"));
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[4].repetitionCount, 1);
  EXPECT_TRUE(g.playAll(knightDance).back());
  EXPECT_EQ(g.reason, ReasonRepetition);
}

TEST(DrawRulesTest, NullMoveBreaksTheChain) {
  Game g(startPositionFen);
  EXPECT_TRUE(g.playAll(knightDance).back());
  EXPECT_EQ(g.board.history[4].repetitionCount, 1);

  // Two null moves bring back the start position with a clock of 0.
  EXPECT_FALSE(g.nullMove());
  EXPECT_FALSE(g.nullMove());
  EXPECT_EQ(g.board.history[6].hashKey, g.board.history[0].hashKey);
  EXPECT_EQ(g.board.halfMoveClock, 0);
  EXPECT_EQ(g.board.history[6].repetitionCount, 0);

  // The dance after them finds only the occurrence at ply 6, so this is a
  // second occurrence as far as the scan can see, not a fourth.
  EXPECT_EQ(g.playAll(knightDance), (std::vector<bool>{false, false, false, true}));
  EXPECT_EQ(g.reason, ReasonNone);
  EXPECT_EQ(g.board.history[10].repetitionCount, 1);

  // A null move in the middle of a dance hides the return as well.
  Game h(startPositionFen);
  h.playAll({"g1f3", "g8f6"});
  EXPECT_FALSE(h.nullMove());
  EXPECT_FALSE(h.play("f6g8"));
  EXPECT_FALSE(h.play("f3g1"));  // White's start squares again, but Black to move
  EXPECT_FALSE(h.nullMove());    // the start position, clock 0
  EXPECT_EQ(h.board.history[6].hashKey, h.board.history[0].hashKey);
  EXPECT_EQ(h.reason, ReasonNone);
}

}  // namespace
