#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Where the tablebase files are and which of them are open. One store per
// process; its files are named after the endgame and the compression scheme,
// "kqkr.gtb.cp4", and looked for in a list of directories in order.

// ".gtb.cp0" to ".gtb.cp9", by scheme.
extern const char* const fileExtensions[10];

// The pool of open files: endgame numbers, oldest first.
struct OpenFilePool {
  int32_t maxOpenFiles = 4;
  int32_t openFileCount = 0;
  int32_t openFiles[32];
};

struct TablebaseStore {
  std::vector<std::string> paths;
  uint32_t compressionScheme = 4;
  const char* fileExtension = fileExtensions[4];
  OpenFilePool pool;
};
extern TablebaseStore tablebaseStore;

// Sets the directories and the scheme, sizes the pool from the process's
// limit of open files, clears the endgames' failure marks, and opens every
// endgame file present, reading its block-offset table, so that at most the
// pool's capacity stays open. The report of a verbosity above 0 is returned;
// otherwise the text is empty.
std::string initStore(int verbosity, uint32_t scheme, const std::vector<std::string>& paths);

// Opens the file of an endgame, closing the oldest open file first when the
// pool is full. The search starts at the directory behind the one that held
// the file last time and wraps around. Null when no directory has it.
std::FILE* openEndgameFile(int32_t endgame);

// Closes every file, forgets the directories, the block-offset tables and
// the failure marks of the endgames. Safe to call twice.
void closeStore();

// The capacity of the pool for a soft limit of open files: 4 when the limit
// less five is at most 3, 32 when it is above 32, and `fallback` (the
// capacity the pool has) in between or when the limit is unknown.
int32_t openFileCapacity(long long softLimit, int32_t fallback);
