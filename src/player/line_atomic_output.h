#pragma once
#include <streambuf>

// A stream buffer for standard output that keeps every line whole: each
// thread collects its own text, and complete lines go out in one write.
// The search thread and the main thread print at the same time, and a host
// must never see "move e7e5pong 12".
class LineAtomicOutput : public std::streambuf {
 protected:
  int overflow(int c) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  // A flush writes what this thread has, a partial line (the prompt) included.
  int sync() override;

 private:
  void writeCompleteLines();
};

// In a UCI session the output carries no comment lines: what the engine's
// layers say as "# " remarks is meant for xboard hosts and the console, and
// a UCI host must see only its protocol. While on, complete lines that begin
// with '#' are dropped, from every thread.
void dropCommentLines(bool drop);

// Puts the line-atomic buffer under std::cout while it lives; the old buffer
// comes back at its end, before the thread's own text is gone.
class LineAtomicStandardOutput {
 public:
  LineAtomicStandardOutput();
  ~LineAtomicStandardOutput();
  LineAtomicStandardOutput(const LineAtomicStandardOutput&) = delete;
  LineAtomicStandardOutput& operator=(const LineAtomicStandardOutput&) = delete;

 private:
  LineAtomicOutput buffer_;
  std::streambuf* previous_;
};
