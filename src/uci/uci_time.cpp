#include "uci/uci_time.h"

#include <algorithm>
#include <chrono>

int64_t monotonicMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

namespace {

int64_t movesToGoOf(const UciClock& clock) {
  return clock.movesToGo > 0 ? std::min<int64_t>(clock.movesToGo, 50) : EstimatedMovesToGo;
}

// No move takes more, whatever the plan.
int64_t moveTimeCap(const UciClock& clock) {
  const int64_t onClock = std::max<int64_t>(clock.timeLeft - clock.overhead, 0);
  return movesToGoOf(clock) == 1 ? onClock * 3 / 4 : onClock / 3;
}

}  // namespace

int64_t allocateMoveTime(const UciClock& clock) {
  const int64_t time = std::max<int64_t>(clock.timeLeft, 0);
  const int64_t increment = std::max<int64_t>(clock.increment, 0);
  const int64_t movesToGo = movesToGoOf(clock);
  // Up to a second that no plan touches: what the overhead of each move can
  // eat without the flag falling.
  const int64_t reserve = std::min<int64_t>(time / 8, 1000);
  const int64_t pool = time - reserve + increment * (movesToGo - 1) - clock.overhead * movesToGo;
  return std::max<int64_t>(std::min(pool / movesToGo, moveTimeCap(clock)), 1);
}

int64_t moveTimeLimit(const UciClock& clock) {
  return std::max<int64_t>(std::min(allocateMoveTime(clock) * 3, moveTimeCap(clock)), 1);
}

GoBudget goBudget(const std::optional<UciClock>& clock, int64_t moveTimeMs) {
  GoBudget budget;
  if (clock) budget = GoBudget{allocateMoveTime(*clock), moveTimeLimit(*clock)};
  if (moveTimeMs < 0) return budget;
  const int64_t fixed = std::max<int64_t>(moveTimeMs - 1, 1);
  if (!clock) return GoBudget{fixed, fixed};
  return GoBudget{std::min(budget.plan, fixed), std::min(budget.limit, fixed)};
}
