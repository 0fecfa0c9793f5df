#include "search/time_control.h"

#include <time.h>

#include <cstdlib>
#include <limits>

#include "board/string_split.h"

namespace {

// atoi as the C library does it, without the undefined overflow: the long
// that strtol reads is cut to 32 bits.
int32_t toInt(const std::string& text) { return int32_t(std::strtol(text.c_str(), nullptr, 10)); }

// A double truncated towards zero into a signed 32-bit number; values
// beyond the range stick at its ends.
int32_t truncateToInt32(double value) {
  if (value >= double(std::numeric_limits<int32_t>::max())) return std::numeric_limits<int32_t>::max();
  if (value <= double(std::numeric_limits<int32_t>::min())) return std::numeric_limits<int32_t>::min();
  return int32_t(value);
}

}  // namespace

uint32_t TimeControl::timeStamp() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return uint32_t(now.tv_sec) * 100u + uint32_t(now.tv_nsec / 10000000);
}

void TimeControl::startClockAt(uint32_t now) {
  if (clockRunning) {
    elapsedAtMoveStart = currentElapsedAt(now);
  } else {
    elapsedAtMoveStart = elapsed;
    clockRunning = true;
    clockStart = now;
  }
}

void TimeControl::stopClockAt(uint32_t now) {
  if (!clockRunning) return;
  clockRunning = false;
  elapsed += now - clockStart;
}

void TimeControl::resetForNewGame(bool analyzeMode) {
  clockRunning = false;
  elapsed = 0;
  clockStart = 0;
  elapsedAtMoveStart = 0;
  movesPerSession = 40;
  timePerSession = 30000;
  increment = 0;
  timed = !analyzeMode;
  depthLimited = false;
}

bool TimeControl::setLevel(const std::string& moves, const std::string& time, const std::string& inc) {
  std::vector<std::string> pieces = splitString(time, ':');
  // An empty time field leaves nothing to read; don't guess a time of zero.
  if (pieces.empty() || pieces.size() > 2) return false;
  uint32_t seconds = 60u * uint32_t(toInt(pieces[0]));
  if (pieces.size() == 2) seconds += uint32_t(toInt(pieces[1]));
  movesPerSession = uint32_t(toInt(moves));
  timePerSession = seconds * 100u;
  increment = uint32_t(toInt(inc)) * 100u;
  return true;
}

bool TimeControl::setDepth(const std::string& depth) {
  int32_t value = toInt(depth);
  if (value < 0) return false;
  depthLimited = true;
  maxDepth = uint32_t(value);
  return true;
}

SessionPosition TimeControl::sessionPosition(uint32_t ply) const {
  SessionPosition position;
  position.fullMoveNumber = (ply >> 1) + 1;
  // Read once: a `level` during a search may change it between two reads.
  const uint32_t moves = movesPerSession;
  if (moves == 0) {
    position.remainingMoves = 32;
    position.nSessions = 1;
    return position;
  }
  uint32_t q = position.fullMoveNumber / moves;
  uint32_t r = position.fullMoveNumber % moves;
  if (r != 0) {
    position.remainingMoves = moves + 1 - r;
    position.nSessions = q + 1;
  } else {
    position.remainingMoves = 1;
    position.nSessions = q;
  }
  return position;
}

void TimeControl::setRemaining(uint32_t ply, const std::string& remaining) {
  SessionPosition position = sessionPosition(ply);
  uint32_t total = position.fullMoveNumber * increment + position.nSessions * timePerSession;
  elapsed = total - uint32_t(toInt(remaining));
}

void TimeControl::allocateTimeFrom(uint32_t ply, uint32_t used, std::ostream& out) {
  SessionPosition position = sessionPosition(ply);
  uint32_t total = increment * position.fullMoveNumber + position.nSessions * timePerSession;
  uint32_t remaining = total - used;
  uint32_t available = remaining + increment * (position.remainingMoves - 1);
  maxTime = uint32_t(truncateToInt32(double(int32_t(available)) * 0.9 / double(position.remainingMoves)));

  out << "# movesPerSession=" << movesPerSession << " timePerSession=" << timePerSession << " increment=" << increment
      << '\n';
  out << "# ply=" << ply << " fullMoveNumber=" << position.fullMoveNumber
      << " remainingMoves=" << position.remainingMoves << " nSessions=" << position.nSessions << '\n';
  out << "# total=" << int32_t(total) << " elapsed=" << int32_t(used) << " remaining=" << int32_t(remaining)
      << " available=" << int32_t(available) << " max=" << int32_t(maxTime) << std::endl;
  out << "# set maxTime = " << int32_t(maxTime) << std::endl;
}

void TimeControl::correctOutOfBook(uint32_t ply, std::ostream& out) {
  if (movesPerSession != 0 && sessionPosition(ply).remainingMoves < 10) return;
  maxTime = uint32_t(truncateToInt32(double(int32_t(maxTime)) * 1.5));
  out << "# out of book: corrected maxTime = " << int32_t(maxTime) << std::endl;
}

bool TimeControl::isTimeUp(uint32_t currentCores, uint64_t nodeSum, std::ostream& out) const {
  if (currentCores != 0 && (nodeSum & 4095) != 0) return false;
  if (!timed) return false;
  if (int32_t(currentElapsed() - elapsedAtMoveStart) < int32_t(maxTime)) return false;
  out << "# timeout" << std::endl;
  return true;
}
