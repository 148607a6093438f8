#include "status.h"

#include <algorithm>
#include <vector>

#include "option_list.h"
#include "registry.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "text.h"

namespace {

constexpr int picture_width = 64;
// A character is about twice as high as it is wide.
constexpr int character_shape = 2;
constexpr int tallest_picture = 40;

struct picture {
  RECT desktop;
  int width, height;  // in characters
  std::vector<std::wstring> lines;
};

LONG width_of(const RECT& area) {
  return area.right - area.left;
}

LONG height_of(const RECT& area) {
  return area.bottom - area.top;
}

std::wstring counted(int count, const std::wstring& thing) {
  return std::to_wstring(count) + L" " + thing + (count == 1 ? L"" : L"s");
}

picture empty_picture(const RECT& desktop) {
  const LONG width = std::max<LONG>(width_of(desktop), 1), height = std::max<LONG>(height_of(desktop), 1);
  const int wanted = static_cast<int>(int64_t{picture_width} * height / (int64_t{width} * character_shape));
  picture result{desktop, picture_width, std::clamp(wanted, 4, tallest_picture), {}};
  result.lines.assign(static_cast<size_t>(result.height) + 1, std::wstring(picture_width + 1, L' '));
  return result;
}

wchar_t& at(picture* into, int x, int y) {
  return into->lines[static_cast<size_t>(y)][static_cast<size_t>(x)];
}

int scaled(LONG value, LONG whole, int characters) {
  return static_cast<int>((int64_t{value} * characters + whole / 2) / std::max<LONG>(whole, 1));
}

void add_edge(wchar_t* character, wchar_t edge) {
  *character = *character == L' ' || *character == edge ? edge : L'+';
}

// Edges that two areas have in common fall on the same characters.
void draw_area(picture* into, const RECT& area, int number) {
  const int left = scaled(area.left - into->desktop.left, width_of(into->desktop), into->width);
  const int right = scaled(area.right - into->desktop.left, width_of(into->desktop), into->width);
  const int top = scaled(area.top - into->desktop.top, height_of(into->desktop), into->height);
  const int bottom = scaled(area.bottom - into->desktop.top, height_of(into->desktop), into->height);
  for (int x = left; x <= right; ++x) {
    for (const int y : {top, bottom}) add_edge(&at(into, x, y), L'-');
  }
  for (int y = top; y <= bottom; ++y) {
    for (const int x : {left, right}) add_edge(&at(into, x, y), L'|');
  }
  const std::wstring text = std::to_wstring(number);
  const int middle = (left + right) / 2 - static_cast<int>(text.size() - 1) / 2;
  for (size_t i = 0; i < text.size(); ++i) at(into, middle + static_cast<int>(i), (top + bottom) / 2) = text[i];
}

void print_monitors() {
  say(counted(__osw_part_count, L"monitor"));
  for (int i = 0; i < __osw_part_count; ++i) {
    const __osw_monitor& monitor = __osw_monitor_table[i];
    const bool is_primary = monitor.info.dwFlags & MONITORINFOF_PRIMARY;
    say(L"  " + std::to_wstring(i + 1) + L"  " + describe(monitor.rect) + (is_primary ? L", primary" : L""));
  }
}

void print_parts() {
  say(counted(__osw_part_count, L"part"));
  picture drawn = empty_picture(__osw_virtual_screen);
  for (int i = 0; i < __osw_part_count; ++i) {
    const RECT& area = __osw_monitor_table[i].rect;
    say(L"  " + std::to_wstring(i + 1) + L"  " + describe(area));
    if (!IsRectEmpty(&area)) draw_area(&drawn, area, i + 1);
  }
  for (const std::wstring& line : drawn.lines) say(L"  " + line.substr(0, line.find_last_not_of(L' ') + 1));
}

std::wstring variable(const wchar_t* name) {
  std::wstring value(32768, L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

void print_options_in_force() {
  for (const option& one : option_list) {
    option_source source;
    const uint32_t value = value_in_force(one, &source);
    const std::wstring own = variable(one.name);
    if (!own.empty() && source != option_source::environment) {
      say(std::wstring(one.name) + L" in the environment is no number and is ignored: " + own);
    }
    if (source == option_source::fallback) continue;
    say(std::wstring(one.name) + L" is " + std::to_wstring(value) +
        (source == option_source::environment ? L", from the environment" : L", from the registry"));
  }
}

}  // namespace

int print_status() {
  // The library's own way from options to parts; the first look has the monitors as they are.
  __osw_enumerate_monitors();
  print_monitors();
  __osw_read_options();
  apply_monitor_options();
  print_parts();
  print_options_in_force();
  return status_ok;
}
