#pragma once
#include <cstdint>
#include <memory>

#include "tablebase/tb_value.h"

constexpr uint32_t BlockPositions = 16384;

// One decoded block in the cache, linked from newest to oldest.
struct CacheEntry {
  int32_t endgame = -1;  // -1 while the entry holds nothing
  int32_t side = -1;
  int32_t firstIndex = 0;
  TbValue* values = nullptr;
  CacheEntry* older = nullptr;
  CacheEntry* newer = nullptr;
};

// Decoded blocks with least-recently-used replacement. Used under the store's mutex only.
struct BlockCache {
  bool ready = false;
  uint64_t blockCount = 0;
  std::unique_ptr<TbValue[]> memory;
  std::unique_ptr<CacheEntry[]> entries;
  CacheEntry* newest = nullptr;
  CacheEntry* oldest = nullptr;
  uint64_t used = 0;
};
extern BlockCache blockCache;

// Gives the cache room for sizeMB * 8 blocks, at least one; not ready when
// the memory can't be had.
void setupCache(uint32_t sizeMB);
void freeCache();

// The value of position `index` of the endgame and side, if its block is
// cached; the block becomes the newest.
bool findCachedValue(int32_t endgame, int32_t side, uint32_t index, TbValue& value);

// An entry to load a block into, marked empty: a fresh one while there are,
// else the least recently used.
CacheEntry* takeCacheEntry();
