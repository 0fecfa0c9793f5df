#pragma once
#include <cstdint>

// A side that mates in n plies from the root scores MateScore - n.
constexpr int32_t MateScore = 32000;
// Stands for "no score yet", and for being mated at the node itself.
constexpr int32_t NoScore = -32000;
// Not a score: what every routine returns once the search is told to stop.
constexpr int32_t StopScore = 40000;
// Beyond this in absolute value a score is a mate score.
constexpr int32_t MateThreshold = 20000;
