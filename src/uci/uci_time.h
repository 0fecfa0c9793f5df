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

// What one move plans to think on this clock. The time on the clock and the
// increments of the coming moves are shared out over the moves to go, less
// the overhead of each move (the pipes, the host's bookkeeping, the
// scheduling of a loaded machine) and a reserve that is never planned, and no
// move takes more than a third of the clock (three quarters on the last move
// before the clock is topped up): a wrong guess of the moves to go can't
// lose the game. Never below 1.
int64_t allocateMoveTime(const UciClock& clock);

// The hard stop of a move on this clock. The root starts no iteration that it
// expects to overrun the plan; one it did start may run on to three times the
// plan, so that its work isn't thrown away half done, but never past the cap.
int64_t moveTimeLimit(const UciClock& clock);

// The times of one `go`, in ms from its start, -1 when there is no limit.
struct GoBudget {
  int64_t plan = -1;   // what the root plans with
  int64_t limit = -1;  // when the search stops, whatever it is doing
};

// The clock's plan and hard stop, the move time M of `movetime` (below 0 when
// not given) a little inside M for the answer to reach the host, or the
// smaller of the two when both come.
GoBudget goBudget(const std::optional<UciClock>& clock, int64_t moveTimeMs);
