#pragma once
#include <cstdint>
#include <memory>

#include "board/board.h"
#include "driver/engine_interface.h"
#include "driver/time_control.h"
#include "search/pawn_hash.h"
#include "search/tt_entry.h"

constexpr uint32_t MaxGamePly = 1023;

// The game and its search: board, move history, hash tables and threads.
class ChessPlayer {
 public:
  ChessPlayer(TimeControl* timeControl, EngineInterface* engine);
  ChessPlayer(const ChessPlayer&) = delete;
  ChessPlayer& operator=(const ChessPlayer&) = delete;
  ~ChessPlayer();

  // Makes the hash tables and the thread set match the settings.
  void setupSearch(bool recreate);
  // Cancels a running search; its result is discarded.
  void stopSearch();
  // Waits for every thread to be idle and puts it in the exit state.
  void exitThreads();
  // True while any search thread is in the run state.
  bool isSearching() const;
  // Checks the position for a finished game and prints the result.
  bool reportGameEnd();
  void setCores(uint32_t cores);

  TimeControl* timeControl;
  std::unique_ptr<Board_0x88> board;
  uint32_t ply = 0;
  Move moveHistory[MaxGamePly] = {};
  UndoRecord undoHistory[MaxGamePly];

  std::unique_ptr<TTHashTable> ttHash;
  uint32_t currentTTHashSizeMB = 0;
  uint32_t ttHashSizeMB = 256;
  uint32_t perftHashSizeMB = 64;
  std::unique_ptr<PawnHash> pawnHash;
  uint32_t currentPawnHashSizeMB = 0;
  uint32_t pawnHashSizeMB = 32;
  uint32_t gtbCacheSizeMB = 16;
  char gtbPath[256] = "C:/gtb";
  char bookFilePath[256] = "book.bin";
  bool bookEnabled = true;
  bool outOfBook = false;
  Move ponderMove = 0;
  bool randomGame = false;
  bool post = true;
  uint32_t maxCores;
  uint32_t requestedCores = 1;
  uint32_t currentCores = 0;
  EngineInterface* engine;
};
