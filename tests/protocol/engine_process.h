#pragma once
// The engine binary as a child process over pipes, for the protocol tests and
// the command fuzzer. Output is drained whenever the caller waits, so a
// chatty engine never blocks.
#include <string>
#include <vector>

struct EngineOutcome {
  std::string output;  // standard output, with standard error when merged
  std::string errors;  // standard error when kept apart: the sanitizers report there
  int exitCode = -1, signal = 0;
  bool hung = false;         // no exit within the time limit after the end of input: killed
  bool exitedEarly = false;  // gone before its input was closed
  // The exit code, or -1 when hung or ended by a signal.
  int status() const { return hung || signal ? -1 : exitCode; }
};

class EngineProcess {
 public:
  EngineProcess(const std::string& binary, const std::vector<std::string>& args = {}, const std::string& workingDir = "",
                bool errorsApart = false);
  ~EngineProcess();
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  bool started() const { return pid_ > 0; }
  // Writes all bytes; false when the engine has gone or stopped reading for `stallMs`.
  bool send(const std::string& bytes, int stallMs = 60000);
  void pause(int milliseconds);
  // Reads until `needle` is in the output; false on timeout or end of output.
  bool waitFor(const std::string& needle, int timeoutSeconds = 30);
  void closeInput();
  bool inputClosed() const { return in_ < 0; }
  // Closes the input, waits up to `timeoutMs` for the exit, kills a hung engine.
  EngineOutcome finish(int timeoutMs = 60000);
  const std::string& output() const { return outcome_.output; }

 private:
  void drain(int timeoutMs);
  bool reap(bool block);
  int pid_ = -1, in_ = -1, out_ = -1, err_ = -1;
  EngineOutcome outcome_;
};

// Runs the engine on all of `input` and collects what it prints.
EngineOutcome runEngine(const std::string& binary, const std::string& input, const std::vector<std::string>& args = {},
                        const std::string& workingDir = "", int timeoutSeconds = 60);
