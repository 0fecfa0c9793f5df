// Reading the host's move text, the draw offer and the game-end report, on a
// player without threads.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <iostream>
#include <sstream>
#include <string>

#include "board/fen.h"
#include "board/move_text.h"
#include "driver/chess_player.h"
#include "search/time_control.h"

namespace {

class NoEngine : public EngineInterface {
 public:
  void makeEngineMove(Move&) override {}
};

// Everything written to std::cout while it lives.
class CoutCapture {
 public:
  CoutCapture() : saved_(std::cout.rdbuf(buffer_.rdbuf())) {}
  ~CoutCapture() { std::cout.rdbuf(saved_); }
  std::string text() const { return buffer_.str(); }

 private:
  std::ostringstream buffer_;
  std::streambuf* saved_;
};

class UserMoveTest : public ::testing::Test {
 protected:
  void setPosition(const char* fen) { ASSERT_TRUE(setupFromFen(*player.board, fen)) << fen; }

  // The move that the text names, 0 when the text is refused.
  Move parse(const std::string& text) {
    Move move = NoMove;
    if (!player.parseUserMove(text, move)) return NoMove;
    return move;
  }

  // Plays moves as the game does: record, then the loop's end-of-game check.
  void play(std::initializer_list<const char*> moves) {
    for (const char* text : moves) {
      Move move = parse(text);
      ASSERT_NE(move, NoMove) << text;
      ASSERT_TRUE(player.recordMove(move)) << text;
      CoutCapture quiet;
      ASSERT_FALSE(player.reportGameEnd()) << text;
    }
  }

  // The offer for the move named by the text; the board must come back unchanged.
  bool offerFor(const char* text) {
    Move move = parse(text);
    EXPECT_NE(move, NoMove) << text;
    Board_0x88 before = *player.board;
    const uint32_t plyBefore = player.ply;
    bool offer = player.shouldOfferDraw(move);
    const Board_0x88& after = *player.board;
    EXPECT_EQ(player.ply, plyBefore);
    EXPECT_EQ(after.ply, before.ply);
    EXPECT_EQ(after.sideToMove, before.sideToMove);
    EXPECT_EQ(after.halfMoveClock, before.halfMoveClock);
    EXPECT_EQ(after.history[after.ply].hashKey, before.history[before.ply].hashKey);
    EXPECT_EQ(after.history[after.ply].movePlayed, before.history[before.ply].movePlayed);
    EXPECT_EQ(std::memcmp(after.piece, before.piece, sizeof after.piece), 0);
    EXPECT_EQ(std::memcmp(after.color, before.color, sizeof after.color), 0);
    return offer;
  }

