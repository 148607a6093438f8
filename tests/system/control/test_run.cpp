#include <windows.h>

#include <cstring>

#include "files.h"
#include "option_values.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static std::wstring run_line(const std::wstring& options, const std::wstring& role) {
  return L"run " + options + L" -- " + quoted(here().program) + L" " + role;
}

// The outcome of a program that writes what holds for it, and what it wrote.
static outcome run_state(const std::wstring& options, std::string& report) {
  const std::wstring file = here().root + L"state";
  const outcome result = run_tool(run_line(options, L"state " + quoted(file)));
  report = read_bytes(file);
  return result;
}

static void passes_arguments_on_exactly() {
  const std::wstring file = here().root + L"arguments";
  const std::wstring line =
      L"plain \"two words\" \"\" \"a\\\\\" \"a b\\\\\" \"\\\"quoted\\\"\" back\\slash \\\\\\\"x "
      L"\"\\\\ \\\\\\\" y\" *.exe -- --parts 3 --help /c C:\\x\\ \"tab\there\" \u00E4\u20AC\u0416 'q' %PATH% ^&|<>";
  const wchar_t* const wanted[] = {L"plain",       L"two words", L"",
                                   L"a\\",         L"a b\\",     L"\"quoted\"",
                                   L"back\\slash", L"\\\"x",     L"\\\\ \\\" y",
                                   L"*.exe",       L"--",        L"--parts",
                                   L"3",           L"--help",    L"/c",
                                   L"C:\\x\\",     L"tab\there", L"\u00E4\u20AC\u0416",
                                   L"'q'",         L"%PATH%",    L"^&|<>"};
  CHECK_EQUAL(run_tool(run_line(L"", L"arguments " + quoted(file) + L" " + line)).status, 0);
  std::string text;
  for (const wchar_t* word : wanted) {
    char bytes[256] = "";
    WideCharToMultiByte(CP_UTF8, 0, word, -1, bytes, sizeof bytes, nullptr, nullptr);
    text += bytes + std::string("\n");
  }
  CHECK(read_bytes(file) == text);
}

static void passes_the_exit_status_on() {
  for (const wchar_t* status : {L"0", L"1", L"7", L"259", L"70000", L"4294967295", L"3221225477"}) {
    const outcome result = run_tool(run_line(L"", L"status " + std::wstring(status)));
    CHECK_EQUAL(result.status, static_cast<long long>(wcstoul(status, nullptr, 10)));
    CHECK_EQUAL(result.out + result.err, L"");
  }
}

static void is_on_while_the_program_runs() {
  const standin_state* state = hold_wrapper(here().app);
  std::string report;
  CHECK_EQUAL(run_state(L"", report).status, 0);
  CHECK(report == "on [program.exe\r\n]");
  CHECK_EQUAL(state->enable_count, 1);
  CHECK_EQUAL(state->disable_count, 1);
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK_EQUAL(state->enabler_detaches, 0);
  CHECK(std::string(state->list_path).rfind(std::string(here().temp.begin(), here().temp.end()), 0) == 0);
  CHECK(folder_contents(here().temp).empty());
  CHECK(!options_key_exists());
}

// Without anybody else that holds the library, the section lives by the tool alone.
static void stays_resident() {
  std::string report;
  CHECK_EQUAL(run_state(L"", report).status, 0);
  CHECK(report == "on [program.exe\r\n]");
}

static void uses_the_copy_that_the_program_loads() {
  for (const std::wstring& folder : {here().work, here().tool}) {
    CopyFileW((here().app + L"opengl32.dll").c_str(), (folder + L"opengl32.dll").c_str(), FALSE);
  }
  const standin_state* beside_program = hold_wrapper(here().app);
  const standin_state* beside_tool = hold_wrapper(here().tool);
  const standin_state* in_current_folder = hold_wrapper(here().work);
  std::string report;
  CHECK_EQUAL(run_state(L"", report).status, 0);
  CHECK(report == "on [program.exe\r\n]");
  CHECK_EQUAL(beside_program->enable_count, 1);
  CHECK_EQUAL(beside_tool->enable_count, 0);
  CHECK_EQUAL(in_current_folder->enable_count, 0);
}

static void refuses_a_program_with_another_library() {
  write_bytes(here().app + L"opengl32.dll", read_bytes(here().app + L"opengl32sys.dll"));
  std::string report;
  const outcome other = run_state(L"", report);
  CHECK_EQUAL(other.status, 1);
  CHECK(is_one_sentence(other.err));
  CHECK(contains(other.err, L"not the span wrapper"));
  CHECK(report.empty());
  CHECK(!options_key_exists());
  CHECK(folder_contents(here().temp).empty());
}

