#pragma once
#include <cstdint>

// The middlegame and endgame halves of an evaluation term.
struct ScorePair {
  int16_t mg;
  int16_t eg;
};

constexpr bool operator==(ScorePair a, ScorePair b) { return a.mg == b.mg && a.eg == b.eg; }
