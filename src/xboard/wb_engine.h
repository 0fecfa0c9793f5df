#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "player/chess_player.h"
#include "player/engine_interface.h"
#include "board/relaxed.h"
#include "search/time_control.h"

using Arguments = std::vector<std::string>;

// The protocol front end: owns the clock and the game, and holds the handlers
// of the command table.
class WBEngine : public EngineInterface {
 public:
  WBEngine();

  // Prints the board diagram and clears boardChanged.
  void printBoard();

  bool cmdQuit(const Arguments& args);
  bool cmdXboard(const Arguments& args);
  bool cmdProtover(const Arguments& args);
  bool cmdNew(const Arguments& args);
  bool cmdForce(const Arguments& args);
  bool cmdPing(const Arguments& args);
  bool cmdUsermove(const Arguments& args);
  bool cmdGo(const Arguments& args);
  bool cmdPlayother(const Arguments& args);
  bool cmdSetboard(const Arguments& args);
  bool cmdLevel(const Arguments& args);
  bool cmdSd(const Arguments& args);
  bool cmdTime(const Arguments& args);
  bool cmdUndo(const Arguments& args);
  bool cmdRemove(const Arguments& args);
  bool cmdAnalyze(const Arguments& args);
  bool cmdExit(const Arguments& args);
  bool cmdAuto(const Arguments& args);
  bool cmdPost(const Arguments& args);
  bool cmdNopost(const Arguments& args);
  bool cmdCores(const Arguments& args);
  bool cmdEgtpath(const Arguments& args);
  bool cmdOption(const Arguments& args);
  bool cmdBook(const Arguments& args);
  bool cmdNobook(const Arguments& args);
  bool cmdPerft(const Arguments& args);
  bool cmdDivide(const Arguments& args);
  bool cmdSelftest(const Arguments& args);
  bool cmdTest(const Arguments& args);
  bool cmdEval(const Arguments& args);
  bool cmdTune(const Arguments& args);
  bool cmdRandpos(const Arguments& args);
  bool cmdRandgame(const Arguments& args);
  bool cmdNorandgame(const Arguments& args);
  bool cmdRandgames(const Arguments& args);

  void makeEngineMove(Move& move) override;

  // What `new` does: a fresh game from the start position.
  void newGame();

  // The shutdown of quit and of the end of input: every thread idle, then exit.
  void shutdownThreads();

  TimeControl timeControl;
  ChessPlayer player;
  uint32_t engineColor = 2;
  bool gameOver = false;
  bool forceMode = false;
  // Written by the search thread that plays a move, read by the main loop.
  Relaxed<bool> boardChanged = true;
  bool xboardMode = false;
  bool analyzeMode = false;
  bool autoMode = false;
  bool quitRequested = false;
};
