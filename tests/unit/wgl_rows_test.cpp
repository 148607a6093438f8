// The rows of an active process that only forward, on both paths.
#include <gtest/gtest.h>

#include <set>

#include "wgl_samples.h"

namespace {

struct wgl_rows_test : library::process_test, testing::WithParamInterface<library::path> {};
INSTANTIATE_TEST_SUITE_P(, wgl_rows_test, testing::Values(library::path::threaded, library::path::sequential));

constexpr u64 scripted = 0x91827364F5E4D3C2;

TEST_P(wgl_rows_test, a_forward_goes_to_the_system_once_and_with_its_arguments) {
  library::start({.way = GetParam()});
  library::start_rendering();
  for (const wgl_sample& sample : wgl_samples()) {
    if (sample.active_target == -2) continue;
    const bool forwarded = sample.active_target >= 0;
    driver::clear_calls();
    platform::clear_debug_output();
    if (forwarded) driver::set_result(driver::op_space::wgl, sample.active_target, scripted);
    EXPECT_EQ(sample.call(), forwarded ? scripted & sample.result_mask : 0) << sample.name;
    driver::clear_scripts();
    driver::call expected = sample.noted;
    expected.op = sample.active_target;
    EXPECT_EQ(driver::calls(), forwarded ? std::vector<driver::call>{expected} : std::vector<driver::call>())
        << sample.name;
    const std::string warning = "OGLSPANWrapper Warning: " + std::string(sample.name) + " is called!\n";
    EXPECT_EQ(library::reports(), sample.warns ? std::vector<std::string>{warning} : std::vector<std::string>());
  }
}

// The rows where the wrapper works itself, aliases of such rows among them.
TEST(wgl_row_words_test, no_other_row_than_these_does_more_than_forward) {
  const std::set<int> working = {1, 2, 3, 4, 12, 13, 17, 18, 19, 35, 36, 37, 38, 40, 41, 42, 51, 52, 53, 54, 59};
  for (const wgl_sample& sample : wgl_samples()) {
    EXPECT_EQ(sample.active_target == -2, working.contains(sample.op)) << sample.name;
    EXPECT_EQ(sample.active_target == -1, sample.op == 61 || sample.op == 62) << sample.name;
    EXPECT_EQ(sample.warns, sample.op >= 21 && sample.op <= 24) << sample.name;
  }
}

}  // namespace
