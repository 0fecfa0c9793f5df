// The first search after the tables are made against the tenth: with tables
// of the engine's default sizes, freshly allocated for every run as at
// start-up or after a new size, each search goes to the same fixed depth from
// emptied tables. Equal times show that the first search of a game pays no
// page faults that the later ones don't.
#include <benchmark/benchmark.h>

#include <chrono>
#include <iostream>

#include "board/fen.h"
#include "search/time_control.h"
#include "search/search_thread.h"

namespace {

constexpr uint32_t depth = 8;
constexpr int searches = 10;
const char* const position = "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P4/2PBPN2/PP1N1PPP/R1BQ1RK1 w - - 0 8";

class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

void BM_FirstAndTenthSearch(benchmark::State& state) {
  QuietInterface ui;
  TimeControl tc;
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = depth;
  Board_0x88 game;
  setupFromFen(game, position);
  double first = 0, tenth = 0;
  std::cout.setstate(std::ios::failbit);  // the tables' size lines
  for (auto _ : state) {
    TTHashTable tt("TT hash");
    tt.sizeFor(256);
    PawnHash pawns;
    pawns.sizeFor(32);
    for (int i = 1; i <= searches; ++i) {
      if (i > 1) {
        tt.clear();
        pawns.clear();
      }
      SearchThread thread(0, &tt, &pawns, nullptr, &tc, &ui);
      auto start = std::chrono::steady_clock::now();
      Move best, ponder;
      thread.searchRootForSide(game, best, ponder);
      double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      if (i == 1) first += seconds;
      if (i == searches) tenth += seconds;
    }
  }
  std::cout.clear();
  state.counters["firstMs"] = benchmark::Counter(first * 1000, benchmark::Counter::kAvgIterations);
  state.counters["tenthMs"] = benchmark::Counter(tenth * 1000, benchmark::Counter::kAvgIterations);
}

BENCHMARK(BM_FirstAndTenthSearch)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
