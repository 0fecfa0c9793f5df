#pragma once
#include <cstdint>
#include <ostream>
#include <string>

// `tolva bench`: a fixed set of positions searched to a fixed depth on one
// thread, with a 16 MB table emptied before each position, no book and no
// tablebases. The node total is the engine's signature: it is the same on
// every run and machine, and changes only with the search tree.
struct FixedDepthBenchResult {
  uint64_t nodes = 0;
  uint64_t milliseconds = 0;
  uint64_t nodesPerSecond = 0;
  uint32_t positions = 0;
};

inline constexpr uint32_t BenchDepth = 10;
inline constexpr uint64_t BenchHashMB = 16;

// The positions, as FEN: openings, middlegames quiet and sharp, endgames.
extern const char* const benchPositions[];
extern const uint32_t benchPositionCount;

// Searches every position and prints a line per position, then a summary
// line and last "N nodes N nps". Each line begins with `linePrefix`. The
// search's own comment lines are kept off the output meanwhile.
FixedDepthBenchResult runFixedDepthBench(std::ostream& out, const std::string& linePrefix = "");
