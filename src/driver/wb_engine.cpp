#include "driver/wb_engine.h"

#include <iostream>

#include "board/fen.h"

WBEngine::WBEngine() : player(&timeControl, this) {}

void WBEngine::printBoard() {
  const Board_0x88& board = *player.board;
  for (int rank = 7; rank >= 0; --rank) {
    char row[11] = "# ";
    for (int file = 0; file < 8; ++file) {
      Square sq = makeSquare(file, rank);
      char ch = pieceLetters[board.piece[sq] <= King ? board.piece[sq] : 0];
      if (board.color[sq] == White) ch = char(ch - 'a' + 'A');
      row[2 + file] = ch;
    }
    std::cout << row << '\n';
  }
  std::cout << "#" << std::endl;
  boardChanged = false;
}

void WBEngine::shutdownThreads() { player.exitThreads(); }

bool WBEngine::cmdQuit(const Arguments&) {
  shutdownThreads();
  quitRequested = true;
  return true;
}

bool WBEngine::cmdXboard(const Arguments&) {
  std::cout << std::endl;
  xboardMode = true;
  return true;
}

bool WBEngine::cmdSetboard(const Arguments& args) {
  bool accepted = setPositionFromWords(*player.board, args);
  // A refused text leaves no playable position: the engine must not move on it.
  if (analyzeMode) {
    engineColor = player.board->sideToMove;
  } else {
    engineColor = 2;
    forceMode = true;
  }
  gameOver = false;
  boardChanged = true;
  return accepted;
}

bool WBEngine::cmdAuto(const Arguments& args) {
  if (!args.empty()) return false;
  engineColor = player.board->sideToMove;
  forceMode = false;
  analyzeMode = false;
  autoMode = true;
  return true;
}

bool WBEngine::cmdTune(const Arguments&) { return true; }

// Commands whose work arrives with later parts of the engine: matched and
// checked by the loop, they succeed without effect for now.
bool WBEngine::cmdProtover(const Arguments&) { return true; }
bool WBEngine::cmdNew(const Arguments&) { return true; }
bool WBEngine::cmdForce(const Arguments&) { return true; }
bool WBEngine::cmdPing(const Arguments&) { return true; }
bool WBEngine::cmdUsermove(const Arguments&) { return true; }
bool WBEngine::cmdGo(const Arguments&) { return true; }
bool WBEngine::cmdPlayother(const Arguments&) { return true; }
bool WBEngine::cmdLevel(const Arguments&) { return true; }
bool WBEngine::cmdSd(const Arguments&) { return true; }
bool WBEngine::cmdTime(const Arguments&) { return true; }
bool WBEngine::cmdUndo(const Arguments&) { return true; }
bool WBEngine::cmdRemove(const Arguments&) { return true; }
bool WBEngine::cmdAnalyze(const Arguments&) { return true; }
bool WBEngine::cmdExit(const Arguments&) { return true; }
bool WBEngine::cmdPost(const Arguments&) { return true; }
bool WBEngine::cmdNopost(const Arguments&) { return true; }
bool WBEngine::cmdCores(const Arguments&) { return true; }
bool WBEngine::cmdEgtpath(const Arguments&) { return true; }
bool WBEngine::cmdOption(const Arguments&) { return true; }
bool WBEngine::cmdBook(const Arguments&) { return true; }
bool WBEngine::cmdNobook(const Arguments&) { return true; }
bool WBEngine::cmdPerft(const Arguments&) { return true; }
bool WBEngine::cmdDivide(const Arguments&) { return true; }
bool WBEngine::cmdSelftest(const Arguments&) { return true; }
bool WBEngine::cmdTest(const Arguments&) { return true; }
bool WBEngine::cmdEval(const Arguments&) { return true; }
bool WBEngine::cmdRandpos(const Arguments&) { return true; }
bool WBEngine::cmdRandgame(const Arguments&) { return true; }
bool WBEngine::cmdNorandgame(const Arguments&) { return true; }
bool WBEngine::cmdRandgames(const Arguments&) { return true; }
