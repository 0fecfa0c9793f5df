#pragma once
#include <string>
#include <vector>

// What became of one run of the engine.
struct EngineOutcome {
  std::string output;  // standard output
  std::string errors;  // standard error: the sanitizers report here
  bool exited = false;
  int exitCode = -1;
  int signal = 0;
  bool hung = false;           // no exit within the time limit after the end of input
  bool exitedEarly = false;    // gone before the fuzzer closed its input
  std::string stacks;          // thread stacks of a hung engine, when gdb could take them
};

// The engine binary as a child process with three pipes. Output is drained
// whenever the driver waits, so a chatty engine never blocks.
class EngineDriver {
 public:
  EngineDriver(const std::string& binary, const std::vector<std::string>& args, const std::string& workingDir);
  ~EngineDriver();
  EngineDriver(const EngineDriver&) = delete;
  EngineDriver& operator=(const EngineDriver&) = delete;

  bool started() const { return pid_ > 0; }
  // Writes all bytes unless the engine has gone or stopped reading for
  // `stallMs`; false then.
  bool send(const std::string& bytes, int stallMs);
  void pause(int milliseconds);
  void closeInput();
  bool inputClosed() const { return toChild_ < 0; }
  // Closes the input, waits up to `timeoutMs` for the exit, kills a hung engine.
  EngineOutcome finish(int timeoutMs, bool takeStacks);
  const std::string& output() const { return outcome_.output; }

 private:
  void drain(int timeoutMs);
  bool reap(bool block);

  int pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
  int errorsFromChild_ = -1;
  EngineOutcome outcome_;
};

// Stacks of all threads of a running process through gdb, empty if that fails.
std::string threadStacks(int pid);
