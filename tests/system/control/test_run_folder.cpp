#include <windows.h>

#include <vector>

#include "files.h"
#include "place.h"
#include "standins.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static std::wstring wrapper() {
  return here().app + L"opengl32.dll";
}
static std::wstring driver() {
  return here().app + L"opengl32sys.dll";
}
static std::wstring in_root(const std::wstring& name) {
  return here().root + name;
}

// The program's folder has the program alone, as it was before anybody thought of us.
static void take_libraries_out() {
  DeleteFileW(wrapper().c_str());
  DeleteFileW(driver().c_str());
}

static bool has_program_alone() {
  const auto contents = folder_contents(here().app);
  return contents.size() == 1 && contents.count(L"program.exe") == 1;
}

static std::wstring run_line(const std::wstring& options, const std::wstring& role) {
  return L"run " + options + L" -- " + quoted(here().program) + L" " + role;
}

static std::string run_state(const std::wstring& options) {
  const std::wstring file = in_root(L"state");
  DeleteFileW(file.c_str());
  const outcome result = run_tool(run_line(options, L"state " + quoted(file)));
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  return read_bytes(file);
}

// A run whose program looks at the library, and ends, when it is let go.
static running_tool start_later(const std::wstring& number) {
  const running_tool running =
      start_tool(run_line(L"", L"later " + in_root(L"state" + number) + L" " + in_root(L"ready" + number) + L" " +
                                   in_root(L"go" + number)));
  CHECK(wait_for_file(in_root(L"ready" + number)));
  return running;
}

static std::string let_go(const running_tool& running, const std::wstring& number) {
  write_bytes(in_root(L"go" + number), "");
  const outcome result = finish_tool(running);
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  return read_bytes(in_root(L"state" + number));
}

static void places_libraries_for_the_time_of_a_run() {
  take_libraries_out();
  CHECK(run_state(L"--parts 2 --vertical").rfind("on [program.exe\r\n] ", 0) == 0);
  CHECK(has_program_alone());
  CHECK(folder_contents(here().temp).empty());
  CHECK_EQUAL(run_tool(run_line(L"", L"status 4294967295")).status, 0xFFFFFFFF);
  CHECK(has_program_alone());
}

static void passes_all_on_where_it_places_libraries() {
  take_libraries_out();
  const std::wstring file = in_root(L"arguments"), list = here().work + L"apps.txt";
  const outcome result =
      run_tool(run_line(L"", L"arguments " + quoted(file) + L" \"two words\" \"\" a\\\" --keep -- --parts 3"));
  CHECK_EQUAL(result.status, 0);
  CHECK(read_bytes(file) == "two words\n\na\"\n--keep\n--\n--parts\n3\n");
  write_bytes(list, "other.exe");
  const outcome unlisted = run_tool(run_line(L"--list apps.txt", L"status 3"));
  CHECK_EQUAL(unlisted.status, 3);
  CHECK(is_one_sentence(unlisted.err));
  CHECK(contains(unlisted.err, L"does not name program.exe"));
}

static void keeps_them_on_request() {
  take_libraries_out();
  CHECK(run_state(L"--keep") == "on [program.exe\r\n]");
  CHECK(read_bytes(wrapper()) == standin_wrapper_bytes());
  CHECK(read_bytes(driver()) == standin_driver_bytes());
  // As if they had been installed.
  CHECK(run_state(L"") == "on [program.exe\r\n]");
  CHECK(exists(wrapper()));
  CHECK_EQUAL(run_tool(L"remove " + quoted(here().app)).status, 0);
  CHECK(has_program_alone());
}

static void leaves_what_was_installed() {
  take_libraries_out();
  CHECK_EQUAL(run_tool(L"install " + quoted(here().app)).status, 0);
  const auto installed = folder_contents(here().app);
  CHECK(run_state(L"") == "on [program.exe\r\n]");
  CHECK(folder_contents(here().app) == installed);
  DeleteFileW(wrapper().c_str());
  CHECK(run_state(L"") == "on [program.exe\r\n]");
  CHECK(folder_contents(here().app) == installed);
}

static void leaves_what_is_installed_meanwhile() {
  take_libraries_out();
  const running_tool running = start_later(L"1");
  CHECK_EQUAL(run_tool(L"install " + quoted(here().app)).status, 0);
  CHECK(let_go(running, L"1") == "on [program.exe\r\n]");
  CHECK_EQUAL(static_cast<long long>(folder_contents(here().app).size()), 4);
}

