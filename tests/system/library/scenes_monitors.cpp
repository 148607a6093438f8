// Windows over the seams between monitors, wherever those are: each monitor is a part.
#include <algorithm>

#include "layout.h"
#include "painting.h"
#include "travelling.h"

namespace {

bool is_covered(const RECT& area, const std::vector<RECT>& monitors) {
  long covered = 0;
  for (const RECT& monitor : monitors) covered += area_of(common_of(area, monitor));
  return covered == area_of(area);
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
  const RECT desktop = desktop_of(monitors);
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
  const RECT desktop = desktop_of(monitors);
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

void go_over(const std::vector<labelled_area>& areas) {
  std::vector<stop> stops;
  for (const labelled_area& each : areas) stops.push_back({each.name, place_of(each.area)});
  visit(stops, 6);
}

void over_monitors() {
  begin_scene(__func__);
  go_over(areas_over_seams());
}

void over_the_desktops_edges() {
  begin_scene(__func__);
  go_over(areas_over_edges());
}

}  // namespace

const scene_group monitor_scenes = {
    "monitors", {{"over_monitors", over_monitors}, {"over_the_desktops_edges", over_the_desktops_edges}}};
