// The stand-in for <windows.h>: windows of other processes, and what of them can be had.
#include "platform/desktop.h"
#include "platform/faults.h"
#include "support/platform_test.h"

namespace {

struct other_process_test : platform_test {};
using other_process_death_test = other_process_test;

DWORD process_of(HWND hwnd) {
  DWORD id = 1;
  GetWindowThreadProcessId(hwnd, &id);
  return id;
}

TEST_F(other_process_test, a_window_is_this_process_s_until_it_is_given_away) {
  platform::set_process_id(77);
  const HWND own = platform::create_window();
  const HWND given = platform::create_window();
  EXPECT_EQ(process_of(given), 77u);
  platform::give_to_process(given, 78);
  EXPECT_EQ(process_of(given), 78u);
  EXPECT_EQ(process_of(own), 77u);
  EXPECT_EQ(GetWindowThreadProcessId(given, nullptr), GetCurrentThreadId());
  EXPECT_TRUE(DestroyWindow(own));
  EXPECT_EQ(process_of(own), 0u);
}

TEST_F(other_process_test, its_properties_are_everybody_s) {
  const HWND given = platform::create_window();
  int mine = 0;
  EXPECT_TRUE(SetPropA(given, "before", &mine));
  platform::give_to_process(given, 78);
  EXPECT_EQ(GetPropA(given, "before"), &mine);
  EXPECT_TRUE(SetPropA(given, "after", &mine));
  EXPECT_EQ(RemovePropA(given, "after"), &mine);
}

TEST_F(other_process_test, its_procedure_and_style_are_its_own) {
  const HWND given = platform::create_window({.style = WS_POPUP});
  platform::give_to_process(given, 78);
  SetLastError(0);
  EXPECT_EQ(SetWindowLongPtrA(given, GWLP_WNDPROC, 0x1234), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(SetWindowLongPtrA(given, GWL_STYLE, WS_CHILD), 0);
  EXPECT_EQ(platform::window(given).procedure, DefWindowProcA);
  EXPECT_EQ(platform::window(given).style, WS_POPUP);
}

TEST_F(other_process_death_test, a_window_that_is_not_there_is_given_to_nobody) {
  EXPECT_DEATH(platform::give_to_process(reinterpret_cast<HWND>(5), 78), "a window that is not there");
}

}  // namespace
