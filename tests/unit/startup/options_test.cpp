// The registry options.
#include "startup/config/options.h"

#include <thread>

#include "support/library.h"

namespace {

struct options_test : library::process_test {
  void SetUp() override { platform::reset(); }
  void TearDown() override {
    EXPECT_EQ(platform::open_registry_keys(), 0);
    platform::reset();
  }
};

struct option_facts {
  const char* name;
  u32* variable;
  u32 standard;
  bool flag;
};

const option_facts all_options[] = {
    {"OSW_DW_DeadLoopWhenLoadDll", &OSW_DW_DeadLoopWhenLoadDll, 0, true},
    {"OSW_DW_FakeAsOneMonitor", &OSW_DW_FakeAsOneMonitor, 0, true},
    {"OSW_DW_SplitOneMonitor", &OSW_DW_SplitOneMonitor, 0, true},
    {"OSW_DW_SplitParts", &OSW_DW_SplitParts, 4, false},
    {"OSW_DW_SplitTwoPartsHorizontal", &OSW_DW_SplitTwoPartsHorizontal, 1, true},
    {"OSW_DW_UseSplitParentMethod", &OSW_DW_UseSplitParentMethod, 0, true},
    {"OSW_DW_ForceUnusedChildWindowSize1X1", &OSW_DW_ForceUnusedChildWindowSize1X1, 0, true},
    {"OSW_DW_GLDispatchUseMtPath", &OSW_DW_GLDispatchUseMtPath, 0, true},
    {"OSW_DW_UseAppThreadToQueryState", &OSW_DW_UseAppThreadToQueryState, 1, true},
};

void set(const char* name, u32 value) {
  platform::set_registry_number(library::registry_path, name, value);
}

void expect_defaults() {
  for (const option_facts& option : all_options) EXPECT_EQ(*option.variable, option.standard) << option.name;
}

TEST_F(options_test, without_a_key_the_defaults_hold) {
  for (const option_facts& option : all_options) *option.variable = 77;
  __osw_read_options();
  expect_defaults();
}

TEST_F(options_test, without_values_the_defaults_hold) {
  platform::set_registry_key(library::registry_path);
  __osw_read_options();
  expect_defaults();
}

TEST_F(options_test, each_value_reaches_its_variable_alone) {
  for (const option_facts& set_option : all_options) {
    const u32 value = set_option.flag ? 1 - set_option.standard : 2;
    set(set_option.name, value);
    __osw_read_options();
    for (const option_facts& option : all_options) {
      EXPECT_EQ(*option.variable, &option == &set_option ? value : option.standard) << option.name;
    }
    platform::remove_registry_value(library::registry_path, set_option.name);
  }
}

TEST_F(options_test, a_flag_is_one_for_any_value_but_zero) {
  for (const option_facts& option : all_options) set(option.name, 7);
  __osw_read_options();
  for (const option_facts& option : all_options) EXPECT_EQ(*option.variable, option.flag ? 1u : 7u) << option.name;
  for (const option_facts& option : all_options) set(option.name, 0);
  __osw_read_options();
  for (const option_facts& option : all_options) EXPECT_EQ(*option.variable, 0u) << option.name;
}

TEST_F(options_test, the_part_count_is_taken_as_it_stands) {
  for (const u32 value : {3u, 100u, 0xFFFFFFFFu}) {
    set("OSW_DW_SplitParts", value);
    __osw_read_options();
    EXPECT_EQ(OSW_DW_SplitParts, value);
  }
}

TEST_F(options_test, an_empty_value_counts_as_not_set) {
  for (const option_facts& option : all_options) {
    platform::set_registry_value(library::registry_path, option.name, REG_DWORD, {});
  }
  __osw_read_options();
  expect_defaults();
}

TEST_F(options_test, a_value_of_another_type_is_read_as_bytes) {
  platform::set_registry_value(library::registry_path, "OSW_DW_SplitParts", REG_SZ, {2, 0, 0, 0});
  platform::set_registry_value(library::registry_path, "OSW_DW_FakeAsOneMonitor", REG_BINARY, {0, 0, 0, 1});
  __osw_read_options();
  EXPECT_EQ(OSW_DW_SplitParts, 2u);
  EXPECT_EQ(OSW_DW_FakeAsOneMonitor, 1u);
}

TEST_F(options_test, a_value_that_is_too_long_fails) {
  platform::set_registry_value(library::registry_path, "OSW_DW_SplitParts", REG_QWORD, {2, 0, 0, 0, 0, 0, 0, 0});
  __osw_read_options();
  EXPECT_EQ(OSW_DW_SplitParts, 4u);
}

TEST_F(options_test, the_key_is_opened_for_each_option) {
  platform::set_registry_key(library::registry_path);
  __osw_read_options();
  EXPECT_EQ(platform::call_count("RegOpenKeyA"), 9);
  EXPECT_EQ(platform::call_count("RegCloseKey"), 9);
  std::vector<std::string> in_order;
  for (const option_facts& option : all_options) in_order.emplace_back(option.name);
  EXPECT_EQ(platform::registry_queries(), in_order);
}

TEST_F(options_test, a_failed_call_leaves_one_option_at_its_default) {
  for (const char* function : {"RegOpenKeyA", "RegQueryValueExA"}) {
    for (const option_facts& option : all_options) set(option.name, option.flag ? 1 - option.standard : 2);
    platform::fail_call(function, 4, ERROR_ACCESS_DENIED);
    __osw_read_options();
    for (const option_facts& option : all_options) {
      const u32 changed = option.flag ? 1 - option.standard : 2;
      EXPECT_EQ(*option.variable, option.variable == &OSW_DW_SplitParts ? 4 : changed) << function << option.name;
    }
  }
}

TEST_F(options_test, the_spin_returns_at_once_when_its_option_is_clear) {
  __osw_read_options();
  __osw_debug_spin();
  EXPECT_EQ(platform::call_count("RegOpenKeyA"), 9);
}

TEST_F(options_test, the_spin_goes_on_until_the_value_reads_zero) {
  set("OSW_DW_DeadLoopWhenLoadDll", 5);
  __osw_read_options();
  std::atomic<bool> spins{true};
  std::thread spinner([&] {
    __osw_debug_spin();
    spins = false;
  });
  const int before = platform::call_count("RegOpenKeyA");
  while (platform::call_count("RegOpenKeyA") < before + 100) std::this_thread::yield();
  EXPECT_TRUE(spins);
  // A read that fails leaves the last value.
  platform::remove_registry_value(library::registry_path, "OSW_DW_DeadLoopWhenLoadDll");
  const int removed = platform::call_count("RegOpenKeyA");
  while (platform::call_count("RegOpenKeyA") < removed + 100) std::this_thread::yield();
  EXPECT_TRUE(spins);
  set("OSW_DW_DeadLoopWhenLoadDll", 0);
  spinner.join();
  EXPECT_EQ(OSW_DW_DeadLoopWhenLoadDll, 0u);
}

}  // namespace
