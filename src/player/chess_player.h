#pragma once
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "board/board.h"
#include "board/game_record.h"
#include "diagnostics/perft_entry.h"
#include "player/engine_interface.h"
#include "book/opening_book.h"
#include "board/relaxed.h"
#include "search/time_control.h"
#include "eval/pawn_hash.h"
#include "search/root_request.h"
#include "search/search_interface.h"
#include "search/search_statistics.h"
#include "search/tt_entry.h"
#include "tablebase/search_probe.h"

class SearchThread;

// The game and its search: board, move history, hash tables and threads.
class ChessPlayer : public SearchInterface, public GameRecord {
 public:
  ChessPlayer(TimeControl* timeControl, EngineInterface* engine);
  ChessPlayer(const ChessPlayer&) = delete;
  ChessPlayer& operator=(const ChessPlayer&) = delete;
  ~ChessPlayer() override;

  // Makes the hash tables and the thread set match the settings.
  void setupSearch(bool recreate);
  // The speed-measuring commands (perft, divide, selftest), the first search
  // after a resize and UCI's readyok first let the search tables' pages be
  // mapped, so that the kernel's work doesn't slow what follows.
  void waitForTablePages() {
    if (ttHash) ttHash->waitUntilMapped();
    if (pawnHash) pawnHash->waitUntilMapped();
  }
  // Empties the tables and what the threads remember from earlier searches
  // (evaluations, counter moves), keeping their sizes. Only while idle.
  void clearSearchMemory();
  // Cancels a running search; its result is discarded.
  void stopSearch();
  // Waits for every thread to be idle and puts it in the exit state.
  void exitThreads();
  // True while any search thread is in the run state.
  bool isSearching() const;
  // Checks the position for a finished game and prints the result.
  bool reportGameEnd();
  // The game-end rules for a position the engine won't play: one without a king.
  bool reportUnplayableEnd();
  void setCores(uint32_t cores);
  // After `option` changed gtbPath or gtbCacheSizeMB: the tablebases are set
  // up again from the new settings.
  void reinitTablebases();
  // egtpath: tablebases of `type` from `path` (or from gtbPath when null);
  // any type but "gaviota" turns them off.
  void initTablebasesOfType(const std::string& type, const char* path);

  // The work of every search thread each time it is woken.
  static void think(uint32_t index, void* player);
  // A legal move of the game's position picked at random, found on `scratch`
  // (which it overwrites); false when there is none.
  bool randomMove(Board_0x88& scratch, Move& move);
  // The legal move that the text names; the generated move keeps all its flags.
  bool parseUserMove(const std::string& text, Move& move);
  // Would playing `move` give a position where a draw can be claimed?
  bool shouldOfferDraw(Move move);
  // Main loop: wakes every search thread.
  void startSearch();
  // Thread 0 at the end of its think: stops the other threads and waits for them.
  void stopWorkers();
  // Waits until no thread is busy.
  void waitForThreads();

  // SearchInterface: the time check of thread 0 and the search output.
  bool isTimeUp() override;
  void reportLine(uint32_t depth, int32_t score, const PvLine& line) override;
  void reportStatistics(uint32_t depth) override;
  // Fills `totals` from all threads.
  void collectStatistics();

  SearchTotals totals;

  TimeControl* timeControl;

  std::unique_ptr<TTHashTable> ttHash;
  uint32_t currentTTHashSizeMB = 0;
  uint32_t ttHashSizeMB = 256;
  PerftTable perft;
  std::unique_ptr<PawnHash> pawnHash;
  uint32_t currentPawnHashSizeMB = 0;
  uint32_t pawnHashSizeMB = 32;
  uint32_t gtbCacheSizeMB = 16;
  char gtbPath[256] = "C:/gtb";
  OpeningBook book;
  Relaxed<bool> bookEnabled = true;  // commands without the stop flag change these during a search
  bool outOfBook = false;
  Move ponderMove = 0;
  Relaxed<bool> randomGame = false;
  Relaxed<bool> post = true;
  uint32_t maxCores;
  uint32_t requestedCores = 1;
  uint32_t currentCores = 0;
  EngineInterface* engine;
  // Where the search threads report and ask for the time: this player, or
  // the UCI front end. Follows at the next setupSearch.
  SearchInterface* searchOutput = this;
  // The root moves to choose from and the lines to show: set by the front
  // end before a search starts (xboard keeps every move and one line).
  RootRequest rootRequest;
  // The front end sets maxTime itself before each search (UCI clocks are the
  // host's, in milliseconds): no session allocation at the think's start.
  bool hostSetsTimeBudget = false;
  std::unique_ptr<TablebaseState> tablebases;
  std::vector<std::unique_ptr<SearchThread>> threads;

  // The hand-over of the game state (board, record, who plays what) between
  // the command thread and thread 0. Thread 0 plays its move under the lock;
  // the command loop holds it through every command and every diagram. A lock
  // rather than atomics because a move changes many fields that must be seen
  // together, and it is taken once a move, never in the search itself.
  std::mutex gameMutex;
  // The command loop's hold on gameMutex; stopSearch lets go of it while it
  // waits, since thread 0 may need it to finish.
  std::unique_lock<std::mutex> commandLock{gameMutex, std::defer_lock};
};
