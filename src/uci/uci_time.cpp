#include "uci/uci_time.h"

#include <algorithm>
#include <chrono>

int64_t monotonicMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int64_t allocateMoveTime(const UciClock& clock) {
  const int64_t time = std::max<int64_t>(clock.timeLeft, 0);
  const int64_t increment = std::max<int64_t>(clock.increment, 0);
  const int64_t movesToGo = clock.movesToGo > 0 ? std::min<int64_t>(clock.movesToGo, 50) : EstimatedMovesToGo;
  // Up to a second that no plan touches: what the overhead of each move can
  // eat without the flag falling.
  const int64_t reserve = std::min<int64_t>(time / 8, 1000);
  const int64_t pool = time - reserve + increment * (movesToGo - 1) - clock.overhead * movesToGo;
  int64_t budget = pool / movesToGo;
  const int64_t onClock = std::max<int64_t>(time - clock.overhead, 0);
  const int64_t cap = movesToGo == 1 ? onClock * 3 / 4 : onClock / 3;
  budget = std::min(budget, cap);
  return std::max<int64_t>(budget, 1);
}

int64_t goBudget(const std::optional<UciClock>& clock, int64_t moveTimeMs) {
  const int64_t shared = clock ? allocateMoveTime(*clock) : -1;
  if (moveTimeMs < 0) return shared;
  const int64_t fixed = std::max<int64_t>(moveTimeMs - 1, 1);
  return shared < 0 ? fixed : std::min(shared, fixed);
}
