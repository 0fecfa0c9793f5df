#pragma once
#include <cstdint>
#include <string>
#include <vector>

// One step of a fuzz sequence: bytes for the engine's standard input, a pause,
// or the end of input.
struct FuzzStep {
  enum Kind { Send, Sleep, Close };
  Kind kind = Send;
  std::string text;      // Send: the bytes, without the line feed
  bool newline = true;   // Send: a line feed follows (false: a partial line)
  int milliseconds = 0;  // Sleep
  int group = 0;         // steps that only make sense together share a group
  bool glue = false;     // Send: keeps the group's searches short; never dropped alone
};

// Everything needed to run a sequence again. Input always ends after the last step.
struct FuzzSequence {
  std::vector<std::string> engineArgs;
  std::vector<std::string> iniLines;  // the engine's tolva.ini
  std::vector<FuzzStep> steps;
  std::string comment;  // written as "#" lines at the top of the file
};

// The file form, one step per line: "args -cores 2", "ini ttHashSizeMB = 4",
// "sleep 12", "send usermove e2e4", "glue sd 2" (a send that belongs to the
// step before), "part qui" (no line feed), "close". Bytes are escaped as
// \\ \t \r \0 \xHH, trailing blanks as \x20.
std::string formatSequence(const FuzzSequence& sequence);
bool parseSequence(const std::string& text, FuzzSequence& sequence, std::string& error);
size_t countCommands(const FuzzSequence& sequence);

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
  uint32_t below(uint32_t n) { return uint32_t(next() % n); }
  int range(int low, int high) { return low + int(below(uint32_t(high - low + 1))); }
  bool chance(double p) { return double(next() >> 11) * (1.0 / 9007199254740992.0) < p; }
  template <typename T>
  const T& pick(const std::vector<T>& items) { return items[below(uint32_t(items.size()))]; }

 private:
  uint64_t state_;
};
