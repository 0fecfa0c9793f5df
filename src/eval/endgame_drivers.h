#pragma once
#include <array>
#include <cstdint>

#include "board/board.h"
#include "eval/eval_record.h"

// Rings of the board by Square64: 0 on the edge, 3 on the four centre squares.
inline constexpr std::array<uint8_t, 64> kingEdgeTable = [] {
  std::array<uint8_t, 64> table{};
  for (int s = 0; s < 64; ++s) {
    int f = s & 7, r = s >> 3;
    int fromFileEdge = f < 7 - f ? f : 7 - f;
    int fromRankEdge = r < 7 - r ? r : 7 - r;
    table[s] = uint8_t(fromFileEdge < fromRankEdge ? fromFileEdge : fromRankEdge);
  }
  return table;
}();

// Distance in king moves between two 0x88 squares.
constexpr int squareDistance(Square a, Square b) {
  int df = fileOf(a) - fileOf(b);
  int dr = rankOf(a) - rankOf(b);
  if (df < 0) df = -df;
  if (dr < 0) dr = -dr;
  return df > dr ? df : dr;
}

// Where the endgame rules look for a side's bishop: its bishop slots, failing
// those the first occupied pawn slot. NoSquare if neither has anything.
Square endgameBishopSquare(const PieceSet& set);

// The three driver amounts of a pawnless position with a decisive edge, each
// credited to the side named beside it.
struct MateDrivers {
  Color strong;
  Color weak;
  int kingEdge;      // to the weak side: its king away from the edge
  int kingDistance;  // to the strong side: the kings close together
  int safeCorner;    // to the weak side, bishop and knight only: its king near a corner the bishop can't cover
};

// m is the tapered material balance, White's view; its sign names the strong side.
MateDrivers computeMateDrivers(const Board_0x88& board, int m);

// The final score of the mate branch from the side to move's view: material,
// the side-to-move bonus and the drivers, nothing else.
template <typename Rec = NoRecord>
int mateBranchScore(const Board_0x88& board, int phase, int m);
