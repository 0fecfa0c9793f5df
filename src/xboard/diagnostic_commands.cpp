// The console commands that exercise the board outside the search: random
// games, FEN files and random positions.
#include <cstdio>
#include <cstdlib>

#include "diagnostics/fen_file_check.h"
#include "diagnostics/random_games.h"
#include "diagnostics/random_positions.h"
#include "xboard/wb_engine.h"

bool WBEngine::cmdRandgames(const Arguments& args) {
  int games = std::atoi(args[0].c_str());
  if (games < 1) return false;
  // The games replace the game board, which a running search would play its move on.
  player.stopSearch();
  runRandomGames(player, player.randomGame, uint64_t(games));
  return true;
}

bool WBEngine::cmdTest(const Arguments& args) {
  if (!args.empty() && !checkFenFile(*player.board, args[0])) return false;
  newGame();
  return true;
}

bool WBEngine::cmdRandpos(const Arguments& args) {
  autoMode = false;
  engineColor = 2;
  forceMode = true;
  analyzeMode = false;
  // A refused count or file leaves an ended game ended: no second result line.
  if (args.empty()) {
    gameOver = false;
    boardChanged = true;
    printBoard();
    std::printf("\n");
    std::fflush(stdout);
    return true;
  }
  int count = std::atoi(args[0].c_str());
  if (count < 1) return false;
  FILE* out = stdout;
  if (args.size() > 1) {
    out = std::fopen(args[1].c_str(), "w");
    if (!out) {
      std::printf("# ERROR: failed to open file \"%s\" for writing\n", args[1].c_str());
      std::fflush(stdout);
      return false;
    }
  }
  writeRandomPositions(out, count);
  if (out != stdout) {
    std::fclose(out);
    std::printf("Wrote %d random FENs to file \"%s\"\n", count, args[1].c_str());
    std::fflush(stdout);
  }
  boardChanged = true;
  newGame();
  return true;
}
