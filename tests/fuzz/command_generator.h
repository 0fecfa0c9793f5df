#pragma once
#include <string>
#include <vector>

#include "board/board.h"
#include "fuzz/fuzz_sequence.h"

struct GeneratorSettings {
  int maxCores = 2;
  std::string dataDir;     // tests/data: a book, and seed positions
  std::string gaviotaDir;  // folder with the 3-man tables (gtb1 to gtb4)
  std::vector<std::string> seedFens;
};

// Draws sequences of real commands with random, boundary and malformed
// arguments. Every search it can start stays short: a time control of a few
// seconds at most, or a small depth limit glued right behind any line that
// could allow a long search. Glue shares its line's group, so shrinking
// removes it only together with that line.
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

  FuzzRandom random_;
  GeneratorSettings settings_;
  int length_ = 0, sent_ = 0, group_ = 0;
  int burst_ = 0;  // lines left that leave a running search alone
  bool finished_ = false;
};
