// evaluate over the positions of the perft suite, with an open and a narrow window.
#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "board/fen.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "search/pawn_hash.h"

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

}  // namespace
