#pragma once
// A player with its clock and no engine behind it, for the tests that drive the player itself.
#include "player/chess_player.h"
#include "search/time_control.h"

namespace playertest {

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

struct PlayerWithoutEngine {
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
};

}  // namespace playertest
