// Random games and random positions: the statistics against a recount of the
// same games made here from the board alone, and the positions as real FEN.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "board/draw_rules.h"
#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "diagnostics/random_games.h"
#include "diagnostics/random_positions.h"
#include "driver/chess_player.h"

namespace {

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

struct Census {
  uint64_t count[2][7] = {};
  int total[2] = {};
};

Census takeCensus(const Board_0x88& b) {
  Census c;
  for (int sq = 0; sq < 128; ++sq)
    if (onBoard(sq) && b.piece[sq] != NoPiece) {
      ++c.count[b.color[sq]][b.piece[sq]];
      ++c.total[b.color[sq]];
    }
  return c;
}

// The same games, chosen by the same rand() calls, classified by what changed on the board.
std::unique_ptr<RandomGameStats> recount(uint64_t games) {
  auto s = std::make_unique<RandomGameStats>();
  auto b = std::make_unique<Board_0x88>();
  for (uint64_t g = 0; g < games; ++g) {
    setupFromFen(*b, startPositionFen);
    UndoRecord undo;
    for (;;) {
      MoveList list;
      bool inCheck;
      generateLegalMoves(*b, list, inCheck);
      if (list.count == 0 || b->ply >= MaxBoardGamePly) break;
      Move m = list.moves[uint32_t(std::rand() & 0x7fffffff) % list.count].move;
      Square from = moveFromSquare(m), to = moveToSquare(m);
      Color them = opponent(Color(b->sideToMove));
      PieceType mover = PieceType(b->piece[from]);
      Census before = takeCensus(*b);
      bool toWasEmpty = b->piece[to] == NoPiece;
      b->history[b->ply].movePlayed = m;
      makeMoveForSide(*b, m, undo);
      Census after = takeCensus(*b);

      ++s->positions;
      ++s->movesOfPiece[mover];
      bool promoted = mover == Pawn && b->piece[to] != Pawn;
      bool sideways = fileOf(from) != fileOf(to);
      if (promoted) {
        ++s->promotions;
        ++s->promotionsInto[b->piece[to]];
      } else if (mover == King && (from - to == 2 || to - from == 2)) {
        ++s->castlings;
      } else if (mover == Pawn && sideways && toWasEmpty) {
        ++s->epCaptures;
        ++s->capturesOfPiece[Pawn];
      } else if (after.total[them] < before.total[them]) {
        ++s->captures;
        for (int t = Pawn; t <= King; ++t)
          if (after.count[them][t] < before.count[them][t]) ++s->capturesOfPiece[t];
      } else if (mover == Pawn && (to - from == 32 || from - to == 32)) {
        ++s->doubleSteps;
      }
      for (int c = 0; c < 2; ++c) {
        ++s->pieceCountFrequency[c][after.total[c]];
        for (int sq = 0; sq < 128; ++sq)
          if (onBoard(sq) && b->color[sq] == c) ++s->presence[c][b->piece[sq]][toSquare64(Square(sq))];
      }
      GameEndReason reason;
      if (isDrawByRule(*b, reason)) break;
    }
    ++s->gameLength[b->ply];
  }
  return s;
}

template <typename T, size_t N>
bool same(const T (&a)[N], const T (&b)[N]) {
  return std::equal(std::begin(a), std::end(a), std::begin(b));
}

TEST(RandomGamesTest, StatisticsMatchARecountOfTheSameGames) {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  player.randomGame = true;
  auto stats = std::make_unique<RandomGameStats>();
  std::srand(20261124);
  playRandomGames(player, player.randomGame, 40, *stats);
  std::srand(20261124);
  auto expected = recount(40);

  EXPECT_GT(stats->positions, 1000u);
  EXPECT_EQ(stats->positions, expected->positions);
  EXPECT_EQ(stats->captures, expected->captures);
  EXPECT_EQ(stats->promotions, expected->promotions);
  EXPECT_EQ(stats->castlings, expected->castlings);
  EXPECT_EQ(stats->epCaptures, expected->epCaptures);
  EXPECT_EQ(stats->doubleSteps, expected->doubleSteps);
  EXPECT_TRUE(same(stats->movesOfPiece, expected->movesOfPiece));
  EXPECT_TRUE(same(stats->capturesOfPiece, expected->capturesOfPiece));
  EXPECT_TRUE(same(stats->promotionsInto, expected->promotionsInto));
  EXPECT_TRUE(same(stats->gameLength, expected->gameLength));
  EXPECT_EQ(0, std::memcmp(stats->presence, expected->presence, sizeof stats->presence));
  EXPECT_EQ(0, std::memcmp(stats->pieceCountFrequency, expected->pieceCountFrequency,
                           sizeof stats->pieceCountFrequency));
}

// A game that would run past the end of the player's move record stops just
// before it, counted by its length.
TEST(RandomGamesTest, AGameEndsCleanlyWhenItsRecordIsFull) {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  player.randomGame = true;
  const struct {
    uint32_t ply;
    uint64_t moves;
  } cases[] = {{MaxGamePly - 3, 3}, {MaxGamePly - 1, 1}, {MaxGamePly, 0}};
  for (const auto& c : cases) {
    auto stats = std::make_unique<RandomGameStats>();
    setupFromFen(*player.board, startPositionFen);
    player.ply = c.ply;
    playRandomGame(player, player.randomGame, *stats);
    EXPECT_EQ(stats->positions, c.moves) << c.ply;
    EXPECT_EQ(player.ply, MaxGamePly) << c.ply;
    EXPECT_EQ(stats->gameLength[MaxGamePly], 1u) << c.ply;
  }
}

TEST(RandomPositionsTest, EveryPositionIsLegalAndReadsBackToItsFen) {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  auto scratch = std::make_unique<Board_0x88>();
  std::srand(7);
  int withRights = 0, withEnPassant = 0, late = 0;
  for (int i = 0; i < 1000; ++i) {
    std::string fen = randomPositionFen(*scratch);
    ASSERT_TRUE(setupFromFen(*player.board, fen.c_str())) << fen;
    EXPECT_TRUE(player.hasPlayablePosition()) << fen;
    EXPECT_EQ(positionToFen(*player.board), fen);
    EXPECT_EQ(player.board->history[0].hashKey, scratch->history[scratch->ply].hashKey) << fen;
    withRights += player.board->castlingRights != 0;
    withEnPassant += player.board->epSquare != NoSquare;
    late += player.board->setupMoveNumber > 40;
  }
  // Real games: some positions keep rights, some have an en-passant square, some are late.
  EXPECT_GT(withRights, 50);
  EXPECT_GT(withEnPassant, 0);
  EXPECT_GT(late, 100);
}

}  // namespace
