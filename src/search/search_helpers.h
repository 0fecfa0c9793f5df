#pragma once
// Small per-node helpers of SearchThread shared by the search routines.
#include "board/make_move.h"
#include "search/time_control.h"
#include "eval/evaluate.h"
#include "search/search_thread.h"

template <Color C>
inline int32_t SearchThread::nodeEval(int32_t alpha, int32_t beta) {
  return evaluate(board, *pawnHash, evalCache, alpha, beta);
}

// Starts loading the table bucket of the position after m before the move is
// made, so that the child's probe finds it in the cache.
template <Color C>
inline void SearchThread::prefetchAfter(Move m) const {
  ttHash->prefetch(plainKeyAfter<C>(board, m));
}

// A side facing a bare king can't lose; a bare king can't win.
template <Color C>
inline int32_t SearchThread::lowestScoreAt(uint32_t ply) const {
  return board.side[opponent(C)].total == 1 ? 0 : int32_t(ply) - MateScore;
}
template <Color C>
inline int32_t SearchThread::highestScoreAt(uint32_t ply) const {
  return board.side[C].total == 1 ? 0 : MateScore - int32_t(ply + 1);
}

// Thread 0 asks its owner whether time is up; true means stop now.
template <Color C>
inline bool SearchThread::timeCheck() {
  if (threadId != 0) return false;
  if (!searchInterface->isTimeUp()) return false;
  requestStop();
  return true;
}

inline int32_t maxScore(int32_t a, int32_t b) { return a > b ? a : b; }
inline int32_t minScore(int32_t a, int32_t b) { return a < b ? a : b; }
