#pragma once
#include <cstdint>

#include "board/hash_table.h"
#include "board/relaxed_counter.h"

// The evaluation of one pawn structure; 32 bytes, one per bucket. `key` is
// stored XOR the three data words, so that an entry torn by two threads
// writing at once fails its key test instead of mixing two structures.
struct PawnHashEntry {
  uint64_t key;
  uint64_t pawns[2];
  uint64_t packed;  // score mg and eg, open files, half-open files
};
static_assert(sizeof(PawnHashEntry) == 32);

class PawnHash : public HashTable<PawnHashEntry, 1> {
 public:
  PawnHash() : HashTable("Pawn hash") {}
  RelaxedCounter hits;  // raised by every search thread
};
