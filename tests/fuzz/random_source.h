// Where a stream of calls takes its choices from: a seed, or the bytes that a fuzzer hands in.
#pragma once

#include <cstddef>

#include "ops/types.h"

namespace fuzz {

// With `data` the choices are its bytes, and end with them; without, they come from `state` and never end.
struct source {
  u64 state = 1;
  const u8* data = nullptr;
  std::size_t size = 0;
  std::size_t at = 0;
};

inline bool has_ended(const source& from) {
  return from.data && from.at >= from.size;
}

inline u64 next_of_seed(source* from) {
  from->state += 0x9E3779B97F4A7C15;
  u64 mixed = from->state;
  mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
  mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
  return mixed ^ mixed >> 31;
}

// `bytes` of choice, at most 8; zero once the data have ended.
inline u64 bits(source* from, u32 bytes) {
  if (!from->data) return next_of_seed(from) & (bytes < 8 ? (u64{1} << bytes * 8) - 1 : ~u64{0});
  u64 taken = 0;
  for (u32 i = 0; i < bytes && from->at < from->size; ++i) taken |= u64{from->data[from->at++]} << i * 8;
  return taken;
}

// From 0 to `count` - 1; `count` is at least 1 and fits 16 bits.
inline u32 below(source* from, u32 count) {
  return static_cast<u32>(bits(from, count > 256 ? 2 : 1) % count);
}

inline i32 between(source* from, i32 first, i32 last) {
  return first + static_cast<i32>(below(from, static_cast<u32>(last - first + 1)));
}

// Yes, once in `times`.
inline bool one_in(source* from, u32 times) {
  return below(from, times) == 0;
}

template <class T, std::size_t count>
inline T one_of(source* from, const T (&values)[count]) {
  return values[below(from, count)];
}

}  // namespace fuzz
