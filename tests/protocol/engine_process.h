#pragma once
#include <string>
#include <vector>

// Runs the real engine binary as a child process, writes `input` to its
// standard input, closes it, and collects everything it prints.
struct EngineRun {
  std::string output;
  int exitStatus = -1;  // -1 when killed or timed out
  bool timedOut = false;
};

EngineRun runEngine(const std::string& input, const std::vector<std::string>& args = {},
                    const std::string& workingDir = "", int timeoutSeconds = 60);

// A long-lived engine for interactive transcripts: send lines and wait for
// expected output.
class EngineSession {
 public:
  explicit EngineSession(const std::vector<std::string>& args = {}, const std::string& workingDir = "");
  ~EngineSession();
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;

  void send(const std::string& text);
  // Reads until `needle` appears in the output after `from`; false on timeout or end of output.
  bool waitFor(const std::string& needle, int timeoutSeconds = 30);
  // Closes standard input and waits for the exit status (-1 on timeout).
  int finish(int timeoutSeconds = 60);
  const std::string& output() const { return output_; }

 private:
  bool readSome(int timeoutMs);
  int pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
  std::string output_;
};

// The text the engine prints before its first prompt, without command-line options.
std::string expectedStartup(bool withBoard = true);
// The diagram of the start position.
std::string startBoardDiagram();

// What the engine prints between its prompts, one piece per input line
// (console mode; `quit` is appended to the input).
std::vector<std::string> repliesTo(const std::string& input, const std::string& workingDir = "");
