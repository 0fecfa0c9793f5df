#include "tablebase/tablebase_files.h"

#include <sys/resource.h>

#include <climits>

#include "tablebase/block_offsets.h"
#include "tablebase/endgame_catalogue.h"
#include "tablebase/numbering_tables.h"

const char* const fileExtensions[10] = {".gtb.cp0", ".gtb.cp1", ".gtb.cp2", ".gtb.cp3", ".gtb.cp4",
                                        ".gtb.cp5", ".gtb.cp6", ".gtb.cp7", ".gtb.cp8", ".gtb.cp9"};

TablebaseStore tablebaseStore;

namespace {

constexpr int32_t MinOpenFiles = 4;
constexpr int32_t MaxOpenFiles = 32;

void closeOldestFile(OpenFilePool& pool) {
  int32_t oldest = pool.openFiles[0];
  EndgameRow& row = endgameCatalogue[oldest];
  if (row.file) std::fclose(row.file);
  row.file = nullptr;
  for (int32_t i = 1; i < pool.openFileCount; ++i) pool.openFiles[i - 1] = pool.openFiles[i];
  pool.openFiles[--pool.openFileCount] = -1;
}

std::FILE* tryDirectory(const std::string& directory, const EndgameRow& row) {
  std::string name = directory;
  if (!name.empty() && name.back() != '/') name += '/';
  name += row.name;
  name += tablebaseStore.fileExtension;
  return std::fopen(name.c_str(), "rb");
}

}  // namespace

int32_t openFileCapacity(long long softLimit, int32_t fallback) {
  if (softLimit < 0) return fallback;
  // Five descriptors are left to the rest of the process. Only the two ends
  // change the capacity; a limit in between keeps what the pool has.
  long long spare = softLimit - 5;
  if (spare <= 3) return MinOpenFiles;
  if (spare > MaxOpenFiles) return MaxOpenFiles;
  return fallback;
}

std::string initStore(int verbosity, uint32_t scheme, const std::vector<std::string>& paths) {
  TablebaseStore& store = tablebaseStore;
  store.paths = paths;
  buildNumberingTables();
  rlimit limit;
  long long softLimit = -1;
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0)
    softLimit = limit.rlim_cur == RLIM_INFINITY ? LLONG_MAX : (long long)limit.rlim_cur;
  store.pool.maxOpenFiles = openFileCapacity(softLimit, store.pool.maxOpenFiles);
  for (int32_t& slot : store.pool.openFiles) slot = -1;
  store.pool.openFileCount = 0;
  store.compressionScheme = scheme < 10 ? scheme : 4;
  store.fileExtension = fileExtensions[store.compressionScheme];
  clearBlockOffsets();
  // A fresh store: a hard probe that ran into the closed cache while the
  // tables were being replaced leaves no failure mark behind.
  for (int32_t endgame = 0; endgame < endgameCount; ++endgame) endgameCatalogue[endgame].status = 0;

  bool found[3] = {};  // 3, 4 and 5 pieces
  for (int32_t endgame = 0; endgame < endgameCount; ++endgame) {
    if (!openEndgameFile(endgame)) continue;
    if (loadBlockOffsets(endgame)) found[endgame < 5 ? 0 : endgame < 35 ? 1 : 2] = true;
  }
  if (verbosity <= 0) return "";

  std::string report;
  char line[512];
  if (paths.empty()) {
    report += "\nGTB PATHS not initialized\n";
  } else {
    report += "\nGTB PATHS\n";
    std::snprintf(line, sizeof line, "  main: %s\n", paths[0].c_str());
    report += line;
    for (size_t i = 1; i < paths.size(); ++i) {
      std::snprintf(line, sizeof line, "    #%d: %s\n", int(i), paths[i].c_str());
      report += line;
    }
  }
  report += "\nGTB initialization\n";
  std::snprintf(line, sizeof line, "  Compression  Scheme = %d\n", int(store.compressionScheme));
  report += line;
  if (!found[0] && !found[1] && !found[2]) {
    report += "  Compression Indexes = **FAILED**\n";
  } else {
    for (int pieces = 3; pieces <= 5; ++pieces) {
      std::snprintf(line, sizeof line, "  Compression Indexes (%d-pc) = %s\n", pieces,
                    found[pieces - 3] ? "PASSED" : "**FAILED**");
      report += line;
    }
  }
  // The whole report fits the 4095 characters a host may show.
  if (report.size() > 4095) report.resize(4095);
  return report;
}

std::FILE* openEndgameFile(int32_t endgame) {
  TablebaseStore& store = tablebaseStore;
  OpenFilePool& pool = store.pool;
  if (endgame < 0 || endgame >= endgameCount) return nullptr;
  EndgameRow& row = endgameCatalogue[endgame];
  if (row.file) return row.file;
  if (pool.openFileCount >= pool.maxOpenFiles) closeOldestFile(pool);
  const int32_t count = int32_t(store.paths.size());
  if (row.lastPath > count) row.lastPath = 0;
  // From the directory behind the last find to the end, then from the start.
  for (int32_t pass = 0; pass < 2; ++pass) {
    int32_t from = pass == 0 ? row.lastPath : 0;
    int32_t to = pass == 0 ? count : row.lastPath;
    for (int32_t i = from; i < to; ++i) {
      std::FILE* file = tryDirectory(store.paths[size_t(i)], row);
      if (!file) continue;
      pool.openFiles[pool.openFileCount++] = endgame;
      row.file = file;
      row.lastPath = i + 1;
      return file;
    }
  }
  return nullptr;
}

void closeStore() {
  TablebaseStore& store = tablebaseStore;
  for (int32_t i = 0; i < store.pool.openFileCount; ++i) {
    EndgameRow& row = endgameCatalogue[store.pool.openFiles[i]];
    if (row.file) std::fclose(row.file);
    row.file = nullptr;
    store.pool.openFiles[i] = -1;
  }
  store.pool.openFileCount = 0;
  for (int32_t endgame = 0; endgame < endgameCount; ++endgame) endgameCatalogue[endgame].status = 0;
  clearBlockOffsets();
  store.paths.clear();
}
