#include "tablebase/block_cache.h"

#include <new>

BlockCache blockCache;

namespace {

void unlink(BlockCache& cache, CacheEntry* e) {
  if (e->newer) e->newer->older = e->older; else cache.newest = e->older;
  if (e->older) e->older->newer = e->newer; else cache.oldest = e->newer;
  e->older = e->newer = nullptr;
}

void linkAtHead(BlockCache& cache, CacheEntry* e) {
  e->newer = nullptr;
  e->older = cache.newest;
  if (cache.newest) cache.newest->newer = e;
  cache.newest = e;
  if (!cache.oldest) cache.oldest = e;
}

}  // namespace

void freeCache() { blockCache = BlockCache{}; }

void setupCache(uint32_t sizeMB) {
  freeCache();
  BlockCache& cache = blockCache;
  // A quarter of the amount: blocks of 16384 values of two bytes.
  uint64_t blocks = uint64_t(sizeMB) * 8;
  if (blocks == 0) blocks = 1;
  cache.memory.reset(new (std::nothrow) TbValue[blocks * BlockPositions]);
  cache.entries.reset(new (std::nothrow) CacheEntry[blocks]);
  if (!cache.memory || !cache.entries) {
    freeCache();
    return;
  }
  cache.blockCount = blocks;
  for (uint64_t i = 0; i < blocks; ++i) cache.entries[i].values = cache.memory.get() + i * BlockPositions;
  cache.ready = true;
}

bool findCachedValue(int32_t endgame, int32_t side, uint32_t index, TbValue& value) {
  BlockCache& cache = blockCache;
  const int32_t first = int32_t(index / BlockPositions * BlockPositions);
  for (CacheEntry* e = cache.newest; e; e = e->older) {
    if (e->endgame != endgame || e->side != side || e->firstIndex != first) continue;
    value = e->values[index % BlockPositions];
    if (e != cache.newest) {
      unlink(cache, e);
      linkAtHead(cache, e);
    }
    return true;
  }
  return false;
}

CacheEntry* takeCacheEntry() {
  BlockCache& cache = blockCache;
  CacheEntry* e;
  if (cache.used == 0) {
    e = &cache.entries[0];
    cache.used = 1;
    linkAtHead(cache, e);
  } else if (cache.newest->endgame == -1) {
    e = cache.newest;  // left empty by a failed load
  } else if (cache.used < cache.blockCount) {
    e = &cache.entries[cache.used++];
    linkAtHead(cache, e);
  } else {
    e = cache.oldest;
    if (cache.blockCount > 1) {
      unlink(cache, e);
      linkAtHead(cache, e);
    }
  }
  e->endgame = -1;
  e->side = -1;
  return e;
}
