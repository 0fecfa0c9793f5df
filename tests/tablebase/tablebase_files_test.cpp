// The block decoders on every block of the real tables in all four schemes,
// the store's pool of open files and cache of blocks, and the real kqk file
// damaged one way at a time.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <memory>

#include "gaviota_files.h"
#include "tablebase/block_cache.h"
#include "tablebase/block_decompression.h"
#include "tablebase/block_offsets.h"
#include "tablebase/search_probe.h"
#include "tablebase/tablebase_files.h"
#include "tablebase/tablebase_store.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";

using Bytes = std::vector<uint8_t>;

struct Output {
  uint8_t bytes[TransferAreaSize];
};

BlockOffsets offsetsOf(Bytes& file) {
  BlockOffsets table;
  std::FILE* stream = fmemopen(file.data(), file.size(), "rb");
  EXPECT_TRUE(stream && readBlockOffsetTable(stream, table));
  if (stream) std::fclose(stream);
  return table;
}

TEST(BlockDecompressionTest, EveryBlockOfTheRealTablesDecodesAlikeInAllFourSchemes) {
  const uint32_t schemes[4] = {1, 2, 3, 4};
  for (const char* name : gaviota::tableNames) {
    const uint32_t n = gaviota::indexCountOf(name);
    Bytes files[4];
    BlockOffsets tables[4];
    for (int s = 0; s < 4; ++s) {
      files[s] = gaviota::readFile(gaviota::tablePath(name, int(schemes[s])));
      ASSERT_FALSE(files[s].empty()) << gaviota::tablePath(name, int(schemes[s]));
      tables[s] = offsetsOf(files[s]);
      ASSERT_EQ(tables[s].count, 2 * ((n - 1) / 16384 + 1) + 1) << name << " scheme " << schemes[s];
    }
    for (uint32_t block = 0; block + 1 < tables[0].count; ++block) {
      const uint32_t length = gaviota::blockLength(n, block);
      auto first = std::make_unique<Output>();
      for (int s = 0; s < 4; ++s) {
        auto out = std::make_unique<Output>();
        const uint32_t at = tables[s].offsets[block], size = tables[s].offsets[block + 1] - at;
        // Cut short, a block is refused.
        EXPECT_FALSE(decompressBlock(schemes[s], files[s].data() + at + 1, (size - 1) / 2, out->bytes, length))
            << name << " block " << block << " scheme " << schemes[s] << ", cut in half";
        // A different filling per scheme shows up any byte a decoder failed to write.
        std::memset(out->bytes, 0x55 + s, sizeof out->bytes);
        ASSERT_TRUE(decompressBlock(schemes[s], files[s].data() + at + 1, size - 1, out->bytes, length))
            << name << " block " << block << " scheme " << schemes[s];
        if (s == 0)
          first = std::move(out);
        else
          EXPECT_EQ(0, std::memcmp(first->bytes, out->bytes, length)) << name << " block " << block << " scheme " << schemes[s];
      }
    }
  }
  // An LZF reference may reach back to the first byte written, not before it.
  auto out = std::make_unique<Output>();
  const uint8_t reachesStart[] = {0, 'a', 0x20, 0}, beforeStart[] = {0, 'a', 0x20, 1};
  EXPECT_TRUE(decompressBlock(2, reachesStart, 4, out->bytes, 4));
  EXPECT_FALSE(decompressBlock(2, beforeStart, 4, out->bytes, 4));
}

std::vector<int32_t> openEndgames() {
  const OpenFilePool& pool = tablebaseStore.pool;
  return std::vector<int32_t>(pool.openFiles, pool.openFiles + pool.openFileCount);
}

TEST(TablebaseFilesTest, PoolOfOpenFiles) {
  // The capacity from the limit of open files; 7 stands for what the pool had: only the two ends change it.
  const long long limits[][2] = {{-1, 7}, {0, 4}, {8, 4}, {9, 7}, {37, 7}, {38, 32}, {1LL << 40, 32}};
  for (const auto& [limit, capacity] : limits) EXPECT_EQ(openFileCapacity(limit, 7), capacity) << limit;
  // A full pool closes the oldest file, first in first out: using a file doesn't keep it.
  initStore(0, 4, {gtb4});
  closeStore();
  tablebaseStore.paths = {gtb4};
  tablebaseStore.pool.maxOpenFiles = 4;
  for (int32_t e : {0, 1, 2, 3, 4, 1, 0}) EXPECT_NE(openEndgameFile(e), nullptr);
  EXPECT_EQ(openEndgames(), (std::vector<int32_t>{2, 3, 4, 0}));
  EXPECT_EQ(endgameCatalogue[1].file, nullptr);
  closeStore();
}

