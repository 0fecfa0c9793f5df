#include "eval/evaluate.h"

#include <type_traits>

#include "eval/endgame_drivers.h"
#include "eval/king_safety.h"
#include "eval/piece_activity.h"
#include "eval/pawn_structure.h"
#include "eval/scale_factor.h"
#include "eval/score_pair_ops.h"

namespace {

// The positional sum of side C: each piece in list order, then its passed
// pawns, then its king.
template <Color C, typename Rec>
ScorePair positionalTerms(const Board_0x88& board, const PawnInfo& pawns, const MaterialInfo& info) {
  constexpr Color Them = opponent(C);
  ScorePair sum{0, 0};
  if constexpr (kingTropismWeighs || !std::is_same_v<Rec, NoRecord>) {
    // The report shows the tropism row even while no weight is set.
    const PieceSet& set = board.side[C];
    for (int s = 0; s <= LastSlot; ++s) {
      Square sq = set.square[s];
      if (sq & 0x88) continue;
      PieceType type = PieceType(board.piece[sq]);
      sum += pieceActivity<C, Rec>(board, sq, type, pawns);
      sum += kingTropism<C, Rec>(board, sq, type);
    }
  } else {
    sum += sideActivity<C, Rec>(board, pawns);
  }
  sum += passedPawnTerms<C, Rec>(board, pawns, info.signature[Them]);
  sum += kingSafety<C, Rec>(board, pawns, info.signature[Them]);
  return sum;
}

template <Color Us, typename Rec>
int32_t evaluateFor(const Board_0x88& board, PawnHash& pawnHash, int32_t alpha, int32_t beta) {
  constexpr Color Them = opponent(Us);
  MaterialInfo info;
  computeMaterial(info, board);

  int scaleFactor = computeScaleFactor(board, info);
  if constexpr (!std::is_same_v<Rec, NoRecord>) Rec::scaleFactor = scaleFactor;
  if (scaleFactor == 0) return 0;

  const int phase = info.phase;
  int m = taper(info.material, phase);
  if (takesMateBranch(info, m)) return mateBranchScore<Rec>(board, phase, m);
  Rec::add(RowMaterial, White, info.material);
  Rec::add(RowPst, White, board.psq[White]);
  Rec::add(RowPst, Black, board.psq[Black]);
  Rec::add(RowSideToMove, Us, ScorePair{MaxPhase, 0});

  int own[2] = {m + taper(board.psq[White], phase), taper(board.psq[Black], phase)};
  own[Us] += phase;  // side to move: (24, 0) tapered
  int base = own[Us] - own[Them];

  // Positional terms can't move the score further than the clamp, so a base
  // this far outside the window already decides the node.
  if (scaleFactor == 100 && info.canWin[White] && info.canWin[Black]) {
    if (alpha >= base + PositionalLimit) return base + PositionalLimit;
    if (beta <= base - PositionalLimit) return base - PositionalLimit;
  }

  PawnInfo pawns{};
  int p = taper(evaluatePawnStructure<Rec>(board, pawnHash, pawns), phase);
  int wp = taper(positionalTerms<White, Rec>(board, pawns, info), phase);
  int bp = taper(positionalTerms<Black, Rec>(board, pawns, info), phase);
  int pos = wp + p - bp;
  if (Us == Black) pos = -pos;

  int score = base + clampPositional(pos);
  if (!info.canWin[Us] && score > 0) score = 0;
  if (!info.canWin[Them] && score < 0) score = 0;
  return applyScaleFactor(score, scaleFactor);
}

}  // namespace

int32_t evaluate(Board_0x88& board, PawnHash& pawnHash, int32_t alpha, int32_t beta) {
  if (board.sideToMove == White) return evaluateFor<White, NoRecord>(board, pawnHash, alpha, beta);
  return evaluateFor<Black, NoRecord>(board, pawnHash, alpha, beta);
}

int32_t evaluateWithReport(const Board_0x88& board, PawnHash& pawnHash) {
  ReportRecord::clear();
  if (board.sideToMove == White) return evaluateFor<White, ReportRecord>(board, pawnHash, FullWindowAlpha, FullWindowBeta);
  return evaluateFor<Black, ReportRecord>(board, pawnHash, FullWindowAlpha, FullWindowBeta);
}
