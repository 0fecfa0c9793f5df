#pragma once
// The engine binary as a child process over pipes, shared by the protocol
// tests and the command fuzzer.
#include <string>
#include <vector>

// What became of one run of the engine.
struct EngineOutcome {
  std::string output;  // standard output, with standard error when merged
  std::string errors;  // standard error when kept apart: the sanitizers report there
  bool exited = false;
  int exitCode = -1;
  int signal = 0;
  bool hung = false;         // no exit within the time limit after the end of input
  bool exitedEarly = false;  // gone before its input was closed
  std::string stacks;        // thread stacks of a hung engine, when gdb could take them
  // The exit code, or -1 when killed, hung or ended by a signal.
  int status() const { return exited && signal == 0 ? exitCode : -1; }
};

// Output is drained whenever the caller waits, so a chatty engine never blocks.
class EngineProcess {
 public:
  enum class Errors { Merged, Apart };
  EngineProcess(const std::string& binary, const std::vector<std::string>& args = {},
                const std::string& workingDir = "", Errors errors = Errors::Merged);
  ~EngineProcess();
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  bool started() const { return pid_ > 0; }
  // Writes all bytes unless the engine has gone or stopped reading for `stallMs`.
  bool send(const std::string& bytes, int stallMs = 60000);
  void pause(int milliseconds);
  // Reads until `needle` is in the output; false on timeout or end of output.
  bool waitFor(const std::string& needle, int timeoutSeconds = 30);
  void closeInput();
  bool inputClosed() const { return toChild_ < 0; }
  // Closes the input, waits up to `timeoutMs` for the exit, kills a hung engine.
  EngineOutcome finish(int timeoutMs = 60000, bool takeStacks = false);
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

// Runs the engine on all of `input` and collects what it prints.
EngineOutcome runEngine(const std::string& binary, const std::string& input, const std::vector<std::string>& args = {},
                        const std::string& workingDir = "", int timeoutSeconds = 60);
