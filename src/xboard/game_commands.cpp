// The commands that change the state of the game: who plays which colour,
// new games, set-up positions, take-backs and analysis.
#include <cstdlib>
#include <iostream>

#include "board/fen.h"
#include "board/make_move.h"
#include "xboard/wb_engine.h"

namespace {

uint32_t otherColor(uint8_t side) { return side == White ? Black : side == Black ? White : 2; }

}  // namespace

void WBEngine::newGame() {
  player.setupSearch(true);
  setupFromFen(*player.board, startPositionFen);
  player.ply = 0;
  player.setupPly = 0;
  player.outOfBook = false;
  player.randomGame = false;
  timeControl.resetForNewGame(analyzeMode);
  engineColor = analyzeMode ? uint32_t(player.board->sideToMove) : uint32_t(Black);
  forceMode = false;
  autoMode = false;
  gameOver = false;
  boardChanged = true;
  printBoard();
}

bool WBEngine::cmdNew(const Arguments&) {
  newGame();
  return true;
}

bool WBEngine::cmdForce(const Arguments&) {
  timeControl.stopClock();
  engineColor = 2;
  forceMode = true;
  autoMode = false;
  return true;
}

bool WBEngine::cmdGo(const Arguments&) {
  if (gameOver) {
    std::cout << "Error (cannot make a move at end of game)" << std::endl;
    return false;
  }
  engineColor = player.board->sideToMove;
  forceMode = false;
  analyzeMode = false;
  return true;
}

bool WBEngine::cmdPlayother(const Arguments&) {
  engineColor = otherColor(player.board->sideToMove);
  forceMode = false;
  analyzeMode = false;
  return true;
}

bool WBEngine::cmdSetboard(const Arguments& args) {
  FenRepairs repairs;
  bool accepted = setPositionFromWords(*player.board, args, &repairs);
  std::cout << describeRepairs(repairs) << std::flush;
  // Moves before this position can't be taken back on it.
  player.setupPly = player.ply;
  if (analyzeMode) {
    engineColor = player.board->sideToMove;
  } else {
    engineColor = 2;
    forceMode = true;
  }
  gameOver = false;
  boardChanged = true;
  if (accepted && !player.hasPlayablePosition())
    std::cout << "# warning: this position can't be played: a side lacks its king or has too many pieces, "
                 "a pawn stands on its first or last rank, or the side not to move is in check"
              << std::endl;
  return accepted;
}

// Takes back `plies` moves of the game, never past the last set-up position.
static bool takeBack(WBEngine& engine, uint32_t plies) {
  ChessPlayer& player = engine.player;
  if (player.ply < player.setupPly + plies || !player.hasSafeLists()) return false;
  for (uint32_t i = 0; i < plies; ++i) {
    --player.ply;
    unmakeMoveForSide(*player.board, player.moveHistory[player.ply], player.undoHistory[player.ply]);
  }
  if (engine.analyzeMode) engine.engineColor = player.board->sideToMove;
  engine.gameOver = false;
  engine.boardChanged = true;
  return true;
}

bool WBEngine::cmdUndo(const Arguments&) { return takeBack(*this, 1); }

bool WBEngine::cmdRemove(const Arguments&) { return takeBack(*this, 2); }

bool WBEngine::cmdAnalyze(const Arguments&) {
  if (analyzeMode) return true;
  engineColor = player.board->sideToMove;
  analyzeMode = true;
  timeControl.timed = false;
  timeControl.depthLimited = false;
  return true;
}

bool WBEngine::cmdExit(const Arguments&) {
  if (!analyzeMode) return false;
  engineColor = 2;
  analyzeMode = false;
  timeControl.timed = true;
  timeControl.depthLimited = false;
  return true;
}

bool WBEngine::cmdAuto(const Arguments& args) {
  if (!args.empty()) return false;
  engineColor = player.board->sideToMove;
  forceMode = false;
  analyzeMode = false;
  autoMode = true;
  return true;
}

bool WBEngine::cmdRandgame(const Arguments&) {
  player.randomGame = true;
  return true;
}

bool WBEngine::cmdNorandgame(const Arguments&) {
  player.randomGame = false;
  return true;
}

bool WBEngine::cmdCores(const Arguments& args) {
  int cores = std::atoi(args[0].c_str());
  if (cores < 1) return false;
  player.setCores(uint32_t(cores));
  return true;
}
