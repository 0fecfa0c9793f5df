#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "board/hash_table.h"

// One transposition-table entry; four make a 64-byte bucket. The fields are
// plain data so that the table can be zeroed as a block; the search threads
// reach them only through relaxed atomic loads and stores, field by field
// (see transposition_table.cpp), so the table needs no lock.
struct TTEntry {
  uint64_t key;    // 0 = empty
  uint16_t move;
  int16_t score;   // mate scores relative to the node that stored them
  uint16_t bound;  // 1 exact, 2 lower, 3 upper, 0 empty
  uint8_t depth;
  uint8_t age;
};
static_assert(sizeof(TTEntry) == 16);
static_assert(std::is_trivially_copyable_v<TTEntry>);
static_assert(offsetof(TTEntry, move) == 8 && offsetof(TTEntry, score) == 10 && offsetof(TTEntry, bound) == 12 &&
              offsetof(TTEntry, depth) == 14 && offsetof(TTEntry, age) == 15);
// Every field sits on its natural alignment, as the atomic access needs.
static_assert(std::atomic_ref<uint64_t>::required_alignment <= alignof(TTEntry));
static_assert(std::atomic_ref<uint16_t>::required_alignment <= 2);
static_assert(std::atomic_ref<uint64_t>::is_always_lock_free && std::atomic_ref<uint16_t>::is_always_lock_free &&
              std::atomic_ref<uint8_t>::is_always_lock_free);

enum TTBound : uint16_t { BoundNone = 0, BoundExact = 1, BoundLower = 2, BoundUpper = 3 };

using TTHashTable = HashTable<TTEntry, 4>;
static_assert(sizeof(TTHashTable::Bucket) == 64);
