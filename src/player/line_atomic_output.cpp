#include "player/line_atomic_output.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

namespace {

thread_local std::string pending;

std::atomic<bool> droppingCommentLines{false};

bool isCommentLine(const std::string& text, size_t start) { return start < text.size() && text[start] == '#'; }

// The lines of text[0, length) that aren't comment lines.
std::string withoutCommentLines(const std::string& text, size_t length) {
  std::string kept;
  for (size_t start = 0; start < length;) {
    size_t end = text.find('\n', start);
    end = end == std::string::npos || end >= length ? length : end + 1;
    if (!isCommentLine(text, start)) kept.append(text, start, end - start);
    start = end;
  }
  return kept;
}

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
  if (droppingCommentLines.load(std::memory_order_relaxed)) {
    writeCompleteLines();
    // A comment line not yet complete waits for its end to be dropped.
    if (isCommentLine(pending, 0)) return 0;
  }
  writeOut(pending.data(), pending.size());
  pending.clear();
  return 0;
}

void LineAtomicOutput::writeCompleteLines() {
  size_t end = pending.rfind('\n');
  if (end == std::string::npos) return;
  if (droppingCommentLines.load(std::memory_order_relaxed)) {
    const std::string kept = withoutCommentLines(pending, end + 1);
    writeOut(kept.data(), kept.size());
  } else {
    writeOut(pending.data(), end + 1);
  }
  pending.erase(0, end + 1);
}

void dropCommentLines(bool drop) { droppingCommentLines.store(drop, std::memory_order_relaxed); }

LineAtomicStandardOutput::LineAtomicStandardOutput() : previous_(std::cout.rdbuf(&buffer_)) {}

LineAtomicStandardOutput::~LineAtomicStandardOutput() {
  std::cout.flush();
  std::cout.rdbuf(previous_);
}
