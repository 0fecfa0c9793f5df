#pragma once
#include <cstdint>
#include <optional>

// The millisecond clock of a UCI session: a monotonic reading, good only for
// differences (UCI hosts count in milliseconds, finer than the game clock).
int64_t monotonicMs();

// What a UCI `go` tells about the engine's own clock, in milliseconds.
struct UciClock {
  int64_t timeLeft = 0;   // what is on the clock; below 0 counts as 0
  int64_t increment = 0;  // added after each move
  int64_t movesToGo = 0;  // moves until the clock is topped up; 0 when not given
  int64_t overhead = 10;  // ms lost per move outside the engine's own timing (the Move Overhead option)
};
// Moves still to play when the host doesn't say (sudden death or increment).
constexpr int64_t EstimatedMovesToGo = 30;

// How long one move may think on this clock. The time on the clock and the
// increments of the coming moves are shared out over the moves to go, less
// the overhead of each move (the pipes, the host's bookkeeping, the
// scheduling of a loaded machine) and a reserve that is never planned, and no
// move takes more than a third of the clock (three quarters on the last move
// before the clock is topped up): a wrong guess of the moves to go can't
// lose the game. Never below 1.
int64_t allocateMoveTime(const UciClock& clock);

// The budget of one `go`: the clock's share, the move time M of `movetime`
// (below 0 when not given) a little inside M for the answer to reach the
// host, or the smaller of the two when both come; -1 when neither does.
int64_t goBudget(const std::optional<UciClock>& clock, int64_t moveTimeMs);
