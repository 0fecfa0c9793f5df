#include "fuzz/fuzz_sequence.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::string escape(const std::string& text) {
  size_t trailing = text.size();
  while (trailing > 0 && text[trailing - 1] == ' ') --trailing;
  std::string out;
  static const char hex[] = "0123456789abcdef";
  for (size_t i = 0; i < text.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '\\') {
      out += "\\\\";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == 0) {
      out += "\\0";
    } else if (c < 0x20 || c >= 0x7f || (c == ' ' && i >= trailing)) {
      // Editors drop trailing blanks; the engine trims them, so they matter.
      out += "\\x";
      out += hex[c >> 4];
      out += hex[c & 15];
    } else {
      out += char(c);
    }
  }
  return out;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool unescape(const std::string& text, std::string& out) {
  out.clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i >= text.size()) return false;
    switch (text[i]) {
      case '\\': out += '\\'; break;
      case 't': out += '\t'; break;
      case 'r': out += '\r'; break;
      case 'n': out += '\n'; break;
      case '0': out += '\0'; break;
      case 'x': {
        int high = i + 1 < text.size() ? hexValue(text[i + 1]) : -1;
        int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) return false;
        out += char(high * 16 + low);
        i += 2;
        break;
      }
      default: return false;
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
    switch (step.kind) {
      case FuzzStep::Send:
        out << (step.glue ? "glue " : step.newline ? "send " : "part ") << escape(step.text) << '\n';
        break;
      case FuzzStep::Sleep: out << "sleep " << step.milliseconds << '\n'; break;
      case FuzzStep::Close: out << "close\n"; break;
    }
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
    size_t blank = line.find(' ');
    std::string word = line.substr(0, blank);
    std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
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
      step.kind = FuzzStep::Send;
      step.newline = word != "part";
      step.glue = word == "glue";
      if (step.glue && !sequence.steps.empty()) step.group = sequence.steps.back().group;
      if (!unescape(rest, step.text)) {
        error = "line " + std::to_string(number) + ": bad escape";
        return false;
      }
    } else if (word == "sleep") {
      step.kind = FuzzStep::Sleep;
      step.milliseconds = std::atoi(rest.c_str());
    } else if (word == "close") {
      step.kind = FuzzStep::Close;
    } else {
      error = "line " + std::to_string(number) + ": unknown step '" + word + "'";
      return false;
    }
    sequence.steps.push_back(step);
  }
  return true;
}

bool readSequenceFile(const std::string& path, FuzzSequence& sequence, std::string& error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = "cannot read " + path;
    return false;
  }
  std::ostringstream text;
  text << file.rdbuf();
  return parseSequence(text.str(), sequence, error);
}

bool writeSequenceFile(const std::string& path, const FuzzSequence& sequence) {
  std::ofstream file(path, std::ios::binary);
  file << formatSequence(sequence);
  return bool(file);
}

size_t countCommands(const FuzzSequence& sequence) {
  size_t count = 0;
  for (const FuzzStep& step : sequence.steps) count += step.kind == FuzzStep::Send;
  return count;
}
