// Raw speed of move generation and make/unmake: perft without its table, so
// every leaf is counted the hard way. Leaves per second is the figure to watch.
#include <benchmark/benchmark.h>

#include <iostream>
#include <sstream>

#include "board/fen.h"
#include "diagnostics/perft.h"

namespace {

struct BenchPosition {
  const char* fen;
  uint32_t depth;
};

const BenchPosition positions[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 5},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 4},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6},
    {"8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28", 5},
};

void reportRates(benchmark::State& state, uint64_t leaves, uint64_t nodes) {
  state.counters["leaves/s"] = benchmark::Counter(double(leaves), benchmark::Counter::kIsRate);
  state.counters["nodes/s"] = benchmark::Counter(double(nodes), benchmark::Counter::kIsRate);
  state.counters["leaves"] = benchmark::Counter(double(leaves), benchmark::Counter::kAvgIterations);
}

void BM_PerftNoTable(benchmark::State& state) {
  const BenchPosition& p = positions[state.range(0)];
  Board_0x88 board;
  if (!setupFromFen(board, p.fen)) {
    state.SkipWithError("bad FEN");
    return;
  }
  uint64_t leaves = 0, nodes = 0;
  for (auto _ : state) {
    PerftStats stats;
    uint64_t n = countLeaves(stats, board, nullptr, p.depth, false);
    benchmark::DoNotOptimize(n);
    leaves += n;
    nodes += stats.nodes;
  }
  reportRates(state, leaves, nodes);
}
BENCHMARK(BM_PerftNoTable)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// The same with the 64 MB table of the perft command, emptied before each count.
void BM_PerftWithTable(benchmark::State& state) {
  const BenchPosition& p = positions[state.range(0)];
  Board_0x88 board;
  if (!setupFromFen(board, p.fen)) {
    state.SkipWithError("bad FEN");
    return;
  }
  PerftHashTable table("Perft hash");
  {
    std::ostringstream quiet;
    std::streambuf* old = std::cout.rdbuf(quiet.rdbuf());
    table.sizeFor(64);
    std::cout.rdbuf(old);
  }
  uint64_t leaves = 0, nodes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    table.clear();
    state.ResumeTiming();
    PerftStats stats;
    uint64_t n = countLeaves(stats, board, &table, p.depth + 1, false);
    benchmark::DoNotOptimize(n);
    leaves += n;
    nodes += stats.nodes;
  }
  reportRates(state, leaves, nodes);
}
BENCHMARK(BM_PerftWithTable)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

}  // namespace
