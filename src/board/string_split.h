#pragma once
#include <cstddef>
#include <string>
#include <vector>

// Splits at every delimiter. A piece before a delimiter counts even when
// empty; the piece behind the last delimiter only when it isn't.
std::vector<std::string> splitString(const std::string& text, char delimiter);

// Trims one line feed, one carriage return, then all trailing blanks; returns the new length.
size_t trimLine(char* line);
