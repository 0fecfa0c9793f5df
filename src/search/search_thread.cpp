#include "search/search_thread.h"

#include "board/fen.h"
#include "search/time_control.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "search/transposition_table.h"
#include "tablebase/search_probe.h"

SearchThread::SearchThread(uint32_t index, TTHashTable* tt, PawnHash* pawns, const TablebaseState* tb,
                           TimeControl* tc, SearchInterface* si, WorkFunction work, void* workArgument)
    : WorkerThread(index, work, workArgument),
      threadId(index),
      ttHash(tt), pawnHash(pawns), tablebases(tb), timeControl(tc), searchInterface(si) {
  initEvalTables();
  setupFromFen(board, startPositionFen);
}

void SearchThread::searchRootForSide(const Board_0x88& gameBoard, Move& bestMove, Move& ponderMove) {
  if (gameBoard.sideToMove == White)
    searchRoot<White>(gameBoard, bestMove, ponderMove);
  else if (gameBoard.sideToMove == Black)
    searchRoot<Black>(gameBoard, bestMove, ponderMove);
  else
    bestMove = ponderMove = NoMove;  // a board left empty by a refused position
}

void SearchThread::store(int32_t lowest, int32_t highest, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth,
                         int32_t score, Move move) {
  ttStore(*ttHash, board, lowest, highest, alpha, beta, ply, depth, score, move);
}
