// The simulated desktop: monitors, windows with their messages, device contexts and pixel formats.
//
// A window belongs to the thread that made it, and its procedure runs on that thread alone. A call of another thread
// that has to send it a message waits until the owner calls `pump`, or is itself waiting for such a call. A thread that
// waits longer than the patience gives up and leaves a `stall`.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace platform {

// ---- monitors ----

struct monitor {
  RECT area;
  bool primary = false;
  bool info_fails = false;
};
void set_monitors(const std::vector<monitor>& monitors);

// What SM_CMONITORS answers; -1 for the number of monitors.
void set_monitor_metric(int count);

// ---- windows ----

struct frame_widths {
  int left = 0, top = 0, right = 0, bottom = 0;
};

struct window_setup {
  RECT rect = {100, 100, 740, 580};  // on the screen, or in the parent's client area for WS_CHILD
  DWORD style = WS_OVERLAPPEDWINDOW | WS_VISIBLE;
  HWND parent = nullptr;
  frame_widths frame = {};
  WNDPROC procedure = nullptr;  // null for DefWindowProcA
  bool own_dc = true;
};

// A window of the application, owned by the calling thread. It counts as no call and cannot fail.
HWND create_window(const window_setup& setup = {});

// From now on the window is another process's, of which only the properties can be had.
void give_to_process(HWND hwnd, DWORD process_id);

struct window_facts {
  HWND hwnd;
  HWND parent;
  std::string class_name;
  std::string title;
  DWORD style;
  DWORD extended_style;
  LONG_PTR id;
  RECT rect;    // on the screen
  RECT client;  // on the screen
  DWORD thread_id;
  WNDPROC procedure;
  int pixel_format;
  std::vector<std::string> properties;
};

// All windows that exist, in the order of their making.
std::vector<window_facts> windows();

// One window; its `hwnd` is null when there is no such window.
window_facts window(HWND hwnd);

// The windows of a class, or the children of a window, in the order of their making.
std::vector<window_facts> windows_of_class(const std::string& class_name);
std::vector<window_facts> children_of(HWND parent);

// The window that gets the mouse at a point of the screen, as WindowFromPoint finds it: the innermost that is visible
// and not disabled. The last made of those that overlap on the screen lies above, and the first made within a parent.
HWND window_at(POINT point);

struct class_facts {
  std::string name;
  UINT style;
  WNDPROC procedure;
  HINSTANCE instance;
};
std::vector<class_facts> window_classes();

// From now on a class that another thread is registering exists and cannot be found for some milliseconds.
void register_classes_slowly();

// ---- messages ----

enum class delivery { direct, waited, posted };

struct position_call {
  DWORD thread_id;
  HWND hwnd;
  HWND after;
  int x, y, width, height;
  UINT flags;
  delivery how;
};
// The calls of SetWindowPos, in order.
std::vector<position_call> position_calls();
void clear_position_calls();

struct message_record {
  DWORD thread_id;  // where the procedure ran
  DWORD sender_id;
  HWND hwnd;
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
};
// The messages given to window procedures, in order.
std::vector<message_record> messages();
void clear_messages();

// As the platform's SendMessageA.
LRESULT send_message(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);

struct stall {
  DWORD thread_id;
  DWORD owner_id;
  HWND hwnd;
  std::string call;
};
// Threads that waited in vain for a thread that did not pump.
std::vector<stall> stalls();
void clear_stalls();
void set_patience(std::chrono::milliseconds patience);

// Runs what other threads have sent to the calling thread's windows; how many calls that were.
int pump();

// Pumps until `done` says yes. False when it does not in time.
bool pump_until(const std::function<bool()>& done, std::chrono::milliseconds patience = std::chrono::seconds(60));

// ---- device contexts ----

// A device context without a window, as a pbuffer has.
HDC create_windowless_dc();
void destroy_windowless_dc(HDC hdc);

// Device contexts that were handed out and not released, own contexts of windows left out.
int open_device_contexts();

// The pixel format, from 1, 0 for none; it belongs to the window. Setting fails for a format that does not exist, and
// where another one is set.
int dc_pixel_format(HDC hdc);
bool set_dc_pixel_format(HDC hdc, int format);
int pixel_format_count();
bool describe_pixel_format(int format, PIXELFORMATDESCRIPTOR* out);

}  // namespace platform
