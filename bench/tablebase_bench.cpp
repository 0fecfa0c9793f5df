// Tablebase probes per second, answered from the block cache and read from
// the files into a cold cache, and the search's speed on small endgames with
// and without tables. Uses the 3-man tables of Debian's gaviotatb package.
#include <benchmark/benchmark.h>

#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "board/fen.h"
#include "search/time_control.h"
#include "search/search_thread.h"
#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";

// Random 3-man positions, both sides to move, the strong side either colour.
std::vector<std::unique_ptr<Board_0x88>> threeMen(size_t count) {
  const PieceType pieces[] = {Queen, Rook, Bishop, Knight, Pawn};
  std::mt19937 random(11);
  auto next = [&](uint32_t below) { return uint32_t(random() % below); };
  std::vector<std::unique_ptr<Board_0x88>> boards;
  while (boards.size() < count) {
    const PieceType piece = pieces[next(5)];
    const uint32_t king = next(64), man = next(64), lone = next(64);
    if (king == man || king == lone || man == lone || (piece == Pawn && (man < 8 || man > 55))) continue;
    const Color strong = Color(next(2));
    auto b = std::make_unique<Board_0x88>();
    b->clear();
    b->placePiece(toSquare88(Square64(king)), strong, King);
    b->placePiece(toSquare88(Square64(man)), strong, piece);
    b->placePiece(toSquare88(Square64(lone)), opponent(strong), King);
    b->sideToMove = uint8_t(next(2));
    boards.push_back(std::move(b));
  }
  return boards;
}

bool hardProbe(const TablebaseState& state, const Board_0x88& b, int32_t& score) {
  return b.sideToMove == White ? probeTablebase<White>(&state, b, score) : probeTablebase<Black>(&state, b, score);
}

// Every block of the five tables (28) fits the default cache of 16 MB: after
// one pass each probe is a hit.
void BM_ProbeFromCache(benchmark::State& state) {
  TablebaseState tables;
  initTablebases(tables, "gaviota", gtb4.c_str(), 16);
  const auto boards = threeMen(4096);
  int32_t score = 0;
  for (const auto& b : boards) hardProbe(tables, *b, score);
  for (auto _ : state)
    for (const auto& b : boards) benchmark::DoNotOptimize(hardProbe(tables, *b, score));
  state.SetItemsProcessed(int64_t(state.iterations() * boards.size()));
  closeTablebases(tables);
}
BENCHMARK(BM_ProbeFromCache)->Unit(benchmark::kMicrosecond);

// A cache of one block (0 MB) and probes that alternate between tables: each
// one seeks, reads and decodes a block (the files themselves stay in the
// system's page cache).
void BM_ProbeFromDisk(benchmark::State& state) {
  TablebaseState tables;
  initTablebases(tables, "gaviota", gtb4.c_str(), 0);
  auto boards = threeMen(256);
  int32_t score = 0;
  for (auto _ : state)
    for (const auto& b : boards) benchmark::DoNotOptimize(hardProbe(tables, *b, score));
  state.SetItemsProcessed(int64_t(state.iterations() * boards.size()));
  closeTablebases(tables);
}
BENCHMARK(BM_ProbeFromDisk)->Unit(benchmark::kMillisecond);

class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

// Four and five men whose captures lead into the 3-man tables.
const char* const endgames[] = {
    "8/8/8/4k3/8/2p5/8/KQ6 w - - 0 1",       "8/8/1k6/8/3p4/8/2R5/4K3 w - - 0 1",
    "8/8/3k4/8/8/2r5/8/1R2K3 w - - 0 1",     "8/5k2/8/8/2n5/8/3P4/4K3 w - - 0 1",
    "8/8/8/2k5/8/8/1q6/K2Q4 w - - 0 1",      "8/8/4k3/8/2b5/8/1PK5/8 w - - 0 1",
    "8/8/8/3k4/8/2pP4/8/4K3 w - - 0 1",      "8/8/8/8/4k3/8/1P1r4/4K3 w - - 0 1",
};

// Each endgame to a fixed depth, with tables (argument 1) or without (0).
void BM_SearchEndgames(benchmark::State& state) {
  const bool withTables = state.range(0) != 0;
  TablebaseState tables;
  if (withTables) initTablebases(tables, "gaviota", gtb4.c_str(), 16);
  QuietInterface ui;
  TimeControl tc;
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = 14;
  TTHashTable tt("TT hash");
  PawnHash pawns;
  std::cout.setstate(std::ios::failbit);
  tt.sizeFor(64);
  pawns.sizeFor(4);
  uint64_t nodes = 0, hits = 0;
  for (auto _ : state) {
    for (const char* fen : endgames) {
      state.PauseTiming();
      tt.clear();
      pawns.clear();
      Board_0x88 game;
      setupFromFen(game, fen);
      auto thread = std::make_unique<SearchThread>(0, &tt, &pawns, withTables ? &tables : nullptr, &tc, &ui);
      state.ResumeTiming();
      Move best, ponder;
      thread->searchRootForSide(game, best, ponder);
      nodes += thread->stats.nodes.get();
      hits += thread->stats.tbHits.get();
    }
  }
  std::cout.clear();
  state.counters["nodes"] = benchmark::Counter(double(nodes), benchmark::Counter::kAvgIterations);
  state.counters["tbHits"] = benchmark::Counter(double(hits), benchmark::Counter::kAvgIterations);
  state.counters["nps"] = benchmark::Counter(double(nodes), benchmark::Counter::kIsRate);
  if (withTables) closeTablebases(tables);
}
BENCHMARK(BM_SearchEndgames)->ArgName("tables")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
