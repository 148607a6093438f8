// Failures on demand. The functions are named as in windows.h; those that wait, and the rectangle and slot calls,
// cannot be made to fail. Any thread may call these.
#pragma once

#include <windows.h>

#include <functional>

namespace platform {

// Makes the n-th call (from 1) of `function` from now on fail, with `error` as its last error or status. Calls before
// and after it succeed. A second order for the same function takes the place of the first.
void fail_call(const char* function, int n, DWORD error = ERROR_NOT_ENOUGH_MEMORY);

// As fail_call, and every later call fails too, until `stop_failing`.
void fail_calls_from(const char* function, int n, DWORD error = ERROR_NOT_ENOUGH_MEMORY);

void stop_failing(const char* function);

// Runs `work` on the thread of the n-th call (from 1) of `function` from now on, before the call does anything. A
// second order for the same function takes the place of the first.
void before_call(const char* function, int n, std::function<void()> work);

// Runs `work` on the thread of each call from now on, before the call does anything: of the functions that can be made
// to fail, of those that make and delete critical sections, and of TlsFree. `object` is the section's address or the
// slot's number, else 0. Null ends it.
using call_listener = std::function<void(const char* function, ULONG_PTR object)>;
void on_each_call(call_listener work);

// How often `function` was called since the last reset, calls that failed among them.
int call_count(const char* function);

}  // namespace platform
