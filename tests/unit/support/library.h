// The library under test in a simulated process: set-up, threads of the application, a window to draw to, and what must
// hold at the end. One process per test: see test_main.cpp.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ops/tables.h"
#include "platform/desktop.h"
#include "platform/faults.h"
#include "platform/process.h"
#include "support/recording_driver.h"

extern "C" {
BOOL DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);
char* EnablePerformanceOptimization(const char* path);
void DisablePerformanceOptimization();
u64 osw_glDebugEntry();
void osw_Glmf();
}

namespace library {

// The exported entry point of an op.
template <class Op>
constexpr typename Op::type* exported = nullptr;

}  // namespace library

#define GL_OP(number, function, sync, threaded, sequential, replay, alias, payload, result, parameters, arguments) \
  extern "C" result osw_##function parameters;                                                                     \
  template <>                                                                                                      \
  inline constexpr function##_op::type* library::exported<function##_op> = osw_##function;
#define WGL_OP(number, function, sync, main, pass, replay, result, parameters, arguments) \
  extern "C" result osw_##function parameters;                                            \
  template <>                                                                             \
  inline constexpr function##_op::type* library::exported<function##_op> = osw_##function;
#include "ops/all_ops.inc"
#include "ops/gl_wide.inc"
#undef GL_OP
#undef WGL_OP

namespace library {

extern const HINSTANCE module_handle;
extern const char* const registry_path;

enum class path { sequential, threaded };
void PrintTo(path way, std::ostream* out);  // for the names of tests

struct process_setup {
  bool active = true;
  // 2 and 4 come of a split of one monitor of 1920 by 1080, any other number of as many monitors of 400 by 600 in a
  // row.
  int parts = 2;
  bool parts_are_monitors = false;
  // By the option; a driver without the fast switch leaves the threaded one alone.
  path way = path::threaded;
  bool fast_switch = true;
  bool query_on_app_thread = true;
  bool extended = false;
  std::vector<std::pair<const char*, DWORD>> options;
  std::string executable = "C:\\Programs\\app.exe";
  std::string list = "app.exe\n";  // what stands in the application list
};

// Sets up desktop, registry, driver and list without loading the library.
void prepare(const process_setup& setup = {});

// Prepares, then loads the library: DllMain with DLL_PROCESS_ATTACH.
void start(const process_setup& setup = {});

// Ends the process and checks that nothing is left of the library.
void end();

// ---- threads of the application ----

// A thread that does what it is told, one piece of work after the other. At its end it closes its windows, as the
// platform tells no window that its thread is gone, and the library's DLL_THREAD_DETACH follows.
struct app_thread {
  HANDLE handle = nullptr;
  DWORD id = 0;
  std::mutex lock;
  std::condition_variable changed;
  std::deque<std::function<void()>> work;
  bool busy = false;
  bool leaves = false;
};
using app_thread_pointer = std::shared_ptr<app_thread>;

app_thread_pointer start_thread();

// Hands the thread work and returns at once.
void post(const app_thread_pointer& thread, std::function<void()> work);

// Waits for the work handed over. The calling thread pumps its windows' messages while it waits.
void wait(const app_thread_pointer& thread);

void run(const app_thread_pointer& thread, std::function<void()> work);

// Waits for the work, then for the thread's end.
void end_thread(const app_thread_pointer& thread);

// Runs `work` on a thread of its own, or on several at once, and waits for their ends, which are as above.
void run_on_new_thread(std::function<void()> work);
void run_on_new_threads(int count, const std::function<void()>& work);

// ---- drawing ----

constexpr RECT usual_rect = {100, 100, 740, 580};

struct app_window {
  HWND hwnd = nullptr;
  HDC hdc = nullptr;
};

// A window of the calling thread without a frame, with a pixel format set through gdi32.
app_window open_window(RECT rect = usual_rect, int format = 1);

struct rendering {
  app_window window;
  HGLRC context = nullptr;
  std::vector<HGLRC> children;  // in part order; none in a bypassed process
};

// Opens a window, creates a context and makes it current on the calling thread.
rendering start_rendering(RECT rect = usual_rect);
rendering start_rendering_in(const app_window& window);

// Waits until every part has replayed what the calling thread has issued.
void finish();

// What the part has got: the GL calls of its child context since the last driver::clear_calls.
std::vector<driver::call> part_calls(const rendering& rendered, int part);

// ---- what the library keeps ----

// States of threads, and what the threads that serve others were started with. While none of them begins or ends.
int listed_states();
int listed_arguments();

// ---- the debugger ----

// The lines written since the last clear, each joined from its severity and its message.
std::vector<std::string> reports();

// ---- checks ----

// A test of the library. Ends the process when the test has started one.
struct process_test : testing::Test {
  void TearDown() override;
  // Set by tests that look at message boxes themselves.
  bool expects_message_boxes = false;
  // How many locks a thread may hold at once; more than one only where the system calls back under a lock.
  int most_locks = 1;
};

}  // namespace library
