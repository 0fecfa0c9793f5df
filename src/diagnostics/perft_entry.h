#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "board/hash_table.h"

// A stored leaf count of the perft commands; four make a 64-byte bucket.
struct PerftEntry {
  uint64_t count;
  uint16_t depth;
  uint8_t key[6];  // low 48 bits of the position key, least significant byte first; all 0 = free
};
static_assert(sizeof(PerftEntry) == 16);
static_assert(offsetof(PerftEntry, depth) == 8 && offsetof(PerftEntry, key) == 10);

using PerftHashTable = HashTable<PerftEntry, 4>;
static_assert(sizeof(PerftHashTable::Bucket) == 64);

// The perft commands' table, made by the first run that needs it.
struct PerftTable {
  std::unique_ptr<PerftHashTable> hash;
  uint32_t sizeMB = 64;
  uint32_t currentSizeMB = 0;  // as allocated
};

constexpr uint64_t PerftKeyMask = (uint64_t(1) << 48) - 1;

// The 48-bit key of an entry. Depth and key share the entry's second word, so
// one load and a shift read it; the byte order of the key matches that load on
// a little-endian machine only.
static_assert(std::endian::native == std::endian::little);
inline uint64_t perftEntryKey(const PerftEntry& entry) {
  uint64_t word;
  std::memcpy(&word, reinterpret_cast<const unsigned char*>(&entry) + 8, 8);
  return word >> 16;
}
