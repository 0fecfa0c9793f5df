#include "diagnostics/fen_file_check.h"

#include <sys/stat.h>

#include <cstdio>

#include "board/fen.h"
#include "board/string_split.h"

bool checkFenFile(Board_0x88& board, const std::string& fileName) {
  struct stat info;
  // A directory opens for reading on Linux but gives no lines; it counts as a failure.
  FILE* file = stat(fileName.c_str(), &info) == 0 && !S_ISDIR(info.st_mode) ? std::fopen(fileName.c_str(), "r")
                                                                             : nullptr;
  if (!file) {
    std::printf("# ERROR: failed to open file \"%s\" for reading\n", fileName.c_str());
    std::fflush(stdout);
    return false;
  }
  char line[128];
  unsigned number = 0;
  while (std::fgets(line, sizeof line, file)) {
    trimLine(line);
    std::printf("Running test no. %u for FEN:\n%s\n\n", ++number, line);
    if (!setupFromFen(board, line)) std::printf("# ERROR: illegal FEN: \"%s\"\n", line);
    std::printf("\n");
  }
  std::fclose(file);
  std::fflush(stdout);
  return true;
}
