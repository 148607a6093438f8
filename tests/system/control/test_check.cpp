#include <windows.h>

#include <algorithm>

#include "files.h"
#include "option_values.h"
#include "place.h"
#include "standins.h"
#include "support/check.h"
#include "test_host.h"
#include "tests.h"
#include "tool.h"

static std::wstring wrapper() {
  return here().app + L"opengl32.dll";
}
static std::wstring driver() {
  return here().app + L"opengl32sys.dll";
}

static long long lines_with(const std::wstring& text, const std::wstring& head) {
  long long count = 0;
  for (size_t at = 0; at < text.size(); at = text.find(L'\n', at) + 1)
    count += text.compare(at, head.size(), head) == 0;
  return count;
}

// With a backslash before the last quote, as a shell's completion writes it.
static outcome check_app() {
  return run_tool(L"check " + quoted(here().app));
}

// Checks that one thing is wrong, and that the sentence about it has `part`.
static void check_fails(const wchar_t* part) {
  const outcome result = check_app();
  CHECK_EQUAL(result.status, 1);
  CHECK_EQUAL(result.err, L"");
  CHECK_EQUAL(lines_with(result.out, L"failed  "), 1);
  const size_t sentence = result.out.find(L"failed");
  if (sentence == std::wstring::npos || !contains(result.out.substr(sentence), part)) CHECK_EQUAL(result.out, part);
  // What is wrong, then what to do.
  CHECK(contains(result.out, L"; "));
}

static const std::wstring path_head = L"note    the path is ";
static const std::wstring sequential = L"one part after the other", threaded = L"a thread for each part";

// All as it must be, with the picture drawn on so many paths.
static outcome check_is_in_order(long long paths) {
  const outcome result = check_app();
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  if (!CHECK_EQUAL(lines_with(result.out, L"ok      "), 4 + paths)) CHECK_EQUAL(result.out, L"");
  CHECK_EQUAL(lines_with(result.out, L"failed  "), 0);
  CHECK_EQUAL(lines_with(result.out, path_head), 1);
  return result;
}

// What a driver that is slow on a loaded machine offers, the path follows.
static void draws_over_parts_as_a_program_would() {
  place_real_libraries(here().app);
  const outcome first = check_app();
  const bool is_fast = contains(first.out, L"the fast switch is offered");
  const outcome result = check_is_in_order(is_fast ? 2 : 1);
  CHECK(contains(result.out, L".dll draws, with OpenGL "));
  CHECK(contains(result.out, L"note    the driver says: a switch between two contexts of the host takes "));
  CHECK_EQUAL(lines_with(result.out, path_head + (is_fast ? sequential : threaded)), 1);
  CHECK_EQUAL(lines_with(result.out, L"ok      over 2 parts, " + sequential), is_fast);
  CHECK_EQUAL(lines_with(result.out, L"ok      over 2 parts, " + threaded), 1);
  CHECK(folder_contents(here().temp).empty());
  CHECK_EQUAL(static_cast<long long>(folder_contents(here().app).size()), 3);
}

static void tells_what_decides_the_path() {
  place_real_libraries(here().app);
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", L"1");
  CHECK(contains(check_is_in_order(2).out, path_head + sequential + L", as the driver offers"));
  write_option(L"OSW_DW_GLDispatchUseMtPath", 1);
  CHECK(contains(check_is_in_order(2).out, path_head + threaded + L", as OSW_DW_GLDispatchUseMtPath is 1"));
  delete_options_key();
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", L"0");
  CHECK(contains(check_is_in_order(1).out, path_head + threaded + L", as the driver does not offer"));
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", nullptr);
}

static void with_host(const std::wstring& host, void (*body)()) {
  wchar_t before[MAX_PATH] = L"";
  GetEnvironmentVariableW(L"OSW_DRIVER_HOST", before, MAX_PATH);
  SetEnvironmentVariableW(L"OSW_DRIVER_HOST", host.c_str());
  body();
  SetEnvironmentVariableW(L"OSW_DRIVER_HOST", *before ? before : nullptr);
}

static void finds_a_host_that_does_not_work() {
  place_real_libraries(here().app);
  with_host(L"no-such-library.dll", [] {
    check_fails(L"opengl32sys.dll could not make an OpenGL context for a window (it says: no host library was found");
  });
}

static void tells_of_a_slow_host() {
  const std::string host(here().root.begin(), here().root.end());
  place_real_libraries(here().app);
  place_test_host(host + "slow.dll");
  SetEnvironmentVariableW(L"OSW_TEST_HOST_DELAY", L"100");
  with_host(here().root + L"slow.dll", [] {
    const outcome result = check_is_in_order(1);
    CHECK(contains(result.out, here().root + L"slow.dll draws"));
    CHECK(contains(result.out, L"us; the fast switch is not offered"));
    CHECK(contains(result.out, path_head + threaded + L", as the driver does not offer"));
  });
  SetEnvironmentVariableW(L"OSW_TEST_HOST_DELAY", nullptr);
}

