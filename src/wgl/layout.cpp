#include "wgl/layout.h"

#include "startup/config/monitors.h"
#include "startup/config/options.h"

namespace {

POINT to_screen(HWND hwnd, LONG x, LONG y) {
  POINT point{x, y};
  ClientToScreen(hwnd, &point);
  return point;
}

RECT client_on_screen(const __osw_window_mapping* mapping) {
  const RECT client = __osw_load_rect(mapping->client_rect);
  const POINT top_left = to_screen(mapping->app_hwnd, client.left, client.top);
  const POINT bottom_right = to_screen(mapping->app_hwnd, client.right, client.bottom);
  return {top_left.x, top_left.y, bottom_right.x, bottom_right.y};
}

// A window that hangs over the edge of the whole desktop keeps the overhang on the part at that edge.
void add_overhang(RECT* share, const RECT& client, const RECT& monitor) {
  const RECT& desktop = __osw_virtual_screen;
  if (monitor.left == desktop.left && client.left < monitor.left) share->left = client.left;
  if (monitor.top == desktop.top && client.top < monitor.top) share->top = client.top;
  if (monitor.right == desktop.right && client.right > monitor.right) share->right = client.right;
  if (monitor.bottom == desktop.bottom && client.bottom > monitor.bottom) share->bottom = client.bottom;
}

void set_share(__osw_window_mapping* mapping, i32 part, const RECT& share) {
  __osw_child_part& child = mapping->parts[part];
  const RECT client = __osw_load_rect(mapping->client_rect);
  __osw_store_rect(child.part_rect, share);
  // GL's origin is at the bottom.
  relaxed_store(child.viewport_offset_x, client.left - share.left);
  relaxed_store(child.viewport_offset_y, share.bottom - client.bottom);
}

// An empty share with a number of parts that nothing can be divided among.
RECT divided(const RECT& client, i32 part) {
  if (__osw_part_count == 1) return client;
  if (__osw_part_count == 2) return cell_of(client, 2, 1, part);
  if (__osw_part_count == 4) return cell_of(client, 2, 2, part);
  return {};
}

}  // namespace

RECT screen_to_client(HWND hwnd, const RECT& rect) {
  POINT top_left{rect.left, rect.top};
  POINT bottom_right{rect.right, rect.bottom};
  ScreenToClient(hwnd, &top_left);
  ScreenToClient(hwnd, &bottom_right);
  return {top_left.x, top_left.y, bottom_right.x, bottom_right.y};
}

void __osw_layout_intersect(__osw_window_mapping* mapping, i32 part) {
  const RECT& monitor = __osw_monitor_table[part].rect;
  const RECT client = client_on_screen(mapping);
  __osw_child_part& child = mapping->parts[part];
  relaxed_store(child.part_index, static_cast<u32>(part));
  RECT share;
  const bool touched = IntersectRect(&share, &client, &monitor);
  relaxed_store(child.visible, touched ? 1u : 0u);
  if (!touched) return __osw_layout_unused_part(mapping, part);
  add_overhang(&share, client, monitor);
  set_share(mapping, part, screen_to_client(mapping->app_hwnd, share));
}

void __osw_layout_split_parent(__osw_window_mapping* mapping, i32 part) {
  __osw_child_part& child = mapping->parts[part];
  relaxed_store(child.part_index, static_cast<u32>(part));
  relaxed_store(child.visible, 1u);
  set_share(mapping, part, divided(__osw_load_rect(mapping->client_rect), part));
  RECT screen;
  const bool stands = GetWindowRect(relaxed_load(child.child_hwnd), &screen);
  __osw_store_rect(child.screen_rect, stands ? screen : __osw_load_rect(mapping->client_rect));
}

void __osw_layout_unused_part(__osw_window_mapping* mapping, i32 part) {
  const RECT& monitor = __osw_monitor_table[part].rect;
  const RECT own = __osw_load_rect(mapping->client_rect);
  const POINT client = to_screen(mapping->app_hwnd, own.left, own.top);
  const LONG size = OSW_DW_ForceUnusedChildWindowSize1X1 ? 1 : 0;
  const LONG x = monitor.left - client.x;
  const LONG y = monitor.top - client.y;
  __osw_child_part& child = mapping->parts[part];
  __osw_store_rect(child.part_rect, {x, y, x + size, y + size});
  relaxed_store(child.viewport_offset_x, 0);
  relaxed_store(child.viewport_offset_y, 0);
}

void __osw_layout_part(__osw_window_mapping* mapping, i32 part) {
  if (OSW_DW_UseSplitParentMethod) {
    __osw_layout_split_parent(mapping, part);
  } else {
    __osw_layout_intersect(mapping, part);
  }
}
