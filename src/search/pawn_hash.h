#pragma once
#include <cstdint>

#include "search/hash_table.h"

// The evaluation of one pawn structure; 32 bytes, one per bucket.
struct PawnHashEntry {
  uint64_t key;
  uint8_t data[24];
};
static_assert(sizeof(PawnHashEntry) == 32);

class PawnHash : public HashTable<PawnHashEntry, 1> {
 public:
  PawnHash() : HashTable("Pawn hash") {}
  uint64_t hits = 0;
};
