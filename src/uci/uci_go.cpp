#include "uci/uci_go.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

// The whole word as a decimal number, within 64 bits.
bool readNumber(const std::string& word, int64_t& value) {
  if (word.empty()) return false;
  errno = 0;
  char* end = nullptr;
  long long number = std::strtoll(word.c_str(), &end, 10);
  if (errno != 0 || *end != '\0') return false;
  value = number;
  return true;
}

struct NumberField {
  const char* name;
  int64_t UciGoLimits::*field;
  int64_t minimum;  // a clock may be negative (the host's flag has fallen); counts as 0
};

constexpr NumberField numberFields[] = {
    {"wtime", &UciGoLimits::whiteTime, INT64_MIN},     {"btime", &UciGoLimits::blackTime, INT64_MIN},
    {"winc", &UciGoLimits::whiteIncrement, INT64_MIN}, {"binc", &UciGoLimits::blackIncrement, INT64_MIN},
    {"movestogo", &UciGoLimits::movesToGo, 0},         {"depth", &UciGoLimits::depth, 1},
    {"nodes", &UciGoLimits::nodes, 1},                 {"movetime", &UciGoLimits::moveTime, 0},
    {"perft", &UciGoLimits::perft, 1},
};

// A word that starts a part of `go`, which ends a list of search moves.
bool isKeyword(const std::string& word) {
  for (const NumberField& f : numberFields)
    if (word == f.name) return true;
  return word == "infinite" || word == "ponder" || word == "searchmoves";
}

}  // namespace

bool parseGoLimits(const std::vector<std::string>& words, UciGoLimits& limits, std::string& error) {
  UciGoLimits read;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "infinite") {
      read.infinite = true;
      continue;
    }
    if (word == "ponder") {
      read.ponder = true;
      continue;
    }
    const NumberField* field = nullptr;
    for (const NumberField& f : numberFields)
      if (word == f.name) field = &f;
    if (word == "searchmoves") {
      while (i + 1 < words.size() && !isKeyword(words[i + 1])) read.searchMoves.push_back(words[++i]);
      continue;
    }
    if (!field) continue;
    int64_t value = 0;
    if (i + 1 >= words.size()) {
      error = std::string("missing number after ") + field->name;
      return false;
    }
    if (!readNumber(words[i + 1], value) || value < field->minimum) {
      error = std::string("bad number for ") + field->name + ": " + words[i + 1];
      return false;
    }
    read.*(field->field) = value;
    ++i;
  }
  limits = read;
  return true;
}
