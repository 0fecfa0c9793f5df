// Search speed: a fixed set of positions to a fixed depth, on one thread and
// on two threads sharing the tables. Reports nodes, time and nodes per second.
#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "board/fen.h"
#include "search/time_control.h"
#include "search/search_thread.h"

namespace {

constexpr uint32_t benchDepth = 9;
constexpr size_t benchPositionCount = 32;

// The first positions of the move-generation suite: openings, middlegames,
// endgames, positions with promotions and checks.
std::vector<std::string> benchPositions() {
  std::vector<std::string> fens;
  std::ifstream in(TOLVA_BENCH_DATA_DIR "/perft-suite.epd");
  std::string line;
  while (fens.size() < benchPositionCount && std::getline(in, line)) fens.push_back(line.substr(0, line.find(" ;")));
  return fens;
}

class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

// Searches every position to the bench depth with `threadCount` threads;
// thread 0 decides when to stop, as in a game.
uint64_t searchAll(const std::vector<std::string>& fens, uint32_t threadCount, uint64_t& mainNodes, double& seconds) {
  QuietInterface ui;
  TimeControl tc;
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = benchDepth;
  uint64_t nodes = 0;
  std::cout.setstate(std::ios::failbit);  // the searches' own comment lines
  // The tables are made once and emptied for each position, as a game reuses
  // them: fresh pages would put the kernel's page faults into the figures.
  TTHashTable tt("TT hash");
  tt.sizeFor(64);
  PawnHash pawns;
  pawns.sizeFor(4);
  for (const std::string& fen : fens) {
    tt.clear();
    pawns.clear();
    Board_0x88 game;
    setupFromFen(game, fen.c_str());
    std::vector<std::unique_ptr<SearchThread>> threads;
    for (uint32_t i = 0; i < threadCount; ++i)
      threads.push_back(std::make_unique<SearchThread>(i, &tt, &pawns, nullptr, &tc, &ui));
    auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> workers;
    for (uint32_t i = 1; i < threadCount; ++i)
      workers.emplace_back([&, i] {
        Move best, ponder;
        threads[i]->searchRootForSide(game, best, ponder);
      });
    Move best, ponder;
    threads[0]->searchRootForSide(game, best, ponder);
    for (uint32_t i = 1; i < threadCount; ++i) threads[i]->requestStop();
    for (std::thread& w : workers) w.join();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (auto& t : threads) nodes += t->stats.nodes.get();
    mainNodes += threads[0]->stats.nodes.get();
  }
  std::cout.clear();
  return nodes;
}

void BM_SearchFixedDepth(benchmark::State& state) {
  std::vector<std::string> fens = benchPositions();
  uint64_t nodes = 0, mainNodes = 0;
  for (auto _ : state) {
    double seconds = 0;
    nodes += searchAll(fens, uint32_t(state.range(0)), mainNodes, seconds);
    state.SetIterationTime(seconds);  // the searches alone, without emptying the tables
  }
  state.counters["thread0Nodes"] = benchmark::Counter(double(mainNodes), benchmark::Counter::kAvgIterations);
  state.counters["positions"] = double(fens.size());
  state.counters["nodes"] = benchmark::Counter(double(nodes), benchmark::Counter::kAvgIterations);
  state.counters["nps"] = benchmark::Counter(double(nodes), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_SearchFixedDepth)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

}  // namespace
