// Device contexts and pixel formats. gdi32's calls on pixel formats and its SwapBuffers end in the loaded library.
#include <algorithm>
#include <cstring>
#include <map>

#include "platform/desktop.h"
#include "platform/process.h"
#include "state.h"

namespace platform {

namespace {

enum class dc_kind { own, borrowed, windowless };

struct dc_record {
  dc_kind kind;
  HWND hwnd;
  DWORD thread_id;
  int pixel_format;  // of a windowless one
};

std::mutex lock;
std::map<HDC, dc_record> table;
UINT_PTR last_handle = 0x1000000;

constexpr int format_count = 8;

HDC add(dc_kind kind, HWND hwnd) {
  const DWORD me = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  last_handle += 4;
  const HDC hdc = reinterpret_cast<HDC>(last_handle);
  table[hdc] = {kind, hwnd, me, 0};
  return hdc;
}

bool find(HDC hdc, dc_record& out) {
  const std::lock_guard guard(lock);
  const auto found = table.find(hdc);
  if (found == table.end()) return false;
  out = found->second;
  return true;
}

}  // namespace

HDC make_own_dc(HWND hwnd) {
  return add(dc_kind::own, hwnd);
}

void forget_window_device_contexts(HWND hwnd) {
  const std::lock_guard guard(lock);
  std::erase_if(table, [&](const auto& entry) { return entry.second.hwnd == hwnd; });
}

void forget_thread_device_contexts(DWORD thread_id) {
  const std::lock_guard guard(lock);
  std::erase_if(table, [&](const auto& entry) {
    return entry.second.kind == dc_kind::borrowed && entry.second.thread_id == thread_id;
  });
}

HDC create_windowless_dc() {
  return add(dc_kind::windowless, nullptr);
}

void destroy_windowless_dc(HDC hdc) {
  const std::lock_guard guard(lock);
  table.erase(hdc);
}

int open_device_contexts() {
  const std::lock_guard guard(lock);
  return static_cast<int>(
      std::ranges::count_if(table, [](const auto& entry) { return entry.second.kind != dc_kind::own; }));
}

int dc_pixel_format(HDC hdc) {
  dc_record record;
  if (!find(hdc, record)) return 0;
  return record.kind == dc_kind::windowless ? record.pixel_format : std::max(0, window_pixel_format(record.hwnd));
}

bool set_dc_pixel_format(HDC hdc, int format) {
  dc_record record;
  if (!find(hdc, record) || format < 1 || format > format_count) return false;
  const int before = dc_pixel_format(hdc);
  if (before != 0) return before == format;
  if (record.kind != dc_kind::windowless) {
    set_window_pixel_format(record.hwnd, format);
    return true;
  }
  const std::lock_guard guard(lock);
  table[hdc].pixel_format = format;
  return true;
}

int pixel_format_count() {
  return format_count;
}

bool describe_pixel_format(int format, PIXELFORMATDESCRIPTOR* out) {
  if (format < 1 || format > format_count) return false;
  *out = {};
  out->nSize = sizeof *out;
  out->nVersion = 1;
  out->dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | (format % 2 == 1 ? PFD_DOUBLEBUFFER : 0);
  out->iPixelType = PFD_TYPE_RGBA;
  out->cColorBits = 32;
  out->cRedBits = out->cGreenBits = out->cBlueBits = out->cAlphaBits = 8;
  out->cDepthBits = format <= 4 ? 24 : 16;
  out->cStencilBits = static_cast<BYTE>(format);
  return true;
}

void reset_device_contexts() {
  const std::lock_guard guard(lock);
  table.clear();
}

}  // namespace platform

using namespace platform;

extern "C" HDC GetDC(HWND hwnd) {
  if (ordered_to_fail("GetDC") || !IsWindow(hwnd)) return nullptr;
  const HDC own = window_own_dc(hwnd);
  return own != nullptr ? own : add(dc_kind::borrowed, hwnd);
}

extern "C" HDC GetWindowDC(HWND hwnd) {
  if (ordered_to_fail("GetWindowDC") || !IsWindow(hwnd)) return nullptr;
  return add(dc_kind::borrowed, hwnd);
}

extern "C" int ReleaseDC(HWND, HDC hdc) {
  if (ordered_to_fail("ReleaseDC")) return 0;
  const DWORD me = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  const auto found = table.find(hdc);
  if (found == table.end() || found->second.kind == dc_kind::windowless) return 0;
  if (found->second.kind == dc_kind::own) return 1;
  if (found->second.thread_id != me) return 0;
  table.erase(found);
  return 1;
}

extern "C" HWND WindowFromDC(HDC hdc) {
  dc_record record;
  return find(hdc, record) ? record.hwnd : nullptr;
}

extern "C" DWORD GetObjectType(HGDIOBJ object) {
  dc_record record;
  if (!find(static_cast<HDC>(object), record)) return 0;
  return record.kind == dc_kind::windowless ? OBJ_MEMDC : OBJ_DC;
}

extern "C" int ChoosePixelFormat(HDC hdc, const PIXELFORMATDESCRIPTOR* descriptor) {
  if (ordered_to_fail("ChoosePixelFormat")) return 0;
  return hooks().choose_pixel_format != nullptr ? hooks().choose_pixel_format(hdc, descriptor) : 1;
}

extern "C" int DescribePixelFormat(HDC hdc, int format, UINT size, LPPIXELFORMATDESCRIPTOR descriptor) {
  if (ordered_to_fail("DescribePixelFormat")) return 0;
  if (hooks().describe_pixel_format != nullptr) return hooks().describe_pixel_format(hdc, format, size, descriptor);
  PIXELFORMATDESCRIPTOR whole;
  if (!describe_pixel_format(format, &whole)) return 0;
  if (descriptor != nullptr) std::memcpy(descriptor, &whole, std::min<std::size_t>(size, sizeof whole));
  return format_count;
}

extern "C" int GetPixelFormat(HDC hdc) {
  if (ordered_to_fail("GetPixelFormat")) return 0;
  return hooks().get_pixel_format != nullptr ? hooks().get_pixel_format(hdc) : dc_pixel_format(hdc);
}

extern "C" BOOL SetPixelFormat(HDC hdc, int format, const PIXELFORMATDESCRIPTOR* descriptor) {
  if (ordered_to_fail("SetPixelFormat")) return FALSE;
  if (hooks().set_pixel_format != nullptr) return hooks().set_pixel_format(hdc, format, descriptor);
  return set_dc_pixel_format(hdc, format);
}

extern "C" BOOL SwapBuffers(HDC hdc) {
  if (ordered_to_fail("SwapBuffers")) return FALSE;
  return hooks().swap_buffers != nullptr ? hooks().swap_buffers(hdc) : TRUE;
}
