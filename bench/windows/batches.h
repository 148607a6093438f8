// The figures of a call that is made in batches.
#pragma once

#include <algorithm>
#include <iterator>

#include "ops/ops.h"
#include "stopwatch.h"

constexpr double repetition_time = 1e8;  // nanoseconds
constexpr int repetitions = 5;

// Nanoseconds a call.
struct figures {
  double passed, busy;
};

// `run` makes `batch` calls between a start and a stop of the watch that it is given. Of what passes, the repetition
// counts that was disturbed the least. The thread's own clock is too coarse for one, so that its figure is the mean of
// all.
template <class Batch>
figures measure_batches(int batch, Batch run) {
  double passed[repetitions];
  double busy = 0;
  double calls = 0;
  for (double& each : passed) {
    stopwatch watch = {};
    u64 done = 0;
    while (watch.passed < repetition_time) {
      run(&watch);
      done += static_cast<u64>(batch);
    }
    each = watch.passed / static_cast<double>(done);
    busy += watch.busy;
    calls += static_cast<double>(done);
  }
  return {*std::min_element(std::begin(passed), std::end(passed)), busy / calls};
}
