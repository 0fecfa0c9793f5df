// Random games: the statistics against a recount of the same games made here
// from the board alone.
#include <memory>

#include "../board/board_test_support.h"
#include "board/draw_rules.h"
#include "board/fen_writer.h"
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

// Random games from every position of perft960.epd (Chess960 starts of both
// kinds, middlegames) to their end, replayed: every position sound, the mover
// never left in check, and its FEN, written in Shredder form and read back,
// the same position with the same key. Castlings of both wings come up.
TEST(RandomGames, Chess960GamesPlayToTheirEnd) {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  player.randomGame = true;
  std::srand(960);
  uint64_t castlings[2] = {};
  for (const SuiteLine& line : readSuite("perft960.epd")) {
    std::string error;
    ASSERT_TRUE(setupChess960FromFen(*player.board, line.fen.c_str(), error)) << line.fen;
    player.ply = player.setupPly = 0;
    auto stats = std::make_unique<RandomGameStats>();
    playRandomGame(player, player.randomGame, *stats);
    auto b = std::make_unique<Board_0x88>();
    ASSERT_TRUE(setupChess960FromFen(*b, line.fen.c_str(), error));
    std::string failure;
    for (uint32_t i = 0; i < player.ply && failure.empty(); ++i) {
      const Move m = player.moveHistory[i];
      if (moveKind(m) == MoveCastling) ++castlings[moveDetail(m) & 1];
      const Color mover = Color(b->sideToMove);
      const uint8_t rights = b->castlingRights;
      if (!playMoves(*b, moveToString(m))) failure = "illegal move " + moveToString(m);
      const Square king = b->side[mover].square[0];
      Board_0x88 reread;
      if (!failure.empty()) break;
      if (mover == White ? isAttacked<Black>(*b, king) : isAttacked<White>(*b, king)) failure = "mover in check";
      else if (!sumsDisagree(*b, 2).empty()) failure = sumsDisagree(*b, 2);
      else if (!setupChess960FromFen(reread, positionToFen(*b).c_str(), error) ||
               reread.currentRecord().hashKey != b->currentRecord().hashKey || positionToFen(reread) != positionToFen(*b))
        failure = "FEN " + positionToFen(*b) + " " + error;
      else if (b->castlingRights & ~rights) failure = "a right came back";
      if (!failure.empty()) failure += " after " + moveToString(m) + " at ply " + std::to_string(i + 1);
    }
    EXPECT_EQ(failure, "") << line.fen;
    MoveList list;
    bool inCheck;
    generateLegalMoves(*b, list, inCheck);
    GameEndReason reason = ReasonNone;
    EXPECT_TRUE(list.count == 0 || isDrawByRule(*b, reason) || player.ply == MaxGamePly) << line.fen;
  }
  EXPECT_GT(castlings[0], 5u);
  EXPECT_GT(castlings[1], 5u);
}

}  // namespace
