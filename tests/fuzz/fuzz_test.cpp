// Streams of calls by fixed seeds: whatever the application calls, and whatever it does to its memory behind each call,
// each part receives the same calls in the same order with the same bytes.
#include <cstdlib>
#include <ostream>

#include "stream.h"

namespace {

// One million calls in each mode. Under ThreadSanitizer, where each hand-over between threads costs many times as much,
// a tenth.
#ifdef OSW_THREAD_SANITIZER
constexpr u64 calls_divisor = 10;
#else
constexpr u64 calls_divisor = 1;
#endif

struct seeded {
  const char* name;
  u64 seed;
  u64 calls;
  library::path way;
  int parts;
  bool query_on_app_thread;
  bool extended = false;
};

// For the names of tests.
void PrintTo(const seeded& stream, std::ostream* out) {
  *out << stream.name;
}

// Other streams of the same kinds, by a number that OSW_FUZZ_SEED says.
u64 other_seed() {
  const char* number = std::getenv("OSW_FUZZ_SEED");
  return number ? std::strtoull(number, nullptr, 10) * 1000 : 0;
}

struct fuzz_test : library::process_test, testing::WithParamInterface<seeded> {};

TEST_P(fuzz_test, each_part_receives_what_the_application_calls) {
  const seeded& now = GetParam();
  fuzz::stream run;
  run.random.state = now.seed + other_seed();
  fuzz::begin(
      &run,
      {.parts = now.parts, .way = now.way, .query_on_app_thread = now.query_on_app_thread, .extended = now.extended});
  fuzz::make_calls(&run, now.calls / calls_divisor);
  EXPECT_GE(run.calls, now.calls / calls_divisor);
  EXPECT_EQ(run.failure, "");
  fuzz::end(&run);
}

constexpr auto threaded = library::path::threaded;
constexpr auto sequential = library::path::sequential;

INSTANTIATE_TEST_SUITE_P(streams, fuzz_test,
                         testing::Values(seeded{"two_parts", 1, 350000, threaded, 2, true},
                                         seeded{"four_parts", 2, 250000, threaded, 4, true},
                                         seeded{"five_parts", 3, 100000, threaded, 5, true},
                                         seeded{"one_part", 4, 50000, threaded, 1, true},
                                         seeded{"without_mirror", 5, 100000, threaded, 2, false},
                                         seeded{"sequential", 6, 150000, sequential, 2, true}),
                         [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(extended_streams, fuzz_test,
                         testing::Values(seeded{"two_parts", 11, 300000, threaded, 2, true, true},
                                         seeded{"four_parts", 12, 150000, threaded, 4, true, true},
                                         seeded{"five_parts", 13, 100000, threaded, 5, true, true},
                                         seeded{"one_part", 14, 150000, threaded, 1, true, true},
                                         seeded{"without_mirror", 15, 150000, threaded, 2, false, true},
                                         seeded{"sequential", 16, 150000, sequential, 2, true, true}),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
