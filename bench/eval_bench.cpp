// evaluate over the positions of the perft suite, with an open and a narrow
// window; and the pawn hash's hit rate over the search benchmark's searches.
#include <benchmark/benchmark.h>

#include <iostream>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "board/fen.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "eval/pawn_structure.h"
#include "search/time_control.h"
#include "eval/pawn_hash.h"
#include "search/search_thread.h"

namespace {

std::string sourceDir() {
  std::string file = __FILE__;
  return file.substr(0, file.find_last_of('/'));
}

struct Positions {
  std::vector<std::unique_ptr<Board_0x88>> boards;
  PawnHash pawnHash;

  Positions() {
    initEvalTables();
    pawnHash.sizeFor(1);
    std::ifstream in(sourceDir() + "/../tests/data/perft-suite.epd");
    std::string line;
    while (std::getline(in, line)) {
      std::string fen = line.substr(0, line.find(';'));
      auto board = std::make_unique<Board_0x88>();
      if (setupFromFen(*board, fen.c_str())) boards.push_back(std::move(board));
    }
  }
};

Positions& positions() {
  static Positions p;
  return p;
}

void runEvaluate(benchmark::State& state, int32_t alpha, int32_t beta) {
  Positions& p = positions();
  if (p.boards.empty()) {
    state.SkipWithError("no suite positions found");
    return;
  }
  for (auto _ : state) {
    int32_t sum = 0;
    for (auto& board : p.boards) sum += evaluate(*board, p.pawnHash, alpha, beta);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(p.boards.size()));
}

void BM_EvaluateFullWindow(benchmark::State& state) { runEvaluate(state, FullWindowAlpha, FullWindowBeta); }
void BM_EvaluateNullWindowAtZero(benchmark::State& state) { runEvaluate(state, -1, 0); }

BENCHMARK(BM_EvaluateFullWindow);
BENCHMARK(BM_EvaluateNullWindowAtZero);

class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

// The search benchmark's work: the first 32 suite positions to depth 9 on one
// thread, each with emptied tables. Counts the pawn hash's probes and hits.
void BM_SearchPawnHashHitRate(benchmark::State& state) {
  Positions& p = positions();
  TimeControl tc;
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = 9;
  QuietInterface ui;
  TTHashTable tt("TT hash");
  tt.sizeFor(64);
  PawnHash pawns;
  pawns.sizeFor(4);
  uint64_t probes = 0, hits = 0, nodes = 0;
  std::cout.setstate(std::ios::failbit);  // the searches' own comment lines
  for (auto _ : state) {
    for (size_t i = 0; i < 32 && i < p.boards.size(); ++i) {
      tt.clear();
      pawns.clear();
      pawns.hits.set(0);
      Board_0x88 game(*p.boards[i]);
      SearchThread thread(0, &tt, &pawns, nullptr, &tc, &ui);
      const uint64_t before = pawnHashProbesOnThisThread();
      Move best, ponder;
      thread.searchRootForSide(game, best, ponder);
      probes += pawnHashProbesOnThisThread() - before;
      hits += pawns.hits.get();
      nodes += thread.stats.nodes.get();
    }
  }
  std::cout.clear();
  state.counters["probesPerNode"] = double(probes) / double(nodes);
  state.counters["hitRate"] = double(hits) / double(probes);
}

BENCHMARK(BM_SearchPawnHashHitRate)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
