#include <cstdlib>
#include <iostream>

#include "board/move_text.h"
#include "xboard/wb_engine.h"

bool WBEngine::cmdProtover(const Arguments&) {
  std::cout << "feature ping=1\n"
               "feature setboard=1\n"
               "feature playother=1\n"
               "feature usermove=1\n"
               "feature colors=0\n"
               "feature sigint=0\n"
               "feature sigterm=0\n"
               "feature analyze=1\n"
               "feature name=0\n"
               "feature nps=0\n"
               "feature debug=1\n"
               "feature egt=\"gaviota\"\n"
               "feature smp=1\n"
               "feature variants=\"normal\"\n"
               "feature option=\"ttHashSizeMB -spin 256 1 1048576\"\n"
               "feature option=\"pawnHashSizeMB -spin 32 1 1048576\"\n"
            << "feature option=\"gtbCacheSizeMB -spin " << player.gtbCacheSizeMB << " 0 1048576\"\n"
            << "feature option=\"gtbPath -path " << player.gtbPath << "\"\n"
            << "feature option=\"bookFilePath -path " << player.book.currentPath() << "\"\n"
            << "feature myname=\"Tolva 0.7.0\"" << std::endl;
  // Sizes set since start-up (ini file, option) are applied now, before the
  // host starts a game; never under a running search, which still uses the
  // tables (the next search start applies them then).
  if (!player.isSearching()) player.setupSearch(false);
  std::cout << "feature done=1" << std::endl;
  return true;
}

bool WBEngine::cmdPing(const Arguments& args) {
  std::cout << "pong " << std::atoi(args.empty() ? "" : args[0].c_str()) << std::endl;
  return true;
}

bool WBEngine::cmdPost(const Arguments&) {
  player.post = true;
  return true;
}

bool WBEngine::cmdNopost(const Arguments&) {
  player.post = false;
  return true;
}

bool WBEngine::cmdUsermove(const Arguments& args) {
  const std::string text = args.empty() ? std::string() : args[0];
  if (gameOver) {
    std::cout << "Error (cannot make a move at end of game)" << std::endl;
    return false;
  }
  if (text.size() != 4 && text.size() != 5) {
    std::cout << "Error (illegal argument to 'usermove' command): " << text << std::endl;
    return false;
  }
  Move move = NoMove;
  if (!player.parseUserMove(text, move)) {
    std::cout << "Error (illegal move): " << text << std::endl;
    return false;
  }
  // Recorded before it is announced, so that a move the full history can't
  // take leaves only the error behind.
  if (!player.recordMove(move)) {
    std::cout << "Error (game too long, no more moves can be recorded): " << text << std::endl;
    return false;
  }
  std::cout << "# making user move: " << text << std::endl;
  boardChanged = true;
  // In normal play the turn goes to the engine; in analyze mode the analysis
  // follows the new position.
  if (!forceMode || analyzeMode) engineColor = player.board->sideToMove;
  printBoard();
  return true;
}

void WBEngine::makeEngineMove(Move& move) {
  // The offer is judged before the move is on the board; it is printed just
  // before the move that completes the claim.
  const bool offerDraw = player.shouldOfferDraw(move);
  char text[6];
  moveToText(move, text);
  if (!player.recordMove(move)) {
    // The engine stops playing rather than search the same move again.
    std::cout << "# cannot play engine move " << text << ": the game history is full" << std::endl;
    engineColor = 2;
    forceMode = true;
    return;
  }
  if (offerDraw) std::cout << "offer draw\n";
  std::cout << "# making engine move: " << text << '\n';
  std::cout << "move " << text << std::endl;
  boardChanged = true;
  if (player.ponderMove != NoMove) {
    moveToText(player.ponderMove, text);
    std::cout << "# ponder move: " << text << '\n';
  }
  if (boardChanged) printBoard();
  if (!gameOver) gameOver = player.reportGameEnd();
  if (!gameOver) {
    std::cout.flush();
    if (autoMode) engineColor = player.board->sideToMove;
    return;
  }
  engineColor = 2;
  forceMode = true;
  std::cout.flush();
  if (autoMode) engineColor = player.board->sideToMove;
}
