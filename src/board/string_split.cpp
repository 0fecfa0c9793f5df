#include "board/string_split.h"

#include <cstring>

std::vector<std::string> splitString(const std::string& text, char delimiter) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (size_t pos = text.find(delimiter); pos != std::string::npos; pos = text.find(delimiter, start)) {
    pieces.push_back(text.substr(start, pos - start));
    start = pos + 1;
  }
  if (start < text.size()) pieces.push_back(text.substr(start));
  return pieces;
}

size_t trimLine(char* line) {
  size_t length = std::strlen(line);
  if (length && line[length - 1] == '\n') line[--length] = '\0';
  if (length && line[length - 1] == '\r') line[--length] = '\0';
  while (length && line[length - 1] == ' ') line[--length] = '\0';
  return length;
}
