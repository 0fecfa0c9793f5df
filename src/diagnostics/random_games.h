#pragma once
#include <cstdint>

#include "board/move.h"
#include "board/types.h"

#include "board/game_record.h"
#include "board/relaxed.h"

// Counters over a run of random games; every count is a plain total.
struct RandomGameStats {
  uint64_t positions = 0;    // moves played in all games
  uint64_t captures = 0;     // normal moves onto an occupied square
  uint64_t promotions = 0;   // with or without capture
  uint64_t castlings = 0;
  uint64_t epCaptures = 0;
  uint64_t doubleSteps = 0;
  uint64_t movesOfPiece[7] = {};     // by moving piece
  uint64_t capturesOfPiece[7] = {};  // by captured piece
  uint64_t promotionsInto[7] = {};   // by new piece
  uint64_t gameLength[1024] = {};    // games by final ply
  uint64_t presence[2][8][64] = {};  // colour, piece, square: after each move
  uint64_t pieceCountFrequency[2][17] = {};  // colour, number of pieces: after each move
};

// Plays one game of uniformly random legal moves (rand()) as game moves from
// the game's position and ply, counting into `stats`, while `running` holds. It ends with no legal
// move, at a draw by rule (so at the first repetition), or when the game
// record is full, before the move that would overflow it.
void playRandomGame(GameRecord& game, const Relaxed<bool>& running, RandomGameStats& stats);

// Plays `games` games of uniformly random legal moves (rand()) as game moves
// from the start position, with a progress mark every games/50 games.
void playRandomGames(GameRecord& game, const Relaxed<bool>& running, uint64_t games, RandomGameStats& stats);

// The averages, presence maps, piece-count frequencies and game lengths.
void printRandomGameReport(const RandomGameStats& stats, uint64_t games);

// The randgames command: the games, the report, then the start position.
// `running` (the random-game flag) is held up while they play.
void runRandomGames(GameRecord& game, Relaxed<bool>& running, uint64_t games);
