#pragma once
#include <cstdint>
#include <iostream>
#include <string>

#include "board/relaxed.h"

// Where a given ply stands in the sessions of the time control.
struct SessionPosition {
  uint32_t fullMoveNumber;  // (ply >> 1) + 1, the same for both colours of a move pair
  uint32_t remainingMoves;  // moves to play up to and including the end of this session
  uint32_t nSessions;       // sessions whose time has been granted so far
};

// The clock and limits of the game. All times are centiseconds in wrapping
// 32-bit arithmetic: only differences of stamps mean anything.
//
// The search threads read these fields while the main thread writes them
// (`time` and `level` arrive during a search): every field is a relaxed
// atomic, and a slightly stale value only moves a time check by a node.
class TimeControl {
 public:
  Relaxed<bool> clockRunning = false;
  Relaxed<uint32_t> elapsed = 0;             // used up to the last clock stop
  Relaxed<uint32_t> clockStart = 0;          // stamp of the last clock start
  Relaxed<uint32_t> elapsedAtMoveStart = 0;  // reading of the clock when this think began
  Relaxed<uint32_t> maxTime = 0;             // what this think may use; read as signed
  Relaxed<uint32_t> movesPerSession = 40;    // 0: the whole game is one session
  Relaxed<uint32_t> timePerSession = 30000;
  Relaxed<uint32_t> increment = 0;
  Relaxed<bool> timed = true;  // false only in analyze mode
  Relaxed<bool> depthLimited = false;
  Relaxed<uint32_t> maxDepth = 0;

  // Seconds * 100 + milliseconds / 10 of the wall clock, wrapping.
  static uint32_t timeStamp();

  // The clock's reading: elapsed, plus the running part while it runs.
  uint32_t currentElapsed() const { return currentElapsedAt(timeStamp()); }
  uint32_t currentElapsedAt(uint32_t now) const {
    uint32_t used = elapsed;
    return clockRunning ? used + (now - clockStart) : used;
  }

  // The start of a think. A clock that already runs keeps running.
  void startClock() { startClockAt(timeStamp()); }
  void startClockAt(uint32_t now);
  // The end of a think, and `force`.
  void stopClock() { stopClockAt(timeStamp()); }
  void stopClockAt(uint32_t now);

  // `new`: the clock goes back to zero without counting what ran, and the
  // default time control returns. Analyze mode has no time limit.
  void resetForNewGame(bool analyzeMode);

  // `level moves time increment`, time as "minutes" or "minutes:seconds".
  // False, with nothing changed, for a time with more than two pieces.
  bool setLevel(const std::string& moves, const std::string& time, const std::string& increment);
  // `sd depth`. False, with nothing changed, for a negative depth.
  bool setDepth(const std::string& depth);
  // `time remaining`: turns the host's remaining time at game ply `ply` into
  // the time used, as this clock counts it.
  void setRemaining(uint32_t ply, const std::string& remaining);

  SessionPosition sessionPosition(uint32_t ply) const;

  // Sets maxTime for a think at game ply `ply` and prints how it got there.
  void allocateTime(uint32_t ply, std::ostream& out = std::cout) { allocateTimeFrom(ply, currentElapsed(), out); }
  // The same with the clock's reading `used` given.
  void allocateTimeFrom(uint32_t ply, uint32_t used, std::ostream& out = std::cout);

  // The first search out of the book gets more time, unless the session is
  // nearly over.
  void correctOutOfBook(uint32_t ply, std::ostream& out = std::cout);

  // The search's time check. With threads (currentCores not 0) the clock is
  // only looked at when the nodes of all threads, `nodeSum`, are a multiple
  // of 4096.
  bool isTimeUp(uint32_t currentCores, uint64_t nodeSum, std::ostream& out = std::cout) const;
};
