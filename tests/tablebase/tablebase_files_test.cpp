// The store's directories, its pool of open files, and the block-offset
// tables of the real files, good and broken.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include "gaviota_files.h"
#include "tablebase/block_offsets.h"
#include "tablebase/tablebase_files.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";

std::vector<int32_t> openEndgames() {
  const OpenFilePool& pool = tablebaseStore.pool;
  return std::vector<int32_t>(pool.openFiles, pool.openFiles + pool.openFileCount);
}

TEST(TablebaseFilesTest, PoolCapacityFromTheLimitOfOpenFiles) {
  // 7 stands for the capacity the pool had: only the two ends change it.
  const long long limits[][2] = {{-1, 7}, {0, 4}, {8, 4}, {9, 7}, {10, 7}, {37, 7}, {38, 32}, {1LL << 40, 32}};
  for (const auto& [limit, capacity] : limits) EXPECT_EQ(openFileCapacity(limit, 7), capacity) << limit;

  // initStore asks for the process's own limit. A full pool makes room before
  // each search, also for the missing kqkq, so only the files opened last stay.
  rlimit saved;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
  if (saved.rlim_max < 64) GTEST_SKIP() << "hard limit of open files below 64";
  const struct {
    rlim_t softLimit;
    int32_t before, after;
    std::vector<int32_t> open;
  } cases[] = {{64, 4, 32, {0, 1, 2, 3, 4}}, {20, 4, 4, {2, 3, 4}}};
  for (const auto& c : cases) {
    rlimit lower = saved;
    lower.rlim_cur = c.softLimit;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &lower), 0);
    tablebaseStore.pool.maxOpenFiles = c.before;
    initStore(0, 4, {gtb4});
    EXPECT_EQ(tablebaseStore.pool.maxOpenFiles, c.after) << c.softLimit;
    EXPECT_EQ(openEndgames(), c.open) << c.softLimit;
    for (int32_t e = 0; e < 5; ++e) EXPECT_NE(blockOffsets[e].offsets, nullptr) << e;
    closeStore();
  }
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &saved), 0);
}

TEST(TablebaseFilesTest, DirectoriesInOrderAndTheFilesPresent) {
  std::string empty = ::testing::TempDir() + "tolva_gtb_" + std::to_string(getpid());
  mkdir(empty.c_str(), 0700);
  // Found in the third directory, behind a missing and an empty one.
  initStore(0, 4, {"/nonexistent/gtb", empty + "/", gtb4});
  EXPECT_EQ(openEndgames(), (std::vector<int32_t>{0, 1, 2, 3, 4}));
  for (int32_t e = 0; e < 5; ++e) {
    EXPECT_NE(endgameCatalogue[e].file, nullptr);
    EXPECT_EQ(endgameCatalogue[e].lastPath, 3);
    EXPECT_NE(blockOffsets[e].offsets, nullptr);
  }
  EXPECT_EQ(endgameCatalogue[5].file, nullptr);  // no 4-man files here
  EXPECT_EQ(openEndgameFile(5), nullptr);
  // After a close the search starts behind the last find, wraps, and finds it again.
  closeStore();
  tablebaseStore.paths = {"/nonexistent/gtb", empty, gtb4};
  EXPECT_NE(openEndgameFile(1), nullptr);
  EXPECT_EQ(endgameCatalogue[1].lastPath, 3);
  closeStore();
  closeStore();  // twice is harmless
  EXPECT_TRUE(openEndgames().empty());
  EXPECT_EQ(endgameCatalogue[1].file, nullptr);
  EXPECT_EQ(blockOffsets[1].offsets, nullptr);

  initStore(0, 4, {});
  EXPECT_TRUE(openEndgames().empty());
  EXPECT_EQ(openEndgameFile(0), nullptr);
  // The other schemes' files by their extension.
  initStore(0, 2, {std::string(TOLVA_GAVIOTA_DIR) + "/gtb2"});
  EXPECT_EQ(openEndgames().size(), 5u);
  closeStore();
  rmdir(empty.c_str());
}