static void takes_a_list() {
  const standin_state* state = hold_wrapper(here().app);
  const std::wstring list = here().root + L"my list.txt";
  write_bytes(list, "other.exe\n\tPROGRAM.EXE more.exe");
  std::string report;
  const outcome result = run_state(L"--list " + quoted(list), report);
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  CHECK(report == "on [other.exe\n\tPROGRAM.EXE more.exe]");
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(read_bytes(list) == "other.exe\n\tPROGRAM.EXE more.exe");
  CHECK(folder_contents(here().temp).empty());
}

static void takes_a_list_by_its_name_in_the_current_folder() {
  write_bytes(here().work + L"apps.txt", "program.exe");
  std::string report;
  CHECK_EQUAL(run_state(L"--list apps.txt", report).status, 0);
  CHECK(report == "on [program.exe]");
}

static void says_when_a_list_lacks_the_program() {
  const std::wstring list = here().root + L"list.txt";
  write_bytes(list, "myprogram.exe program.exe.old program");
  std::string report;
  const outcome result = run_state(L"--list " + quoted(list), report);
  CHECK_EQUAL(result.status, 0);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, L"does not name program.exe"));
  CHECK(report == "on [myprogram.exe program.exe.old program]");
}

static void refuses_a_list_that_the_library_cannot_open() {
  const std::wstring list = here().root + L"list.txt";
  write_bytes(list, "program.exe");
  // Somebody who shares it for reading alone keeps it from the library, as a write protection does, which not every
  // user is bound by.
  const HANDLE reader =
      CreateFileW(list.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  std::string report;
  const outcome result = run_state(L"--list " + quoted(list), report);
  CloseHandle(reader);
  CHECK_EQUAL(result.status, 2);
  CHECK(is_one_sentence(result.err));
  const outcome missing = run_state(L"--list nowhere.txt", report);
  CHECK_EQUAL(missing.status, 2);
  CHECK(is_one_sentence(missing.err));
  CHECK(report.empty());
}

// A program with a blank in its name can be run on a list, where it is told that the list will not match.
static void runs_what_a_list_cannot_name() {
  const std::wstring program = here().app + L"two words.exe", list = here().root + L"list.txt";
  CopyFileW(here().program.c_str(), program.c_str(), FALSE);
  write_bytes(list, "two words.exe");
  const outcome result = run_tool(L"run --list " + quoted(list) + L" -- " + quoted(program) + L" status 3");
  CHECK_EQUAL(result.status, 3);
  CHECK(is_one_sentence(result.err));
}

static void finds_a_program_as_a_shell_does() {
  const std::wstring list = L"run -- program status 4";
  CHECK_EQUAL(run_tool(list).status, 2);

  wchar_t path[32768] = L"";
  GetEnvironmentVariableW(L"PATH", path, 32768);
  SetEnvironmentVariableW(L"PATH", (L"C:\\nowhere;;" + here().app + L";" + path).c_str());
  CHECK_EQUAL(run_tool(list).status, 4);
  CHECK_EQUAL(run_tool(L"run -- program.exe status 5").status, 5);
  SetEnvironmentVariableW(L"PATH", path);

  CHECK_EQUAL(run_tool(L"run -- ..\\app\\program status 6").status, 6);
  CHECK_EQUAL(run_tool(L"run -- ../app/program.exe status 7").status, 7);
}

// A program whose headers are in order and whose body is missing.
static void cleans_up_when_the_program_cannot_be_started() {
  const standin_state* state = hold_wrapper(here().app);
  write_bytes(here().app + L"broken.exe", read_bytes(here().program).substr(0, 4096));
  const outcome result = run_tool(L"run --parts 2 --vertical -- " + quoted(here().app + L"broken.exe"));
  CHECK_EQUAL(result.status, 1);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, L"cannot be started"));
  CHECK_EQUAL(state->enable_count, 1);
  CHECK_EQUAL(state->disable_count, 1);
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(folder_contents(here().temp).empty());
  CHECK(!options_key_exists());
}

static void says_when_no_list_can_be_made() {
  SetEnvironmentVariableW(L"TMP", L"C:\\nowhere\\at\\all");
  SetEnvironmentVariableW(L"TEMP", L"C:\\nowhere\\at\\all");
  const outcome result = run_tool(run_line(L"", L"status 0"));
  CHECK_EQUAL(result.status, 1);
  CHECK(is_one_sentence(result.err));
}

