// The interior of the tree: principal-variation search with pruning,
// reductions and extensions, per side to move.
#include "board/attacks.h"
#include "board/draw_rules.h"
#include "board/make_move.h"
#include "search/killer_moves.h"
#include "search/move_ordering.h"
#include "search/move_selector.h"
#include "search/search_helpers.h"
#include "search/transposition_table.h"
#include "tablebase/search_probe.h"

namespace {

constexpr int32_t razorMargin[4] = {0, 232, 264, 296};
constexpr int32_t futilityMargin[6] = {0, 80, 160, 240, 320, 400};

// Score of a tablebase value r for the side to move, counted from the root.
inline int32_t tablebaseScore(int32_t r, uint32_t ply) {
  if (r == 0) return 0;
  return r > 0 ? r - int32_t(ply) : r + int32_t(ply);
}

}  // namespace

template <Color C>
int32_t SearchThread::searchMove(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, uint32_t moveCounter,
                                 PvLine& childLine) {
  constexpr Color Them = opponent(C);
  if (depth == 0) return -searchQuiescence<Them>(-beta, -alpha, ply, childLine);
  if (moveCounter != 1) {
    int32_t s = searchNode<Them>(-alpha - 1, -alpha, ply, depth, childLine);
    if (alpha + 1 == beta || -s <= alpha) return -s;
  }
  return -searchNode<Them>(-beta, -alpha, ply, depth, childLine);
}

template <Color C>
bool SearchThread::openNode(NodeStart& node, uint32_t ply, uint32_t depth, PvLine* line, bool prune,
                            int32_t& result) {
  Board_0x88& b = board;
  ++stats.nodes;
  stats.selDepth.raiseTo(ply);
  if (timeCheck<C>()) {
    result = StopScore;
    return true;
  }
  GameEndReason reason;
  if (isDrawByRule(b, reason)) {
    result = 0;
    return true;
  }
  // The record stack is nearly used up: stop descending here.
  if (b.ply >= lastUsableRecord) {
    result = nodeEval<C>(node.alpha, node.beta);
    return true;
  }

  node.lowest = lowestScoreAt<C>(ply);
  node.highest = highestScoreAt<C>(ply);
  node.alpha = maxScore(node.alpha, node.lowest - 1);
  node.beta = minScore(node.beta, node.highest + 1);
  if (node.alpha >= node.beta) {
    store(node.lowest, node.highest, node.alpha, node.beta, ply, depth, node.alpha, NoMove);
    result = node.alpha;
    return true;
  }

  bool hit = false;
  bool ttCut = ttProbe(*ttHash, b, node.alpha, node.beta, ply, depth, node.ttScore, node.ttMove, hit);
  if (hit) ++stats.ttHashHits;
  if (ttCut) {
    if (line && node.ttMove) {
      line->moves[0] = node.ttMove;
      line->length = 1;
    }
    result = node.ttScore;
    return true;
  }

  int32_t tbValue;
  if (probeInSearch<C>(tablebases, b, depth, iterationDepth, tbValue)) {
    ++stats.tbHits;
    result = tablebaseScore(tbValue, ply);
    return true;
  }
  if (!prune) return false;

  node.eval = nodeEval<C>(node.alpha, node.beta);
  const bool nullWindow = node.alpha + 1 == node.beta;
  if (depth <= 3 && nullWindow && !node.ttMove && node.alpha >= -20001 && node.alpha <= 19999) {
    int32_t t = node.alpha - razorMargin[depth];
    if (node.eval <= t) {
      PvLine scratch;
      int32_t q = searchQuiescence<C>(t, t + 1, ply, scratch);
      if (stopRequested()) {
        result = StopScore;
        return true;
      }
      if (q <= t) {
        result = q;
        return true;
      }
    }
  }
  if (depth <= 5) {
    int32_t f = node.eval - futilityMargin[depth];
    if (f >= node.beta) {
      store(node.lowest, node.highest, node.alpha, node.beta, ply, depth, f, NoMove);
      result = node.eval;
      return true;
    }
  }
  return false;
}

