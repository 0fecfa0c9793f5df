#pragma once
#include <cstdint>

#include "search/hash_table.h"

// One transposition-table entry; four make a 64-byte bucket.
struct TTEntry {
  uint64_t key;    // 0 = empty
  uint16_t move;
  int16_t score;   // mate scores relative to the node that stored them
  uint16_t bound;  // 1 exact, 2 lower, 3 upper, 0 empty
  uint8_t depth;
  uint8_t age;
};
static_assert(sizeof(TTEntry) == 16);

using TTHashTable = HashTable<TTEntry, 4>;
static_assert(sizeof(TTHashTable::Bucket) == 64);
