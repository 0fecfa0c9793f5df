#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "board/board.h"
#include "fuzz/fuzz_sequence.h"

// SplitMix64: small, fast, and the same numbers on every platform.
class FuzzRandom {
 public:
  explicit FuzzRandom(uint64_t seed) : state_(seed) {}
  uint64_t next() {
    uint64_t z = (state_ += 0x9e3779b97f4a7c15ull);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    return z ^ (z >> 31);
  }
  // 0 .. n-1 (n > 0).
  uint32_t below(uint32_t n) { return uint32_t(next() % n); }
  int range(int low, int high) { return low + int(below(uint32_t(high - low + 1))); }
  bool chance(double p) { return double(next() >> 11) * (1.0 / 9007199254740992.0) < p; }
  template <typename T>
  const T& pick(const std::vector<T>& items) {
    return items[below(uint32_t(items.size()))];
  }

 private:
  uint64_t state_;
};

struct GeneratorSettings {
  int maxCores = 2;
  std::string dataDir;      // tests/data: seed FENs and a book
  std::string gaviotaDir;   // folder with the 3-man tables (gtb4 and friends)
  std::string workDir;      // the engine's working directory
  std::vector<std::string> seedFens;
};

// Draws sequences of real commands with random, boundary and malformed
// arguments. Every search it can start stays short: a time control of a few
// seconds at most, or a small depth limit glued right behind any command
// that could allow a long search (a wild clock, exit, new, a broken sd).
// Glue lines share the command's group and are marked, so shrinking removes
// them only together with their command.
class CommandGenerator {
 public:
  CommandGenerator(uint64_t seed, const GeneratorSettings& settings);

  // Command line and ini file of a new sequence.
  void begin(FuzzSequence& sequence);
  // The next group of steps, given the engine's position if the tracker
  // knows it; empty once the sequence is complete (its input closed).
  std::vector<FuzzStep> next(const Board_0x88* board);

 private:
  std::vector<std::string> command(const Board_0x88* board);
  std::vector<std::string> concurrentCommand();
  std::vector<std::string> fastControl();
  std::string userMove(const Board_0x88* board);
  std::string oddUserMove(const Board_0x88* board);
  std::string fen(const Board_0x88* board);
  std::string mutateFen(std::string fen);
  std::string randomFen();
  std::string saneLevel();
  std::string wildLevel();
  std::string number();
  std::string noise();
  std::string decorate(const std::string& line);
  void afterBound(std::vector<std::string>& lines);

  FuzzRandom random_;
  GeneratorSettings settings_;
  int length_ = 0;
  int sent_ = 0;
  int group_ = 0;
  int burst_ = 0;  // lines left that leave a running search alone
  bool finished_ = false;
};
