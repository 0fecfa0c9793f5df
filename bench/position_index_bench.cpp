// positionToIndex through the catalogue rows, as the tablebase store calls it,
// over random placements of the endgames of 3, 4 or 5 men, or of all of them.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "tablebase/endgame_catalogue.h"

namespace {

struct Probe {
  const EndgameRow* row;
  uint32_t w[5], b[3];
};

// Distinct squares, pawns on ranks 2 to 7, in the rows' order: 4096 probes.
std::vector<Probe> probesOf(int men) {
  std::vector<const EndgameRow*> rows;
  for (int32_t id = 0; id < endgameCount; ++id)
    if (men == 0 || std::strlen(endgameCatalogue[id].name) == size_t(men)) rows.push_back(&endgameCatalogue[id]);
  std::mt19937_64 random(42);
  std::vector<Probe> probes;
  for (size_t n = 0; n < 4096; ++n) {
    Probe p{rows[n % rows.size()], {}, {}};
    const char* name = p.row->name;
    size_t second = std::strchr(name + 1, 'k') - name;
    uint64_t taken = 0;
    for (size_t i = 0; name[i]; ++i) {
      uint32_t s;
      do s = uint32_t(random() % 64);
      while ((taken >> s & 1) || (name[i] == 'p' && (s < 8 || s > 55)));
      taken |= uint64_t(1) << s;
      (i < second ? p.w[i] : p.b[i - second]) = s;
    }
    p.w[second] = p.b[std::strlen(name) - second] = 64;
    probes.push_back(p);
  }
  return probes;
}

void BM_PositionToIndex(benchmark::State& state) {
  std::vector<Probe> probes = probesOf(int(state.range(0)));
  for (auto _ : state) {
    uint32_t sum = 0;
    for (const Probe& p : probes) {
      uint32_t index;
      p.row->positionToIndex(p.w, p.b, index);
      sum += index;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.counters["per_call"] = benchmark::Counter(double(probes.size()),
                                                  benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// 0: all 145 endgames mixed.
BENCHMARK(BM_PositionToIndex)->ArgName("men")->Arg(3)->Arg(4)->Arg(5)->Arg(0);

}  // namespace
