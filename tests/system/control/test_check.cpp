#include <windows.h>

#include <algorithm>

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

static void finds_all_in_order() {
  const outcome result = check_app();
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  CHECK_EQUAL(lines_with(result.out, L"ok      "), 3);
  CHECK_EQUAL(lines_with(result.out, L""), 3);
}

static void checks_the_current_folder() {
  const outcome result = run_tool(L"check");
  CHECK_EQUAL(result.status, 1);
  CHECK_EQUAL(lines_with(result.out, L"failed  "), 2);
  CHECK(contains(result.out, here().work + L"opengl32.dll is missing"));
  CHECK(contains(result.out, here().work + L"opengl32sys.dll is missing"));
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
    CHECK_EQUAL(lines_with(result.out, L""), 3);
  }
}

static void tries_the_private_entries() {
  const struct {
    const wchar_t *fault, *part;
  } faults[] = {
      {L"lacks-two", L"does not offer wglGetGLContextZ4, glDrawableSizeZ4;"},
      {L"answers-small", L"wglFastSwitchContextZ4, wglGetGLContextZ4, glViewportOffsetZ4, glDrawableSizeZ4;"},
      {L"no-context", L"could not make an OpenGL context"},
      {L"crash", L"crashed while it was tried"},
      {L"exit", L"ended the process that tried it"},
      {L"no-load", L"cannot be loaded"},
      {L"hang", L"gave no answer for 20 seconds"},
  };
  for (const auto& one : faults) {
    SetEnvironmentVariableW(L"STANDIN_DRIVER", one.fault);
    check_fails(one.part);
  }
  SetEnvironmentVariableW(L"STANDIN_DRIVER", nullptr);
}

std::vector<test> check_tests() {
  return {{"finds_all_in_order", finds_all_in_order},
          {"checks_the_current_folder", checks_the_current_folder},
          {"finds_a_bad_wrapper", finds_a_bad_wrapper},
          {"finds_a_bad_driver", finds_a_bad_driver},
          {"survives_damaged_headers", survives_damaged_headers},
          {"tries_the_private_entries", tries_the_private_entries}};
}