// Each of two programs may be switched on while the other runs, and the first to end does not switch the other off.
static void leaves_a_later_run_on() {
  const standin_state* state = hold_wrapper(here().app);
  const std::wstring root = here().root;
  const auto line = [&](const wchar_t* number) {
    const std::wstring ready = root + L"ready" + number, go = root + L"go" + number;
    return run_line(L"", L"wait " + quoted(ready) + L" " + quoted(go) + L" " + number);
  };
  const running_tool first = start_tool(line(L"1"));
  CHECK(wait_for_file(root + L"ready1"));
  const running_tool second = start_tool(line(L"2"));
  CHECK(wait_for_file(root + L"ready2"));
  write_bytes(root + L"go1", "");
  CHECK_EQUAL(finish_tool(first).status, 1);
  CHECK_EQUAL(state->is_enabled, 1);
  CHECK_EQUAL(static_cast<long long>(folder_contents(here().temp).size()), 1);
  write_bytes(root + L"go2", "");
  CHECK_EQUAL(finish_tool(second).status, 2);
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(folder_contents(here().temp).empty());
}

// A program of another name in the program's folder, or in one of its own with libraries of its own.
static std::wstring second_program(const std::wstring& folder) {
  const std::wstring path = folder + L"second.exe";
  CopyFileW(here().program.c_str(), path.c_str(), FALSE);
  return path;
}

static std::wstring later_line(const std::wstring& options, const std::wstring& program, const std::wstring& number) {
  const std::wstring root = here().root;
  return L"run " + options + L" -- " + quoted(program) + L" later " + root + L"state" + number + L" " + root +
         L"ready" + number + L" " + root + L"go" + number;
}

static running_tool start_later(const std::wstring& options, const std::wstring& program, const std::wstring& number) {
  const running_tool running = start_tool(later_line(options, program, number));
  CHECK(wait_for_file(here().root + L"ready" + number));
  return running;
}

// What the program finds when it loads the library now.
static std::string let_go(const running_tool& running, const std::wstring& number) {
  write_bytes(here().root + L"go" + number, "");
  const outcome result = finish_tool(running);
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  return read_bytes(here().root + L"state" + number);
}

static void keeps_both_of_two_runs_on_the_list() {
  const standin_state* state = hold_wrapper(here().app);
  const running_tool first = start_later(L"", here().program, L"1");
  const running_tool second = start_later(L"", second_program(here().app), L"2");
  CHECK(let_go(second, L"2") == "on [program.exe\r\nsecond.exe\r\n]");
  CHECK_EQUAL(state->is_enabled, 1);
  CHECK(let_go(first, L"1") == "on [program.exe\r\n]");
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(folder_contents(here().temp).empty());
}

static void keeps_the_second_of_two_runs_on_the_list() {
  const standin_state* state = hold_wrapper(here().app);
  const running_tool first = start_later(L"", here().program, L"1");
  const running_tool second = start_later(L"", second_program(here().app), L"2");
  CHECK(let_go(first, L"1") == "on [program.exe\r\nsecond.exe\r\n]");
  CHECK(let_go(second, L"2") == "on [second.exe\r\n]");
  CHECK_EQUAL(state->is_enabled, 0);
}

// A list of the caller's holds alone while it is alone, and together with what else is run.
static void keeps_a_run_with_a_list_and_one_without() {
  const standin_state* state = hold_wrapper(here().app);
  const std::wstring list = here().root + L"list.txt";
  write_bytes(list, "program.exe\tother.exe");
  const running_tool first = start_later(L"--list " + list, here().program, L"1");
  const running_tool second = start_later(L"", second_program(here().app), L"2");
  CHECK(let_go(second, L"2") == "on [program.exe\r\nother.exe\r\nsecond.exe\r\n]");
  CHECK(let_go(first, L"1") == "on [program.exe\tother.exe]");
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(folder_contents(here().temp).empty());
}

static void keeps_runs_in_two_folders_apart() {
  const std::wstring other = here().root + L"other\\";
  make_folder(other);
  for (const wchar_t* name : {L"opengl32.dll", L"opengl32sys.dll"}) {
    CopyFileW((here().app + name).c_str(), (other + name).c_str(), FALSE);
  }
  const standin_state* state = hold_wrapper(here().app);
  const standin_state* other_state = hold_wrapper(other);
  const running_tool first = start_later(L"", here().program, L"1");
  const running_tool second = start_later(L"", second_program(other), L"2");
  CHECK(let_go(second, L"2") == "on [second.exe\r\n]");
  CHECK_EQUAL(state->is_enabled, 1);
  CHECK_EQUAL(other_state->is_enabled, 0);
  CHECK(let_go(first, L"1") == "on [program.exe\r\n]");
}

