#pragma once
#include <atomic>
#include <cstdint>

// A counter written by one thread and read by others for display: plain
// loads and stores with relaxed order, so the hot path pays no locked add.
class RelaxedCounter {
 public:
  RelaxedCounter() = default;
  RelaxedCounter(const RelaxedCounter&) = delete;
  RelaxedCounter& operator=(const RelaxedCounter&) = delete;

  void operator++() { value_.store(value_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }
  void add(uint64_t n) { value_.store(value_.load(std::memory_order_relaxed) + n, std::memory_order_relaxed); }
  void set(uint64_t n) { value_.store(n, std::memory_order_relaxed); }
  uint64_t get() const { return value_.load(std::memory_order_relaxed); }
  void raiseTo(uint64_t n) {
    if (n > get()) set(n);
  }

 private:
  std::atomic<uint64_t> value_{0};
};
