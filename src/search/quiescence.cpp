// Captures behind the horizon, until they run out; a check hands over to the
// in-check node so that every evasion is tried.
#include "board/attacks.h"
#include "board/draw_rules.h"
#include "board/make_move.h"
#include "search/killer_moves.h"
#include "search/move_ordering.h"
#include "search/move_selector.h"
#include "search/search_helpers.h"

template <Color C>
int32_t SearchThread::searchQuiescence(int32_t alpha, int32_t beta, uint32_t ply, PvLine& line) {
  constexpr Color Them = opponent(C);
  Board_0x88& b = board;

  CheckInfo checkInfo;
  if (attackedAfterMove<C>(b, b.history[b.ply - 1].movePlayed) &&
      findCheck<C>(b, b.side[C].square[0], checkInfo)) return searchInCheck<C>(checkInfo, alpha, beta, ply, 1, line);

  stats.selDepth.raiseTo(ply);
  ++stats.nodes;
  ++stats.qsNodes;
  if (timeCheck<C>()) return StopScore;
  GameEndReason reason;
  if (isDrawByRule(b, reason)) return 0;

  const int32_t a = maxScore(alpha, lowestScoreAt<C>(ply) - 1);
  const int32_t bb = minScore(beta, highestScoreAt<C>(ply) + 1);
  if (a >= bb) return a;

  const int32_t eval = nodeEval<C>(a, bb);
  if (eval >= bb) return eval;
  // The record stack is nearly used up: stand pat.
  if (b.ply >= lastUsableRecord) return eval;
  int32_t best = eval;

  MoveSelector selector(4, &b, checkInfo, NoMove);
  if (!line.empty()) {
    // Only a hint that this search would generate anyway.
    Move pv = line.first();
    unsigned kind = moveKind(pv);
    // A Chess960 castling, the king taking its own rook, is no capture.
    if ((b.piece[moveToSquare(pv)] != NoPiece && kind != MoveCastling) || kind == MoveEnPassant ||
        (kind == MovePromotion && promotionPiece(pv) == Queen))
      selector.pvMove.move = pv;
  }

  uint32_t moveCounter = 0;
  PvLine child;
  UndoRecord undo;
  for (ScoredMove* next = selector.nextMove<C>(); next; next = selector.nextMove<C>()) {
    const Move m = next->move;
    ++moveCounter;
    int32_t gain;
    if (isBadCapture<C>(b, m, gain)) continue;
    child.clear();
    if (!line.empty() && sameMove(m, line.moves[0])) child.assignTail(line);
    b.history[b.ply].movePlayed = m;
    makeMove<C>(b, m, undo);
    int32_t s = -searchQuiescence<Them>(-bb, -maxScore(a, best), ply + 1, child);
    unmakeMove<C>(b, m, undo);
    if (stopRequested()) return StopScore;
    if (s >= bb) {
      ++stats.qsCutoffs;
      if (moveCounter == 1) ++stats.qsCutoffsOnFirstMove;
      return s;
    }
    if (s > best) {
      best = s;
      if (best > a) line.assign(m, child);
    }
  }
  return best;
}

template int32_t SearchThread::searchQuiescence<White>(int32_t, int32_t, uint32_t, PvLine&);
template int32_t SearchThread::searchQuiescence<Black>(int32_t, int32_t, uint32_t, PvLine&);
