#include "fuzz/fuzz_sequence.h"

#include <cstdlib>
#include <sstream>

namespace {

std::string escape(const std::string& text) {
  const size_t trailing = text.find_last_not_of(' ') + 1;
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '\\') out += "\\\\";
    else if (c == '\t') out += "\\t";
    else if (c == '\r') out += "\\r";
    else if (c == 0) out += "\\0";
    else if (c < 0x20 || c >= 0x7f || (c == ' ' && i >= trailing))  // editors drop trailing blanks
      out += std::string("\\x") + "0123456789abcdef"[c >> 4] + "0123456789abcdef"[c & 15];
    else out += char(c);
  }
  return out;
}

bool unescape(const std::string& text, std::string& out) {
  out.clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i >= text.size()) return false;
    const char c = text[i];
    if (c == 'x') {
      char* end = nullptr;
      const std::string hex = text.substr(i + 1, 2);
      const long value = std::strtol(hex.c_str(), &end, 16);
      if (hex.size() != 2 || *end) return false;
      out += char(value);
      i += 2;
    } else {
      const std::string from = "\\trn0", to = std::string("\\\t\r\n\0", 5);
      if (from.find(c) == std::string::npos) return false;
      out += to[from.find(c)];
    }
  }
  return true;
}

}  // namespace

std::string formatSequence(const FuzzSequence& sequence) {
  std::ostringstream out;
  out << "# Tolva command fuzzer sequence; replay with --replay <this file>\n";
  std::istringstream comment(sequence.comment);
  for (std::string line; std::getline(comment, line);) out << "# " << line << '\n';
  if (!sequence.engineArgs.empty()) {
    out << "args";
    for (const std::string& arg : sequence.engineArgs) out << ' ' << arg;
    out << '\n';
  }
  for (const std::string& line : sequence.iniLines) out << "ini " << line << '\n';
  for (const FuzzStep& step : sequence.steps) {
    if (step.kind == FuzzStep::Send) out << (step.glue ? "glue " : step.newline ? "send " : "part ") << escape(step.text) << '\n';
    if (step.kind == FuzzStep::Sleep) out << "sleep " << step.milliseconds << '\n';
    if (step.kind == FuzzStep::Close) out << "close\n";
  }
  return out.str();
}

bool parseSequence(const std::string& text, FuzzSequence& sequence, std::string& error) {
  sequence = FuzzSequence();
  std::istringstream in(text);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank), rest = blank == std::string::npos ? "" : line.substr(blank + 1);
    FuzzStep step;
    step.group = int(sequence.steps.size());
    if (word == "args") {
      std::istringstream words(rest);
      for (std::string arg; words >> arg;) sequence.engineArgs.push_back(arg);
      continue;
    } else if (word == "ini") {
      sequence.iniLines.push_back(rest);
      continue;
    } else if (word == "send" || word == "part" || word == "glue") {
      step.newline = word != "part";
      step.glue = word == "glue";
      if (step.glue && !sequence.steps.empty()) step.group = sequence.steps.back().group;
      if (!unescape(rest, step.text)) error = "line " + std::to_string(number) + ": bad escape";
    } else if (word == "sleep") {
      step.kind = FuzzStep::Sleep;
      step.milliseconds = std::atoi(rest.c_str());
    } else if (word == "close") {
      step.kind = FuzzStep::Close;
    } else {
      error = "line " + std::to_string(number) + ": unknown step '" + word + "'";
    }
    if (!error.empty()) return false;
    sequence.steps.push_back(step);
  }
  return true;
}

size_t countCommands(const FuzzSequence& sequence) {
  size_t count = 0;
  for (const FuzzStep& step : sequence.steps) count += step.kind == FuzzStep::Send;
  return count;
}
