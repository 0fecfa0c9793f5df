#include "uci/uci_input.h"

#include <unistd.h>

#include <cctype>
#include <cerrno>

bool UciLineReader::next(std::string& line, bool& tooLong) {
  line.clear();
  tooLong = false;
  bool any = false;
  for (;;) {
    if (begin_ == end_) {
      ssize_t got = ::read(fd_, buffer_, sizeof buffer_);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) {
        // A last line without its line feed still counts.
        if (any && !line.empty() && line.back() == '\r') line.pop_back();
        return any;
      }
      begin_ = 0;
      end_ = size_t(got);
    }
    any = true;
    size_t stop = begin_;
    while (stop < end_ && buffer_[stop] != '\n') ++stop;
    if (!tooLong) {
      line.append(buffer_ + begin_, stop - begin_);
      if (line.size() > MaxLineLength) {
        tooLong = true;
        line.clear();
      }
    }
    const bool complete = stop < end_;
    begin_ = complete ? stop + 1 : end_;
    if (complete) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return true;
    }
  }
}

std::vector<std::string> splitWords(const std::string& line) {
  std::vector<std::string> words;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    size_t start = i;
    while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    if (i > start) words.emplace_back(line, start, i - start);
  }
  return words;
}
