#include "layout.h"

#include <algorithm>

#include "parts.h"
#include "processes.h"
#include "scene.h"
#include "support/check.h"

namespace {

BOOL CALLBACK add_area(HMONITOR, HDC, LPRECT area, LPARAM areas) {
  reinterpret_cast<std::vector<RECT>*>(areas)->push_back(*area);
  return TRUE;
}

// The left or upper half is the smaller one of an odd size.
std::vector<RECT> pieces_of(const RECT& whole, DWORD count, bool side_by_side) {
  const LONG x = whole.left + (whole.right - whole.left) / 2, y = whole.top + (whole.bottom - whole.top) / 2;
  const RECT left = {whole.left, whole.top, x, whole.bottom}, right = {x, whole.top, whole.right, whole.bottom};
  const RECT upper = {whole.left, whole.top, whole.right, y}, lower = {whole.left, y, whole.right, whole.bottom};
  if (count == 2) return side_by_side ? std::vector<RECT>{left, right} : std::vector<RECT>{upper, lower};
  if (count == 4)
    return {common_of(left, upper), common_of(right, upper), common_of(left, lower), common_of(right, lower)};
  return {whole};
}

std::vector<RECT> part_areas() {
  std::vector<RECT> areas = monitor_areas();
  if (option_in_force("OSW_DW_FakeAsOneMonitor", 0)) areas = {desktop_of(areas)};
  if (areas.size() > 1 || !option_in_force("OSW_DW_SplitOneMonitor", 0)) return areas;
  return pieces_of(areas[0], option_in_force("OSW_DW_SplitParts", 4),
                   option_in_force("OSW_DW_SplitTwoPartsHorizontal", 1) != 0);
}

// What lies beyond an edge of the desktop belongs to the part at that edge.
RECT share_of(const RECT& client, const RECT& part, const RECT& desktop) {
  RECT share = common_of(client, part);
  if (IsRectEmpty(&share)) {
    const LONG size = option_in_force("OSW_DW_ForceUnusedChildWindowSize1X1", 0) ? 1 : 0;
    return {part.left, part.top, part.left + size, part.top + size};
  }
  if (part.left == desktop.left) share.left = std::min(share.left, client.left);
  if (part.top == desktop.top) share.top = std::min(share.top, client.top);
  if (part.right == desktop.right) share.right = std::max(share.right, client.right);
  if (part.bottom == desktop.bottom) share.bottom = std::max(share.bottom, client.bottom);
  return share;
}

std::string words_of(const RECT& rect) {
  return std::to_string(rect.left) + "," + std::to_string(rect.top) + ".." + std::to_string(rect.right) + "," +
         std::to_string(rect.bottom);
}

}  // namespace

std::vector<RECT> monitor_areas() {
  std::vector<RECT> areas;
  EnumDisplayMonitors(nullptr, nullptr, add_area, reinterpret_cast<LPARAM>(&areas));
  return areas;
}

RECT desktop_of(const std::vector<RECT>& monitors) {
  RECT all = {};
  for (const RECT& area : monitors) {
    const RECT before = all;
    UnionRect(&all, &before, &area);
  }
  return all;
}

long area_of(const RECT& rect) {
  return (rect.right - rect.left) * (rect.bottom - rect.top);
}

RECT common_of(const RECT& a, const RECT& b) {
  RECT common;
  IntersectRect(&common, &a, &b);
  return common;
}

std::vector<RECT> expected_layout(HWND hwnd) {
  const place at = client_place(hwnd);
  std::vector<RECT> layout = part_areas();
  if (option_in_force("OSW_DW_UseSplitParentMethod", 0)) {
    return pieces_of({0, 0, at.width, at.height}, static_cast<DWORD>(layout.size()), true);
  }
  const RECT client = {at.left, at.top, at.left + at.width, at.top + at.height};
  const RECT desktop = desktop_of(layout);
  for (RECT& each : layout) {
    each = share_of(client, each, desktop);
    OffsetRect(&each, -at.left, -at.top);
  }
  return layout;
}

void check_layout(HWND hwnd) {
  if (expected_parts() == 0) return;
  const std::vector<RECT> wanted = expected_layout(hwnd);
  const std::vector<part_window> parts = parts_of(hwnd);
  CHECK_EQUAL(parts.size(), wanted.size());
  for (size_t i = 0; i < std::min(parts.size(), wanted.size()); ++i) {
    const std::string words = "part " + std::to_string(i) + " has " + words_of(parts[i].rect) + ", not ";
    if (!EqualRect(&parts[i].rect, &wanted[i])) fail(__FILE__, __LINE__, words.c_str(), words_of(wanted[i]).c_str());
  }
}