// The stand-in of the wrapper has none of the functions that draw.
static void finds_a_wrapper_that_does_not_draw() {
  place_real_libraries(here().app);
  write_bytes(wrapper(), standin_wrapper_bytes());
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", L"1");
  const outcome result = check_app();
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", nullptr);
  CHECK_EQUAL(result.status, 1);
  CHECK_EQUAL(lines_with(result.out, L"ok      "), 4);
  CHECK_EQUAL(lines_with(result.out, L"failed  " + wrapper() + L" lacks functions of OpenGL; "), 2);
}

static void checks_the_current_folder() {
  const outcome result = run_tool(L"check");
  CHECK_EQUAL(result.status, 1);
  CHECK_EQUAL(lines_with(result.out, L"failed  "), 2);
  CHECK(contains(result.out, here().work + L"opengl32.dll is missing"));
  CHECK(contains(result.out, here().work + L"opengl32sys.dll is missing; \"oswctl run\" places"));
}

static void finds_a_bad_wrapper() {
  const std::string good = standin_wrapper_bytes();
  write_bytes(wrapper(), with_machine(good, 0x14C));
  check_fails(L"32-bit");
  write_bytes(wrapper(), with_machine(good, 0xAA64));
  check_fails(L"another kind of processor");
  write_bytes(wrapper(), good.substr(0, good.size() / 2));
  check_fails(L"damaged");
  write_bytes(wrapper(), "text");
  check_fails(L"damaged or no Windows library");
  write_bytes(wrapper(), "");
  check_fails(L"damaged or no Windows library");
  write_bytes(wrapper(), read_bytes(here().program));
  check_fails(L"a program, not a library");
  write_bytes(wrapper(), standin_driver_bytes());
  check_fails(L"another OpenGL library, not the span wrapper");
  DeleteFileW(wrapper().c_str());
  check_fails(L"opengl32.dll is missing");
}

static void finds_a_bad_driver() {
  const std::string good = standin_driver_bytes();
  write_bytes(driver(), with_machine(good, 0x14C));
  check_fails(L"32-bit");
  write_bytes(driver(), good.substr(0, good.size() / 2));
  check_fails(L"damaged");
  write_bytes(driver(), standin_wrapper_bytes());
  check_fails(L"the span wrapper itself");
  DeleteFileW(driver().c_str());
  check_fails(L"opengl32sys.dll is missing");
}

// The headers may say anything.
static void survives_damaged_headers() {
  const std::string good = standin_wrapper_bytes();
  for (size_t at = 0; at < 1024; at += 2) {
    std::string bad = good;
    bad[at] = static_cast<char>(~bad[at]);
    bad[at + 1] = static_cast<char>(~bad[at + 1]);
    // Every one of these in a process of its own would take minutes, so they go as far apart as the structures do.
    if (at % 62 != 0) continue;
    write_bytes(wrapper(), bad);
    const outcome result = check_app();
    CHECK(result.status <= 1);
    // What passes for a wrapper is found to draw nothing.
    const bool is_refused = !contains(result.out, L"ok      " + wrapper());
    const bool is_right = CHECK_EQUAL(lines_with(result.out, L"ok      "), is_refused ? 3 : 4);
    if (!CHECK(lines_with(result.out, L"failed  " + wrapper()) > 0) || !is_right) CHECK_EQUAL(result.out, L"");
  }
}

static void tries_the_private_entries() {
  // Over parts the stand-in draws nothing in any case.
  DeleteFileW(wrapper().c_str());
  const struct {
    const wchar_t *fault, *part;
  } faults[] = {
      {L"lacks-two", L"does not offer wglGetGLContextZ4, glDrawableSizeZ4;"},
      {L"answers-small", L"wglFastSwitchContextZ4, wglGetGLContextZ4, glViewportOffsetZ4, glDrawableSizeZ4;"},
      {L"no-context", L"could not make an OpenGL context"},
      {L"crash", L"crashed while it was tried"},
      {L"exit", L"ended the process that tried it"},
      {L"no-load", L"cannot be loaded"},
      {L"wrong-picture", L"did not draw the picture"},
      {L"no-hardware", L"Windows draws without the graphics hardware"},
      {L"hang", L"gave no answer for 20 seconds"},
  };
  for (const auto& one : faults) {
    SetEnvironmentVariableW(L"STANDIN_DRIVER", one.fault);
    const outcome result = check_app();
    CHECK_EQUAL(result.status, 1);
    CHECK_EQUAL(lines_with(result.out, L"failed  "), 2);
    if (!contains(result.out, one.part)) CHECK_EQUAL(result.out, one.part);
  }
  SetEnvironmentVariableW(L"STANDIN_DRIVER", nullptr);
}

std::vector<test> check_tests() {
  return {{"draws_over_parts_as_a_program_would", draws_over_parts_as_a_program_would},
          {"tells_what_decides_the_path", tells_what_decides_the_path},
          {"finds_a_host_that_does_not_work", finds_a_host_that_does_not_work},
          {"tells_of_a_slow_host", tells_of_a_slow_host},
          {"finds_a_wrapper_that_does_not_draw", finds_a_wrapper_that_does_not_draw},
          {"checks_the_current_folder", checks_the_current_folder},
          {"finds_a_bad_wrapper", finds_a_bad_wrapper},
          {"finds_a_bad_driver", finds_a_bad_driver},
          {"survives_damaged_headers", survives_damaged_headers},
          {"tries_the_private_entries", tries_the_private_entries}};
}
