#pragma once
#include <atomic>
#include <cstdint>

#include "board/board.h"
#include "board/check_info.h"
#include "eval/eval_cache.h"
#include "eval/pawn_hash.h"
#include "search/pv_line.h"
#include "search/root_request.h"
#include "search/score.h"
#include "search/search_interface.h"
#include "search/search_statistics.h"
#include "search/thread.h"
#include "search/tt_entry.h"

class TimeControl;
struct TablebaseState;

// One searcher: its own board, pointers to the shared tables, its counters
// and flags, and the search routines, each per side to move.
class SearchThread : public WorkerThread {
 public:
  SearchThread(uint32_t index, TTHashTable* ttHash, PawnHash* pawnHash, const TablebaseState* tablebases,
               TimeControl* timeControl, SearchInterface* searchInterface, WorkFunction work = nullptr,
               void* workArgument = nullptr);
  ~SearchThread() override = default;

  // The flags are cleared when the main thread wakes the thread, not when the
  // search begins, so that a stop sent in between still counts.
  void prepareWork() override {
    stop.store(false, std::memory_order_relaxed);
    discardResult.store(false, std::memory_order_relaxed);
  }

  // Finds the move for the position of `gameBoard`; 0 for no move.
  template <Color C>
  void searchRoot(const Board_0x88& gameBoard, Move& bestMove, Move& ponderMove);
  // Picks the instance by the side to move of the board.
  void searchRootForSide(const Board_0x88& gameBoard, Move& bestMove, Move& ponderMove);

  template <Color C>
  int32_t searchNode(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, PvLine& line);
  template <Color C>
  int32_t searchInCheck(const CheckInfo& checkInfo, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth,
                        PvLine& line);
  // The node again without `excluded`: is that move singular?
  template <Color C>
  int32_t searchExcluding(Move excluded, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth);
  // Searches the child after a made move by colour C; the score is from C's view.
  template <Color C>
  int32_t searchMove(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, uint32_t moveCounter,
                     PvLine& childLine);
  template <Color C>
  int32_t searchQuiescence(int32_t alpha, int32_t beta, uint32_t ply, PvLine& line);

  bool stopRequested() const { return stop.load(std::memory_order_relaxed); }
  void requestStop() { stop.store(true, std::memory_order_relaxed); }

  uint32_t threadId;
  Board_0x88 board;
  TTHashTable* ttHash;
  PawnHash* pawnHash;
  EvalCache evalCache;
  const TablebaseState* tablebases;
  TimeControl* timeControl;
  SearchInterface* searchInterface;
  const RootRequest* rootRequest = nullptr;  // null: every move, one line
  SearchStatistics stats;
  uint32_t iterationDepth = 0;
  int32_t firstTwoMovesTime = 0;
  std::atomic<bool> stop{false};
  std::atomic<bool> discardResult{false};
  bool easyMove = false;

 private:
  // What the steps common to every node leave for its move loop.
  struct NodeStart {
    int32_t alpha, beta;      // the window after the mate-distance step
    int32_t lowest, highest;  // what this position can still come to
    Move ttMove = NoMove;
    int32_t ttScore = NoScore;
    int32_t eval = 0;
  };
  // The opening steps of a node: count, time check, draw test, mate distance,
  // table and tablebase probes, and with `prune` evaluation, razoring and
  // futility. True when the node is decided, with its score in `result`.
  template <Color C>
  bool openNode(NodeStart& node, uint32_t ply, uint32_t depth, PvLine* line, bool prune, int32_t& result);

  // A made move searched one ply less, or two when `reduce`, with a re-search
  // at the full depth when the reduced search beats alpha.
  template <Color C>
  int32_t searchLateMove(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, uint32_t moveCounter,
                         PvLine& child, bool reduce);
  // Counts a beta cutoff and remembers its move as killer and counter move.
  void recordCutoff(Move move, uint32_t moveCounter);

  // The deepest record a node may use; a line that reaches it stops descending.
  static constexpr uint32_t lastUsableRecord = HistorySize - 4;

  template <Color C>
  int32_t nodeEval(int32_t alpha, int32_t beta);
  // What this position can still come to, from the side to move's view.
  template <Color C>
  int32_t lowestScoreAt(uint32_t ply) const;
  template <Color C>
  int32_t highestScoreAt(uint32_t ply) const;
  template <Color C>
  bool timeCheck();
  template <Color C>
  void prefetchAfter(Move m) const;
  void store(int32_t lowest, int32_t highest, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth,
             int32_t score, Move move);
};

// Judged before the move is made: a move to an empty square that is no
// promotion, no en passant and no pawn step to the seventh rank.
template <Color C>
inline bool isQuietForReduction(const Board_0x88& b, Move m) {
  Square to = moveToSquare(m);
  if (b.piece[to] != NoPiece) return false;
  if (m & (1u << 12)) return false;
  if (b.piece[moveFromSquare(m)] == Pawn && (to >> 4) == (C == White ? 6 : 1)) return false;
  return true;
}
