#include "files.h"
#include "option_values.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

// Whatever is refused changes nothing: neither the options nor any file.
static void check_refused(const std::wstring& line) {
  write_option(L"OSW_DW_SplitParts", 2);
  const option_values options = read_options();
  const auto app = folder_contents(here().app), work = folder_contents(here().work);
  const standin_state* state = hold_wrapper(here().app);
  const outcome result = run_tool(line);
  const bool is_right = CHECK_EQUAL(result.status, 2) & CHECK_EQUAL(result.out, L"") &
                        CHECK(is_one_sentence(result.err)) & CHECK(read_options() == options) &
                        CHECK(folder_contents(here().app) == app) & CHECK(folder_contents(here().work) == work) &
                        CHECK(folder_contents(here().temp).empty()) & CHECK_EQUAL(state->enable_count, 0);
  if (!is_right) CHECK_EQUAL(L"oswctl " + line + L"\n" + result.err, L"refused");
}

static void refuses_what_makes_no_sense() {
  const std::wstring program = L" -- " + quoted(here().program) + L" status 0";
  const std::wstring lines[] = {
      L"",
      L"frobnicate",
      L"--parts 2",
      L"run",
      L"run --",
      L"run -- \"\"",
      L"run --parts" + program,
      L"run --parts 0" + program,
      L"run --parts 3" + program,
      L"run --parts 2x" + program,
      L"run --parts 2 --parts 4" + program,
      L"run --horizontal --vertical" + program,
      L"run --horizontal=no" + program,
      L"run --list \"\"" + program,
      L"run --list" + program,
      L"run --frobnicate" + program,
      L"run more" + program,
      L"status more",
      L"list more",
      L"reset --all=no",
      L"options more",
      L"options reset",
      L"set",
      L"set OSW_DW_SplitParts",
      L"set OSW_DW_SplitParts 2 4",
      L"set OSW_DW_SplitParts 3",
      L"set OSW_DW_SplitParts -1",
      L"set OSW_DW_SplitParts 22",
      L"set OSW_DW_SplitParts \"\"",
      L"set OSW_DW_FakeAsOneMonitor 2",
      L"set OSW_DW_FakeAsOneMonitor yes",
      L"set OSW_DW_FakeAsOneMonitor 1 ",
      L"set OSW_DW_Unknown 1",
      L"reset OSW_DW_SplitParts",
      L"check one two",
      L"check \"\"",
      L"check nowhere",
      L"install",
      L"install nowhere",
      L"install \"two\nlines\"",
      L"remove",
      L"remove nowhere",
  };
  for (const std::wstring& line : lines) {
    // A value with a blank behind it is a good one; only the quoted form is wrong.
    if (line.back() == L' ') continue;
    check_refused(line);
  }
  check_refused(L"set OSW_DW_FakeAsOneMonitor \"1 \"");
}

static void refuses_programs_that_cannot_run() {
  const std::string program = read_bytes(here().program);
  write_bytes(here().app + L"old.exe", with_machine(program, 0x14C));
  write_bytes(here().app + L"arm.exe", with_machine(program, 0xAA64));
  write_bytes(here().app + L"lib.exe", as_library(program));
  write_bytes(here().app + L"text.exe", "echo hello\r\n");
  write_bytes(here().app + L"empty.exe", "");
  write_bytes(here().app + L"short.exe", program.substr(0, 200));
  write_bytes(here().app + L"two words.exe", program);
  for (const wchar_t* name : {L"old", L"arm", L"lib", L"text", L"empty", L"short", L"missing", L"two words"}) {
    check_refused(L"run --parts 4 -- " + quoted(here().app + name + L".exe") + L" status 0");
  }
  check_refused(L"run --parts 4 -- " + quoted(here().app) + L" status 0");
  check_refused(L"run -- no-such-program-anywhere");

  const auto message = [](const wchar_t* name) { return run_tool(L"run " + quoted(here().app + name + L".exe")).err; };
  CHECK(contains(message(L"arm"), L"another kind of processor"));
  CHECK(contains(message(L"old"), L"32-bit"));
  CHECK(contains(message(L"missing"), L"there is no program"));
  CHECK(contains(message(L"two words"), L"blank"));
  CHECK(contains(message(L"lib"), L"library"));
}

// One line says what was wrong, and what there is to choose from.
static void names_what_was_meant() {
  const auto check_names = [](const wchar_t* line, const wchar_t* wrong, const wchar_t* right) {
    const outcome result = run_tool(line);
    CHECK_EQUAL(result.status, 2);
    CHECK(is_one_sentence(result.err));
    if (!contains(result.err, wrong) || !contains(result.err, right)) CHECK_EQUAL(result.err, right);
  };
  check_names(L"", L"needs a command", L"run, status, list, options, set, reset, check, install, remove");
  check_names(L"instal C:\\", L"instal;", L"install");
  check_names(L"run --part 4 -- x.exe", L"--part", L"oswctl run --help");
  check_names(L"run --parts 3 -- x.exe", L"3", L"2,4");
  check_names(L"run --parts", L"--parts", L"oswctl run --help");
  check_names(L"set OSW_DW_SplitPart 2", L"OSW_DW_SplitPart;", L"oswctl options");
  check_names(L"set OSW_DW_SplitParts 3", L"not 3", L"1, 2 or 4");
  check_names(L"run", L"needs a program", L"PROGRAM");
}

static void tells_its_version() {
  const outcome result = run_tool(L"--version");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  CHECK(result.out.rfind(L"oswctl ", 0) == 0);
  CHECK(result.out.size() > 9 && iswdigit(result.out[7]) && result.out.back() == L'\n');
}

// All that stands behind the program's name is its own, with "--" before it and without.
static void needs_no_mark_before_the_program() {
  const std::wstring file = here().root + L"arguments", program = quoted(here().program);
  const auto arguments_of = [&](const std::wstring& options) {
    DeleteFileW(file.c_str());
    CHECK_EQUAL(
        run_tool(L"run " + options + L" " + program + L" arguments " + quoted(file) + L" --parts 3 -- --help").status,
        0);
    return read_bytes(file);
  };
  for (const wchar_t* options : {L"", L"--parts 4", L"--parts=2 --vertical", L"--", L"--parts 4 --"}) {
    CHECK(arguments_of(options) == "--parts\n3\n--\n--help\n");
  }
  write_bytes(here().work + L"list.txt", "program.exe");
  CHECK(arguments_of(L"--list list.txt") == "--parts\n3\n--\n--help\n");
}

static void helps() {
  for (const wchar_t* line : {L"--help", L"-h", L"run --help", L"set --help"}) {
    const outcome result = run_tool(line);
    CHECK_EQUAL(result.status, 0);
    CHECK_EQUAL(result.err, L"");
    CHECK(contains(result.out, L"Usage"));
    // What check starts is nobody's business.
    CHECK(!contains(result.out, L"probe"));
  }
  CHECK(contains(run_tool(L"run --help").out, L"PROGRAM ARGS"));
}

std::vector<test> command_line_tests() {
  return {{"refuses_what_makes_no_sense", refuses_what_makes_no_sense},
          {"refuses_programs_that_cannot_run", refuses_programs_that_cannot_run},
          {"names_what_was_meant", names_what_was_meant},
          {"tells_its_version", tells_its_version},
          {"needs_no_mark_before_the_program", needs_no_mark_before_the_program},
          {"helps", helps}};
}