  // What reportGameEnd prints, and its answer.
  std::string gameEnd(bool& over) {
    CoutCapture capture;
    over = player.reportGameEnd();
    return capture.text();
  }

  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
};

TEST_F(UserMoveTest, ParsesCoordinatesInEitherCase) {
  setPosition(startPositionFen);
  const Move e2e4 = parse("e2e4");
  ASSERT_NE(e2e4, NoMove);
  EXPECT_EQ(moveToString(e2e4), "e2e4");
  // The generated move, with its double-step flag.
  EXPECT_EQ(moveKind(e2e4), MoveNormal);
  EXPECT_EQ(moveDetail(e2e4), DetailDoubleStep);
  EXPECT_EQ(parse("E2E4"), e2e4);
  EXPECT_EQ(parse("E2e4"), e2e4);
  EXPECT_EQ(moveToString(parse("G1F3")), "g1f3");

  // Squares off the board, pieces that can't go there, and stray characters.
  for (const char* text : {"e2e5", "e3e4", "e7e5", "i2i4", "e0e4", "e2e9", "22e4", "e2e4e", "e2e4q", "e2e4Q", "e2",
                           "e2e4qq", "", "e1g1", " e2e4"})
    EXPECT_EQ(parse(text), NoMove) << '"' << text << '"';
  // Nothing was played.
  EXPECT_EQ(player.board->ply, 0u);
  EXPECT_EQ(player.board->sideToMove, White);
}

TEST_F(UserMoveTest, PromotionNeedsItsLetter) {
  setPosition("k7/4P3/8/8/8/8/8/4K3 w - - 0 1");
  EXPECT_EQ(parse("e7e8"), NoMove);  // no default piece
  const struct {
    const char* text;
    PieceType piece;
  } cases[] = {{"e7e8q", Queen}, {"e7e8Q", Queen}, {"e7e8r", Rook}, {"E7E8R", Rook},
               {"e7e8b", Bishop}, {"e7e8B", Bishop}, {"e7e8n", Knight}, {"e7e8N", Knight}};
  for (const auto& c : cases) {
    Move m = parse(c.text);
    ASSERT_NE(m, NoMove) << c.text;
    EXPECT_EQ(moveKind(m), MovePromotion) << c.text;
    EXPECT_EQ(promotionPiece(m), c.piece) << c.text;
  }
  for (const char* text : {"e7e8x", "e7e8k", "e7e8p", "e7e81", "e7d8q"}) EXPECT_EQ(parse(text), NoMove) << text;
  // A promotion letter on a move that isn't a promotion names nothing.
  EXPECT_EQ(parse("e1e2q"), NoMove);
  EXPECT_NE(parse("e1e2"), NoMove);
}

TEST_F(UserMoveTest, CastlingAndEnPassant) {
  setPosition("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
  EXPECT_EQ(moveKind(parse("e1g1")), MoveCastling);
  EXPECT_EQ(moveKind(parse("e1c1")), MoveCastling);
  EXPECT_EQ(parse("e1h1"), NoMove);  // castling is only the king's move
  EXPECT_EQ(parse("o-o"), NoMove);
  setPosition("r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1");
  EXPECT_EQ(moveKind(parse("E8G8")), MoveCastling);
  EXPECT_EQ(moveKind(parse("e8c8")), MoveCastling);
  EXPECT_EQ(parse("e1g1"), NoMove);  // not Black's king
  // A passed square under attack forbids it.
  setPosition("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
  setPosition("4kr2/8/8/8/8/8/8/4K2R w K - 0 1");
  EXPECT_EQ(parse("e1g1"), NoMove);

  setPosition("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1");
  EXPECT_EQ(moveKind(parse("e5d6")), MoveEnPassant);
  EXPECT_EQ(moveKind(parse("e5e6")), MoveNormal);
  // The same capture without the en-passant square is no move.
  setPosition("4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1");
  EXPECT_EQ(parse("e5d6"), NoMove);
}

TEST_F(UserMoveTest, OfferBeforeTheThirdRepetition) {
  setPosition(startPositionFen);
  {
    CoutCapture quiet;
    player.reportGameEnd();
  }
  play({"g1f3", "g8f6", "f3g1"});
  EXPECT_FALSE(offerFor("f6g8"));  // second occurrence: no claim yet
  EXPECT_FALSE(offerFor("f6e4"));
  play({"f6g8", "g1f3", "g8f6", "f3g1"});
  EXPECT_TRUE(offerFor("f6g8"));  // third occurrence of the start position
  EXPECT_FALSE(offerFor("f6h5"));
  // The trial left the history as it was: the real move still repeats.
  EXPECT_TRUE(offerFor("f6g8"));
  play({"f6g8"});
  bool over = true;
  EXPECT_EQ(gameEnd(over), "");  // a repetition is the host's to claim
  EXPECT_FALSE(over);
}

TEST_F(UserMoveTest, OfferAtTheFiftyMoveCount) {
  setPosition("4k3/8/8/8/8/8/8/R3K3 w - - 98 80");
  EXPECT_FALSE(offerFor("a1a2"));
  setPosition("4k3/8/8/8/8/8/8/R3K3 w - - 99 80");
  EXPECT_TRUE(offerFor("a1a2"));
  // A capture or pawn move resets the count.
  setPosition("4k3/8/8/8/8/8/r7/R3K3 w - - 99 80");
  EXPECT_FALSE(offerFor("a1a2"));
  EXPECT_TRUE(offerFor("e1f1"));
  setPosition("4k3/8/8/8/8/8/P7/R3K3 w - - 99 80");
  EXPECT_FALSE(offerFor("a2a3"));
  EXPECT_TRUE(offerFor("a1b1"));

  // A mating or stalemating move ends the game by itself: no offer.
  setPosition("k7/8/1K6/8/8/8/8/7R w - - 99 80");
  EXPECT_FALSE(offerFor("h1h8"));
  EXPECT_TRUE(offerFor("h1h7"));
  setPosition("k7/8/8/8/8/8/2Q5/K7 w - - 99 80");
  EXPECT_FALSE(offerFor("c2c7"));
  EXPECT_TRUE(offerFor("c2c6"));
  // Insufficient material is no claim to offer.
  setPosition("4k3/8/8/8/8/8/8/4KB2 w - - 0 1");
  EXPECT_FALSE(offerFor("f1e2"));
}

TEST_F(UserMoveTest, GameEndTexts) {
  bool over = false;
  setPosition("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3");
  EXPECT_EQ(gameEnd(over), "0-1 {Black wins by checkmate}\n");
  EXPECT_TRUE(over);
  setPosition("k6R/8/1K6/8/8/8/8/8 b - - 0 1");
  EXPECT_EQ(gameEnd(over), "1-0 {White wins by checkmate}\n");
  EXPECT_TRUE(over);
  // Mate by the move that completes fifty moves still wins.
  setPosition("k6R/8/1K6/8/8/8/8/8 b - - 100 80");
  EXPECT_EQ(gameEnd(over), "1-0 {White wins by checkmate}\n");
  EXPECT_TRUE(over);
  setPosition("k7/2Q5/8/8/8/8/8/K7 b - - 0 1");
  EXPECT_EQ(gameEnd(over), "1/2-1/2 {Stalemate}\n");
  EXPECT_TRUE(over);
  for (const char* fen : {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 b - - 0 1",
                          "4kb2/8/8/8/8/8/8/4K3 w - - 0 1"}) {
    setPosition(fen);
    EXPECT_EQ(gameEnd(over), "1/2-1/2 {Draw by insufficient material}\n") << fen;
    EXPECT_TRUE(over) << fen;
  }
  // Fifty moves are the host's to claim; two knights and a minor piece each go on.
  for (const char* fen : {"4k3/8/8/8/8/8/8/R3K3 b - - 100 80", "4k3/8/8/8/8/8/8/R3K3 w - - 120 80",
                          "4k3/8/8/8/8/8/8/3NKN2 w - - 0 1", "4kb2/8/8/8/8/8/8/4KN2 w - - 0 1", startPositionFen}) {
    setPosition(fen);
    over = true;
    EXPECT_EQ(gameEnd(over), "") << fen;
    EXPECT_FALSE(over) << fen;
  }
}

TEST_F(UserMoveTest, NothingHappensWithoutAPlayablePosition) {
  // A refused text leaves a cleared board with no side to move.
  EXPECT_FALSE(setupFromFen(*player.board, "4k3/8/8/8/4X3/8/8/4K2R w K - 0 1"));
  ASSERT_FALSE(player.hasPlayablePosition());
  bool over = true;
  EXPECT_EQ(gameEnd(over), "");
  EXPECT_FALSE(over);
  Move move = 12345;
  EXPECT_FALSE(player.parseUserMove("e1e2", move));
  EXPECT_EQ(move, 12345);
  EXPECT_FALSE(player.shouldOfferDraw(encodeMove(Square64(4), Square64(12))));
}

}  // namespace
