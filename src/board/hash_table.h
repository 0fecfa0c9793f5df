#pragma once
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

#include <sys/mman.h>

// A power-of-two array of buckets addressed by (key & mask). Serves the
// transposition table, the perft hash and the pawn hash.
template <typename Entry, unsigned EntriesPerBucket>
class HashTable {
 public:
  struct Bucket {
    Entry entries[EntriesPerBucket];
  };
  static constexpr uint64_t bucketBytes = sizeof(Bucket);
  static constexpr uint64_t maxRequestMB = 1048576;

  explicit HashTable(const char* name) : name_(name) {}
  HashTable(const HashTable&) = delete;
  HashTable& operator=(const HashTable&) = delete;
  ~HashTable() { release(); }

  // Takes the largest power of two of bytes that doesn't exceed the request,
  // allocates it zeroed and prints the size line. Returns the size in MB.
  uint64_t sizeFor(uint64_t requestedMB) {
    uint64_t count = bucketCountFor(requestedMB);
    release();
    // A request the machine can't meet is halved until it can.
    while (!allocate(count) && count > 1) count /= 2;
    if (!buckets) allocate(1);
    mask = count - 1;
    entryCount = count * EntriesPerBucket;
    reserved = 0;
    uint64_t sizeMB = (count * bucketBytes) >> 20;
    std::cout << "# new size of " << name_ << ": " << sizeMB << " MB" << std::endl;
    return sizeMB;
  }

  // Buckets of a table of requestedMB, the request cut to maxRequestMB first:
  // the largest power of two of bytes that doesn't exceed it, at least one.
  static uint64_t bucketCountFor(uint64_t requestedMB) {
    uint64_t bytes = (requestedMB < maxRequestMB ? requestedMB : maxRequestMB) << 20;
    uint64_t count = 1;
    if (bytes >= 2 * bucketBytes)
      while (count * 2 * bucketBytes <= bytes) count *= 2;
    return count;
  }

  void clear() {
    if (buckets) std::memset(static_cast<void*>(buckets), 0, (mask + 1) * bucketBytes);
  }

  // Waits until every page is mapped: for runs that measure speed, which the
  // helper's work on the other core would disturb.
  void waitUntilMapped() {
    if (mapping_.joinable()) mapping_.join();
  }

  Bucket& bucketFor(uint64_t key) { return buckets[key & mask]; }
  // Starts loading the bucket of `key` into the cache, so that a probe a
  // little later doesn't wait for memory.
  void prefetch(uint64_t key) const { __builtin_prefetch(&buckets[key & mask]); }
  const Bucket& bucketFor(uint64_t key) const { return buckets[key & mask]; }
  uint64_t bucketCount() const { return buckets ? mask + 1 : 0; }

  Bucket* buckets = nullptr;
  uint64_t mask = 0;
  uint64_t entryCount = 0;
  uint64_t reserved = 0;

 private:
  static constexpr uint64_t hugePageBytes = uint64_t(1) << 21;

  bool allocate(uint64_t count) {
    uint64_t bytes = count * bucketBytes;
    if (bytes >= hugePageBytes) {
      // Huge pages make the faults 512 times rarer and the table's lookups
      // cheaper on the TLB.
      void* raw = mmap(nullptr, bytes + hugePageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (raw == MAP_FAILED) return false;
      uintptr_t aligned = (reinterpret_cast<uintptr_t>(raw) + hugePageBytes - 1) & ~uintptr_t(hugePageBytes - 1);
      madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
      mapped_ = raw;
      mappedBytes_ = bytes + hugePageBytes;
      buckets = reinterpret_cast<Bucket*>(aligned);
      mapPages(reinterpret_cast<char*>(aligned), bytes);
      return true;
    }
    // The extra line aligns buckets to 64 bytes.
    void* raw = std::calloc(bytes + 64, 1);
    if (!raw) return false;
    storage_ = raw;
    uintptr_t aligned = (reinterpret_cast<uintptr_t>(raw) + 63) & ~uintptr_t(63);
    buckets = reinterpret_cast<Bucket*>(aligned);
    return true;
  }

  // Fresh pages are mapped at their first touch; mapping them all when the
  // table is made spares the first search of a game the page faults that
  // later searches don't pay. A helper thread asks the kernel to map them
  // (it writes nothing, so a search may use the table meanwhile), one huge
  // page at a time, so that neither start-up nor a host waiting for an
  // answer waits for the kernel to zero a few hundred MB. A kernel without
  // that request gets the pages touched here and now.
  void mapPages(char* start, uint64_t bytes) {
    if (madvise(start, hugePageBytes, MADV_POPULATE_WRITE) != 0) {
      for (uint64_t offset = 0; offset < bytes; offset += 4096) static_cast<volatile char*>(start)[offset] = 0;
      return;
    }
    stopMapping_.store(false, std::memory_order_relaxed);
    mapping_ = std::thread([this, start, bytes] {
      for (uint64_t offset = hugePageBytes; offset < bytes && !stopMapping_.load(std::memory_order_relaxed);
           offset += hugePageBytes)
        madvise(start + offset, hugePageBytes, MADV_POPULATE_WRITE);
    });
  }

  void release() {
    if (mapping_.joinable()) {
      stopMapping_.store(true, std::memory_order_relaxed);
      mapping_.join();
    }
    std::free(storage_);
    if (mapped_) munmap(mapped_, mappedBytes_);
    storage_ = nullptr;
    mapped_ = nullptr;
    mappedBytes_ = 0;
    buckets = nullptr;
  }

  const char* name_;
  void* storage_ = nullptr;
  void* mapped_ = nullptr;
  uint64_t mappedBytes_ = 0;
  std::thread mapping_;
  std::atomic<bool> stopMapping_{false};
};
