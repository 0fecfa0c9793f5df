#pragma once
#include <cstdint>

// The clock and limits of the game.
class TimeControl {
 public:
};
