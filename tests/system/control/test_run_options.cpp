#include <windows.h>

#include "files.h"
#include "option_values.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

// The options that a program sees when it is run with `options`, as roles.h writes them.
static std::string options_seen(const std::wstring& options) {
  const std::wstring file = here().root + L"state";
  DeleteFileW(file.c_str());
  const outcome result = run_tool(L"run " + options + L" -- " + quoted(here().program) + L" state " + quoted(file));
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  const std::string report = read_bytes(file), head = "on [program.exe\r\n]";
  return CHECK(report.rfind(head, 0) == 0) ? report.substr(head.size()) : report;
}

static bool contains_bytes(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

static std::string split(int parts, bool has_direction) {
  const int monitors = GetSystemMetrics(SM_CMONITORS);
  // With a monitor for each part there is nothing to split, unless a direction is asked for.
  const bool is_split = monitors != parts || (parts == 2 && has_direction);
  return " FakeAsOneMonitor=" + std::to_string(is_split && monitors > 1) +
         " SplitOneMonitor=" + std::to_string(is_split) + " SplitParts=" + std::to_string(parts);
}

static void sets_options_for_the_program() {
  CHECK(options_seen(L"") == "");
  CHECK(options_seen(L"--parts 4") == split(4, false));
  CHECK(options_seen(L"--parts 2") == split(2, false));
  CHECK(options_seen(L"--parts 2 --horizontal") == split(2, true) + " SplitTwoPartsHorizontal=1");
  CHECK(options_seen(L"--vertical --parts=2") == split(2, true) + " SplitTwoPartsHorizontal=0");
  CHECK(options_seen(L"--vertical") == " SplitTwoPartsHorizontal=0");
  CHECK(!options_key_exists());
}

static std::wstring ready() {
  return here().root + L"ready";
}
static std::wstring go() {
  return here().root + L"go";
}

static running_tool start_waiting(const std::wstring& options) {
  const running_tool running =
      start_tool(L"run " + options + L" -- " + quoted(here().program) + L" wait " + ready() + L" " + go() + L" 0");
  CHECK(wait_for_file(ready()));
  return running;
}

static void changes_nothing_in_the_registry() {
  write_option(L"OSW_DW_SplitParts", REG_SZ, std::string("a\0b\0c\0\0\0", 8));
  write_option(L"OSW_DW_SplitOneMonitor", REG_BINARY, "");
  write_option(L"OSW_DW_SplitTwoPartsHorizontal", 7);
  write_option(L"OSW_DW_UseSplitParentMethod", 1);
  const option_values before = read_options();
  CHECK_EQUAL(static_cast<long long>(before.size()), 4);
  CHECK(options_seen(L"--parts 2 --vertical") == split(2, true) + " SplitTwoPartsHorizontal=0 UseSplitParentMethod=1");
  CHECK(read_options() == before);
  const running_tool running = start_waiting(L"--parts 4 --horizontal");
  CHECK(read_options() == before);
  write_bytes(go(), "");
  CHECK_EQUAL(finish_tool(running).status, 0);
  CHECK(read_options() == before);
}

static void leaves_what_is_set_meanwhile() {
  const running_tool running = start_waiting(L"--parts 4 --vertical");
  CHECK(!options_key_exists());
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 2").status, 0);
  write_bytes(go(), "");
  CHECK_EQUAL(finish_tool(running).status, 0);
  CHECK_EQUAL(option_number(L"OSW_DW_SplitParts"), 2);
}

// The caller's own environment reaches the program, and what the run is told counts for more.
static void overrides_the_caller_s_environment() {
  SetEnvironmentVariableW(L"osw_dw_splitparts", L"2");
  SetEnvironmentVariableW(L"OSW_DW_UseSplitParentMethod", L"1");
  CHECK(options_seen(L"") == " SplitParts=2 UseSplitParentMethod=1");
  CHECK(options_seen(L"--parts 4") == split(4, false) + " UseSplitParentMethod=1");
  SetEnvironmentVariableW(L"OSW_DW_SplitParts", nullptr);
  SetEnvironmentVariableW(L"OSW_DW_UseSplitParentMethod", nullptr);
}

static std::string mode_seen(const std::wstring& options) {
  const std::wstring file = here().root + L"mode";
  DeleteFileW(file.c_str());
  const std::wstring line =
      L"run " + options + L" -- " + quoted(here().program) + L" variable " + quoted(file) + L" OSW_EXTENDED";
  CHECK_EQUAL(run_tool(line).status, 0);
  return read_bytes(file);
}

static void starts_programs_in_the_extended_mode() {
  CHECK(mode_seen(L"") == "1");
  CHECK(mode_seen(L"--parts 2") == "1");
  CHECK(mode_seen(L"--basic") == "none");
  SetEnvironmentVariableW(L"OSW_EXTENDED", L"0");
  CHECK(mode_seen(L"") == "1");
  SetEnvironmentVariableW(L"OSW_EXTENDED", L"1");
  CHECK(mode_seen(L"--parts 2 --basic") == "none");
  SetEnvironmentVariableW(L"OSW_EXTENDED", nullptr);
}

static void gives_each_of_two_runs_its_options() {
  const std::wstring file = here().root + L"first";
  const running_tool first = start_tool(L"run --parts 2 --vertical -- " + quoted(here().program) + L" later " + file +
                                        L" " + ready() + L" " + go());
  CHECK(wait_for_file(ready()));
  CHECK(options_seen(L"--parts 4") == split(4, false));
  CHECK(options_seen(L"") == "");
  write_bytes(go(), "");
  CHECK_EQUAL(finish_tool(first).status, 0);
  CHECK(contains_bytes(read_bytes(file), split(2, true) + " SplitTwoPartsHorizontal=0"));
  CHECK(!options_key_exists());
}

static void leaves_no_option_when_it_is_killed() {
  const running_tool running = start_waiting(L"--parts 2 --vertical");
  TerminateProcess(running.process, 1);
  CHECK_EQUAL(finish_tool(running).status, 1);
  CHECK(!options_key_exists());
  CHECK(options_seen(L"") == "");
  CHECK(folder_contents(here().temp).empty());
  write_bytes(go(), "");
  CHECK(delete_when_ended(here().program));
}

std::vector<test> run_option_tests() {
  return {{"sets_options_for_the_program", sets_options_for_the_program},
          {"changes_nothing_in_the_registry", changes_nothing_in_the_registry},
          {"leaves_what_is_set_meanwhile", leaves_what_is_set_meanwhile},
          {"overrides_the_caller_s_environment", overrides_the_caller_s_environment},
          {"starts_programs_in_the_extended_mode", starts_programs_in_the_extended_mode},
          {"gives_each_of_two_runs_its_options", gives_each_of_two_runs_its_options},
          {"leaves_no_option_when_it_is_killed", leaves_no_option_when_it_is_killed}};
}
