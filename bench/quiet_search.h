#pragma once
#include <cstdint>

#include "search/search_interface.h"
#include "search/time_control.h"

// The benchmarks' searches report nothing and never run out of time.
class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

// A clock for a search that only its depth limit ends.
inline void limitToDepth(TimeControl& tc, uint32_t depth) {
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = depth;
}
