#pragma once
#include <cstddef>
#include <string>
#include <vector>

// Reads the lines of a UCI host from a file descriptor, whole: a `position`
// line of a long game runs to thousands of characters, far past the command
// loop's line buffer. Any byte may come; a line is cut at its line feed,
// and a carriage return before it is dropped.
class UciLineReader {
 public:
  // Longer lines are skipped to their end rather than held in memory.
  static constexpr size_t MaxLineLength = 1 << 20;

  explicit UciLineReader(int fd) : fd_(fd) {}
  // The next line; false at the end of input. `tooLong` tells that the line
  // was longer than MaxLineLength and has been dropped (the line is empty).
  bool next(std::string& line, bool& tooLong);

 private:
  int fd_;
  char buffer_[4096];
  size_t begin_ = 0, end_ = 0;
};

// The words of a line, split at blanks, tabs and the other white space.
std::vector<std::string> splitWords(const std::string& line);
