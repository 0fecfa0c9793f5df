// Iterative deepening at the root: first scoring of the root moves, then
// iterations inside aspiration windows, and the rules that end the search.
#include <algorithm>
#include <cstring>
#include <iostream>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "search/killer_moves.h"
#include "search/move_ordering.h"
#include "search/move_selector.h"
#include "search/search_helpers.h"
#include "search/transposition_table.h"
#include "tablebase/search_probe.h"

namespace {

// Workers skip iterations so that they don't all do the same work.
constexpr uint32_t skipSize[12] = {1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3};
constexpr uint32_t skipPhase[12] = {0, 1, 0, 1, 2, 3, 0, 1, 2, 3, 4, 5};

constexpr uint32_t MaxIterations = 100;

bool workerSkips(uint32_t threadId, uint32_t depth) {
  if (threadId == 0) return false;
  uint32_t i = (threadId - 1) % 12;
  return ((depth + skipPhase[i]) / skipSize[i]) % 2 == 1;
}

// Takes over the game position: everything but the counter-move table.
void copyPosition(Board_0x88& to, const Board_0x88& from) {
  std::memcpy(to.piece, from.piece, sizeof to.piece);
  std::memcpy(to.color, from.color, sizeof to.color);
  std::memcpy(to.slot, from.slot, sizeof to.slot);
  to.side[White] = from.side[White];
  to.side[Black] = from.side[Black];
  to.psq[White] = from.psq[White];
  to.psq[Black] = from.psq[Black];
  std::memcpy(to.history, from.history, sizeof to.history);
  to.ply = from.ply;
  to.castlingRights = from.castlingRights;
  to.castling = from.castling;
  to.epSquare = from.epSquare;
  to.halfMoveClock = from.halfMoveClock;
  to.sideToMove = from.sideToMove;
}

}  // namespace

