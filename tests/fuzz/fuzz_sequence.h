#pragma once
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

// Everything needed to run a sequence again: the engine's command line, its
// tolva.ini and the steps. Input always ends after the last step.
struct FuzzSequence {
  std::vector<std::string> engineArgs;
  std::vector<std::string> iniLines;
  std::vector<FuzzStep> steps;
  std::string comment;  // written as "#" lines at the top of the file
};

// The text form, one step per line:
//   args -cores 2      ini ttHashSizeMB = 4      sleep 12
//   send usermove e2e4      glue sd 2      part qui      close
// "glue" is a send that belongs to the step before it. Bytes in send, glue
// and part lines are escaped: \\ \t \r \0 \xHH, and trailing blanks as \x20.
std::string formatSequence(const FuzzSequence& sequence);
bool parseSequence(const std::string& text, FuzzSequence& sequence, std::string& error);

bool readSequenceFile(const std::string& path, FuzzSequence& sequence, std::string& error);
bool writeSequenceFile(const std::string& path, const FuzzSequence& sequence);

// How many send and part steps the sequence has.
size_t countCommands(const FuzzSequence& sequence);
