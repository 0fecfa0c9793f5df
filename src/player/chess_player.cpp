#include "player/chess_player.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "player/random_seed.h"
#include "search/search_thread.h"

ChessPlayer::ChessPlayer(TimeControl* tc, EngineInterface* eng)
    : timeControl(tc),
      maxCores(std::thread::hardware_concurrency()),
      engine(eng),
      tablebases(std::make_unique<TablebaseState>()) {
  // A platform that can't tell its core count still gets one search thread.
  if (maxCores == 0) maxCores = 1;
}

ChessPlayer::~ChessPlayer() {
  if (!threads.empty()) stopSearch();
  exitThreads();
  threads.clear();
  closeTablebases(*tablebases);
}

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
  if (requestedCores == currentCores && !recreate && !threads.empty()) {
    // The tables may have been replaced: the threads follow them.
    for (auto& t : threads) {
      t->ttHash = ttHash.get();
      t->pawnHash = pawnHash.get();
      t->searchInterface = searchOutput;
    }
    return;
  }
  currentCores = requestedCores;
  exitThreads();
  threads.clear();
  for (uint32_t i = 0; i < currentCores; ++i) {
    threads.push_back(std::make_unique<SearchThread>(i, ttHash.get(), pawnHash.get(), tablebases.get(), timeControl,
                                                     searchOutput, &ChessPlayer::think, this));
    threads.back()->rootRequest = &rootRequest;
  }
}

void ChessPlayer::clearSearchMemory() {
  if (ttHash) ttHash->clear();
  if (pawnHash) pawnHash->clear();
  for (auto& t : threads) {
    t->evalCache.clear();
    std::memset(t->board.counterMove, 0, sizeof t->board.counterMove);
  }
}

void ChessPlayer::startSearch() {
  // Workers first: thread 0 may end at once (a book or random move) and must
  // find every worker already running so that its stop reaches them.
  for (size_t i = threads.size(); i-- > 1;) threads[i]->start();
  if (!threads.empty()) threads[0]->start();
}

void ChessPlayer::stopSearch() {
  // The flags are set while the command thread still holds the game lock, so
  // that thread 0, waiting for the lock to play its move, finds them once it
  // has it, and drops the move.
  for (auto& t : threads) {
    if (!t->isBusy()) continue;
    t->requestStop();
    t->discardResult.store(true, std::memory_order_relaxed);
  }
  const bool held = commandLock.owns_lock();
  if (held) commandLock.unlock();
  for (auto& t : threads) t->waitUntilIdle();
  if (held) commandLock.lock();
}

void ChessPlayer::stopWorkers() {
  for (size_t i = 1; i < threads.size(); ++i) {
    if (!threads[i]->isBusy()) continue;
    threads[i]->requestStop();
    threads[i]->waitUntilIdle();
  }
}

void ChessPlayer::waitForThreads() {
  for (auto& t : threads) t->waitUntilIdle();
}

void ChessPlayer::exitThreads() {
  for (auto& t : threads) t->exit();
}

bool ChessPlayer::isSearching() const {
  for (const auto& t : threads)
    if (t->runState.load(std::memory_order_acquire) == RunRunning) return true;
  return false;
}

void ChessPlayer::setCores(uint32_t cores) {
  requestedCores = cores < maxCores ? cores : maxCores;
  std::cout << "# will now use " << requestedCores << " cores (requested=" << cores << ", current=" << currentCores
            << ", max=" << maxCores << ")" << std::endl;
}

void ChessPlayer::reinitTablebases() { initTablebasesOfType("gaviota", nullptr); }

void ChessPlayer::initTablebasesOfType(const std::string& type, const char* path) {
  // The search reads the store while it runs: it is stopped first, and the
  // main loop starts it again when it is still the engine's turn.
  if (isSearching()) stopSearch();
  if (type == "gaviota" && path) {
    std::snprintf(gtbPath, sizeof gtbPath, "%s", path);
  }
  initTablebases(*tablebases, type, gtbPath, gtbCacheSizeMB);
}

void ChessPlayer::think(uint32_t index, void* argument) {
  ChessPlayer& player = *static_cast<ChessPlayer*>(argument);
  SearchThread& self = *player.threads[index];
  Move move = NoMove, ponder = NoMove;
  if (index != 0) {
    if (!self.stopRequested()) self.searchRootForSide(*player.board, move, ponder);
    self.finishWork();
    return;
  }

  seedRandomFromClock();
  TimeControl& tc = *player.timeControl;
  tc.startClock();
  if (tc.timed && !player.hostSetsTimeBudget) tc.allocateTime(player.ply);
  bool decided = false;
  // Trial moves are made on this thread's own board: the other threads copy
  // the game board while this one picks.
  if (player.randomGame && player.randomMove(self.board, move)) decided = true;
  // Never in analysis: only a timed search asks the book.
  if (!decided && tc.timed && player.bookEnabled) {
    // The book tries its moves for legality on a copy, for the same reason.
    self.board = *player.board;
    decided = player.book.probe(self.board, move, player.rootRequest.allowed, player.rootRequest.allowedCount);
  }
  if (!decided && !self.stopRequested()) {
    if (player.pawnHash) player.pawnHash->hits.set(0);
    if (!player.outOfBook) {
      tc.correctOutOfBook(player.ply);
      player.outOfBook = true;
    }
    self.searchRootForSide(*player.board, move, ponder);
    player.ponderMove = ponder;
  }
  // The other threads have stopped reading the game board before it changes.
  player.stopWorkers();
  if (move != NoMove && !self.discardResult.load(std::memory_order_relaxed)) {
    std::lock_guard<std::mutex> hold(player.gameMutex);
    if (!self.discardResult.load(std::memory_order_relaxed)) player.engine->makeEngineMove(move);
  } else if (move == NoMove && !self.discardResult.load(std::memory_order_relaxed)) {
    player.engine->searchEndedWithoutMove();
  }
  tc.stopClock();
  self.finishWork();
}

bool ChessPlayer::randomMove(Board_0x88& scratch, Move& move) {
  if (!hasPlayablePosition()) return false;
  scratch = *board;
  MoveList list;
  bool inCheck;
  generateLegalMoves(scratch, list, inCheck);
  if (list.count == 0) return false;
  move = list.moves[uint32_t(rand() & 0x7fffffff) % list.count].move;
  return true;
}

bool ChessPlayer::isTimeUp() {
  uint64_t nodes = 0;
  for (const auto& t : threads) nodes += t->stats.nodes.get();
  return timeControl->isTimeUp(currentCores, nodes);
}

void ChessPlayer::collectStatistics() {
  SearchTotals sum;
  for (const auto& t : threads) {
    const SearchStatistics& s = t->stats;
    sum.nodes += s.nodes.get();
    sum.qsNodes += s.qsNodes.get();
    sum.qsChecks += s.qsChecks.get();
    sum.cutoffs += s.cutoffs.get();
    sum.cutoffsOnFirstMove += s.cutoffsOnFirstMove.get();
    sum.qsCutoffs += s.qsCutoffs.get();
    sum.qsCutoffsOnFirstMove += s.qsCutoffsOnFirstMove.get();
    sum.singularExtAttempts += s.singularExtAttempts.get();
    sum.singularExtensions += s.singularExtensions.get();
    sum.ttHashHits += s.ttHashHits.get();
    sum.tbHits += s.tbHits.get();
    uint32_t sel = uint32_t(s.selDepth.get());
    if (sel > sum.selDepth) sum.selDepth = sel;
  }
  sum.pawnHashHits = pawnHash ? pawnHash->hits.get() : 0;
  totals = sum;
}
