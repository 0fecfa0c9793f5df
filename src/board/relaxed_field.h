#pragma once
#include <atomic>

// Fields of the shared hash tables, read and written by several threads at
// once without a lock: each access is a relaxed atomic of its own.
template <typename T>
inline T loadRelaxed(const T& field) {
  return std::atomic_ref<T>(const_cast<T&>(field)).load(std::memory_order_relaxed);
}
template <typename T>
inline void storeRelaxed(T& field, T value) {
  std::atomic_ref<T>(field).store(value, std::memory_order_relaxed);
}
