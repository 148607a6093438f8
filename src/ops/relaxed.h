// Words that one thread stores while others load them without a lock, because the design needs no more than that each
// load sees some stored value: relaxed accesses, the same instructions as plain ones on this processor.
#pragma once

#include <atomic>

template <class T>
inline T relaxed_load(const T& word) {
  return std::atomic_ref<T>(const_cast<T&>(word)).load(std::memory_order_relaxed);
}

template <class T, class V>
inline void relaxed_store(T& word, V value) {
  std::atomic_ref<T>(word).store(static_cast<T>(value), std::memory_order_relaxed);
}
