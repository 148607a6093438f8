#include "parts.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char* part_class = "__osw_child_window";
constexpr int first_identifier = 100;

BOOL CALLBACK add_part(HWND hwnd, LPARAM found) {
  char name[64];
  if (!GetClassNameA(hwnd, name, sizeof name) || strcmp(name, part_class) != 0) return TRUE;
  part_window part = {GetDlgCtrlID(hwnd) - first_identifier, hwnd, {}, false};
  const HWND owner = GetParent(hwnd);
  GetWindowRect(hwnd, &part.rect);
  MapWindowPoints(nullptr, owner, reinterpret_cast<POINT*>(&part.rect), 2);
  part.visible = (GetWindowLongA(hwnd, GWL_STYLE) & WS_VISIBLE) && !IsRectEmpty(&part.rect);
  reinterpret_cast<std::vector<part_window>*>(found)->push_back(part);
  return TRUE;
}

}  // namespace

std::vector<part_window> parts_of(HWND hwnd) {
  std::vector<part_window> parts;
  EnumChildWindows(hwnd, add_part, reinterpret_cast<LPARAM>(&parts));
  // The parts of other windows inside of this one are not its own.
  parts.erase(
      std::remove_if(parts.begin(), parts.end(), [&](const part_window& part) { return GetParent(part.hwnd) != hwnd; }),
      parts.end());
  std::sort(parts.begin(), parts.end(), [](const part_window& a, const part_window& b) { return a.number < b.number; });
  return parts;
}

long visible_area(const std::vector<part_window>& parts) {
  long area = 0;
  for (const part_window& part : parts) {
    if (part.visible) area += (part.rect.right - part.rect.left) * (part.rect.bottom - part.rect.top);
  }
  return area;
}
