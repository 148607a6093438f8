// What passes and what the calling thread is busy, in nanoseconds, added up over the stretches in which it runs.
#pragma once

#include <windows.h>

struct stopwatch {
  double passed, busy;
  LARGE_INTEGER begun;
  double busy_at_begin;
};

inline double busy_nanoseconds() {
  FILETIME made, ended, kernel, user;
  GetThreadTimes(GetCurrentThread(), &made, &ended, &kernel, &user);
  const auto units = [](const FILETIME& time) { return 4294967296.0 * time.dwHighDateTime + time.dwLowDateTime; };
  return 100 * (units(kernel) + units(user));
}

inline void start(stopwatch* watch) {
  watch->busy_at_begin = busy_nanoseconds();
  QueryPerformanceCounter(&watch->begun);
}

inline void stop(stopwatch* watch) {
  LARGE_INTEGER now, frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  watch->passed +=
      1e9 * static_cast<double>(now.QuadPart - watch->begun.QuadPart) / static_cast<double>(frequency.QuadPart);
  watch->busy += busy_nanoseconds() - watch->busy_at_begin;
}
