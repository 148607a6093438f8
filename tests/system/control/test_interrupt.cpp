#include <windows.h>

#include "files.h"
#include "option_values.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static constexpr DWORD ended_by_ctrl_c = 0xC000013A;

static std::wstring ready() {
  return here().root + L"ready";
}
static std::wstring go() {
  return here().root + L"go";
}

static std::wstring run_role(const std::wstring& program, const std::wstring& role) {
  return L"run --parts 2 --vertical -- " + quoted(program) + L" " + role + L" " + ready() + L" " + go() + L" 5";
}

static void check_all_put_back(const standin_state* state) {
  CHECK_EQUAL(state->enable_count, 1);
  CHECK_EQUAL(state->disable_count, 1);
  CHECK_EQUAL(state->is_enabled, 0);
  CHECK_EQUAL(state->enabler_detaches, 0);
  CHECK(folder_contents(here().temp).empty());
  CHECK(!options_key_exists());
}

// The program gets the same Ctrl-C and ends by it; the tool outlives it and puts everything back.
static void puts_back_after_ctrl_c() {
  const standin_state* state = hold_wrapper(here().app);
  const outcome result = finish_tool(start_tool_and_interrupt(run_role(here().program, L"yielding"), ready()));
  CHECK_EQUAL(result.status, 33);
  CHECK_EQUAL(result.err, L"");
  check_all_put_back(state);
}

// A program that makes something else of Ctrl-C keeps the feature until it ends.
static void waits_for_a_program_that_goes_on() {
  const standin_state* state = hold_wrapper(here().app);
  const running_tool running = start_tool_and_interrupt(run_role(here().program, L"stubborn"), ready());
  CHECK(wait_for_file(ready() + L".interrupted"));
  Sleep(500);
  CHECK_EQUAL(WaitForSingleObject(running.process, 0), WAIT_TIMEOUT);
  CHECK_EQUAL(state->is_enabled, 1);
  write_bytes(go(), "");
  const outcome result = finish_tool(running);
  CHECK_EQUAL(result.status, 5);
  check_all_put_back(state);
}

// A program with windows of its own has no console to be interrupted in.
static void leaves_a_program_with_windows_alone() {
  const standin_state* state = hold_wrapper(here().app);
  const std::wstring program = here().app + L"windowed.exe";
  write_bytes(program, with_subsystem(read_bytes(here().program), IMAGE_SUBSYSTEM_WINDOWS_GUI));
  const outcome result = finish_tool(start_tool_and_interrupt(run_role(program, L"stubborn"), ready()));
  CHECK_EQUAL(result.status, ended_by_ctrl_c);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, L"windowed.exe goes on"));
  check_all_put_back(state);
  // A running program's file cannot be deleted.
  CHECK(!DeleteFileW(program.c_str()));
  write_bytes(go(), "");
  CHECK(delete_when_ended(program));
}

std::vector<test> interrupt_tests() {
  return {{"puts_back_after_ctrl_c", puts_back_after_ctrl_c},
          {"waits_for_a_program_that_goes_on", waits_for_a_program_that_goes_on},
          {"leaves_a_program_with_windows_alone", leaves_a_program_with_windows_alone}};
}
