#pragma once
#include <atomic>
#include <cstdint>

#include "board/relaxed_counter.h"

// The counters of one thread's search.
struct SearchStatistics {
  RelaxedCounter nodes;
  RelaxedCounter qsNodes;
  RelaxedCounter qsChecks;
  RelaxedCounter cutoffs;
  RelaxedCounter cutoffsOnFirstMove;
  RelaxedCounter qsCutoffs;
  RelaxedCounter qsCutoffsOnFirstMove;
  RelaxedCounter singularExtAttempts;
  RelaxedCounter singularExtensions;
  RelaxedCounter ttHashHits;
  RelaxedCounter pawnHashHits;
  RelaxedCounter tbHits;
  RelaxedCounter selDepth;

  void clear() {
    for (RelaxedCounter* c : {&nodes, &qsNodes, &qsChecks, &cutoffs, &cutoffsOnFirstMove, &qsCutoffs,
                              &qsCutoffsOnFirstMove, &singularExtAttempts, &singularExtensions, &ttHashHits,
                              &pawnHashHits, &tbHits, &selDepth})
      c->set(0);
  }
};

// The counters summed over all threads, as the output shows them.
struct SearchTotals {
  uint64_t nodes = 0;
  uint64_t qsNodes = 0;
  uint64_t qsChecks = 0;
  uint64_t cutoffs = 0;
  uint64_t cutoffsOnFirstMove = 0;
  uint64_t qsCutoffs = 0;
  uint64_t qsCutoffsOnFirstMove = 0;
  uint64_t singularExtAttempts = 0;
  uint64_t singularExtensions = 0;
  uint64_t ttHashHits = 0;
  uint64_t pawnHashHits = 0;
  uint64_t tbHits = 0;
  uint32_t selDepth = 0;
};
