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

// With a cache, the material terms come from it, and what the men on the
// board decide is also written into the entry.
template <Color Us, typename Rec>
int32_t evaluateFor(const Board_0x88& board, PawnHash& pawnHash, int32_t alpha, int32_t beta, EvalCache* cache,
                    EvalCache::Entry* cached) {
  constexpr Color Them = opponent(Us);
  MaterialInfo computed;
  if (!cache) computeMaterial(computed, board);
  const MaterialInfo& info = cache ? cache->materialFor(board) : computed;

  const int positionScale = positionScaleFactor(board, info);
  const int fifty = fiftyMoveScale(board.halfMoveClock);
  const int scaleFactor = positionScale < fifty ? positionScale : fifty;
  if constexpr (!std::is_same_v<Rec, NoRecord>) Rec::scaleFactor = scaleFactor;
  if (cached) {
    cached->scale = uint8_t(positionScale);
    cached->flags = EvalCache::Known;
  }
  if (scaleFactor == 0) return 0;

  const int phase = info.phase;
  int m = taper(info.material, phase);
  if (takesMateBranch(info, m)) {
    int32_t score = mateBranchScore<Rec>(board, phase, m);
    if (cached) {
      cached->score = score;
      cached->flags |= EvalCache::MateBranch;
    }
    return score;
  }
  Rec::add(RowMaterial, White, info.material);
  Rec::add(RowPst, White, board.psq[White]);
  Rec::add(RowPst, Black, board.psq[Black]);
  Rec::add(RowSideToMove, Us, ScorePair{MaxPhase, 0});

  int own[2] = {m + taper(board.psq[White], phase), taper(board.psq[Black], phase)};
  own[Us] += phase;  // side to move: (24, 0) tapered
  int base = own[Us] - own[Them];

  // Positional terms can't move the score further than the clamp, so a base
  // this far outside the window already decides the node.
  if (info.canWin[White] && info.canWin[Black]) {
    if (cached) {
      if (base != int16_t(base)) {
        cached->flags = 0;  // beyond what the entry holds: not kept
        cached = nullptr;
      } else {
        cached->base = int16_t(base);
        cached->flags |= EvalCache::BaseKnown;
      }
    }
    if (scaleFactor == 100) {
      if (alpha >= base + PositionalLimit) return base + PositionalLimit;
      if (beta <= base - PositionalLimit) return base - PositionalLimit;
    }
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
  if (cached) cached->score = score;
  return applyScaleFactor(score, scaleFactor);
}

}  // namespace

int32_t evaluate(Board_0x88& board, PawnHash& pawnHash, int32_t alpha, int32_t beta) {
  if (board.sideToMove == White) return evaluateFor<White, NoRecord>(board, pawnHash, alpha, beta, nullptr, nullptr);
  return evaluateFor<Black, NoRecord>(board, pawnHash, alpha, beta, nullptr, nullptr);
}

int32_t evaluate(Board_0x88& board, PawnHash& pawnHash, EvalCache& cache, int32_t alpha, int32_t beta) {
  const uint64_t key = board.history[board.ply].hashKey;
  EvalCache::Entry& entry = cache.entryFor(key);
  if (entry.key == key && (entry.flags & EvalCache::Known)) {
    const int fifty = fiftyMoveScale(board.halfMoveClock);
    const int scaleFactor = entry.scale < fifty ? entry.scale : fifty;
    if (scaleFactor == 0) return 0;
    if (entry.flags & EvalCache::MateBranch) return entry.score;
    if (scaleFactor == 100 && (entry.flags & EvalCache::BaseKnown)) {
      if (alpha >= entry.base + PositionalLimit) return entry.base + PositionalLimit;
      if (beta <= entry.base - PositionalLimit) return entry.base - PositionalLimit;
    }
    if (entry.score != EvalCache::NoScore) return applyScaleFactor(entry.score, scaleFactor);
  }
  entry.key = key;
  entry.score = EvalCache::NoScore;
  if (board.sideToMove == White) return evaluateFor<White, NoRecord>(board, pawnHash, alpha, beta, &cache, &entry);
  return evaluateFor<Black, NoRecord>(board, pawnHash, alpha, beta, &cache, &entry);
}

int32_t evaluateWithReport(const Board_0x88& board, PawnHash& pawnHash) {
  ReportRecord::clear();
  if (board.sideToMove == White)
    return evaluateFor<White, ReportRecord>(board, pawnHash, FullWindowAlpha, FullWindowBeta, nullptr, nullptr);
  return evaluateFor<Black, ReportRecord>(board, pawnHash, FullWindowAlpha, FullWindowBeta, nullptr, nullptr);
}
