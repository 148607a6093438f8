#include "list.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "driver/part_window.h"
#include "path_in_use.h"
#include "text.h"

namespace {

// A part's window has the part's number, from 0 on, plus this as its identifier.
constexpr int first_identifier = 100;

struct shown_part {
  int number;
  bool is_shown;
  RECT area;
};

// A window that is spread, which a frame with a title may be around.
struct spread_window {
  DWORD process;
  HWND window;
  std::vector<shown_part> parts;
};

// The system answers all of this itself: no program is asked, so that none can keep us waiting.
BOOL CALLBACK take_part(HWND child, LPARAM windows) {
  if (!is_part_window(child)) return TRUE;
  auto& found = *reinterpret_cast<std::vector<spread_window>*>(windows);
  const HWND window = GetParent(child);
  auto at = std::find_if(found.begin(), found.end(), [=](const spread_window& one) { return one.window == window; });
  if (at == found.end()) {
    DWORD process = 0;
    GetWindowThreadProcessId(child, &process);
    at = found.insert(found.end(), {process, window, {}});
  }
  shown_part part{GetDlgCtrlID(child) - first_identifier + 1, false, {}};
  GetWindowRect(child, &part.area);
  part.is_shown = (GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE) && !IsRectEmpty(&part.area);
  at->parts.push_back(part);
  return TRUE;
}

BOOL CALLBACK look_into(HWND window, LPARAM windows) {
  EnumChildWindows(window, take_part, windows);
  return TRUE;
}

std::vector<spread_window> spread_windows() {
  std::vector<spread_window> found;
  EnumWindows(look_into, reinterpret_cast<LPARAM>(&found));
  std::stable_sort(found.begin(), found.end(),
                   [](const spread_window& a, const spread_window& b) { return a.process < b.process; });
  for (spread_window& one : found) {
    std::sort(one.parts.begin(), one.parts.end(),
              [](const shown_part& a, const shown_part& b) { return a.number < b.number; });
  }
  return found;
}

void print_program(DWORD process) {
  const HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
  std::wstring path(32768, L'\0');
  DWORD length = static_cast<DWORD>(path.size());
  const bool is_known = handle && QueryFullProcessImageNameW(handle, 0, path.data(), &length);
  path.resize(is_known ? length : 0);
  if (handle) CloseHandle(handle);
  say(L"process " + std::to_wstring(process) + L", " +
      (is_known ? path : L"whose program Windows does not tell without more rights"));
  const std::wstring way = path_in_use(process);
  say(L"  path: " + (way.empty() ? L"its driver does not tell" : way));
}

void print_window(const spread_window& one) {
  std::wstring title(512, L'\0');
  title.resize(static_cast<size_t>(
      GetWindowTextW(GetAncestor(one.window, GA_ROOT), title.data(), static_cast<int>(title.size()))));
  RECT area{};
  GetWindowRect(one.window, &area);
  say(L"  window \"" + title + L"\", " + describe(area));
  for (const shown_part& part : one.parts) {
    say(L"    part " + std::to_wstring(part.number) + L"  " + (part.is_shown ? describe(part.area) : L"not shown"));
  }
}

}  // namespace

int print_spread_programs() {
  DWORD last = 0;
  const std::vector<spread_window> windows = spread_windows();
  for (const spread_window& one : windows) {
    if (one.process != last) print_program(one.process);
    last = one.process;
    print_window(one);
  }
  if (windows.empty()) say(L"no program on this desktop has a window that is spread");
  return status_ok;
}
