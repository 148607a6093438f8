// Windows over the seams between monitors, wherever those are: each monitor is a part.
#include <algorithm>

#include "painting.h"
#include "parts.h"
#include "travelling.h"

namespace {

BOOL CALLBACK add_area(HMONITOR, HDC, LPRECT area, LPARAM areas) {
  reinterpret_cast<std::vector<RECT>*>(areas)->push_back(*area);
  return TRUE;
}

std::vector<RECT> monitor_areas() {
  std::vector<RECT> areas;
  EnumDisplayMonitors(nullptr, nullptr, add_area, reinterpret_cast<LPARAM>(&areas));
  return areas;
}

RECT united(const std::vector<RECT>& areas) {
  RECT all = {};
  for (const RECT& area : areas) {
    const RECT before = all;
    UnionRect(&all, &before, &area);
  }
  return all;
}

long size_of(const RECT& area) {
  return (area.right - area.left) * (area.bottom - area.top);
}

RECT common_of(const RECT& a, const RECT& b) {
  RECT common;
  IntersectRect(&common, &a, &b);
  return common;
}

// What lies beyond an edge of the desktop belongs to the monitor at that edge.
RECT expected_share(const RECT& client, const RECT& monitor, const RECT& desktop) {
  RECT share = common_of(client, monitor);
  if (IsRectEmpty(&share)) return {monitor.left, monitor.top, monitor.left, monitor.top};
  if (monitor.left == desktop.left) share.left = std::min(share.left, client.left);
  if (monitor.top == desktop.top) share.top = std::min(share.top, client.top);
  if (monitor.right == desktop.right) share.right = std::max(share.right, client.right);
  if (monitor.bottom == desktop.bottom) share.bottom = std::max(share.bottom, client.bottom);
  return share;
}

void check_share(const part_window& part, const RECT& wanted) {
  CHECK_EQUAL(part.rect.left, wanted.left);
  CHECK_EQUAL(part.rect.top, wanted.top);
  CHECK_EQUAL(part.rect.right, wanted.right);
  CHECK_EQUAL(part.rect.bottom, wanted.bottom);
}

void check_shares(HWND hwnd) {
  if (expected_parts() == 0) return;
  const std::vector<RECT> monitors = monitor_areas();
  const std::vector<part_window> parts = parts_of(hwnd);
  CHECK_EQUAL(parts.size(), monitors.size());
  const place at = client_place(hwnd);
  const RECT client = {at.left, at.top, at.left + at.width, at.top + at.height};
  for (size_t i = 0; i < std::min(parts.size(), monitors.size()); ++i) {
    CHECK_EQUAL(parts[i].number, i);
    RECT wanted = expected_share(client, monitors[i], united(monitors));
    OffsetRect(&wanted, -at.left, -at.top);
    check_share(parts[i], wanted);
  }
}

bool is_covered(const RECT& area, const std::vector<RECT>& monitors) {
  long covered = 0;
  for (const RECT& monitor : monitors) covered += size_of(common_of(area, monitor));
  return covered == size_of(area);
}

struct labelled_area {
  std::string name;
  RECT area;
};

// Around the middle of the edge that the two share, if they do.
void add_seam(std::vector<labelled_area>* found, const std::vector<RECT>& monitors, size_t a, size_t b) {
  const RECT &first = monitors[a], &second = monitors[b];
  const LONG left = std::max(first.left, second.left), right = std::min(first.right, second.right);
  const LONG top = std::max(first.top, second.top), bottom = std::min(first.bottom, second.bottom);
  RECT area;
  if (left == right && top < bottom) {
    area = {left - 170, top + 20, left + 143, bottom - 31};
  } else if (top == bottom && left < right) {
    area = {left + 25, top - 120, right - 18, top + 133};
  } else {
    return;
  }
  found->push_back({"over " + std::to_string(a) + " and " + std::to_string(b), area});
}

// Places over each seam, around each corner at which monitors meet, and over nearly all of the desktop; no place has a
// pixel without a monitor.
std::vector<labelled_area> areas_over_seams() {
  const std::vector<RECT> monitors = monitor_areas();
  const RECT desktop = united(monitors);
  std::vector<labelled_area> found;
  for (size_t a = 0; a < monitors.size(); ++a) {
    for (size_t b = a + 1; b < monitors.size(); ++b) add_seam(&found, monitors, a, b);
    const LONG x = monitors[a].left, y = monitors[a].top;
    found.push_back({"around the corner of " + std::to_string(a), {x - 151, y - 99, x + 172, y + 133}});
  }
  found.push_back({"over nearly all", {desktop.left + 33, desktop.top + 21, desktop.right - 41, desktop.bottom - 17}});
  const auto has_gap = [&](const labelled_area& each) { return !is_covered(each.area, monitors); };
  found.erase(std::remove_if(found.begin(), found.end(), has_gap), found.end());
  return found;
}

// Over each edge of the desktop, from the last of the monitors that lie at it.
std::vector<labelled_area> areas_over_edges() {
  const std::vector<RECT> monitors = monitor_areas();
  const RECT desktop = united(monitors);
  std::vector<labelled_area> found = {{"left", {}}, {"top", {}}, {"right", {}}, {"bottom", {}}};
  for (const RECT& at : monitors) {
    const LONG x = at.left + 60, y = at.top + 60, right = at.right - 40, bottom = at.bottom - 50;
    if (at.left == desktop.left) found[0].area = {at.left - 180, y, at.left + 160, bottom};
    if (at.top == desktop.top) found[1].area = {x, at.top - 130, right, at.top + 150};
    if (at.right == desktop.right) found[2].area = {at.right - 210, y, at.right + 190, bottom};
    if (at.bottom == desktop.bottom) found[3].area = {x, at.bottom - 140, right, at.bottom + 110};
  }
  return found;
}

place place_of(const RECT& area) {
  return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

// From each place to the next by steps, which changes its size too.
void go_over(const std::vector<labelled_area>& areas, int first_number) {
  const gl_window window = make_window(place_of(areas[0].area));
  check_shares(window.hwnd);
  for (size_t i = 0; i < areas.size(); ++i) {
    if (i > 0) travel(window, place_of(areas[i - 1].area), place_of(areas[i].area), 6);
    check_shares(window.hwnd);
    paint_and_show(window, first_number + static_cast<int>(i), areas[i].name.c_str());
  }
  destroy_window(window);
}

void over_monitors() {
  begin_scene(__func__);
  go_over(areas_over_seams(), 0);
}

void over_the_desktops_edges() {
  begin_scene(__func__);
  go_over(areas_over_edges(), 1);
}

}  // namespace

const scene_group monitor_scenes = {
    "monitors", {{"over_monitors", over_monitors}, {"over_the_desktops_edges", over_the_desktops_edges}}};
