#include "diagnostics/random_games.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "board/draw_rules.h"
#include "board/fen.h"
#include "board/move_generation.h"

namespace {

// How many of each piece a side starts with: the presence maps are shares of this.
constexpr uint64_t presenceNormal[7] = {0, 8, 2, 2, 2, 1, 1};

void countMove(const Board_0x88& board, Move move, RandomGameStats& stats) {
  Square from = moveFromSquare(move), to = moveToSquare(move);
  ++stats.positions;
  ++stats.movesOfPiece[board.piece[from]];
  switch (moveKind(move)) {
    case MovePromotion:
      ++stats.promotions;
      ++stats.promotionsInto[promotionPiece(move)];
      break;
    case MoveCastling: ++stats.castlings; break;
    case MoveEnPassant:
      ++stats.epCaptures;
      ++stats.capturesOfPiece[Pawn];
      break;
    default:
      if (board.piece[to] != NoPiece) {
        ++stats.captures;
        ++stats.capturesOfPiece[board.piece[to]];
      } else if (moveDetail(move) == DetailDoubleStep) {
        ++stats.doubleSteps;
      }
  }
}

void countPosition(const Board_0x88& board, RandomGameStats& stats) {
  for (int c = 0; c < 2; ++c) {
    const PieceSet& set = board.side[c];
    ++stats.pieceCountFrequency[c][set.total];
    for (int slot = 0; slot <= LastSlot; ++slot) {
      Square sq = set.square[slot];
      if (!onBoard(sq)) continue;
      ++stats.presence[c][board.piece[sq]][toSquare64(sq)];
    }
  }
}

void startPosition(GameRecord& game) {
  setupFromFen(*game.board, startPositionFen);
  game.ply = 0;
  game.setupPly = 0;
}

void printSixAverages(const char* label, const uint64_t (&counts)[7], double games) {
  std::printf("%s", label);
  for (int piece = Pawn; piece <= King; ++piece)
    std::printf(piece == Pawn ? "%6.2f" : " %6.2f", double(counts[piece]) / games);
  std::printf("\n");
}

}  // namespace

void playRandomGame(GameRecord& game, const Relaxed<bool>& running, RandomGameStats& stats) {
  Board_0x88& board = *game.board;
  while (running) {
    MoveList list;
    bool inCheck;
    generateLegalMoves(board, list, inCheck);
    // A full game record ends the game where it stands.
    if (list.count == 0 || !game.gameHasRoom()) break;
    Move move = list.moves[uint32_t(std::rand() & 0x7fffffff) % list.count].move;
    countMove(board, move, stats);
    game.recordMove(move);
    countPosition(board, stats);
    GameEndReason reason;
    if (isDrawByRule(board, reason)) break;
  }
  ++stats.gameLength[game.ply < 1024 ? game.ply : 1023];
}

void playRandomGames(GameRecord& game, const Relaxed<bool>& running, uint64_t games, RandomGameStats& stats) {
  const uint64_t interval = games / 50;
  for (uint64_t g = 0; g < games; ++g) {
    startPosition(game);
    playRandomGame(game, running, stats);
    // Fewer than 50 games print no marks.
    if (interval && g % interval == 0) std::printf("#");
  }
}

void printRandomGameReport(const RandomGameStats& stats, uint64_t games) {
  std::printf("\ncalculate average values ...\n");
  const double n = double(games);
  std::printf("Total games:                        %10lu\n", (unsigned long)games);
  std::printf("Total positions:                    %10lu\n", (unsigned long)stats.positions);
  std::printf("Avg. moves/game:                    %6.2f\n", double(stats.positions) / n);
  std::printf("Avg. captures/game:                 %6.2f\n", double(stats.captures) / n);
  std::printf("Avg. promotions/game:               %6.2f\n", double(stats.promotions) / n);
  std::printf("Avg. castlings/game:                %6.2f\n", double(stats.castlings) / n);
  std::printf("Avg. ep captures/game:              %6.2f\n", double(stats.epCaptures) / n);
  std::printf("Avg. double steps/game:             %6.2f\n", double(stats.doubleSteps) / n);
  printSixAverages("Avg. moves of piece/game:           ", stats.movesOfPiece, n);
  printSixAverages("Avg. captures of piece/game:        ", stats.capturesOfPiece, n);
  printSixAverages("Avg. promotions into piece/game:    ", stats.promotionsInto, n);

  for (unsigned c = 0; c < 2; ++c) {
    for (unsigned piece = Pawn; piece <= King; ++piece) {
      std::printf("Avg. presence of %u %u:\n", c, piece);
      const double d = double(presenceNormal[piece] * stats.positions);
      uint64_t sum = 0;
      for (int rank = 7; rank >= 0; --rank) {
        for (int file = 0; file < 8; ++file) {
          uint64_t count = stats.presence[c][piece][rank * 8 + file];
          sum += count;
          std::printf(file ? " %5.1f" : "%5.1f", double(count) * 100.0 / d);
        }
        std::printf("\n");
      }
      std::printf("[%5.1f]\n", double(sum) * 100.0 / d);
    }
  }

  for (int c = 0; c < 2; ++c) {
    std::printf("Frequency of positions with given number of %s pieces:\n", c == White ? "white" : "black");
    for (int count = 1; count <= 16; ++count) {
      std::printf(count == 1 || count == 9 ? "%5.1f" : " %5.1f",
                  double(stats.pieceCountFrequency[c][count]) * 100.0 / double(stats.positions));
      if (count % 8 == 0) std::printf("\n");
    }
  }
  std::printf("Game length:\n");
  uint64_t classes[40] = {};
  for (unsigned ply = 0; ply < 1024; ++ply) classes[ply / 20 < 39 ? ply / 20 : 39] += stats.gameLength[ply];
  for (unsigned c = 0; c < 40; ++c) std::printf("%4u .. %4u: %5.2f\n", 20 * c, 20 * c + 19, double(classes[c]) * 100.0 / n);
  std::fflush(stdout);
}

void runRandomGames(GameRecord& game, Relaxed<bool>& running, uint64_t games) {
  std::printf("# Playing %lu random games ...\n", (unsigned long)games);
  bool wasRandom = running;
  running = true;
  // Large, so off the stack.
  auto stats = std::make_unique<RandomGameStats>();
  playRandomGames(game, running, games, *stats);
  printRandomGameReport(*stats, games);
  running = wasRandom;
  startPosition(game);
}