template <Color C>
int32_t SearchThread::searchNode(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, PvLine& line) {
  constexpr Color Them = opponent(C);
  Board_0x88& b = board;

  CheckInfo checkInfo;
  if (attackedAfterMove<C>(b, b.history[b.ply - 1].movePlayed) &&
      findCheck<C>(b, b.side[C].square[0], checkInfo))
    return searchInCheck<C>(checkInfo, alpha, beta, ply, depth + 1, line);

  NodeStart node;
  node.alpha = alpha;
  node.beta = beta;
  int32_t result;
  if (openNode<C>(node, ply, depth, &line, true, result)) return result;
  alpha = node.alpha;
  beta = node.beta;
  const int32_t lowest = node.lowest, highest = node.highest;
  Move ttMove = node.ttMove;
  int32_t ttScore = node.ttScore;

  if (depth >= 2 && alpha + 1 == beta && node.eval >= beta &&
      !(ply >= 2 && b.history[b.ply - 1].movePlayed == NoMove && b.history[b.ply - 2].movePlayed == NoMove) &&
      b.side[C].total - b.side[C].count[Pawn] > 1) {
    UndoRecord nullUndo;
    makeNullMove(b, nullUndo);
    int32_t reduction = 4 + int32_t(depth / 4 < 3 ? depth / 4 : 3);
    int32_t newDepth = int32_t(depth) - reduction;
    if (newDepth > 0) ttHash->prefetch(b.currentRecord().hashKey);
    PvLine scratch;
    int32_t s = newDepth > 0 ? -searchNode<Them>(-beta, 1 - beta, ply + 1, uint32_t(newDepth), scratch)
                             : -searchQuiescence<Them>(-beta, 1 - beta, ply + 1, scratch);
    unmakeNullMove(b, nullUndo);
    if (stopRequested()) return StopScore;
    if (s >= beta) {
      if (s >= 20001) s = beta;
      store(lowest, highest, alpha, beta, ply, depth, s, NoMove);
      return s;
    }
  }

  if (!ttMove && depth > 4) {
    PvLine scratch;
    searchNode<C>(alpha, beta, ply, depth - 4, scratch);
    if (stopRequested()) return StopScore;
    if (!scratch.empty()) {
      ttMove = scratch.first();
      ttScore = NoScore;
    }
  }

  MoveSelector selector(3, &b, checkInfo, NoMove);
  if (ply < 8 && hasOneLegalMove<C>(b, selector.pins)) ++depth;
  if (!line.empty()) selector.pvMove.move = line.first();
  selector.ttMove.move = ttMove;
  ScoredMove* next = selector.nextMove<C>();
  if (!next) return 0;  // stalemate: this node is not in check

  int32_t best = NoScore;
  uint32_t moveCounter = 0;
  PvLine child;
  UndoRecord undo;
  for (; next; next = selector.nextMove<C>()) {
    const Move m = next->move;
    uint32_t moveDepth = depth;
    if (depth >= 6 && ttMove && sameMove(m, ttMove) && ttScore != NoScore) {
      ++stats.singularExtAttempts;
      int32_t singularBeta = maxScore(ttScore - 2 * int32_t(depth), NoScore);
      int32_t r = searchExcluding<C>(m, singularBeta - 1, singularBeta, ply, depth / 2);
      if (stopRequested()) return StopScore;
      if (r < singularBeta) {
        ++stats.singularExtensions;
        moveDepth = depth + 1;
      }
    }
    if (moveDepth > 1) prefetchAfter<C>(m);
    child.clear();
    if (line.length > 1 && sameMove(m, line.moves[0])) child.assignTail(line);
    const bool quiet = isQuietForReduction<C>(b, m);
    b.history[b.ply].movePlayed = m;
    ++moveCounter;
    makeMove<C>(b, m, undo);
    int32_t s = searchLateMove<C>(maxScore(alpha, best), beta, ply, moveDepth, moveCounter, child,
                                  moveDepth >= 3 && moveCounter >= 2 && quiet);
    unmakeMove<C>(b, m, undo);
    if (stopRequested()) return StopScore;
    if (s >= beta) {
      recordCutoff(m, moveCounter);
      store(lowest, highest, alpha, beta, ply, moveDepth, s, m);
      return s;
    }
    if (s > best) {
      best = s;
      if (best > alpha) line.assign(m, child);
    }
  }
  store(lowest, highest, alpha, beta, ply, depth, best, line.first());
  return best;
}

template <Color C>
int32_t SearchThread::searchExcluding(Move excluded, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth) {
  Board_0x88& b = board;
  CheckInfo checkInfo;  // the singular test runs only outside check

  NodeStart node;
  node.alpha = alpha;
  node.beta = beta;
  int32_t result;
  if (openNode<C>(node, ply, depth, nullptr, true, result)) return result;
  alpha = node.alpha;
  beta = node.beta;
  Move ttMove = node.ttMove;

  if (!ttMove && depth > 4) {
    PvLine scratch;
    searchNode<C>(alpha, beta, ply, depth - 4, scratch);
    if (stopRequested()) return StopScore;
    if (!scratch.empty()) ttMove = scratch.first();
  }

  MoveSelector selector(3, &b, checkInfo, NoMove);
  if (ply < 8 && hasOneLegalMove<C>(b, selector.pins)) ++depth;
  selector.ttMove.move = ttMove;
  int32_t best = NoScore;
  uint32_t moveCounter = 0;
  PvLine child;
  UndoRecord undo;
  for (ScoredMove* next = selector.nextMove<C>(); next; next = selector.nextMove<C>()) {
    const Move m = next->move;
    if (sameMove(m, excluded)) continue;
    if (depth > 1) prefetchAfter<C>(m);
    child.clear();
    const bool quiet = isQuietForReduction<C>(b, m);
    b.history[b.ply].movePlayed = m;
    ++moveCounter;
    makeMove<C>(b, m, undo);
    int32_t s = searchLateMove<C>(maxScore(alpha, best), beta, ply, depth, moveCounter, child,
                                  moveCounter >= 2 && quiet);
    unmakeMove<C>(b, m, undo);
    if (stopRequested()) return StopScore;
    if (s >= beta) {
      recordCutoff(m, moveCounter);
      return s;
    }
    if (s > best) best = s;
  }
  return best;
}

