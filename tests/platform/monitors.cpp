// Monitors, and the calls on rectangles.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "platform/desktop.h"
#include "state.h"

namespace platform {

namespace {

std::mutex lock;
std::vector<monitor> current;
int metric = -1;

// A monitor's handle is its number from 1, shifted to where no small number is a handle by chance.
constexpr UINT_PTR handle_base = 0x10000;

HMONITOR handle_of(std::size_t index) {
  return reinterpret_cast<HMONITOR>(handle_base + (index + 1) * 2);
}

RECT virtual_screen() {
  RECT all = {};
  for (const monitor& one : current) UnionRect(&all, &all, &one.area);
  return all;
}

const monitor* primary() {
  for (const monitor& one : current) {
    if (one.primary) return &one;
  }
  return current.empty() ? nullptr : &current.front();
}

int metric_of(int index) {
  const RECT all = virtual_screen();
  const monitor* main = primary();
  switch (index) {
    case SM_CXSCREEN:
      return main == nullptr ? 0 : main->area.right - main->area.left;
    case SM_CYSCREEN:
      return main == nullptr ? 0 : main->area.bottom - main->area.top;
    case SM_XVIRTUALSCREEN:
      return all.left;
    case SM_YVIRTUALSCREEN:
      return all.top;
    case SM_CXVIRTUALSCREEN:
      return all.right - all.left;
    case SM_CYVIRTUALSCREEN:
      return all.bottom - all.top;
    case SM_CMONITORS:
      return metric >= 0 ? metric : static_cast<int>(current.size());
    default:
      return 0;
  }
}

}  // namespace

void set_monitors(const std::vector<monitor>& monitors) {
  const std::lock_guard guard(lock);
  current = monitors;
}

void set_monitor_metric(int count) {
  const std::lock_guard guard(lock);
  metric = count;
}

void reset_monitors() {
  set_monitors({{{0, 0, 1920, 1080}, true}});
  set_monitor_metric(-1);
}

}  // namespace platform

using namespace platform;

extern "C" int GetSystemMetrics(int index) {
  const std::lock_guard guard(lock);
  return metric_of(index);
}

extern "C" BOOL EnumDisplayMonitors(HDC, LPCRECT, MONITORENUMPROC callback, LPARAM data) {
  if (ordered_to_fail("EnumDisplayMonitors")) return FALSE;
  std::unique_lock guard(lock);
  const std::vector<monitor> monitors = current;
  guard.unlock();
  for (std::size_t i = 0; i < monitors.size(); ++i) {
    RECT area = monitors[i].area;
    if (!callback(handle_of(i), nullptr, &area, data)) return FALSE;
  }
  return TRUE;
}

extern "C" BOOL GetMonitorInfoA(HMONITOR handle, LPMONITORINFO info) {
  if (ordered_to_fail("GetMonitorInfoA")) return FALSE;
  const std::lock_guard guard(lock);
  const bool extended = info->cbSize == sizeof(MONITORINFOEXA);
  if (!extended && info->cbSize != sizeof(MONITORINFO)) return FALSE;
  for (std::size_t i = 0; i < current.size(); ++i) {
    if (handle_of(i) != handle || current[i].info_fails) continue;
    info->rcMonitor = current[i].area;
    // A taskbar's height less, so that nobody takes one for the other.
    info->rcWork = current[i].area;
    info->rcWork.bottom -= 40;
    info->dwFlags = &current[i] == primary() ? MONITORINFOF_PRIMARY : 0;
    if (!extended) return TRUE;
    char* device = static_cast<MONITORINFOEXA*>(info)->szDevice;
    std::snprintf(device, sizeof MONITORINFOEXA::szDevice, "\\\\.\\DISPLAY%zu", i + 1);
    return TRUE;
  }
  return FALSE;
}

extern "C" BOOL IsRectEmpty(const RECT* rect) {
  return rect->left >= rect->right || rect->top >= rect->bottom;
}

extern "C" BOOL UnionRect(LPRECT out, const RECT* first, const RECT* second) {
  const bool first_empty = IsRectEmpty(first);
  const bool second_empty = IsRectEmpty(second);
  if (first_empty && second_empty) {
    *out = {};
    return FALSE;
  }
  if (first_empty || second_empty) {
    *out = first_empty ? *second : *first;
    return TRUE;
  }
  *out = {std::min(first->left, second->left), std::min(first->top, second->top), std::max(first->right, second->right),
          std::max(first->bottom, second->bottom)};
  return TRUE;
}

extern "C" BOOL IntersectRect(LPRECT out, const RECT* first, const RECT* second) {
  const RECT both = {std::max(first->left, second->left), std::max(first->top, second->top),
                     std::min(first->right, second->right), std::min(first->bottom, second->bottom)};
  const bool empty = IsRectEmpty(first) || IsRectEmpty(second) || IsRectEmpty(&both);
  *out = empty ? RECT{} : both;
  return !empty;
}