// Eight blocks in a megabyte; a full cache gives up the block used least recently.
TEST(TablebaseFilesTest, CacheEvictsTheLeastRecentlyUsedBlock) {
  setupCache(1);
  auto load = [](int32_t endgame) {
    CacheEntry* e = takeCacheEntry();
    e->endgame = endgame, e->side = 0, e->firstIndex = 0;
  };
  for (int32_t e = 0; e < 8; ++e) load(e);
  TbValue value;
  EXPECT_TRUE(findCachedValue(0, 0, 5, value));  // the first loaded is the last used now
  load(8);
  for (int32_t e = 0; e <= 8; ++e) EXPECT_EQ(findCachedValue(e, 0, 5, value), e != 1) << e;
  freeCache();
}

// kqk has two blocks a side; block b holds side b / 2 and indices from
// b % 2 * 16384. A broken offset table is refused; a damaged block fails its
// hard probe and disables kqk until the tables are closed; the blocks before
// it answer.
TEST(TablebaseFilesTest, DamagedFilesAreRefusedOrFailTheirBlock) {
  const std::vector<uint8_t> original = gaviota::readFile(gtb4 + "/kqk.gtb.cp4");
  ASSERT_GT(original.size(), 100u);
  auto word = [](const std::vector<uint8_t>& f, size_t at) {
    return uint32_t(f[at]) | uint32_t(f[at + 1]) << 8 | uint32_t(f[at + 2]) << 16 | uint32_t(f[at + 3]) << 24;
  };
  auto setWord = [](std::vector<uint8_t>& f, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) f[at + size_t(i)] = uint8_t(v >> (8 * i));
  };
  ASSERT_EQ(word(original, 32), 40u + 5 * 4);  // four blocks
  const uint32_t block1 = word(original, 44), size = uint32_t(original.size());
  using Damage = std::function<void(std::vector<uint8_t>&)>;
  const struct {
    const char* what;
    Damage damage;
    uint32_t firstFailing;  // 0: the offsets are refused; 4: none fails
  } cases[] = {
      {"sound", [](std::vector<uint8_t>&) {}, 4},
      {"empty", [](std::vector<uint8_t>& f) { f.clear(); }, 0},
      {"table cut short", [](std::vector<uint8_t>& f) { f.resize(48); }, 0},
      {"header word 8 past the end", [&](std::vector<uint8_t>& f) { setWord(f, 32, size + 4); }, 0},
      {"offsets backwards", [&](std::vector<uint8_t>& f) { setWord(f, 48, block1 - 1); }, 0},
      {"last offset past the end", [&](std::vector<uint8_t>& f) { setWord(f, 56, size + 1); }, 0},
      {"block 1 with filter byte 2", [&](std::vector<uint8_t>& f) { f[block1 + 1] = 2; }, 1},
      {"block 3 larger than the input area",
       [&](std::vector<uint8_t>& f) {
         f.insert(f.end(), TransferAreaSize, 0);
         setWord(f, 56, uint32_t(f.size()));
       },
       3},
      {"a table of three blocks, block 3 beyond it", [&](std::vector<uint8_t>& f) { setWord(f, 32, 40 + 4 * 4); }, 3},
  };
  const std::string dir = ::testing::TempDir() + "tolva_damaged_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0700);
  const uint8_t strong[] = {King, Queen, 0}, lone[] = {King, 0};
  TablebaseState state;
  for (const auto& c : cases) {
    std::vector<uint8_t> file = original;
    c.damage(file);
    FILE* f = std::fopen((dir + "/kqk.gtb.cp4").c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(file.data(), 1, file.size(), f);
    std::fclose(f);
    initTablebases(state, "gaviota", dir.c_str(), 16);
    for (uint32_t block = 0; block < 4; ++block) {
      uint32_t w[3], b[2], kind, plies;
      ASSERT_TRUE(endgameCatalogue[0].indexToPosition(block % 2 * 16384 + 300, w, b));
      const bool answered = probeEndgame(block / 2, 64, w, b, strong, lone, true, kind, plies);
      EXPECT_EQ(answered, block < c.firstFailing) << c.what << ", block " << block;
      EXPECT_TRUE(answered || kind == 3) << c.what;
    }
    EXPECT_EQ(endgameCatalogue[0].status, c.firstFailing < 4 ? 4u : 0u) << c.what;
  }
  closeTablebases(state);
  std::remove((dir + "/kqk.gtb.cp4").c_str());
  rmdir(dir.c_str());
}

}  // namespace
