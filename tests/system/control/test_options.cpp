#include <sstream>

#include "option_values.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static const struct {
  const wchar_t* name;
  int fallback;
} all_options[] = {
    {L"OSW_DW_DeadLoopWhenLoadDll", 0},
    {L"OSW_DW_FakeAsOneMonitor", 0},
    {L"OSW_DW_SplitOneMonitor", 0},
    {L"OSW_DW_SplitParts", 4},
    {L"OSW_DW_SplitTwoPartsHorizontal", 1},
    {L"OSW_DW_UseSplitParentMethod", 0},
    {L"OSW_DW_ForceUnusedChildWindowSize1X1", 0},
    {L"OSW_DW_GLDispatchUseMtPath", 0},
    {L"OSW_DW_UseAppThreadToQueryState", 1},
};

// What "oswctl options" prints of an option: value, origin and default, with one blank between.
static std::wstring printed(const std::wstring& name) {
  const outcome result = run_tool(L"options");
  CHECK_EQUAL(result.status, 0);
  std::wistringstream lines(result.out);
  for (std::wstring line; std::getline(lines, line);) {
    std::wistringstream words(line);
    std::wstring first, value, from, fallback, meaning;
    words >> first >> value >> from >> fallback >> meaning;
    if (first != name) continue;
    CHECK(!meaning.empty());
    return value + L" " + from + L" " + fallback;
  }
  return L"";
}

static void prints_defaults() {
  for (const auto& one : all_options) {
    const std::wstring value = std::to_wstring(one.fallback);
    CHECK_EQUAL(printed(one.name), value + L" default " + value);
  }
  CHECK(!options_key_exists());
}

static void sets_each_option() {
  for (const auto& one : all_options) {
    for (const int value : one.fallback == 4 ? std::vector<int>{1, 2, 4} : std::vector<int>{0, 1}) {
      const outcome result = run_tool(L"set " + std::wstring(one.name) + L" " + std::to_wstring(value));
      CHECK_EQUAL(result.status, 0);
      CHECK_EQUAL(result.err + result.out, L"");
      CHECK_EQUAL(option_number(one.name), value);
      CHECK_EQUAL(read_options()[one.name].type, REG_DWORD);
    }
  }
  CHECK_EQUAL(static_cast<long long>(read_options().size()), 9);
  CHECK_EQUAL(printed(L"OSW_DW_UseSplitParentMethod"), L"1 registry 0");
  CHECK_EQUAL(run_tool(L"set osw_dw_splitparts 2").status, 0);
  CHECK_EQUAL(option_number(L"OSW_DW_SplitParts"), 2);
}

// What the library makes of a value is what counts, not what was meant by it.
static void prints_what_the_library_reads() {
  write_option(L"OSW_DW_FakeAsOneMonitor", 7);
  CHECK_EQUAL(printed(L"OSW_DW_FakeAsOneMonitor"), L"1 registry 0");
  write_option(L"OSW_DW_SplitTwoPartsHorizontal", 0);
  CHECK_EQUAL(printed(L"OSW_DW_SplitTwoPartsHorizontal"), L"0 registry 1");
  write_option(L"OSW_DW_SplitParts", 3);
  CHECK_EQUAL(printed(L"OSW_DW_SplitParts"), L"3 registry 4");
  write_option(L"OSW_DW_SplitParts", REG_BINARY, std::string("\2\0\0\0", 4));
  CHECK_EQUAL(printed(L"OSW_DW_SplitParts"), L"2 registry 4");
  write_option(L"OSW_DW_SplitParts", REG_BINARY, "");
  CHECK_EQUAL(printed(L"OSW_DW_SplitParts"), L"4 default 4");
  write_option(L"OSW_DW_SplitParts", REG_QWORD, std::string("\2\0\0\0\0\0\0\0", 8));
  CHECK_EQUAL(printed(L"OSW_DW_SplitParts"), L"4 default 4");
}

static void takes_back_what_it_has_set_and_no_more() {
  for (const auto& one : all_options) run_tool(L"set " + std::wstring(one.name) + L" 1");
  const outcome result = run_tool(L"reset");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.out + result.err, L"");
  CHECK(!options_key_exists());
  CHECK_EQUAL(run_tool(L"reset").status, 0);
  CHECK(!options_key_exists());

  write_option(L"Somebody else's", 5);
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 2").status, 0);
  CHECK_EQUAL(run_tool(L"reset").status, 0);
  CHECK_EQUAL(static_cast<long long>(read_options().size()), 1);
  CHECK_EQUAL(option_number(L"Somebody else's"), 5);
}

// What was there before the first set comes back as it was; what somebody has set since then, or always had, stays.
static void puts_back_what_others_have_set() {
  write_option(L"OSW_DW_SplitParts", REG_BINARY, std::string("\2\0\0", 3));
  write_option(L"OSW_DW_SplitOneMonitor", 1);
  write_option(L"OSW_DW_UseSplitParentMethod", 1);
  const option_values before = read_options();
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 4").status, 0);
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 1").status, 0);
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitOneMonitor 1").status, 0);
  CHECK_EQUAL(run_tool(L"set OSW_DW_FakeAsOneMonitor 1").status, 0);
  const outcome result = run_tool(L"reset");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  CHECK(contains(result.out, L"OSW_DW_UseSplitParentMethod"));
  CHECK(contains(result.out, L"reset --all"));
  CHECK(!contains(result.out, L"OSW_DW_SplitParts"));
  CHECK(read_options() == before);

  CHECK_EQUAL(run_tool(L"set OSW_DW_FakeAsOneMonitor 1").status, 0);
  write_option(L"OSW_DW_FakeAsOneMonitor", 0);
  CHECK(contains(run_tool(L"reset").out, L"OSW_DW_FakeAsOneMonitor"));
  CHECK_EQUAL(option_number(L"OSW_DW_FakeAsOneMonitor"), 0);
}

static void resets_all_on_request() {
  for (const auto& one : all_options) write_option(one.name, 1);
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 2").status, 0);
  write_option(L"Somebody else's", 5);
  const outcome result = run_tool(L"reset --all");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.out + result.err, L"");
  CHECK_EQUAL(static_cast<long long>(read_options().size()), 1);
  CHECK_EQUAL(option_number(L"Somebody else's"), 5);
}

static void prints_what_the_environment_says() {
  write_option(L"OSW_DW_SplitParts", 2);
  SetEnvironmentVariableW(L"OSW_DW_SplitParts", L"1");
  SetEnvironmentVariableW(L"OSW_DW_FakeAsOneMonitor", L"7");
  SetEnvironmentVariableW(L"OSW_DW_UseSplitParentMethod", L"yes");
  CHECK_EQUAL(printed(L"OSW_DW_SplitParts"), L"1 environment 4");
  CHECK_EQUAL(printed(L"OSW_DW_FakeAsOneMonitor"), L"1 environment 0");
  CHECK_EQUAL(printed(L"OSW_DW_UseSplitParentMethod"), L"0 default 0");
  for (const auto& one : all_options) SetEnvironmentVariableW(one.name, nullptr);
}

std::vector<test> option_tests() {
  return {{"prints_defaults", prints_defaults},
          {"sets_each_option", sets_each_option},
          {"prints_what_the_library_reads", prints_what_the_library_reads},
          {"prints_what_the_environment_says", prints_what_the_environment_says},
          {"takes_back_what_it_has_set_and_no_more", takes_back_what_it_has_set_and_no_more},
          {"puts_back_what_others_have_set", puts_back_what_others_have_set},
          {"resets_all_on_request", resets_all_on_request}};
}