static void takes_away_with_the_last_of_two_runs() {
  take_libraries_out();
  for (const wchar_t* first_to_end : {L"1", L"2"}) {
    const std::wstring last_to_end = *first_to_end == L'1' ? L"2" : L"1";
    const running_tool runs[] = {start_later(L"1"), start_later(L"2")};
    CHECK(let_go(runs[*first_to_end - L'1'], first_to_end) == "on [program.exe\r\n]");
    CHECK(exists(wrapper()));
    CHECK(exists(driver()));
    CHECK(let_go(runs[last_to_end[0] - L'1'], last_to_end) == "on [program.exe\r\n]");
    CHECK(has_program_alone());
    for (const wchar_t* name : {L"ready1", L"ready2", L"go1", L"go2"}) DeleteFileW(in_root(name).c_str());
  }
}

// None of them comes upon a folder that another has half filled or half emptied.
static void serves_many_short_runs_at_once() {
  take_libraries_out();
  std::vector<running_tool> runs;
  for (int i = 0; i < 6; ++i) {
    runs.push_back(start_tool(run_line(L"", L"state " + quoted(in_root(L"state" + std::to_wstring(i))))));
  }
  for (size_t i = 0; i < runs.size(); ++i) {
    const outcome result = finish_tool(runs[i]);
    CHECK_EQUAL(result.status, 0);
    CHECK_EQUAL(result.err, L"");
    const std::string found = read_bytes(in_root(L"state" + std::to_wstring(i)));
    CHECK_EQUAL(std::wstring(found.begin(), found.end()), L"on [program.exe\r\n]");
  }
  CHECK(has_program_alone());
}

// Who is killed can take nothing away.
static void takes_away_after_a_kill_at_the_next_run() {
  take_libraries_out();
  running_tool running = start_later(L"1");
  TerminateProcess(running.process, 7);
  CHECK_EQUAL(finish_tool(running).status, 7);
  CHECK(exists(wrapper()));
  write_bytes(in_root(L"go1"), "");
  CHECK(wait_for_file(in_root(L"state1")));
  CHECK(run_state(L"") == "on [program.exe\r\n]");
  CHECK(has_program_alone());
}

static void takes_away_after_ctrl_c() {
  take_libraries_out();
  const std::wstring ready = in_root(L"ready");
  const outcome result =
      finish_tool(start_tool_and_interrupt(run_line(L"", L"yielding " + ready + L" " + in_root(L"go") + L" 5"), ready));
  CHECK_EQUAL(result.status, 33);
  CHECK_EQUAL(result.err, L"");
  CHECK(has_program_alone());
}

static void check_refused(const wchar_t* part) {
  const auto before = folder_contents(here().app);
  const outcome result = run_tool(run_line(L"", L"status 0"));
  CHECK_EQUAL(result.status, 1);
  CHECK(is_one_sentence(result.err));
  if (!contains(result.err, part)) CHECK_EQUAL(result.err, part);
  CHECK(folder_contents(here().app) == before);
}

static void says_why_it_places_nothing() {
  DeleteFileW(wrapper().c_str());
  check_refused(L"opengl32sys.dll is there already and was not placed by oswctl");
  take_libraries_out();
  // What is no file cannot be written to, as in a folder where only others may.
  make_folder(here().app + L"oswctl-installed.txt.lock");
  check_refused(L"Windows does not let you write to");
  check_refused(L"oswctl install");
  RemoveDirectoryW((here().app + L"oswctl-installed.txt.lock").c_str());
  write_bytes(here().app + L"old.exe", with_machine(read_bytes(here().program), 0x14C) + "opengl32");
  check_refused(L"old.exe is a 32-bit program");
  DeleteFileW((here().app + L"old.exe").c_str());
  DeleteFileW((here().tool + L"opengl32.dll").c_str());
  check_refused(L"both libraries have to be beside oswctl.exe");
}

std::vector<test> run_folder_tests() {
  return {{"places_libraries_for_the_time_of_a_run", places_libraries_for_the_time_of_a_run},
          {"passes_all_on_where_it_places_libraries", passes_all_on_where_it_places_libraries},
          {"keeps_them_on_request", keeps_them_on_request},
          {"leaves_what_was_installed", leaves_what_was_installed},
          {"leaves_what_is_installed_meanwhile", leaves_what_is_installed_meanwhile},
          {"takes_away_with_the_last_of_two_runs", takes_away_with_the_last_of_two_runs},
          {"serves_many_short_runs_at_once", serves_many_short_runs_at_once},
          {"takes_away_after_a_kill_at_the_next_run", takes_away_after_a_kill_at_the_next_run},
          {"takes_away_after_ctrl_c", takes_away_after_ctrl_c},
          {"says_why_it_places_nothing", says_why_it_places_nothing}};
}
