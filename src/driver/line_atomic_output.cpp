#include "driver/line_atomic_output.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

namespace {

thread_local std::string pending;

// One fwrite holds the FILE lock for its whole length.
void writeOut(const char* text, size_t count) {
  if (count == 0) return;
  std::fwrite(text, 1, count, stdout);
  std::fflush(stdout);
}

}  // namespace

int LineAtomicOutput::overflow(int c) {
  if (c == traits_type::eof()) return traits_type::not_eof(c);
  pending.push_back(char(c));
  if (c == '\n') writeCompleteLines();
  return c;
}

std::streamsize LineAtomicOutput::xsputn(const char* text, std::streamsize count) {
  pending.append(text, size_t(count));
  if (std::memchr(text, '\n', size_t(count))) writeCompleteLines();
  return count;
}

int LineAtomicOutput::sync() {
  writeOut(pending.data(), pending.size());
  pending.clear();
  return 0;
}

void LineAtomicOutput::writeCompleteLines() {
  size_t end = pending.rfind('\n');
  if (end == std::string::npos) return;
  writeOut(pending.data(), end + 1);
  pending.erase(0, end + 1);
}

LineAtomicStandardOutput::LineAtomicStandardOutput() : previous_(std::cout.rdbuf(&buffer_)) {}

LineAtomicStandardOutput::~LineAtomicStandardOutput() {
  std::cout.flush();
  std::cout.rdbuf(previous_);
}
