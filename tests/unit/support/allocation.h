// Failing and watching of malloc, calloc and free, as the test program and the libraries in it call them. `new` is not
// among them.
#pragma once

#include <cstdint>
#include <vector>

namespace allocation {

// The n-th malloc or calloc (from 1) of the calling thread from now on returns null; with `onwards`, every later one
// too.
void fail_call(int n, bool onwards = false);
void stop_failing();

// How many mallocs and callocs the calling thread has made since its last fail_call or stop_failing.
int calls();

// From `watch` on, blocks that any thread allocates and frees are noted, until `stop_watching`.
void watch();
void stop_watching();

// Blocks allocated while watched and not freed.
int live_blocks();
bool is_live(std::uintptr_t block);

// Addresses of the blocks freed while watched, in order.
std::vector<std::uintptr_t> freed();

// Called for each block that is freed while watched, before it goes, one call after the other; null for nothing. It
// asks nothing of this file.
using free_hook = void (*)(std::uintptr_t block);
void before_free(free_hook run);

}  // namespace allocation
