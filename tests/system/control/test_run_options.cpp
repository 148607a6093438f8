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
  CHECK(report.rfind(head, 0) == 0);
  return report.substr(head.size());
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

static void puts_back_what_was_there() {
  write_option(L"OSW_DW_SplitParts", REG_SZ, std::string("a\0b\0c\0\0\0", 8));
  write_option(L"OSW_DW_SplitOneMonitor", REG_BINARY, "");
  write_option(L"OSW_DW_SplitTwoPartsHorizontal", 7);
  write_option(L"OSW_DW_UseSplitParentMethod", 1);
  const option_values before = read_options();
  CHECK_EQUAL(static_cast<long long>(before.size()), 4);
  CHECK(options_seen(L"--parts 2 --vertical") == split(2, true) + " SplitTwoPartsHorizontal=0 UseSplitParentMethod=1");
  CHECK(read_options() == before);
}

static void leaves_what_somebody_has_set_meanwhile() {
  const std::wstring ready = here().root + L"ready", go = here().root + L"go";
  const running_tool running =
      start_tool(L"run --parts 4 --vertical -- " + quoted(here().program) + L" wait " + ready + L" " + go + L" 0");
  CHECK(wait_for_file(ready));
  CHECK_EQUAL(option_number(L"OSW_DW_SplitParts"), 4);
  CHECK_EQUAL(run_tool(L"set OSW_DW_SplitParts 2").status, 0);
  write_bytes(go, "");
  CHECK_EQUAL(finish_tool(running).status, 0);
  CHECK_EQUAL(option_number(L"OSW_DW_SplitParts"), 2);
  CHECK_EQUAL(static_cast<long long>(read_options().size()), 1);
}

static void does_not_mix_the_options_of_two_runs() {
  const std::wstring ready = here().root + L"ready", go = here().root + L"go";
  const running_tool first =
      start_tool(L"run --parts 2 -- " + quoted(here().program) + L" wait " + ready + L" " + go + L" 0");
  CHECK(wait_for_file(ready));
  const option_values meanwhile = read_options();
  const outcome second = run_tool(L"run --parts 4 -- " + quoted(here().program) + L" status 5");
  CHECK_EQUAL(second.status, 1);
  CHECK(is_one_sentence(second.err));
  CHECK(read_options() == meanwhile);
  CHECK_EQUAL(run_tool(L"run -- " + quoted(here().program) + L" status 5").status, 5);
  CHECK(read_options() == meanwhile);
  write_bytes(go, "");
  CHECK_EQUAL(finish_tool(first).status, 0);
  CHECK(!options_key_exists());
  CHECK_EQUAL(run_tool(L"run --parts 4 -- " + quoted(here().program) + L" status 5").status, 5);
}

std::vector<test> run_option_tests() {
  return {{"sets_options_for_the_program", sets_options_for_the_program},
          {"puts_back_what_was_there", puts_back_what_was_there},
          {"leaves_what_somebody_has_set_meanwhile", leaves_what_somebody_has_set_meanwhile},
          {"does_not_mix_the_options_of_two_runs", does_not_mix_the_options_of_two_runs}};
}
