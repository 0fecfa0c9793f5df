#pragma once
#include <cstdint>

#include "board/score_pair.h"

// Game phase: 24 with all pieces on the board, 0 in a pawn ending.
constexpr int MaxPhase = 24;

// Joins the two halves of a pair by the phase. The division rounds toward
// zero, and each group of terms is tapered by itself, so the roundings are
// part of the score.
constexpr int taper(ScorePair pair, int phase) {
  return (int(pair.mg) * phase + int(pair.eg) * (MaxPhase - phase)) / MaxPhase;
}

// Sums of pairs stay in 16 bits; the values that occur are far inside that range.
constexpr ScorePair operator+(ScorePair a, ScorePair b) {
  return ScorePair{int16_t(a.mg + b.mg), int16_t(a.eg + b.eg)};
}

constexpr ScorePair operator-(ScorePair a, ScorePair b) {
  return ScorePair{int16_t(a.mg - b.mg), int16_t(a.eg - b.eg)};
}

constexpr ScorePair& operator+=(ScorePair& a, ScorePair b) { return a = a + b; }

constexpr ScorePair& operator-=(ScorePair& a, ScorePair b) { return a = a - b; }
