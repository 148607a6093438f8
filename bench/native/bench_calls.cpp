// What a call costs the thread that makes it, over a driver that does nothing:
//
//   bench_calls WAY PARTS [Google Benchmark's options]
//
// WAY is direct (the driver's own entry), bypassed, threaded, threaded-mirrored (with the application's own context
// following) or sequential, or extended-threaded (mirrored) and extended-sequential, which are in the extended mode.
// "Time" is the time that passes, "CPU" what the thread itself was busy: the difference it has waited.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "calls.h"
#include "dispatch/thread_state.h"
#include "support/library.h"

namespace {

struct way {
  const char* name;
  route through;
  bool active;
  library::path path;
  bool mirrored;
  bool extended = false;
};

__osw_proc driver_entry(int, const char* name) {
  FARPROC found = driver::export_of(name);
  if (!found) found = reinterpret_cast<FARPROC>(osw_wglGetProcAddress(name));
  return reinterpret_cast<__osw_proc>(found);
}

__osw_proc wrapper_entry(int op, const char*) {
  return __osw_gl_entries[op];
}

const way ways[] = {
    {"direct", {driver_entry}, false, library::path::threaded, false},
    {"bypassed", {wrapper_entry}, false, library::path::threaded, false},
    {"threaded", {wrapper_entry}, true, library::path::threaded, false},
    {"threaded-mirrored", {wrapper_entry}, true, library::path::threaded, true},
    {"sequential", {wrapper_entry}, true, library::path::sequential, false},
    {"extended-threaded", {wrapper_entry}, true, library::path::threaded, true, true},
    {"extended-sequential", {wrapper_entry}, true, library::path::sequential, false, true},
};

const way* find_way(const char* name) {
  for (const way& one : ways) {
    if (strcmp(one.name, name) == 0) return &one;
  }
  return nullptr;
}

setting_memory memory;

void measure_nothing(benchmark::State& state) {
  constexpr int batch = 1000;
  while (state.KeepRunningBatch(batch)) repeat_nothing(batch);
}

void measure(benchmark::State& state, const measured_call& call, const route& through) {
  const int batch = call.burst ? call.burst : 1000;
  memory.through = &through;
  call.around->begin(through, &memory);
  wait_for_parts(through);
  const __osw_proc entry = through.entry(call.op, call.name);
  while (state.KeepRunningBatch(batch)) {
    call.repeat(entry, static_cast<u64>(batch), &memory);
    if (!call.burst) continue;
    state.PauseTiming();
    wait_for_parts(through);
    state.ResumeTiming();
  }
  call.around->end(through, &memory);
  wait_for_parts(through);
}

void start(const way& chosen, int parts) {
  library::process_setup setup;
  setup.active = chosen.active;
  setup.parts = parts;
  setup.parts_are_monitors = true;
  setup.way = chosen.path;
  setup.query_on_app_thread = chosen.mirrored;
  setup.extended = chosen.extended;
  library::prepare(setup);
  driver::record(driver::recording::off);
  platform::attach_process();
  library::start_rendering({0, 0, 400 * parts, 600});
}

// Of several runs the one counts that was disturbed the least.
double least_of(const std::vector<double>& figures) {
  return *std::min_element(figures.begin(), figures.end());
}

template <class Run>
void add(const char* label, Run run) {
  benchmark::RegisterBenchmark(label, run)->ComputeStatistics("least", least_of)->UseRealTime();
}

void list_benchmarks(const way& chosen) {
  add("nothing", measure_nothing);
  for (int i = 0; i < measured_call_count; ++i) {
    const measured_call& call = measured_calls[i];
    // Not every mode has every call.
    if (call.op >= gl_ops_in_use || call.needs_answers) continue;
    add(call.label, [&](benchmark::State& state) { measure(state, call, chosen.through); });
  }
}

}  // namespace

int main(int count, char** words) {
  benchmark::Initialize(&count, words);
  const way* chosen = count == 3 ? find_way(words[1]) : nullptr;
  const int parts = count == 3 ? atoi(words[2]) : 0;
  if (!chosen || parts < 1 || parts > max_parts) {
    fprintf(stderr, "bench_calls: takes a way and a number of parts, 1 to %d, before the benchmark's options\n",
            max_parts);
    return 2;
  }
  start(*chosen, parts);
  list_benchmarks(*chosen);
  benchmark::RunSpecifiedBenchmarks();
  fflush(nullptr);
  // The library's threads still run, and would use what the end of main takes away.
  _Exit(0);
}