template <Color C>
int32_t SearchThread::searchInCheck(const CheckInfo& checkInfo, int32_t alpha, int32_t beta, uint32_t ply,
                                    uint32_t depth, PvLine& line) {
  Board_0x88& b = board;
  NodeStart node;
  node.alpha = alpha;
  node.beta = beta;
  int32_t result;
  if (openNode<C>(node, ply, depth, &line, false, result)) return result;
  alpha = node.alpha;
  beta = node.beta;
  Move ttMove = node.ttMove;

  if (!ttMove && depth > 4) {
    PvLine scratch;
    searchInCheck<C>(checkInfo, alpha, beta, ply, depth - 4, scratch);
    if (stopRequested()) return StopScore;
    if (!scratch.empty()) ttMove = scratch.first();
  }

  MoveSelector selector(2, &b, checkInfo, NoMove);
  if (!line.empty()) selector.pvMove.move = line.first();
  selector.ttMove.move = ttMove;
  ScoredMove* next = selector.nextEvasion<C>();
  if (!next) return int32_t(ply) - MateScore;  // mated

  int32_t best = NoScore;
  uint32_t moveCounter = 0;
  PvLine child;
  UndoRecord undo;
  for (; next; next = selector.nextEvasion<C>()) {
    const Move m = next->move;
    if (depth > 1) prefetchAfter<C>(m);
    child.clear();
    if (line.length > 1 && sameMove(m, line.moves[0])) child.assignTail(line);
    b.history[b.ply].movePlayed = m;
    ++moveCounter;
    makeMove<C>(b, m, undo);
    int32_t s = searchMove<C>(maxScore(alpha, best), beta, ply + 1, depth - 1, moveCounter, child);
    unmakeMove<C>(b, m, undo);
    if (stopRequested()) return StopScore;
    if (s >= beta) {
      recordCutoff(m, moveCounter);
      store(node.lowest, node.highest, alpha, beta, ply, depth, s, m);
      return s;
    }
    if (s > best) {
      best = s;
      if (best > alpha) line.assign(m, child);
    }
  }
  store(node.lowest, node.highest, alpha, beta, ply, depth, best, line.first());
  return best;
}

template <Color C>
int32_t SearchThread::searchLateMove(int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth, uint32_t moveCounter,
                                     PvLine& child, bool reduce) {
  if (reduce) {
    int32_t s = searchMove<C>(alpha, beta, ply + 1, depth - 2, moveCounter, child);
    if (s <= alpha || stopRequested()) return s;
  }
  return searchMove<C>(alpha, beta, ply + 1, depth - 1, moveCounter, child);
}

void SearchThread::recordCutoff(Move move, uint32_t moveCounter) {
  ++stats.cutoffs;
  if (moveCounter == 1) ++stats.cutoffsOnFirstMove;
  updateKiller(board, move);
  if (board.ply > 0) updateCounterMove(board, board.history[board.ply - 1].movePlayed, move);
}

template int32_t SearchThread::searchMove<White>(int32_t, int32_t, uint32_t, uint32_t, uint32_t, PvLine&);
template int32_t SearchThread::searchMove<Black>(int32_t, int32_t, uint32_t, uint32_t, uint32_t, PvLine&);
template int32_t SearchThread::searchNode<White>(int32_t, int32_t, uint32_t, uint32_t, PvLine&);
template int32_t SearchThread::searchNode<Black>(int32_t, int32_t, uint32_t, uint32_t, PvLine&);
template int32_t SearchThread::searchExcluding<White>(Move, int32_t, int32_t, uint32_t, uint32_t);
template int32_t SearchThread::searchExcluding<Black>(Move, int32_t, int32_t, uint32_t, uint32_t);
template int32_t SearchThread::searchInCheck<White>(const CheckInfo&, int32_t, int32_t, uint32_t, uint32_t,
                                                    PvLine&);
template int32_t SearchThread::searchInCheck<Black>(const CheckInfo&, int32_t, int32_t, uint32_t, uint32_t,
                                                    PvLine&);
template int32_t SearchThread::searchLateMove<White>(int32_t, int32_t, uint32_t, uint32_t, uint32_t, PvLine&, bool);
template int32_t SearchThread::searchLateMove<Black>(int32_t, int32_t, uint32_t, uint32_t, uint32_t, PvLine&, bool);
