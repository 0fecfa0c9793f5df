// The search benchmark's work without the benchmark library: the first
// positions of the move-generation suite searched to a fixed depth on one
// thread, with the node total printed. Small enough to run under callgrind
// (instruction counts stay steady on a busy machine; count the search alone
// with --toggle-collect='*timedSearch*'), and the training run
// of the profile-guided build.
//
// usage: tolva_search_nodes [depth [positions]]   (defaults 9 and 32)
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "board/fen.h"
#include "search/time_control.h"
#include "search/search_thread.h"

namespace {

// CPU time of this thread: steadier than the wall clock on a shared machine.
double threadSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

class QuietInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

// Kept out of line so that callgrind can count the search alone:
// --toggle-collect='*timedSearch*'.
[[gnu::noinline]] void timedSearch(SearchThread& thread, const Board_0x88& game) {
  Move best, ponder;
  thread.searchRootForSide(game, best, ponder);
}

}  // namespace

int main(int argc, char** argv) {
  const uint32_t depth = argc > 1 ? uint32_t(std::atoi(argv[1])) : 9;
  const size_t positions = argc > 2 ? size_t(std::atoi(argv[2])) : 32;
  std::vector<std::string> fens;
  std::ifstream in(TOLVA_BENCH_DATA_DIR "/perft-suite.epd");
  for (std::string line; fens.size() < positions && std::getline(in, line);)
    fens.push_back(line.substr(0, line.find(" ;")));

  QuietInterface ui;
  TimeControl tc;
  tc.timed = true;
  tc.maxTime = 1u << 30;
  tc.depthLimited = true;
  tc.maxDepth = depth;
  // The same table sizes as the search benchmark, emptied for each position.
  TTHashTable tt("TT hash");
  tt.sizeFor(64);
  PawnHash pawns;
  pawns.sizeFor(4);
  uint64_t nodes = 0;
  double seconds = 0;
  std::cout.setstate(std::ios::failbit);  // the searches' own comment lines
  for (const std::string& fen : fens) {
    tt.clear();
    pawns.clear();
    Board_0x88 game;
    setupFromFen(game, fen.c_str());
    auto thread = std::make_unique<SearchThread>(0, &tt, &pawns, nullptr, &tc, &ui);
    const double start = threadSeconds();
    timedSearch(*thread, game);
    seconds += threadSeconds() - start;
    nodes += thread->stats.nodes.get();
  }
  std::cout.clear();
  std::printf("positions %zu depth %u nodes %llu cpu %.3f s nps %.0f\n", fens.size(), depth,
              (unsigned long long)nodes, seconds, double(nodes) / seconds);
  return 0;
}
