// The registry options.
#include "startup/config/options.h"

#include <thread>

#include "ops/relaxed.h"
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

void set_variable(const char* name, const std::string& value) {
  platform::set_environment_variable(name, value);
}

TEST_F(options_test, each_variable_of_the_environment_holds_in_place_of_the_registry_s_value) {
  for (const option_facts& chosen : all_options) {
    platform::reset();
    for (const option_facts& option : all_options) set(option.name, option.flag ? 1 - option.standard : 2);
    const u32 value = chosen.flag ? chosen.standard : 1;
    set_variable(chosen.name, std::to_string(value));
    __osw_read_options();
    for (const option_facts& option : all_options) {
      const u32 registered = option.flag ? 1 - option.standard : 2;
      EXPECT_EQ(*option.variable, &option == &chosen ? value : registered) << chosen.name << " " << option.name;
    }
    EXPECT_TRUE(library::reports().empty());
  }
}

TEST_F(options_test, a_variable_holds_where_the_registry_has_no_key) {
  for (const option_facts& option : all_options) set_variable(option.name, option.flag ? "7" : "3");
  __osw_read_options();
  for (const option_facts& option : all_options) EXPECT_EQ(*option.variable, option.flag ? 1u : 3u) << option.name;
  for (const option_facts& option : all_options) set_variable(option.name, "0");
  __osw_read_options();
  for (const option_facts& option : all_options) EXPECT_EQ(*option.variable, 0u) << option.name;
}

TEST_F(options_test, a_variable_is_a_decimal_number_of_32_bits_with_blanks_around_it_at_most) {
  const std::pair<const char*, u32> good[] = {{"2", 2},
                                              {" 2", 2},
                                              {"2 ", 2},
                                              {"\t2 \t", 2},
                                              {"010", 10},
                                              {"0000000000000000000002", 2},
                                              {"4294967295", 0xFFFFFFFFu}};
  for (const auto& [text, value] : good) {
    set_variable("OSW_DW_SplitParts", text);
    __osw_read_options();
    EXPECT_EQ(OSW_DW_SplitParts, value) << text;
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(options_test, a_variable_that_is_no_number_is_ignored_with_one_warning) {
  set("OSW_DW_SplitParts", 2);
  for (const std::string& text :
       {std::string("two"), std::string("2x"), std::string("-1"), std::string("+2"), std::string("0x2"),
        std::string("2 2"), std::string("2.0"), std::string(" "), std::string("4294967296"),
        std::string("18446744073709551618"), std::string(5000, '1'), std::string(5000, ' ') + "2"}) {
    platform::clear_debug_output();
    set_variable("OSW_DW_SplitParts", text);
    __osw_read_options();
    EXPECT_EQ(OSW_DW_SplitParts, 2u) << text;
    const std::vector<std::string> expected = {
        "OGLSPANWrapper Warning: The environment variable OSW_DW_SplitParts is no decimal number of 32 bits and is "
        "ignored.\n"};
    EXPECT_EQ(library::reports(), expected) << text;
  }
}

TEST_F(options_test, an_empty_variable_counts_as_not_set) {
  for (const option_facts& option : all_options) set_variable(option.name, "");
  __osw_read_options();
  expect_defaults();
  EXPECT_TRUE(library::reports().empty());
}

// The platform's calls that the options make, but for those that ask the environment.
std::vector<std::string> calls_of_reading() {
  std::vector<std::string> calls;
  platform::on_each_call([&](const std::string& function, ULONG_PTR) {
    if (function != "GetEnvironmentVariableA") calls.push_back(function);
  });
  __osw_read_options();
  __osw_debug_spin();
  platform::on_each_call(nullptr);
  return calls;
}

TEST_F(options_test, the_registry_is_read_in_the_same_way_whatever_the_environment_says) {
  std::vector<std::string> expected;
  for (size_t i = 0; i < std::size(all_options); ++i) {
    for (const char* call : {"RegOpenKeyA", "RegQueryValueExA", "RegCloseKey"}) expected.emplace_back(call);
  }
  platform::set_registry_key(library::registry_path);
  EXPECT_EQ(calls_of_reading(), expected);
  EXPECT_TRUE(platform::debug_output().empty());
  for (const option_facts& option : all_options) set_variable(option.name, "0");
  EXPECT_EQ(calls_of_reading(), expected);
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

TEST_F(options_test, a_variable_spares_one_process_the_spin) {
  set("OSW_DW_DeadLoopWhenLoadDll", 1);
  set_variable("OSW_DW_DeadLoopWhenLoadDll", "0");
  __osw_read_options();
  __osw_debug_spin();
  EXPECT_EQ(platform::call_count("RegOpenKeyA"), 9);
}

// What a variable asks for, the registry does not end, and neither does the process itself.
TEST_F(options_test, a_spin_that_a_variable_asks_for_ends_by_a_debugger_s_hand) {
  set("OSW_DW_DeadLoopWhenLoadDll", 0);
  set_variable("OSW_DW_DeadLoopWhenLoadDll", "1");
  __osw_read_options();
  EXPECT_EQ(OSW_DW_DeadLoopWhenLoadDll, 1u);
  std::atomic<bool> spins{true};
  std::thread spinner([&] {
    __osw_debug_spin();
    spins = false;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_TRUE(spins);
  relaxed_store(OSW_DW_DeadLoopWhenLoadDll, 0);
  spinner.join();
  EXPECT_EQ(platform::call_count("RegOpenKeyA"), 9);
}

}  // namespace
