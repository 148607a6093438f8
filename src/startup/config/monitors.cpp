#include "startup/config/monitors.h"

#include "dispatch/report.h"
#include "startup/config/options.h"

__osw_monitor __osw_monitor_table[max_parts];
i32 __osw_part_count;
RECT __osw_virtual_screen;

namespace {

i32 next_entry;

// Every table of parts has room for so many.
void set_part_count(i32 count) {
  if (count > max_parts) {
    __osw_report(severity_warning, "%d parts wanted, only the first %d are used.\n", count, max_parts);
    count = max_parts;
  }
  __osw_part_count = count;
}

BOOL CALLBACK add_monitor(HMONITOR monitor, HDC, LPRECT, LPARAM) {
  if (next_entry >= max_parts) return 1;
  __osw_monitor& entry = __osw_monitor_table[next_entry];
  entry.info.cbSize = sizeof entry.info;
  GetMonitorInfoA(monitor, reinterpret_cast<MONITORINFO*>(&entry.info));
  entry.index = static_cast<u32>(next_entry);
  entry.rect = entry.info.rcMonitor;
  ++next_entry;
  return 1;
}

}  // namespace

void __osw_enumerate_monitors() {
  set_part_count(GetSystemMetrics(SM_CMONITORS));
  EnumDisplayMonitors(nullptr, nullptr, add_monitor, 0);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    const RECT united = __osw_virtual_screen;
    UnionRect(&__osw_virtual_screen, &united, &__osw_monitor_table[part].rect);
  }
  apply_monitor_options();
}

void apply_monitor_options() {
  if (OSW_DW_FakeAsOneMonitor) __osw_fake_one_monitor();
  if (OSW_DW_SplitOneMonitor && __osw_part_count == 1) __osw_split_one_monitor();
}

void __osw_fake_one_monitor() {
  __osw_monitor_table[0].rect = __osw_virtual_screen;
  for (i32 part = 1; part < __osw_part_count; ++part) __osw_monitor_table[part] = {};
  __osw_part_count = 1;
}

RECT cell_of(const RECT& whole, i32 columns, i32 rows, i32 number) {
  const LONG mid_x = whole.left + (whole.right - whole.left) / 2;
  const LONG mid_y = whole.top + (whole.bottom - whole.top) / 2;
  const bool at_left = number % columns == 0;
  const bool at_top = number / columns == 0;
  return {at_left ? whole.left : mid_x, at_top ? whole.top : mid_y, columns == 2 && at_left ? mid_x : whole.right,
          rows == 2 && at_top ? mid_y : whole.bottom};
}

void __osw_split_one_monitor() {
  const i32 parts = static_cast<i32>(OSW_DW_SplitParts);
  if (parts == 1) return;
  set_part_count(parts);
  if (parts != 2 && parts != 4) return;
  const i32 columns = parts == 4 || OSW_DW_SplitTwoPartsHorizontal ? 2 : 1;
  for (i32 part = 0; part < parts; ++part) {
    __osw_monitor_table[part].rect = cell_of(__osw_virtual_screen, columns, parts / columns, part);
  }
}
