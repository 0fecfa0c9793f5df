#pragma once
#include <cstdint>

#include "board/board.h"
#include "eval/eval_cache.h"
#include "eval/material.h"
#include "eval/pawn_hash.h"

// Everything positional together is held within this many centipawns; the
// lazy exit rests on it.
constexpr int PositionalLimit = 200;

// A pawnless position whose tapered material edge reaches this goes to the mate branch.
constexpr int MateBranchMaterial = 175;

// The window a caller passes when it wants the exact score, no lazy bound.
constexpr int32_t FullWindowAlpha = -32000;
constexpr int32_t FullWindowBeta = 32000;

constexpr int clampPositional(int pos) {
  return pos > PositionalLimit ? PositionalLimit : pos < -PositionalLimit ? -PositionalLimit : pos;
}

// Applies a percent scale factor, rounding toward zero.
constexpr int applyScaleFactor(int score, int scaleFactor) { return score * scaleFactor / 100; }

constexpr bool takesMateBranch(const MaterialInfo& info, int taperedMaterial) {
  bool noPawns = signatureField(info.signature[White], SigPawns) == 0 &&
                 signatureField(info.signature[Black], SigPawns) == 0;
  return noPawns && (taperedMaterial >= MateBranchMaterial || taperedMaterial <= -MateBranchMaterial);
}

// Static score of the position in centipawns from the side to move's view.
// Outside [alpha, beta] it may return a bound just beyond the window instead.
// Leaves the board as it was; may read and overwrite one pawn hash entry.
int32_t evaluate(Board_0x88& board, PawnHash& pawnHash, int32_t alpha, int32_t beta);
// The same through a thread's cache of evaluations, keyed by the board's
// current hash key; returns exactly what the call above returns.
int32_t evaluate(Board_0x88& board, PawnHash& pawnHash, EvalCache& cache, int32_t alpha, int32_t beta);

// The same evaluation with the full window, each term also written into the
// rows and the scale factor of ReportRecord. For the eval command.
int32_t evaluateWithReport(const Board_0x88& board, PawnHash& pawnHash);
