#include "xboard/wb_engine.h"

#include <iostream>

#include "board/fen.h"
#include "diagnostics/perft.h"
#include "diagnostics/self_test.h"
#include "player/engine_settings.h"
#include "eval/evaluation_report.h"

WBEngine::WBEngine() : player(&timeControl, this) {}

void WBEngine::printBoard() {
  const Board_0x88& board = *player.board;
  // One insertion, so that the diagram reaches the host in one piece.
  std::string diagram;
  for (int rank = 7; rank >= 0; --rank) {
    diagram += "# ";
    for (int file = 0; file < 8; ++file) {
      Square sq = makeSquare(file, rank);
      char ch = pieceLetters[board.piece[sq]];
      if (board.color[sq] == White) ch = char(ch - 'a' + 'A');
      diagram += ch;
    }
    diagram += '\n';
  }
  diagram += "#\n";
  std::cout << diagram << std::flush;
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

bool WBEngine::cmdTune(const Arguments&) { return true; }

// Commands whose work arrives with later parts of the engine: matched and
// checked by the loop, they succeed without effect for now.
bool WBEngine::cmdLevel(const Arguments& args) {
  return args.size() == 3 && timeControl.setLevel(args[0], args[1], args[2]);
}
bool WBEngine::cmdSd(const Arguments& args) { return args.size() == 1 && timeControl.setDepth(args[0]); }
bool WBEngine::cmdTime(const Arguments& args) {
  if (args.size() != 1) return false;
  timeControl.setRemaining(player.ply, args[0]);
  return true;
}
bool WBEngine::cmdEgtpath(const Arguments& args) {
  if (args[0] != "gaviota") {
    std::cout << "# invalid TB type: " << args[0] << std::endl;
    return false;
  }
  std::cout << "# initializing TB: type=" << args[0] << " path=" << args[1] << std::endl;
  player.initTablebasesOfType(args[0], args[1].c_str());
  return true;
}
bool WBEngine::cmdOption(const Arguments& args) { return applyOption(player, args[0]); }
bool WBEngine::cmdBook(const Arguments&) {
  player.bookEnabled = true;
  return true;
}
bool WBEngine::cmdNobook(const Arguments&) {
  player.bookEnabled = false;
  return true;
}
bool WBEngine::cmdEval(const Arguments&) {
  // Evaluation needs both kings and sound lists; a refused or kingless board has no score.
  if (!player.hasPlayablePosition() || !player.pawnHash) {
    std::cout << "Error (no position to evaluate)" << std::endl;
    return false;
  }
  printEvaluation(*player.board, *player.pawnHash);
  return true;
}

bool WBEngine::cmdPerft(const Arguments& args) {
  player.waitForTablePages();
  return runPerftCommand(*player.board, *player.timeControl, player.perft, args);
}

bool WBEngine::cmdDivide(const Arguments& args) {
  player.waitForTablePages();
  return runDivideCommand(*player.board, *player.timeControl, player.perft, args);
}

bool WBEngine::cmdSelftest(const Arguments&) {
  player.waitForTablePages();
  runSelfTests(*player.board, player.perft);
  // The rows leave their own position behind; the game starts afresh.
  newGame();
  return true;
}
