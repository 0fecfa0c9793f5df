// One probe of the 93,000-entry test book, as thread 0 makes it at the start
// of a think: open the file, binary search, collect, check legality, choose,
// close. Positions in the book (the start and after 1. e4) and one out of it.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "board/fen.h"
#include "book/opening_book.h"

namespace {

void BM_BookProbe(benchmark::State& state, const char* fen) {
  OpeningBook book;
  book.setPath(TOLVA_BENCH_DATA_DIR "/performance.bin");
  Board_0x88 board;
  setupFromFen(board, fen);
  std::srand(1);
  Move move = NoMove;
  bool found = book.probe(board, move);
  for (auto _ : state) {
    benchmark::DoNotOptimize(book.probe(board, move));
    benchmark::DoNotOptimize(move);
  }
  state.counters["entries"] = double(book.entryCount);
  state.counters["found"] = found ? 1 : 0;
}
BENCHMARK_CAPTURE(BM_BookProbe, start, startPositionFen)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_BookProbe, after_e4, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_BookProbe, not_in_book, "4k3/8/8/8/8/8/8/4K2R w K - 0 1")->Unit(benchmark::kMicrosecond);

}  // namespace
