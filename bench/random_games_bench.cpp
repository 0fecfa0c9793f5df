// Speed of randgames: whole random games from the start position, with every
// statistic counted, in games per second. 40 games a call keeps the progress
// marks (one per 50th of the run) off the benchmark's output.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "diagnostics/random_games.h"
#include "player/chess_player.h"

namespace {

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

void BM_RandomGames(benchmark::State& state) {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  player.randomGame = true;
  auto stats = std::make_unique<RandomGameStats>();
  std::srand(1);
  constexpr uint64_t gamesPerCall = 40;
  for (auto _ : state) playRandomGames(player, player.randomGame, gamesPerCall, *stats);
  state.counters["games/s"] = benchmark::Counter(double(state.iterations() * gamesPerCall), benchmark::Counter::kIsRate);
  state.counters["moves/s"] = benchmark::Counter(double(stats->positions), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RandomGames)->Unit(benchmark::kMillisecond);

}  // namespace
