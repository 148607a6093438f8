// Calls on the threaded path in the extended mode: whether one waits for the parts, and how many commands it is.
#pragma once

#include "pipeline/push.h"
#include "support/received.h"

namespace waiting {

struct two_parts_test : library::process_test {
  void SetUp() override {
    library::start({.parts = 2, .extended = true});
    received::watch(library::start_rendering());
  }
};

inline const __osw_cmd_queue* own_queue() {
  return __osw_fetch_thread_state()->cmd_queue;
}

// A place in a buffer, as calls take it.
inline const void* offset(u64 bytes) {
  return reinterpret_cast<const void*>(bytes);
}

// Lets the parts replay what there is, and forgets it.
inline void begin() {
  received::wait_for_parts();
  received::clear();
}

// Whether a call waits for the parts.
template <class Call>
bool waits(Call call) {
  begin();
  const u32 before = own_queue()->send_sync_count;
  call();
  return own_queue()->send_sync_count != before;
}

}  // namespace waiting
