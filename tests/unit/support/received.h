// What each context of a rendering receives on the threaded path: its GL calls in order, each with the bytes that a
// pointer of it led to at the time of the call.
//
// A context's log is written by the thread that has the context current, without a lock. A test looks after
// `wait_for_parts`, on the issuing thread.
#pragma once

#include <functional>
#include <vector>

#include "support/library.h"

namespace received {

struct call {
  driver::call what;
  std::vector<u8> memory;  // what the op's reader has found
};
using calls = std::vector<call>;

// Reads memory that a call names; run on the thread of the call, before it returns. `before` are the calls that the
// context has received already.
using reader = std::function<std::vector<u8>(const driver::call& now, const calls& before)>;

// Keeps logs of the contexts of `rendered` from now on.
void watch(const library::rendering& rendered);

// Which calls' memory is read. A reader stays until the next `forget_readers`.
void read(int op, reader reads);
reader bytes_at(u32 argument, std::size_t bytes);
void forget_readers();

// Bytes from an address on.
std::vector<u8> memory_at(u64 address, std::size_t bytes);

// What every GL call returns from now on on the application's own context, and on the parts.
void answer_app(u64 result);
void answer_part(int part, u64 result);
void answer_parts(u64 result);

// Forgets the calls, not the readers and answers.
void clear();

int parts();
const calls& of_app();
const calls& of_part(int part);
std::vector<driver::call> without_memory(const calls& logged);

// Returns when every part has replayed what the calling thread has issued.
void wait_for_parts();

// Waits for the parts, then checks that each of them has received exactly `expected`; or the application's own context.
void expect_parts(const std::vector<driver::call>& expected);
void expect_app(const std::vector<driver::call>& expected);

// Waits for the parts, then looks at each one's log.
void for_each_part(const std::function<void(const calls& logged)>& look);

}  // namespace received