// Who is killed can put nothing back; the next run in that folder finds no trace of it in the list, and takes the file
// away.
static void forgets_a_run_that_was_killed() {
  const standin_state* state = hold_wrapper(here().app);
  const running_tool first = start_later(L"", here().program, L"1");
  TerminateProcess(first.process, 7);
  CHECK_EQUAL(finish_tool(first).status, 7);
  const running_tool second = start_later(L"", second_program(here().app), L"2");
  CHECK(let_go(second, L"2") == "on [second.exe\r\n]");
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK(folder_contents(here().temp).empty());
  write_bytes(here().root + L"go1", "");
  CHECK(delete_when_ended(here().program));
}

// Somebody who has switched the feature on with a list of theirs is not switched off.
static void leaves_somebody_else_s_list_on() {
  const standin_state* state = hold_wrapper(here().app);
  const running_tool running = start_later(L"", here().program, L"1");
  const HMODULE module = GetModuleHandleW((here().app + L"opengl32.dll").c_str());
  const FARPROC address = module ? GetProcAddress(module, "EnablePerformanceOptimization") : nullptr;
  char* (*enable)(const char*) = nullptr;
  memcpy(&enable, &address, sizeof enable);
  if (!CHECK(enable != nullptr)) return;
  enable("C:\\somebody else's.txt");
  let_go(running, L"1");
  CHECK_EQUAL(state->is_enabled, 1);
  CHECK(std::string(state->list_path) == "C:\\somebody else's.txt");
}

// What makes a program wait for a debugger at the load of the library does so to the program, not to the tool.
static void is_not_held_by_the_debugging_aids() {
  const standin_state* state = hold_wrapper(here().app);
  write_option(L"OSW_DW_DeadLoopWhenLoadDll", 1);
  SetEnvironmentVariableW(L"Z4OSW_DEBUG_BREAK", L"1");
  std::string report;
  CHECK_EQUAL(run_state(L"", report).status, 0);
  SetEnvironmentVariableW(L"Z4OSW_DEBUG_BREAK", nullptr);
  CHECK(report == "on [program.exe\r\n] DeadLoopWhenLoadDll=1 debug break 1");
  CHECK_EQUAL(state->enable_count, 1);
  CHECK_EQUAL(state->enabler_saw_dead_loop, 0);
  CHECK_EQUAL(state->enabler_saw_debug_break, 0);
  CHECK_EQUAL(option_number(L"OSW_DW_DeadLoopWhenLoadDll"), 1);
}

std::vector<test> run_tests() {
  return {{"passes_arguments_on_exactly", passes_arguments_on_exactly},
          {"passes_the_exit_status_on", passes_the_exit_status_on},
          {"is_on_while_the_program_runs", is_on_while_the_program_runs},
          {"stays_resident", stays_resident},
          {"uses_the_copy_that_the_program_loads", uses_the_copy_that_the_program_loads},
          {"refuses_a_program_with_another_library", refuses_a_program_with_another_library},
          {"takes_a_list", takes_a_list},
          {"takes_a_list_by_its_name_in_the_current_folder", takes_a_list_by_its_name_in_the_current_folder},
          {"says_when_a_list_lacks_the_program", says_when_a_list_lacks_the_program},
          {"refuses_a_list_that_the_library_cannot_open", refuses_a_list_that_the_library_cannot_open},
          {"runs_what_a_list_cannot_name", runs_what_a_list_cannot_name},
          {"finds_a_program_as_a_shell_does", finds_a_program_as_a_shell_does},
          {"cleans_up_when_the_program_cannot_be_started", cleans_up_when_the_program_cannot_be_started},
          {"says_when_no_list_can_be_made", says_when_no_list_can_be_made},
          {"leaves_a_later_run_on", leaves_a_later_run_on},
          {"keeps_both_of_two_runs_on_the_list", keeps_both_of_two_runs_on_the_list},
          {"keeps_the_second_of_two_runs_on_the_list", keeps_the_second_of_two_runs_on_the_list},
          {"keeps_a_run_with_a_list_and_one_without", keeps_a_run_with_a_list_and_one_without},
          {"keeps_runs_in_two_folders_apart", keeps_runs_in_two_folders_apart},
          {"forgets_a_run_that_was_killed", forgets_a_run_that_was_killed},
          {"leaves_somebody_else_s_list_on", leaves_somebody_else_s_list_on},
          {"is_not_held_by_the_debugging_aids", is_not_held_by_the_debugging_aids}};
}