template <Color C>
void SearchThread::searchRoot(const Board_0x88& gameBoard, Move& bestMove, Move& ponderMove) {
  constexpr Color Them = opponent(C);
  Board_0x88& b = board;
  if (&gameBoard != &b) copyPosition(b, gameBoard);
  easyMove = false;
  firstTwoMovesTime = 0;
  stats.clear();
  iterationDepth = 0;
  const bool timedAtStart = timeControl->timed;
  const bool mainThread = threadId == 0;
  auto elapsed = [this]() {
    return int32_t(timeControl->currentElapsed() - timeControl->elapsedAtMoveStart);
  };

  // Line 0 is the search's own; more lines only for thread 0 when asked for.
  RootLine lines[RootRequest::MaxLines];
  PvLine& bestLine = lines[0].line;
  int32_t& bestScore = lines[0].score;
  PvLine currentLine, child;
  const bool restricted = rootRequest && rootRequest->allowedCount > 0;
  const bool severalLines = mainThread && rootRequest && rootRequest->lines > 1;
  uint32_t rootMoveCount = 0, allowedMoves = 0, tbRootMoves = 0;
  bool easyByIteration[MaxIterations] = {};
  UndoRecord undo;

  // Score every legal root move once, so that a move is known from the start.
  {
    CheckInfo checkInfo;
    bool inCheck = findCheck<C>(b, b.side[C].square[0], checkInfo);
    MoveSelector selector(inCheck ? 2 : 3, &b, checkInfo, NoMove);
    for (ScoredMove* next = inCheck ? selector.nextEvasion<C>() : selector.nextMove<C>(); next;
         next = inCheck ? selector.nextEvasion<C>() : selector.nextMove<C>()) {
      const Move m = next->move;
      ++rootMoveCount;
      if (restricted && !rootRequest->allows(m)) continue;
      ++allowedMoves;
      b.history[b.ply].movePlayed = m;
      makeMove<C>(b, m, undo);
      int32_t score;
      int32_t r;
      if (b.side[White].total + b.side[Black].total < 6 && probeTablebase<Them>(tablebases, b, r)) {
        ++stats.tbHits;
        ++tbRootMoves;
        score = r == 0 ? 0 : r < 0 ? -r - 1 : 1 - r;
      } else {
        score = -evaluate(b, *pawnHash, -MateScore, MateScore);
      }
      unmakeMove<C>(b, m, undo);
      if (score > bestScore) {
        bestScore = score;
        bestLine.moves[0] = m;
        bestLine.length = 1;
      }
    }
  }

  if (allowedMoves > 0 && tbRootMoves < allowedMoves) {
    const uint32_t lineCount = severalLines ? std::min(rootRequest->lines, allowedMoves) : 1;
    for (uint32_t depth = 1; depth <= MaxIterations; ++depth) {
      if (stopRequested()) break;
      if (workerSkips(threadId, depth)) continue;
      iterationDepth = depth;

      const bool themBare = b.side[Them].total == 1, usBare = b.side[C].total == 1;
      const int32_t floorScore = themBare ? 0 : -MateScore + int32_t((depth + 1) & ~1u);
      const int32_t alphaFloor = floorScore - 1;
      const int32_t ceilingScore = usBare ? 0 : MateScore - (int32_t((depth + 2) & ~1u) - 1);
      const int32_t betaCeiling = ceilingScore + 1;
      if (mainThread) easyByIteration[depth - 1] = false;

      // Each further line is the best of the moves that no line before it begins with.
      for (uint32_t pvIndex = 0; pvIndex < lineCount && !stopRequested(); ++pvIndex) {
        RootLine& root = lines[pvIndex];
        int32_t& delta = root.delta;
        const bool firstLine = pvIndex == 0;
        const bool filtered = restricted || !firstLine;
        auto searchable = [&](Move m) {
          if (restricted && !rootRequest->allows(m)) return false;
          for (uint32_t i = 0; i < pvIndex; ++i)
            if (sameMove(lines[i].line.first(), m)) return false;
          return true;
        };
        // A line whose move an earlier line has taken starts afresh; a line
        // new at this depth has no score to centre a window on.
        if (!root.line.empty() && !searchable(root.line.first())) root.line.clear();
        int32_t alpha = root.line.empty() ? alphaFloor : maxScore(root.score - delta, alphaFloor);
        int32_t beta = root.line.empty() ? betaCeiling : minScore(root.score + delta, betaCeiling);
        currentLine = root.line;

        int32_t best = NoScore;
        for (;;) {
          CheckInfo checkInfo;
          const bool inCheck = findCheck<C>(b, b.side[C].square[0], checkInfo);
          ++stats.nodes;
          const int32_t lowest = themBare ? 0 : NoScore;
          const int32_t highest = usBare ? 0 : MateScore - 1;
          if (mainThread && firstLine) easyMove = false;
          MoveSelector selector(inCheck ? 2 : 3, &b, checkInfo, NoMove);
          if (!currentLine.empty()) selector.pvMove.move = currentLine.first();
          const int32_t passStart = (!inCheck && depth > 5) ? elapsed() : 0;

          best = NoScore;
          int32_t second = NoScore;
          uint32_t moveCounter = 0;
          bool cutoff = false;
          ScoredMove* next = inCheck ? selector.nextEvasion<C>() : selector.nextMove<C>();
          while (next) {
            const Move m = next->move;
            if (filtered && !searchable(m)) {
              next = inCheck ? selector.nextEvasion<C>() : selector.nextMove<C>();
              continue;
            }
            child.clear();
            if (currentLine.length > 1 && sameMove(m, currentLine.first())) child.assignTail(currentLine);
            ++moveCounter;
            const bool quiet = isQuietForReduction<C>(b, m);
            b.history[b.ply].movePlayed = m;
            makeMove<C>(b, m, undo);
            int32_t s = searchLateMove<C>(maxScore(alpha, best), beta, 0, depth, moveCounter, child,
                                          !inCheck && moveCounter >= 2 && depth > 2 && quiet);
            unmakeMove<C>(b, m, undo);
            if (stopRequested()) break;
            if (s >= beta) {
              ++stats.cutoffs;
              if (moveCounter == 1) ++stats.cutoffsOnFirstMove;
              updateKiller(b, m);
              best = s;
              // A score beyond the ceiling ends the iteration without a re-search;
              // the move that reached it must not be lost.
              currentLine.assign(m, child);
              // The root's entry holds the best move, never a further line's.
              if (firstLine) store(lowest, highest, alpha, beta, 0, depth, s, m);
              cutoff = true;
              break;
            }
            if (s > best) {
              best = s;
              if (best > alpha) {
                currentLine.assign(m, child);
                if (mainThread && !severalLines) searchInterface->reportLine(depth, best, currentLine);
              }
            } else {
              second = maxScore(second, s);
            }
            next = inCheck ? selector.nextEvasion<C>() : selector.nextMove<C>();
            if (next && !inCheck && depth > 5 && moveCounter == 2 && firstLine)
              firstTwoMovesTime = elapsed() - passStart;
          }
          if (!cutoff) {
            if (mainThread && firstLine && moveCounter >= 2 && !stopRequested() && best > second + 199) easyMove = true;
            // A pass cut short before any move came back knows nothing worth keeping.
            if (!(stopRequested() && best == NoScore) && firstLine)
              store(lowest, highest, alpha, beta, 0, depth, best, currentLine.first());
          }

          if (stopRequested()) break;
          const bool failHigh = best >= beta && best <= ceilingScore;
          const bool failLow = best <= alpha && best >= floorScore;
          if (!failHigh && !failLow) break;
          if (failHigh) {
            beta = minScore(betaCeiling, best + delta);
          } else {
            beta = (alpha + beta) / 2;
            alpha = maxScore(best - delta, alphaFloor);
          }
          delta *= 2;
        }

        if (!currentLine.empty()) {
          root.line = currentLine;
          root.score = best;
        }
      }

      if (severalLines && !stopRequested()) {
        // Best first; a later line may come out above an earlier one when
        // the search of the earlier one was cut by its window.
        std::stable_sort(lines, lines + lineCount,
                         [](const RootLine& x, const RootLine& y) { return x.score > y.score; });
        searchInterface->reportLines(depth, lines, lineCount);
      }
      if (depth > 7) std::cout.flush();
      if (!mainThread || stopRequested()) continue;

      easyByIteration[depth - 1] = easyMove;
      const std::string moveText = moveToString(bestLine.first());
      const bool timed = timeControl->timed;
      const int32_t maxTime = int32_t(timeControl->maxTime);
      if (depth == 1 && rootMoveCount == 1) {
        std::cout << "# forced move: " << moveText << std::endl;
        requestStop();
      } else if (depth >= 6 && timed && easyMove && easyByIteration[depth - 2] && elapsed() >= maxTime / 8) {
        std::cout << "# easy move: " << moveText << std::endl;
        requestStop();
      } else if (depth >= 6 && timed && firstTwoMovesTime * 3 / 2 > maxTime - elapsed()) {
        std::cout << "# probably not enough time left for another iteration" << std::endl;
        requestStop();
      } else if (bestScore == ceilingScore && !severalLines) {
        if (bestScore == 0)
          std::cout << "# forced draw: " << moveText << std::endl;
        else
          std::cout << "# forced mate in " << MateScore - bestScore << " plies: " << moveText << std::endl;
        requestStop();
      } else if (bestScore == floorScore && bestScore < 0 && !severalLines) {
        std::cout << "# getting mated in " << bestScore + MateScore << " plies: " << moveText << std::endl;
        requestStop();
      } else if (timeControl->depthLimited && depth == timeControl->maxDepth) {
        requestStop();
      }
    }
    std::cout.flush();
    if (!mainThread) return;
    if (!timedAtStart || discardResult.load(std::memory_order_relaxed)) {
      bestMove = ponderMove = NoMove;
    } else {
      bestMove = bestLine.first();
      ponderMove = bestLine.length >= 2 ? bestLine.moves[1] : NoMove;
    }
    searchInterface->reportFinalLine(iterationDepth, bestScore, bestLine);
    searchInterface->reportStatistics(iterationDepth);
    return;
  }

  // No legal move, or every root move answered by the tablebases.
  bestMove = bestLine.first();
  ponderMove = NoMove;
  if (!mainThread) return;
  searchInterface->reportLine(0, bestScore, bestLine);
  searchInterface->reportStatistics(0);
}

template void SearchThread::searchRoot<White>(const Board_0x88&, Move&, Move&);
template void SearchThread::searchRoot<Black>(const Board_0x88&, Move&, Move&);
