#include "xboard/command_loop.h"

#include <cstring>
#include <iostream>
#include <string>

#include "xboard/command_table.h"
#include "board/string_split.h"

void dispatchLine(WBEngine& engine, const char* line) {
  const char* blank = std::strchr(line, ' ');
  size_t wordLength = blank ? size_t(blank - line) : std::strlen(line);
  const CommandRow* row = findCommand(line, wordLength);
  if (!row) return;

  Arguments args;
  bool countOk = true;
  if (blank) {
    args = splitString(blank + 1, ' ');
    if (args.size() < row->minArgs) {
      std::cout << "Error (missing arguments, expected at least " << row->minArgs << "): " << line << std::endl;
      countOk = false;
    } else if (args.size() > row->maxArgs) {
      std::cout << "Error (too many arguments, expected at most " << row->maxArgs << "): " << line << std::endl;
      countOk = false;
    }
  } else if (row->minArgs != 0) {
    std::cout << "Error (missing arguments, expected at least " << row->minArgs << "): " << line << std::endl;
    countOk = false;
  }

  bool ok = false;
  if (countOk) {
    ChessPlayer& player = engine.player;
    // Every handler runs under the game lock: one that doesn't stop the search
    // may read or change the game while thread 0 is about to play its move.
    player.commandLock.lock();
    if (row->stopSearchFirst) player.stopSearch();
    ok = (engine.*(row->handler))(args);
    player.commandLock.unlock();
  }
  if (!ok) std::cout << "# command \"" << line << "\" returned an error code " << std::endl;
}

LoopEnd runCommandLoop(WBEngine& engine, FILE* input) {
  char line[LineBufferSize];
  bool firstLine = true;
  while (!engine.quitRequested) {
    printBoardIfChanged(engine);
    if (!engine.xboardMode) std::cout << "# Your move: " << std::flush;
    if (!std::fgets(line, LineBufferSize, input)) {
      // End of input: a search with a clock may end by its own limits; one
      // without (analysis) would never end, so it is stopped.
      if (!engine.timeControl.timed) engine.player.stopSearch();
      engine.shutdownThreads();
      engine.quitRequested = true;
      break;
    }
    line[LineBufferSize - 1] = '\0';
    const size_t length = trimLine(line);
    if (firstLine && std::strcmp(line, "uci") == 0) {
      engine.quitRequested = true;
      return LoopEnd::UciRequested;
    }
    firstLine = false;
    if (length > 0) dispatchLine(engine, line);
    std::cout << std::flush;
    if (engine.quitRequested) break;
    if (engine.player.isSearching()) continue;
    checkGameEnd(engine);
    startSearchIfDue(engine);
  }
  return LoopEnd::Quit;
}

void printBoardIfChanged(WBEngine& engine) {
  // Also while a search runs: thread 0 changes the board only under the lock.
  std::lock_guard<std::mutex> hold(engine.player.gameMutex);
  if (engine.boardChanged) engine.printBoard();
}

void checkGameEnd(WBEngine& engine) {
  ChessPlayer& player = engine.player;
  if (!engine.gameOver) {
    engine.gameOver = player.reportGameEnd();
    if (!engine.gameOver && player.hasPlayablePosition() && !player.gameHasRoom()) {
      // The game record is full: end the game rather than write past it.
      std::cout << "1/2-1/2 {Game too long}" << std::endl;
      engine.gameOver = true;
    }
  }
  if (engine.gameOver) {
    engine.engineColor = 2;
    engine.forceMode = true;
  }
}

void startSearchIfDue(WBEngine& engine) {
  ChessPlayer& player = engine.player;
  if (engine.engineColor == 2 || player.board->sideToMove != engine.engineColor) return;
  // A board left half-filled by a refused position is never searched.
  if (!player.hasPlayablePosition()) return;
  // The position searched is on the screen before the search can answer it.
  printBoardIfChanged(engine);
  player.setupSearch(false);
  // A table just made is still being mapped; the search would pay for each
  // page it touches first, at many times the cost of the mapping.
  player.waitForTablePages();
  player.startSearch();
}
