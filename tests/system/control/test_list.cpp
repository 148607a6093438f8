#include <windows.h>

#include "files.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

// A window as the library makes them for a part.
static HWND make_part(HWND window, int number, const RECT& area, DWORD visible) {
  return CreateWindowExA(0, "__osw_child_window", "", WS_CHILD | visible, area.left, area.top, area.right - area.left,
                         area.bottom - area.top, window, reinterpret_cast<HMENU>(intptr_t{100 + number}), nullptr,
                         nullptr);
}

static std::wstring list() {
  const outcome result = run_tool(L"list");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  return result.out;
}

static void says_that_nothing_is_spread() {
  CHECK_EQUAL(list(), L"no program on this desktop has a window that is spread\n");
}

static void lists_windows_and_their_parts() {
  WNDCLASSA part_class{};
  part_class.lpfnWndProc = DefWindowProcA;
  part_class.lpszClassName = "__osw_child_window";
  RegisterClassA(&part_class);
  const HWND frame =
      CreateWindowExW(0, L"STATIC", L"\u30BD a title", WS_POPUP, 20, 30, 400, 300, nullptr, nullptr, nullptr, nullptr);
  const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 10, 10, 200, 100, frame, nullptr, nullptr, nullptr);
  CHECK(make_part(window, 1, {100, 0, 200, 100}, WS_VISIBLE) != nullptr);
  make_part(window, 0, {0, 0, 100, 100}, WS_VISIBLE);
  make_part(window, 2, {0, 0, 100, 100}, 0);
  make_part(window, 3, {0, 0, 0, 0}, WS_VISIBLE);
  const std::wstring found = list();
  DestroyWindow(frame);
  wchar_t own[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, own, MAX_PATH);
  CHECK_EQUAL(
      found,
      L"process " + std::to_wstring(GetCurrentProcessId()) + L", " + own +
          L"\n  path: its driver does not tell\n  window \"\u30BD a title\", 200 x 100 at 30,40\n    part 1  100 x "
          L"100 at 30,40\n    part 2  100 x 100 at 130,40\n    part 3  not shown\n    part 4  not shown\n");
}

// Starts the program of this place over two parts, and gives what is listed once it has drawn.
static std::wstring list_a_program_that_draws() {
  const std::wstring ready = here().root + L"ready", go = here().root + L"go";
  DeleteFileW(ready.c_str());
  DeleteFileW(go.c_str());
  const running_tool running =
      start_tool(L"run --parts 2 -- " + quoted(here().program) + L" draw " + quoted(ready) + L" " + quoted(go));
  CHECK(wait_for_file(ready));
  const std::wstring found = list();
  write_bytes(go, "");
  CHECK_EQUAL(finish_tool(running).status, 0);
  return found;
}

static void expect_program_on(const std::wstring& path) {
  const std::wstring found = list_a_program_that_draws();
  const std::wstring wanted = here().program + L"\n  path: " + path + L"\n  window \"drawn\"";
  if (!CHECK(contains(found, wanted)) || !CHECK(contains(found, L"    part 2  "))) CHECK_EQUAL(found, wanted);
}

static void lists_the_path_of_a_program() {
  place_real_libraries(here().app);
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", L"1");
  expect_program_on(L"one part after the other");
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", L"0");
  expect_program_on(L"a thread for each part");
  SetEnvironmentVariableW(L"OSW_DRIVER_FAST_SWITCH", nullptr);
}

std::vector<test> list_tests() {
  return {{"says_that_nothing_is_spread", says_that_nothing_is_spread},
          {"lists_windows_and_their_parts", lists_windows_and_their_parts},
          {"lists_the_path_of_a_program", lists_the_path_of_a_program}};
}
