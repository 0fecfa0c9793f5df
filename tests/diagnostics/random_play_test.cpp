// Random games: the statistics against a recount of the same games made here
// from the board alone.
#include <memory>

#include "../board/board_test_support.h"
#include "board/draw_rules.h"
#include "diagnostics/random_games.h"
#include "player/chess_player.h"

namespace {

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

// The same games, chosen by the same rand() calls, classified by what changed on the board.
std::unique_ptr<RandomGameStats> recount(uint64_t games) {
  auto s = std::make_unique<RandomGameStats>();
  auto b = std::make_unique<Board_0x88>();
  for (uint64_t g = 0; g < games; ++g) {
    setupFromFen(*b, startPositionFen);
    GameEndReason reason;
    do {
      MoveList list;
      bool inCheck;
      generateLegalMoves(*b, list, inCheck);
      if (list.count == 0 || b->ply >= MaxBoardGamePly) break;
      const Move m = list.moves[uint32_t(std::rand() & 0x7fffffff) % list.count].move;
      const int from = moveFromSquare(m), to = moveToSquare(m), mover = b->piece[from], taken = b->piece[to];
      b->history[b->ply].movePlayed = m;
      UndoRecord undo;
      makeMoveForSide(*b, m, undo);
      ++s->positions;
      ++s->movesOfPiece[mover];
      if (mover == Pawn && b->piece[to] != Pawn) {
        ++s->promotions, ++s->promotionsInto[b->piece[to]];
      } else if (mover == King && std::abs(from - to) == 2) {
        ++s->castlings;
      } else if (mover == Pawn && fileOf(Square(from)) != fileOf(Square(to)) && taken == NoPiece) {
        ++s->epCaptures, ++s->capturesOfPiece[Pawn];
      } else if (taken != NoPiece) {
        ++s->captures, ++s->capturesOfPiece[taken];
      } else if (mover == Pawn && std::abs(from - to) == 32) {
        ++s->doubleSteps;
      }
      int total[2] = {};
      for (int sq = 0; sq < 128; ++sq)
        if (onBoard(sq) && b->piece[sq] != NoPiece) {
          ++total[b->color[sq]];
          ++s->presence[b->color[sq]][b->piece[sq]][toSquare64(Square(sq))];
        }
      ++s->pieceCountFrequency[White][total[White]], ++s->pieceCountFrequency[Black][total[Black]];
    } while (!isDrawByRule(*b, reason));
    ++s->gameLength[b->ply];
  }
  return s;
}

TEST(RandomGames, StatisticsMatchARecountOfTheSameGames) {
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
  EXPECT_EQ(std::memcmp(stats.get(), expected.get(), sizeof *stats), 0);

  // A game that would run past the end of the move record stops just before it.
  for (uint32_t left : {3u, 1u, 0u}) {
    stats = std::make_unique<RandomGameStats>();
    setupFromFen(*player.board, startPositionFen);
    player.ply = MaxGamePly - left;
    playRandomGame(player, player.randomGame, *stats);
    EXPECT_TRUE(stats->positions == left && player.ply == MaxGamePly && stats->gameLength[MaxGamePly] == 1u) << left;
  }
}

}  // namespace
