// What libFuzzer calls: the bytes that it invents choose the calls of a stream. One process serves all inputs, so each
// ends with the state brought back to what it was.
#include <cstdio>
#include <cstdlib>

#include "stream.h"

namespace {

constexpr u64 most_calls = 20000;

fuzz::stream* start() {
  auto* run = new fuzz::stream;
  fuzz::begin(run, {.parts = 2});
  return run;
}

void stop_on_failure(const fuzz::stream& run) {
  if (run.failure.empty()) return;
  std::fprintf(stderr, "%s\n", run.failure.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const u8* data, std::size_t size) {
  static fuzz::stream* const run = start();
  if (size == 0) return 0;
  run->random = {.data = data, .size = size};
  fuzz::make_calls(run, most_calls);
  stop_on_failure(*run);
  fuzz::reset_state(run);
  stop_on_failure(*run);
  return 0;
}
