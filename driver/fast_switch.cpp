#include "fast_switch.h"

#include <atomic>
#include <cstring>

#include "binding.h"
#include "host.h"
#include "report.h"

namespace {

constexpr int switch_tries = 20;
constexpr double slow_switch = 20;  // us

enum verdict : int { unknown, measuring, fast, slow };
std::atomic<verdict> found_verdict{unknown};

// A context with a window of its own, as parts have.
struct trial {
  HWND hwnd;
  HDC hdc;
  HGLRC hglrc;
};

// The format of the calling thread's context, or any if that one is not for windows.
int choose_format(HDC hdc, int wanted, PIXELFORMATDESCRIPTOR* descriptor) {
  constexpr DWORD for_windows = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
  if (host_wgl_entry<wglDescribePixelFormat_op>()(hdc, wanted, sizeof *descriptor, descriptor) &&
      (descriptor->dwFlags & for_windows) == for_windows)
    return wanted;
  *descriptor = {.nSize = sizeof *descriptor, .nVersion = 1, .dwFlags = for_windows, .cColorBits = 24};
  return host_wgl_entry<wglChoosePixelFormat_op>()(hdc, descriptor);
}

// On the calling thread: a host that calls back on one of the driver's own might wait there for a lock that the caller
// holds.
bool make_trial(trial* t, int pixel_format) {
  t->hwnd = CreateWindowExA(WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW, "STATIC", "", WS_POPUP | WS_DISABLED, 0, 0, 1, 1,
                            nullptr, nullptr, nullptr, nullptr);
  if (!t->hwnd) return false;
  t->hdc = GetDC(t->hwnd);
  PIXELFORMATDESCRIPTOR descriptor{};
  const int format = choose_format(t->hdc, pixel_format, &descriptor);
  if (!host_wgl_entry<wglSetPixelFormat_op>()(t->hdc, format, &descriptor)) return false;
  t->hglrc = host_wgl_entry<wglCreateContext_op>()(t->hdc);
  return t->hglrc != nullptr;
}

void end_trial(const trial& t) {
  if (t.hglrc) host_wgl_entry<wglDeleteContext_op>()(t.hglrc);
  if (t.hdc) ReleaseDC(t.hwnd, t.hdc);
  if (t.hwnd) DestroyWindow(t.hwnd);
}

double now_us() {
  LARGE_INTEGER now, frequency;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  return static_cast<double>(now.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

// A call follows each switch, as a host may put the switch off until there is one. Negative when one was refused.
double time_switch(const trial& t) {
  const double start = now_us();
  if (!host_wgl_entry<wglMakeCurrent_op>()(t.hdc, t.hglrc)) return -1;
  host_gl_entry<glClearColor_op>()(0, 0, 0, 0);
  return now_us() - start;
}

// The least of some, in us: the first binding of a context takes longer, and so does one in which the thread is
// interrupted. Negative when nothing could be measured.
double least_switch(const trial (&trials)[2]) {
  double least = -1;
  for (int i = 0; i < switch_tries; ++i) {
    const double time = time_switch(trials[i % 2]);
    if (time < 0) return -1;
    if (i >= 2 && (least < 0 || time < least)) least = time;
  }
  return least;
}

// Leaves nothing current on the host.
double measure_switch(int pixel_format) {
  trial trials[2]{};
  double least = -1;
  if (make_trial(&trials[0], pixel_format) && make_trial(&trials[1], pixel_format)) least = least_switch(trials);
  host_wgl_entry<wglMakeCurrent_op>()(nullptr, nullptr);
  for (const trial& t : trials) end_trial(t);
  return least;
}

verdict judge(double least) {
  if (least < 0) {
    report("Info: no switch between two contexts of the host could be measured; the fast switch is not offered");
    return slow;
  }
  const bool is_fast = least < slow_switch;
  report("Info: a switch between two contexts of the host takes %.1f us; the fast switch is %s", least,
         is_fast ? "offered" : "not offered");
  return is_fast ? fast : slow;
}

verdict decided_by_user() {
  char text[4] = "";
  GetEnvironmentVariableA("OSW_DRIVER_FAST_SWITCH", text, sizeof text);
  if (strcmp(text, "0") == 0) return slow;
  return strcmp(text, "1") == 0 ? fast : unknown;
}

// What the thread's context had on the host it gets back at its next call.
void measure_on_this_thread() {
  const thread_state* thread = this_thread();
  if (!thread || !thread->current) return;
  verdict expected = unknown;
  if (!found_verdict.compare_exchange_strong(expected, measuring)) return;
  const DWORD error = GetLastError();
  give_up_real();
  found_verdict = judge(measure_switch(thread->current->pixel_format));
  SetLastError(error);
}

}  // namespace

bool offers_fast_switch() {
  if (found_verdict == unknown) {
    verdict expected = unknown;
    found_verdict.compare_exchange_strong(expected, decided_by_user());
    measure_on_this_thread();
  }
  return found_verdict == fast;
}
