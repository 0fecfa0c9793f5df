#include "driver/chess_player.h"

#include <iostream>
#include <thread>

ChessPlayer::ChessPlayer(TimeControl* tc, EngineInterface* eng)
    : timeControl(tc), board(std::make_unique<Board_0x88>()), maxCores(std::thread::hardware_concurrency()), engine(eng) {
  // A platform that can't tell its core count still gets one search thread.
  if (maxCores == 0) maxCores = 1;
}

ChessPlayer::~ChessPlayer() { exitThreads(); }

void ChessPlayer::setupSearch(bool recreate) {
  if (recreate) {
    ttHash.reset();
    pawnHash.reset();
  }
  if (!ttHash || ttHashSizeMB != currentTTHashSizeMB) {
    if (!ttHash) ttHash = std::make_unique<TTHashTable>("TT hash");
    currentTTHashSizeMB = ttHashSizeMB = uint32_t(ttHash->sizeFor(ttHashSizeMB));
  }
  if (!pawnHash || pawnHashSizeMB != currentPawnHashSizeMB) {
    if (!pawnHash) pawnHash = std::make_unique<PawnHash>();
    currentPawnHashSizeMB = pawnHashSizeMB = uint32_t(pawnHash->sizeFor(pawnHashSizeMB));
  }
  if (requestedCores == currentCores && !recreate) return;
  currentCores = requestedCores;
}

void ChessPlayer::stopSearch() {}

void ChessPlayer::exitThreads() {}

bool ChessPlayer::isSearching() const { return false; }

bool ChessPlayer::reportGameEnd() { return false; }

void ChessPlayer::setCores(uint32_t cores) {
  requestedCores = cores < maxCores ? cores : maxCores;
  std::cout << "# will now use " << requestedCores << " cores (requested=" << cores << ", current=" << currentCores
            << ", max=" << maxCores << ")" << std::endl;
}
