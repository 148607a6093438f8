// Two thousand threads that make a context current, draw a frame and end: test_churn.exe, spanned. The handles, threads
// and memory of the process must be after the last ones what they were after the first few hundred.
#include <windows.h>
// These need the one above.
#include <GL/gl.h>
#include <tlhelp32.h>

#include "support/check.h"

namespace {

constexpr int at_once = 2;
constexpr int warm_up = 400;
constexpr int all_threads = 2000;
constexpr int case_limit = 150;  // s

// The lists of one thread alone take 3 MB.
constexpr long long memory_allowed = 16 << 20;  // bytes, for 1600 threads
constexpr long long handles_allowed = 64;

struct gl_window {
  HWND hwnd;
  HDC hdc;
  HGLRC context;
};

gl_window open_window(int number) {
  WNDCLASSA window_class = {};
  window_class.style = CS_OWNDC;
  window_class.lpfnWndProc = DefWindowProcA;
  window_class.hInstance = GetModuleHandleA(nullptr);
  window_class.lpszClassName = "churn";
  RegisterClassA(&window_class);
  gl_window window = {};
  window.hwnd = CreateWindowExA(0, "churn", "", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 700, 100 + 300 * number, 200,
                                200, nullptr, nullptr, window_class.hInstance, nullptr);
  window.hdc = GetDC(window.hwnd);
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.cColorBits = 24;
  wanted.cDepthBits = 24;
  CHECK(SetPixelFormat(window.hdc, ChoosePixelFormat(window.hdc, &wanted), &wanted));
  window.context = wglCreateContext(window.hdc);
  CHECK(window.context != nullptr);
  return window;
}

// The pixel in the middle, as the parts have drawn it.
DWORD draw(const gl_window& window, GLubyte shade) {
  glClearColor(static_cast<GLfloat>(shade) / 255, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  GLubyte pixel[4] = {};
  glReadPixels(100, 100, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  SwapBuffers(window.hdc);
  return pixel[0];
}

DWORD WINAPI live(void* given) {
  const gl_window& window = *static_cast<gl_window*>(given);
  CHECK(wglMakeCurrent(window.hdc, window.context));
  CHECK_EQUAL(draw(window, 153), 153);
  CHECK(wglMakeCurrent(nullptr, nullptr));
  return 0;
}

// The windows belong to this thread, which has to go on answering for them.
void wait_for(HANDLE thread) {
  while (MsgWaitForMultipleObjects(1, &thread, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
  }
}

void run_threads(gl_window* windows, int count) {
  for (int done = 0; done < count; done += at_once) {
    HANDLE threads[at_once];
    for (int i = 0; i < at_once; ++i) threads[i] = CreateThread(nullptr, 0, live, &windows[i], 0, nullptr);
    for (HANDLE thread : threads) {
      wait_for(thread);
      CloseHandle(thread);
    }
  }
}

struct stock {
  long long memory;   // bytes
  long long handles;  // at least so many are open, when many are
  int threads;
};

// What is committed for the process alone: heaps and stacks.
long long private_memory() {
  long long sum = 0;
  MEMORY_BASIC_INFORMATION region;
  for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region); at += region.RegionSize) {
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) sum += static_cast<long long>(region.RegionSize);
  }
  return sum;
}

// The platform counts handles up in steps of four and gives a free one out again before a new one.
long long next_handle() {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  CHECK(event != nullptr);
  CloseHandle(event);
  return reinterpret_cast<long long>(event) / 4;
}

int count_threads() {
  const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Thread32First(all, &entry); more; more = Thread32Next(all, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId();
  }
  CloseHandle(all);
  return count;
}

stock take_stock() {
  Sleep(500);  // the last workers may still be on their way out
  stock found = {};
  found.memory = private_memory();
  found.handles = next_handle();
  found.threads = count_threads();
  return found;
}

void print(int threads, const stock& found) {
  printf("after %4d threads: %6.1f MB, %lld handles, %d threads\n", threads,
         static_cast<double>(found.memory) / (1 << 20), found.handles, found.threads);
}

void two_thousand_threads() {
  gl_window windows[at_once];
  for (int i = 0; i < at_once; ++i) {
    windows[i] = open_window(i);
    // The children of a window belong to the thread that binds it first.
    CHECK(wglMakeCurrent(windows[i].hdc, windows[i].context));
    CHECK(wglMakeCurrent(nullptr, nullptr));
  }
  run_threads(windows, warm_up);
  const stock early = take_stock();
  print(warm_up, early);
  run_threads(windows, all_threads - warm_up);
  const stock late = take_stock();
  print(all_threads, late);
  CHECK(early.memory > 0 && early.handles > 0);
  CHECK(late.memory - early.memory < memory_allowed);
  CHECK(late.handles < early.handles + handles_allowed);
  CHECK_EQUAL(late.threads, early.threads);
  live(&windows[0]);
}

const test_case cases[] = {{"two_thousand_threads", two_thousand_threads}};

}  // namespace

int main(int count, char** words) {
  return run_cases(cases, 1, count, words, case_limit);
}
