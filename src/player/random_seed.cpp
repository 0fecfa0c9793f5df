#include "player/random_seed.h"

#include <sys/time.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

void seedRandomFromClock() {
  timeval now;
  gettimeofday(&now, nullptr);
  uint32_t secondsOfDay = uint32_t(now.tv_sec % 86400);
  uint32_t millisOfDay = secondsOfDay * 1000u + uint32_t(now.tv_usec / 1000);
  srand(unsigned(millisOfDay * uint32_t(time(nullptr))));
}
