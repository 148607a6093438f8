// The swap interval of a window whose context is spared. The host keeps an interval with what it draws to, and a spared
// context draws to a window of its own, which another context of the application's window does not share.
#include "binding.h"
#include "host.h"
#include "own_ops.h"

namespace {

constexpr char interval_property[] = "osw_driver_interval";
constexpr int first_interval = 1;

// Any interval may be set, and a property that is null is none.
constexpr LONG_PTR is_set = LONG_PTR{1} << 32;

HWND spared_window() {
  const context* c = calling_context();
  return c && c->spared ? c->draw.hwnd : nullptr;
}

}  // namespace

BOOL own_call<wglSwapIntervalEXT_op>::call(int interval) {
  if (!driver_bind_for_call()) return FALSE;
  const BOOL result = host_wgl_entry<wglSwapIntervalEXT_op>()(interval);
  if (HWND hwnd = result ? spared_window() : nullptr)
    SetPropA(hwnd, interval_property, reinterpret_cast<HANDLE>(is_set | static_cast<DWORD>(interval)));
  return result;
}

int own_call<wglGetSwapIntervalEXT_op>::call() {
  if (!driver_bind_for_call()) return 0;
  HWND hwnd = spared_window();
  if (!hwnd) return host_wgl_entry<wglGetSwapIntervalEXT_op>()();
  const auto kept = reinterpret_cast<LONG_PTR>(GetPropA(hwnd, interval_property));
  return kept ? static_cast<int>(kept) : first_interval;
}
