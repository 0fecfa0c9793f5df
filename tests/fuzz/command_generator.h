#pragma once
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "board/board.h"

// One step of a fuzz sequence: bytes for the engine's standard input, a pause,
// or the end of input.
struct FuzzStep {
  enum Kind { Send, Sleep, Close };
  Kind kind = Send;
  std::string text;      // Send: the bytes, without the line feed
  int milliseconds = 0;  // Sleep
  bool newline = true;   // Send: a line feed follows (false: a partial line)
  bool glue = false;     // Send: keeps the searches of the line before it short
};

// Everything needed to run a sequence again. Input always ends after the last step.
struct FuzzSequence {
  std::vector<std::string> engineArgs, iniLines;  // the command line and tolva.ini
  std::vector<FuzzStep> steps;
  std::string comment;
};

// The standard fixes the numbers of mt19937_64, so a seed draws the same sequence everywhere.
struct FuzzRandom : std::mt19937_64 {
  using std::mt19937_64::mt19937_64;
  uint32_t below(uint32_t n) { return uint32_t((*this)() % n); }
  int range(int low, int high) { return low + int(below(uint32_t(high - low + 1))); }
  bool chance(double p) { return below(1000000) < p * 1000000; }
  template <typename T>
  const T& pick(const std::vector<T>& items) { return items[below(uint32_t(items.size()))]; }
};

struct GeneratorSettings {
  int maxCores = 2;
  std::string dataDir;     // tests/data: a book, and seed positions
  std::string gaviotaDir;  // folder with the 3-man tables (gtb1 to gtb4)
  std::vector<std::string> seedFens;
  bool uci = false;  // sequences of the UCI front end: `uci` first, then its commands
};

// Draws sequences of real commands with random, boundary and malformed
// arguments. Every search it can start stays short: a time control of a few
// seconds at most, or a small depth limit glued right behind any line that
// could allow a long search.
class CommandGenerator {
 public:
  CommandGenerator(uint64_t seed, const GeneratorSettings& settings) : random_(seed), settings_(settings) {}
  // Command line and ini file of a new sequence.
  void begin(FuzzSequence& sequence);
  // The next group of steps, given the engine's position if the tracker
  // knows it; empty once the sequence is complete (its input closed).
  std::vector<FuzzStep> next(const Board_0x88* board);

 private:
  std::string expand(const std::string& pattern, const Board_0x88* board);
  std::string token(const std::string& name, const Board_0x88* board);
  std::string fen(const Board_0x88* board);
  std::string noise();
  // In UCI the generator follows the position it sent itself, so that its moves are legal there.
  std::string uciToken(const std::string& name);

  Board_0x88 uciBoard_;        // the position of the last position line sent
  bool uciBoardKnown_ = true;  // false after a FEN that may be broken

  FuzzRandom random_;
  GeneratorSettings settings_;
  int length_ = 0, sent_ = 0;
  int burst_ = 0;  // lines left that leave a running search alone
  bool finished_ = false;
};
