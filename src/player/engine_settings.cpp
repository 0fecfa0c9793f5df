#include "player/engine_settings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "player/chess_player.h"
#include "board/string_split.h"

namespace {

// atoi without its overflow: saturates, so that huge numbers are out of range.
long long readNumber(const std::string& text) { return std::strtoll(text.c_str(), nullptr, 10); }

bool inRange(long long value, long long min) { return value >= min && value <= MaxSettingSizeMB; }

void copyPath(char (&target)[256], const std::string& value) {
  size_t length = value.size() < 255 ? value.size() : 255;
  std::memcpy(target, value.data(), length);
  target[length] = '\0';
}

void warnRange(const char* key, const char* value, unsigned min) {
  std::printf("# WARNING: %s = %s out of range in ini file (min = %u, max = %u)\n", key, value, min,
              unsigned(MaxSettingSizeMB));
  std::fflush(stdout);
}

void applyIniSetting(ChessPlayer& player, const char* key, const char* value) {
  if (std::strcmp(key, "numberOfCores") == 0) {
    int cores = std::atoi(value);
    if (cores >= 1) {
      player.setCores(uint32_t(cores));
    } else {
      std::printf("# WARNING: %s = %s out of range in ini file (min = 1)\n", key, value);
      std::fflush(stdout);
    }
  } else if (std::strcmp(key, "ttHashSizeMB") == 0 || std::strcmp(key, "pawnHashSizeMB") == 0) {
    long long size = readNumber(value);
    if (!inRange(size, 1)) return warnRange(key, value, 1);
    (key[0] == 't' ? player.ttHashSizeMB : player.pawnHashSizeMB) = uint32_t(size);
  } else if (std::strcmp(key, "gtbCacheSizeMB") == 0) {
    long long size = readNumber(value);
    if (!inRange(size, 0)) return warnRange(key, value, 0);
    player.gtbCacheSizeMB = uint32_t(size);
  } else if (std::strcmp(key, "gtbPath") == 0) {
    // Only stored: the tablebases are initialised by egtpath or option.
    copyPath(player.gtbPath, value);
  } else if (std::strcmp(key, "bookFilePath") == 0) {
    player.book.setPath(value);
  }
}

void trimTrailingBlanks(char* text) {
  for (size_t length = std::strlen(text); length && text[length - 1] == ' ';) text[--length] = '\0';
}

}  // namespace

void readIniFile(ChessPlayer& player, const char* fileName) {
  FILE* file = std::fopen(fileName, "r");
  if (!file) return;
  char line[1024];
  // A line longer than the buffer goes on as the next line.
  while (std::fgets(line, sizeof line, file)) {
    if (trimLine(line) == 0) continue;
    char* text = line;
    while (*text == ' ') ++text;
    if (*text == '#') continue;
    char* equals = std::strchr(text, '=');
    if (!equals) continue;
    *equals = '\0';
    trimTrailingBlanks(text);
    char* value = equals + 1;
    while (*value == ' ') ++value;
    trimTrailingBlanks(value);
    size_t length = std::strlen(value);
    if (length && value[0] == '"') {
      if (length == 1) {
        value[0] = '\0';
      } else if (value[length - 1] == '"') {
        value[length - 1] = '\0';
        ++value;
      }
    }
    applyIniSetting(player, text, value);
  }
  std::fclose(file);
}

bool applyOption(ChessPlayer& player, const std::string& argument) {
  std::vector<std::string> pieces = splitString(argument, '=');
  const std::string name = pieces.empty() ? "" : pieces[0];
  const std::string value = pieces.size() > 1 ? pieces[1] : "";
  auto illegal = [&] {
    std::cout << "Error (illegal value for '" << name << "' option): " << value << std::endl;
    return false;
  };
  auto setting = [&](const std::string& shown) { std::cout << "# setting option: " << name << "=" << shown << std::endl; };

  if (name == "ttHashSizeMB" || name == "pawnHashSizeMB" || name == "gtbCacheSizeMB") {
    // An empty value is no number at all, not a zero.
    long long size = readNumber(value);
    if (value.empty() || !inRange(size, name == "gtbCacheSizeMB" ? 0 : 1)) return illegal();
    setting(std::to_string(size));
    if (name == "ttHashSizeMB") player.ttHashSizeMB = uint32_t(size);
    if (name == "pawnHashSizeMB") player.pawnHashSizeMB = uint32_t(size);
    if (name == "gtbCacheSizeMB") {
      player.gtbCacheSizeMB = uint32_t(size);
      player.reinitTablebases();
    }
    return true;
  }
  if (name == "gtbPath") {
    setting(value);
    copyPath(player.gtbPath, value);
    player.reinitTablebases();
    return true;
  }
  if (name == "bookFilePath") {
    setting(value);
    player.book.setPath(value.c_str());
    return true;
  }
  std::cout << "Error (unknown option name): " << name << std::endl;
  return false;
}
