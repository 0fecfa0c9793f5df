#pragma once
#include <string>

class ChessPlayer;

// Largest hash or cache size in MB that a setting accepts: 2^20.
constexpr long long MaxSettingSizeMB = 1048576;

// Reads the settings file (tolva.ini at start-up): `key = value` lines, `#`
// comments, values optionally in double quotes; other lines are skipped. An
// out-of-range value warns and leaves the default. A missing file is silent.
void readIniFile(ChessPlayer& player, const char* fileName);

// The option command's argument `name=value`: sets one setting and prints
// it, or prints the illegal-value or unknown-name error and returns false.
// A missing value is an illegal value for the sizes and an empty text for
// the paths.
bool applyOption(ChessPlayer& player, const std::string& argument);
