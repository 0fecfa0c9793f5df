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
    // A move continues the line when the position after it is the mate, or
    // is stored with the mate one ply nearer: the table's move first, then
    // any other (a node where every move loses stores none).
    const int32_t distance = matePly - ply - 1;
    const bool winnerMovesNext = (ply % 2 == 1) == (score > 0);
    const int32_t expected = winnerMovesNext ? MateScore - distance : -(MateScore - distance);
    int32_t stored = 0;
    Move tableMove = NoMove;
    bool hit = false;
    ttProbe(table, board, 0, 0, 0, 0, stored, tableMove, hit);
    MoveList legal;
    bool inCheck = false;
    generateLegalMoves(board, legal, inCheck);
    bool found = false;
    for (int32_t i = -1; i < int32_t(legal.count) && !found; ++i) {
      const Move move = i < 0 ? tableMove : legal.moves[i].move;
      if (move == NoMove || (i >= 0 && sameMove(move, tableMove))) continue;
      Move played = move;
      if (i < 0 && !findLegalMove(board, move, played)) continue;
      makeMoveForSide(board, played, undo);
      if (distance == 0) {
        MoveList replies;
        bool mated = false;
        generateLegalMoves(board, replies, mated);
        found = mated && replies.count == 0;
      } else {
        bool childHit = false;
        int32_t childScore = 0;
        Move ignored = NoMove;
        ttProbe(table, board, 0, 0, 0, 0, childScore, ignored, childHit);
        found = childHit && childScore == expected;
      }
      if (found) line.moves[line.length++] = played;
      else unmakeMoveForSide(board, played, undo);
    }
    if (!found) return;
  }
}
