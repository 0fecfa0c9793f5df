#include "search/mate_line.h"

#include "board/make_move.h"
#include "board/move_generation.h"
#include "search/score.h"
#include "search/transposition_table.h"

namespace {

// The legal move of the position that `wanted` names, as the generator made it.
bool findLegalMove(Board_0x88& board, Move wanted, Move& found) {
  MoveList legal;
  bool inCheck = false;
  generateLegalMoves(board, legal, inCheck);
  for (uint32_t i = 0; i < legal.count; ++i) {
    if (!sameMove(legal.moves[i].move, wanted)) continue;
    found = legal.moves[i].move;
    return true;
  }
  return false;
}

// Room for another move on the board's own record.
bool hasRoom(const Board_0x88& board) { return board.ply + 2 < HistorySize; }

}  // namespace

void extendMateLine(TTHashTable& table, Board_0x88& board, int32_t score, PvLine& line) {
  if (score <= MateThreshold && score >= -MateThreshold) return;
  const int32_t matePly = score > 0 ? MateScore - score : MateScore + score;
  UndoRecord undo;
  int32_t ply = 0;
  for (; ply < int32_t(line.length); ++ply) {
    Move move = NoMove;
    if (!hasRoom(board) || !findLegalMove(board, line.moves[ply], move)) return;
    makeMoveForSide(board, move, undo);
  }
  for (; ply < matePly && line.length < PvLine::capacity && hasRoom(board); ++ply) {
    // What the side to move must score here, seen from this position.
    const bool winnerToMove = (ply % 2 == 0) == (score > 0);
    const int32_t mateHere = MateScore - (matePly - ply);
    const int32_t expected = winnerToMove ? mateHere : -mateHere;
    int32_t stored = 0;
    Move tableMove = NoMove, move = NoMove;
    bool hit = false;
    ttProbe(table, board, expected - 1, expected + 1, 0, 0, stored, tableMove, hit);
    if (!hit || stored != expected || tableMove == NoMove || !findLegalMove(board, tableMove, move)) return;
    makeMoveForSide(board, move, undo);
    line.moves[line.length++] = move;
  }
}
