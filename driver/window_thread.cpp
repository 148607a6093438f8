#include "window_thread.h"

#include "report.h"

namespace {

constexpr UINT run_message = WM_APP;
constexpr UINT_PTR repeat_timer = 1;
constexpr DWORD start_limit = 10000;  // ms; a thread cannot start while its maker holds the loader lock

HWND control_window;  // receives the work; a window that only takes messages
void (*repeated)();

HMODULE keep_loaded() {
  HMODULE self = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<const char*>(&control_window), &self);
  return self;
}

LRESULT CALLBACK control_procedure(HWND hwnd, UINT message, WPARAM first, LPARAM second) {
  if (message == run_message) {
    reinterpret_cast<void (*)(void*)>(first)(reinterpret_cast<void*>(second));
    return TRUE;
  }
  if (message == WM_TIMER && first == repeat_timer) {
    if (repeated) repeated();
    return 0;
  }
  return DefWindowProcA(hwnd, message, first, second);
}

HWND make_control_window(HMODULE self) {
  WNDCLASSA control{};
  control.lpfnWndProc = control_procedure;
  control.hInstance = self;
  control.lpszClassName = "osw_driver_control";
  RegisterClassA(&control);
  return CreateWindowExA(0, control.lpszClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, self, nullptr);
}

DWORD WINAPI serve(void* started) {
  control_window = make_control_window(keep_loaded());
  SetEvent(started);
  MSG message;
  while (control_window && GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
  return 0;
}

BOOL CALLBACK start_once(INIT_ONCE*, void*, void**) {
  keep_loaded();
  HANDLE started = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  HANDLE thread = started ? CreateThread(nullptr, 0, serve, started, 0, nullptr) : nullptr;
  if (!thread || WaitForSingleObject(started, start_limit) != WAIT_OBJECT_0 || !control_window) {
    // The event stays: the thread may yet set it.
    report("the window thread did not start, error %lu", GetLastError());
    return TRUE;
  }
  CloseHandle(thread);
  CloseHandle(started);
  return TRUE;
}

}  // namespace

bool on_window_thread(void (*work)(void*), void* argument) {
  static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
  InitOnceExecuteOnce(&once, start_once, nullptr, nullptr);
  if (!control_window) return false;
  return SendMessageA(control_window, run_message, reinterpret_cast<WPARAM>(work),
                      reinterpret_cast<LPARAM>(argument)) != 0;
}

void register_window_class(const char* name, WNDPROC procedure) {
  WNDCLASSA drawn{};
  drawn.style = CS_OWNDC | CS_GLOBALCLASS;
  drawn.lpfnWndProc = procedure;
  drawn.hInstance = keep_loaded();
  drawn.lpszClassName = name;
  RegisterClassA(&drawn);
}

void share_input(HWND hwnd) {
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(hwnd, nullptr), TRUE);
}

void repeat_on_window_thread(void (*work)(), UINT milliseconds) {
  repeated = work;
  if (work) {
    SetTimer(control_window, repeat_timer, milliseconds, nullptr);
  } else {
    KillTimer(control_window, repeat_timer);
  }
}
