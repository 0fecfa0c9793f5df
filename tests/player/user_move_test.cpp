// Reading the host's move text, the draw offer and the game-end report, on a
// player without threads; and the threads that `cores` asks for.
#include "../board/board_test_support.h"
#include "player_test_support.h"

namespace {

class UserMove : public ::testing::Test, protected playertest::PlayerWithoutEngine {
 protected:
  void setPosition(const char* fen) { ASSERT_TRUE(setupFromFen(*player.board, fen)) << fen; }
  Move parse(const std::string& text) {
    Move move = NoMove;
    return player.parseUserMove(text, move) ? move : NoMove;
  }
  // Plays moves as the game does: record, then the loop's end-of-game check.
  void play(const std::string& moves) {
    std::istringstream in(moves);
    std::string text;
    bool over = false;
    while (in >> text && !over) ASSERT_TRUE(player.recordMove(parse(text)) && gameEnd(over).empty()) << text;
  }
  std::string gameEnd(bool& over) {
    ::testing::internal::CaptureStdout();
    over = player.reportGameEnd();
    std::cout.flush();
    return ::testing::internal::GetCapturedStdout();
  }
};

TEST_F(UserMove, TextNamesTheGeneratedMove) {
  // Texts and the move each names ("" none).
  const struct { const char* fen; std::vector<std::pair<const char*, const char*>> texts; } cases[] = {
      {startPositionFen,
       {{"e2e4", "e2e4"}, {"E2E4", "e2e4"}, {"E2e4", "e2e4"}, {"G1F3", "g1f3"}, {"a2a4", "a2a4"}, {"H2H3", "h2h3"},
        {"b1a3", "b1a3"}, {"e2e5", ""}, {"e3e4", ""}, {"e7e5", ""}, {"i2i4", ""}, {"e0e4", ""}, {"e2e9", ""},
        {"22e4", ""}, {"e2e4e", ""}, {"e2e4q", ""}, {"e2", ""}, {"e2e4qq", ""}, {"", ""}, {"e1g1", ""}, {" e2e4", ""}}},
      // Promotion needs its letter, of either case; elsewhere a letter names nothing.
      {"k7/4P3/8/8/8/8/8/4K3 w - - 0 1",
       {{"e7e8", ""}, {"e7e8q", "e7e8q"}, {"e7e8Q", "e7e8q"}, {"E7E8R", "e7e8r"}, {"e7e8b", "e7e8b"},
        {"e7e8N", "e7e8n"}, {"e7e8x", ""}, {"e7e8k", ""}, {"e7e8p", ""}, {"e7e81", ""}, {"e7d8q", ""},
        {"e1e2q", ""}, {"e1e2", "e1e2"}}},
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", {{"e1g1", "e1g1"}, {"e1c1", "e1c1"}, {"e1h1", ""}, {"o-o", ""}}},
      {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", {{"E8G8", "e8g8"}, {"e8c8", "e8c8"}, {"e1g1", ""}}},
      {"4kr2/8/8/8/8/8/8/4K2R w K - 0 1", {{"e1g1", ""}}},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", {{"e5d6", "e5d6"}, {"e5e6", "e5e6"}}},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1", {{"e5d6", ""}}},
  };
  for (const auto& c : cases) {
    setPosition(c.fen);
    for (const auto& [text, named] : c.texts) EXPECT_EQ(parse(text), legalMove(*player.board, named)) << c.fen << " \"" << text << '"';
    EXPECT_EQ(player.board->ply, 0u);  // nothing was played
  }
}

TEST_F(UserMove, DrawOfferBeforeTheThirdRepetitionOrTheFiftiethMove) {
  // The move, after those played `before`, and whether it makes an offer.
  const struct { const char *fen, *before, *move; bool offer; } cases[] = {
      {startPositionFen, "g1f3 g8f6 f3g1", "f6g8", false},  // a second occurrence claims nothing
      {startPositionFen, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1", "f6g8", true},
      {startPositionFen, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1", "f6h5", false},
      {"4k3/8/8/8/8/8/8/R3K3 w - - 98 80", "", "a1a2", false},
      {"4k3/8/8/8/8/8/8/R3K3 w - - 99 80", "", "a1a2", true},
      {"4k3/8/8/8/8/8/r7/R3K3 w - - 99 80", "", "a1a2", false},  // a capture resets the count
      {"4k3/8/8/8/8/8/r7/R3K3 w - - 99 80", "", "e1f1", true},
      {"4k3/8/8/8/8/8/P7/R3K3 w - - 99 80", "", "a2a3", false},  // so does a pawn move
      {"k7/8/1K6/8/8/8/8/7R w - - 99 80", "", "h1h8", false},   // mate ends the game by itself
      {"k7/8/1K6/8/8/8/8/7R w - - 99 80", "", "h1h7", true},
      {"k7/8/8/8/8/8/2Q5/K7 w - - 99 80", "", "c2c7", false},   // so does stalemate
      {"4k3/8/8/8/8/8/8/4KB2 w - - 0 1", "", "f1e2", false},    // material is no claim
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fen) + " " + c.before + " " + c.move);
    setPosition(c.fen);
    player.ply = 0;
    play(c.before);
    const Board_0x88 before = *player.board;
    const uint32_t ply = player.ply;
    EXPECT_EQ(player.shouldOfferDraw(parse(c.move)), c.offer);
    // The trial leaves the board and the history as they were.
    EXPECT_TRUE(player.ply == ply && player.board->ply == before.ply && player.board->halfMoveClock == before.halfMoveClock);
    EXPECT_TRUE(player.board->currentRecord().hashKey == before.currentRecord().hashKey &&
                player.board->currentRecord().movePlayed == before.currentRecord().movePlayed);
  }
  // Played, the third repetition is the host's to claim.
  setPosition(startPositionFen);
  play("g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8");
  bool over = true;
  EXPECT_EQ(gameEnd(over), "");
  EXPECT_FALSE(over);
}

TEST_F(UserMove, GameEndTexts) {
  // What is printed; "" the game goes on.
  const struct { const char *fen, *text; } cases[] = {
      {"rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3", "0-1 {Black wins by checkmate}\n"},
      {"k6R/8/1K6/8/8/8/8/8 b - - 100 80", "1-0 {White wins by checkmate}\n"},
      {"k7/2Q5/8/8/8/8/8/K7 b - - 0 1", "1/2-1/2 {Stalemate}\n"},
      {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "1/2-1/2 {Draw by insufficient material}\n"},
      // Fifty moves are the host's to claim (material: the draw rules' table).
      {"4k3/8/8/8/8/8/8/R3K3 b - - 100 80", ""},
      {startPositionFen, ""},
  };
  for (const auto& c : cases) {
    setPosition(c.fen);
    bool over = false;
    EXPECT_EQ(gameEnd(over), c.text) << c.fen;
    EXPECT_EQ(over, *c.text != 0) << c.fen;
  }
}

// The next set-up of a search makes as many threads as `cores` asked for, fewer again too.
TEST_F(UserMove, CoresSetTheThreadsOfTheNextSearch) {
  player.maxCores = 2;
  player.ttHashSizeMB = player.pawnHashSizeMB = 1;
  ::testing::internal::CaptureStdout();
  for (uint32_t cores : {1u, 2u, 1u}) {
    player.setCores(cores);
    player.setupSearch(false);
    EXPECT_EQ(player.threads.size(), cores);
  }
  ::testing::internal::GetCapturedStdout();
}

}  // namespace
