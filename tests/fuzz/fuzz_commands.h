#pragma once
#include <cstdint>
#include <string>
#include <vector>

// The engine's command words with their argument counts, as the command
// loop checks them. The generator draws from it; the game tracker uses it to
// tell which lines reach their handler.
struct FuzzCommand {
  const char* name;
  uint32_t minArgs;
  uint32_t maxArgs;
};

inline constexpr FuzzCommand fuzzCommands[] = {
    {"quit", 0, 0},     {"xboard", 0, 0},  {"protover", 1, 1}, {"new", 0, 0},        {"force", 0, 0},
    {"ping", 1, 1},     {"usermove", 1, 1}, {"go", 0, 0},      {"playother", 0, 0},  {"setboard", 4, 6},
    {"level", 3, 3},    {"sd", 1, 1},      {"time", 1, 1},     {"undo", 0, 0},       {"remove", 0, 0},
    {"analyze", 0, 0},  {"exit", 0, 0},    {"auto", 0, 1},     {"post", 0, 0},       {"nopost", 0, 0},
    {"cores", 1, 1},    {"egtpath", 2, 2}, {"option", 1, 1},   {"book", 0, 0},       {"nobook", 0, 0},
    {"perft", 1, 1},    {"divide", 1, 1},  {"selftest", 0, 0}, {"test", 0, 1},       {"eval", 0, 0},
    {"tune", 1, 2},     {"randpos", 0, 2}, {"randgame", 0, 0}, {"norandgame", 0, 0}, {"randgames", 1, 1},
};

// A line as the command loop takes it apart: the word, the arguments split at
// every blank, and whether the count passes the row's limits.
struct ParsedLine {
  std::string word;
  std::vector<std::string> args;
  const FuzzCommand* command = nullptr;
  bool countOk = false;
};

inline ParsedLine parseCommandLine(const std::string& line) {
  ParsedLine parsed;
  size_t blank = line.find(' ');
  parsed.word = line.substr(0, blank);
  for (const FuzzCommand& command : fuzzCommands)
    if (parsed.word == command.name) parsed.command = &command;
  if (blank != std::string::npos) {
    // Every piece before a blank counts, also an empty one; the last only when not empty.
    std::string rest = line.substr(blank + 1);
    size_t start = 0;
    for (size_t at; (at = rest.find(' ', start)) != std::string::npos; start = at + 1)
      parsed.args.push_back(rest.substr(start, at - start));
    if (start < rest.size()) parsed.args.push_back(rest.substr(start));
  }
  if (parsed.command) {
    if (blank != std::string::npos)
      parsed.countOk = parsed.args.size() >= parsed.command->minArgs && parsed.args.size() <= parsed.command->maxArgs;
    else
      parsed.countOk = parsed.command->minArgs == 0;
  }
  return parsed;
}
