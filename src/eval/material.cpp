#include "eval/material.h"

#include <algorithm>

#include "eval/score_pair_ops.h"

namespace {

constexpr int BishopPairBonus = 50;
constexpr int KnightPawnAdjust = 6;   // per knight and own pawn above five
constexpr int RookPawnAdjust = -12;   // per rook and own pawn above five
constexpr int PawnsForNoAdjust = 5;

MaterialSignature packSignature(const PieceSet& set) {
  auto field = [](int n, SignatureField at) { return MaterialSignature(n & 15) << at; };
  const uint8_t* n = set.count;
  return field(n[Pawn], SigPawns) | field(n[Knight], SigKnights) | field(n[Bishop], SigBishops) |
         field(n[Rook], SigRooks) | field(n[Queen], SigQueens) | field(n[Knight] + n[Bishop], SigMinors) |
         field(n[Rook] + n[Queen], SigMajors) | field(set.total - 1, SigMen);
}

// A lone king, one minor piece or two knights cannot force mate.
bool hasMatingMaterial(const PieceSet& set) {
  const uint8_t* n = set.count;
  if (n[Pawn] || n[Rook] || n[Queen]) return true;
  int minors = n[Knight] + n[Bishop];
  if (minors > 2) return true;
  return minors == 2 && n[Bishop] > 0;
}

// Knights gain and rooks lose with more own pawns on the board.
int pawnAdjustment(const PieceSet& set) {
  int pawnsAboveFive = set.count[Pawn] - PawnsForNoAdjust;
  return KnightPawnAdjust * set.count[Knight] * pawnsAboveFive + RookPawnAdjust * set.count[Rook] * pawnsAboveFive;
}

}  // namespace

void computeMaterial(MaterialInfo& info, const Board_0x88& board) {
  const PieceSet& w = board.side[White];
  const PieceSet& b = board.side[Black];
  info.signature[White] = packSignature(w);
  info.signature[Black] = packSignature(b);

  int minors = w.count[Knight] + w.count[Bishop] + b.count[Knight] + b.count[Bishop];
  int rooks = w.count[Rook] + b.count[Rook];
  int queens = w.count[Queen] + b.count[Queen];
  info.phase = std::min(MaxPhase, minors + 2 * rooks + 4 * queens);

  int base = 0;
  for (int t = Pawn; t <= Rook; ++t) base += pieceValue[t].mg * (w.count[t] - b.count[t]);
  int queenDiff = w.count[Queen] - b.count[Queen];
  int mg = base + pieceValue[Queen].mg * queenDiff;
  int eg = base + pieceValue[Queen].eg * queenDiff;

  // Bishop pair: a count above one, whatever the shades of the bishops.
  int pair = (w.count[Bishop] > 1 ? BishopPairBonus : 0) - (b.count[Bishop] > 1 ? BishopPairBonus : 0);
  int adjust = pair + pawnAdjustment(w) - pawnAdjustment(b);
  info.material = ScorePair{int16_t(mg + adjust), int16_t(eg + adjust)};

  info.canWin[White] = hasMatingMaterial(w);
  info.canWin[Black] = hasMatingMaterial(b);
}