// How a directory and a name make a path: a "/" between them unless the
// directory is empty or ends in one; a backslash is a character like any other.
TEST(TablebaseFilesTest, DirectoryNamesAndTheSlash) {
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  const std::string odd = ::testing::TempDir() + "tolva_gtb_" + std::to_string(getpid()) + "\\";
  mkdir(odd.c_str(), 0700);
  ASSERT_EQ(symlink((gtb4 + "/kqk.gtb.cp4").c_str(), (odd + "/kqk.gtb.cp4").c_str()), 0);
  const struct {
    std::string directory, workingDirectory;
  } cases[] = {{gtb4, ""}, {gtb4 + "/", ""}, {"", gtb4}, {".", gtb4}, {odd, ""}};
  for (const auto& c : cases) {
    if (!c.workingDirectory.empty()) {
      ASSERT_EQ(chdir(c.workingDirectory.c_str()), 0);
    }
    initStore(0, 4, {c.directory});
    EXPECT_NE(endgameCatalogue[0].file, nullptr) << "'" << c.directory << "' in " << c.workingDirectory;
    closeStore();
    ASSERT_EQ(chdir(cwd), 0);
  }
  unlink((odd + "/kqk.gtb.cp4").c_str());
  rmdir(odd.c_str());
}

// The report that a verbosity above 0 asks for.
TEST(TablebaseFilesTest, InitialisationReport) {
  const std::string head = "\nGTB initialization\n  Compression  Scheme = 4\n";
  const struct {
    int verbosity;
    std::vector<std::string> paths;
    std::string report;
  } cases[] = {
      {0, {gtb4}, ""},
      {1, {}, "\nGTB PATHS not initialized\n" + head + "  Compression Indexes = **FAILED**\n"},
      {1, {"/nonexistent"}, "\nGTB PATHS\n  main: /nonexistent\n" + head + "  Compression Indexes = **FAILED**\n"},
      {2, {"/nonexistent", gtb4},
       "\nGTB PATHS\n  main: /nonexistent\n    #1: " + gtb4 + "\n" + head +
           "  Compression Indexes (3-pc) = PASSED\n  Compression Indexes (4-pc) = **FAILED**\n"
           "  Compression Indexes (5-pc) = **FAILED**\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(initStore(c.verbosity, 4, c.paths), c.report);
    closeStore();
  }
}

TEST(TablebaseFilesTest, FullPoolClosesTheOldestFile) {
  initStore(0, 4, {gtb4});
  closeStore();
  tablebaseStore.paths = {gtb4};
  tablebaseStore.pool.maxOpenFiles = 4;
  for (int32_t e = 0; e < 5; ++e) EXPECT_NE(openEndgameFile(e), nullptr);
  EXPECT_EQ(openEndgames(), (std::vector<int32_t>{1, 2, 3, 4}));
  EXPECT_EQ(endgameCatalogue[0].file, nullptr);
  // First in, first out: using a file doesn't keep it.
  EXPECT_NE(openEndgameFile(1), nullptr);
  EXPECT_NE(openEndgameFile(0), nullptr);
  EXPECT_EQ(openEndgames(), (std::vector<int32_t>{2, 3, 4, 0}));
  EXPECT_EQ(endgameCatalogue[1].file, nullptr);
  closeStore();
}

TEST(TablebaseFilesTest, BrokenOffsetTablesAreRefused) {
  const std::vector<uint8_t> original = gaviota::readFile(gtb4 + "/kqk.gtb.cp4");
  ASSERT_GT(original.size(), 100u);
  auto word = [](std::vector<uint8_t>& f, size_t at, uint32_t value) {
    for (int i = 0; i < 4; ++i) f[at + size_t(i)] = uint8_t(value >> (8 * i));
  };
  const uint32_t size = uint32_t(original.size());
  const struct {
    const char* what;
    std::function<void(std::vector<uint8_t>&)> change;
    bool accepted;
  } cases[] = {
      {"unchanged", [](std::vector<uint8_t>&) {}, true},
      {"word 8 past the end", [&](std::vector<uint8_t>& f) { word(f, 32, size + 4); }, false},
      {"word 8 inside the header", [&](std::vector<uint8_t>& f) { word(f, 32, 36); }, false},
      {"offsets backwards", [&](std::vector<uint8_t>& f) { word(f, 44, 50); }, false},
      {"first offset inside the table", [&](std::vector<uint8_t>& f) { word(f, 40, 41); }, false},
      {"last offset past the end", [&](std::vector<uint8_t>& f) { word(f, 56, size + 1); }, false},
      {"header cut short", [](std::vector<uint8_t>& f) { f.resize(30); }, false},
      {"table cut short", [](std::vector<uint8_t>& f) { f.resize(48); }, false},
  };
  for (const auto& c : cases) {
    std::vector<uint8_t> file = original;
    c.change(file);
    BlockOffsets table;
    std::FILE* stream = fmemopen(file.data(), file.size(), "rb");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(readBlockOffsetTable(stream, table), c.accepted) << c.what;
    std::fclose(stream);
  }
}

}  // namespace
