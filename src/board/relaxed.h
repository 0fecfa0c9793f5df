#pragma once
#include <atomic>

// A field that one thread writes while another reads it, with no ordering
// beyond the value itself: relaxed loads and stores, used like the plain type.
template <typename T>
class Relaxed {
 public:
  Relaxed(T value = T()) : value_(value) {}
  Relaxed(const Relaxed& other) : value_(other.load()) {}
  Relaxed& operator=(const Relaxed& other) {
    store(other.load());
    return *this;
  }
  Relaxed& operator=(T value) {
    store(value);
    return *this;
  }
  operator T() const { return load(); }
  Relaxed& operator+=(T value) {
    store(T(load() + value));
    return *this;
  }
  T load() const { return value_.load(std::memory_order_relaxed); }
  void store(T value) { value_.store(value, std::memory_order_relaxed); }

 private:
  std::atomic<T> value_;
};
