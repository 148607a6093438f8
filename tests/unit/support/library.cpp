#include "support/library.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "dispatch/bypass.h"
#include "pipeline/push.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"

namespace library {

const HINSTANCE module_handle = reinterpret_cast<HINSTANCE>(0x7FFE0000);
const char* const registry_path = "Software\\Z4graphics\\OGLSPANWrapper";

namespace {

void set_parts(const process_setup& setup) {
  const bool split = (setup.parts == 2 || setup.parts == 4) && !setup.parts_are_monitors;
  if (split) {
    platform::set_monitors({{{0, 0, 1920, 1080}, true}});
    platform::set_registry_number(registry_path, "OSW_DW_SplitOneMonitor", 1);
    platform::set_registry_number(registry_path, "OSW_DW_SplitParts", static_cast<DWORD>(setup.parts));
    return;
  }
  std::vector<platform::monitor> row;
  for (int i = 0; i < setup.parts; ++i) row.push_back({{400 * i, 0, 400 * i + 400, 600}, i == 0});
  platform::set_monitors(row);
}

void set_options(const process_setup& setup) {
  platform::set_registry_number(registry_path, "OSW_DW_GLDispatchUseMtPath", setup.way == path::threaded);
  platform::set_registry_number(registry_path, "OSW_DW_UseAppThreadToQueryState", setup.query_on_app_thread);
  for (const auto& [name, value] : setup.options) platform::set_registry_number(registry_path, name, value);
}

void set_list(const process_setup& setup) {
  if (!setup.active) return;
  const std::string name = testing::TempDir() + "osw_list_" + std::to_string(getpid());
  std::ofstream(name) << setup.list;
  EnablePerformanceOptimization(name.c_str());
}

void remove_list() {
  std::remove((testing::TempDir() + "osw_list_" + std::to_string(getpid())).c_str());
}

platform::library_hooks hooks() {
  platform::library_hooks all;
  all.module = module_handle;
  all.dll_main = DllMain;
  all.choose_pixel_format = osw_wglChoosePixelFormat;
  all.describe_pixel_format = osw_wglDescribePixelFormat;
  all.get_pixel_format = osw_wglGetPixelFormat;
  all.set_pixel_format = osw_wglSetPixelFormat;
  all.swap_buffers = osw_wglSwapBuffers;
  return all;
}

void close_own_windows() {
  for (const platform::window_facts& window : platform::windows_of_class("application")) {
    if (window.thread_id == GetCurrentThreadId()) DestroyWindow(window.hwnd);
  }
}

void serve(app_thread& thread) {
  std::unique_lock guard(thread.lock);
  while (!thread.leaves || !thread.work.empty()) {
    if (thread.work.empty()) {
      guard.unlock();
      platform::kill_point();
      guard.lock();
      if (thread.work.empty() && !thread.leaves) thread.changed.wait_for(guard, std::chrono::milliseconds(20));
      continue;
    }
    const std::function<void()> work = std::move(thread.work.front());
    thread.work.pop_front();
    guard.unlock();
    work();
    guard.lock();
    thread.busy = !thread.work.empty();
    thread.changed.notify_all();
  }
  guard.unlock();
  close_own_windows();
}

}  // namespace

void PrintTo(path way, std::ostream* out) {
  *out << (way == path::threaded ? "threaded" : "sequential");
}

void prepare(const process_setup& setup) {
  // What the library keeps for the life of a process is zero only once.
  static bool prepared = false;
  ASSERT_FALSE(prepared) << "a second process in one test";
  prepared = true;
  platform::reset();
  driver::reset();
  if (!setup.fast_switch) {
    driver::set_reach("wglFastSwitchContextZ4", driver::reach::nowhere);
    driver::set_reach("wglGetGLContextZ4", driver::reach::nowhere);
  }
  platform::set_executable(setup.executable);
  set_parts(setup);
  set_options(setup);
  if (setup.extended) platform::set_environment_variable("OSW_EXTENDED", "1");
  set_list(setup);
  platform::set_library_hooks(hooks());
}

void start(const process_setup& setup) {
  prepare(setup);
  ASSERT_EQ(platform::attach_process(), TRUE);
  remove_list();
  ASSERT_EQ(__osw_part_count, setup.parts);
}

void end() {
  if (platform::process_attached()) platform::exit_process();
  EXPECT_EQ(platform::live_critical_sections(), 0);
  EXPECT_EQ(platform::live_tls_slots(), 0);
  EXPECT_EQ(platform::open_registry_keys(), 0);
}

app_thread_pointer start_thread() {
  auto thread = std::make_shared<app_thread>();
  thread->handle = platform::start_thread([thread] { serve(*thread); });
  run(thread, [thread] { thread->id = GetCurrentThreadId(); });
  return thread;
}

void post(const app_thread_pointer& thread, std::function<void()> work) {
  const std::lock_guard guard(thread->lock);
  thread->work.push_back(std::move(work));
  thread->busy = true;
  thread->changed.notify_all();
}

void wait(const app_thread_pointer& thread) {
  const bool done = platform::pump_until([&] {
    std::unique_lock guard(thread->lock);
    if (thread->busy) thread->changed.wait_for(guard, std::chrono::milliseconds(1));
    return !thread->busy;
  });
  ASSERT_TRUE(done) << "the work of a thread has not ended";
}

void run(const app_thread_pointer& thread, std::function<void()> work) {
  post(thread, std::move(work));
  wait(thread);
}

void end_thread(const app_thread_pointer& thread) {
  {
    const std::lock_guard guard(thread->lock);
    thread->leaves = true;
    thread->changed.notify_all();
  }
  ASSERT_TRUE(platform::join(thread->handle)) << "a thread of the application has not ended";
}

void run_on_new_threads(int count, const std::function<void()>& work) {
  std::vector<HANDLE> threads;
  for (int i = 0; i < count; ++i) {
    threads.push_back(platform::start_thread([work] {
      work();
      close_own_windows();
    }));
  }
  for (const HANDLE thread : threads) ASSERT_TRUE(platform::join(thread)) << "a thread has not ended";
}

void run_on_new_thread(std::function<void()> work) {
  run_on_new_threads(1, work);
}

app_window open_window(RECT rect, int format) {
  app_window window;
  window.hwnd = platform::create_window({.rect = rect});
  window.hdc = GetDC(window.hwnd);
  PIXELFORMATDESCRIPTOR descriptor;
  platform::describe_pixel_format(format, &descriptor);
  EXPECT_TRUE(SetPixelFormat(window.hdc, format, &descriptor));
  return window;
}

rendering start_rendering_in(const app_window& window) {
  rendering started;
  started.window = window;
  started.context = osw_wglCreateContext(window.hdc);
  EXPECT_NE(started.context, nullptr);
  if (!__osw_enable_wrapper_bypass) started.children = driver::contexts_made_after(started.context, __osw_part_count);
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, started.context));
  return started;
}

rendering start_rendering(RECT rect) {
  return start_rendering_in(open_window(rect));
}

void finish() {
  auto* state = static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
  if (state != nullptr && __osw_has_pipeline(state)) __osw_send_sync_cmd(state);
}

std::vector<driver::call> part_calls(const rendering& rendered, int part) {
  return driver::gl_calls_in(rendered.children.at(static_cast<std::size_t>(part)));
}

int listed_states() {
  return static_cast<int>(std::ranges::count_if(__osw_thread_state_list, [](const auto* state) { return state; }));
}

int listed_arguments() {
  return static_cast<int>(std::ranges::count_if(__osw_worker_arg_list, [](const auto* arg) { return arg; }));
}

std::vector<std::string> reports() {
  std::vector<std::string> lines;
  const std::vector<platform::debug_text> texts = platform::debug_output();
  // A line comes in two texts, and those of several threads may lie between each other.
  std::vector<std::pair<DWORD, std::string>> begun;
  for (const platform::debug_text& text : texts) {
    const auto first =
        std::find_if(begun.begin(), begun.end(), [&](const auto& one) { return one.first == text.thread_id; });
    if (first == begun.end()) {
      begun.emplace_back(text.thread_id, text.text);
    } else {
      lines.push_back(first->second + text.text);
      begun.erase(first);
    }
  }
  for (const auto& [thread, text] : begun) lines.push_back(text);
  return lines;
}

void process_test::TearDown() {
  end();
  remove_list();
  if (!expects_message_boxes) {
    for (const platform::message_box& box : platform::message_boxes()) ADD_FAILURE() << "a message box: " << box.text;
  }
  for (const platform::stall& stall : platform::stalls()) ADD_FAILURE() << "a thread waited in vain in " << stall.call;
  EXPECT_EQ(driver::calls_without_context(), std::vector<std::string>());
  // The binding of the system's entries alone asks the driver under its lock.
  for (const std::string& name : driver::calls_under_lock()) EXPECT_EQ(name, "wglGetProcAddress");
  EXPECT_LE(platform::most_locks_held(), most_locks);
  platform::reset();
}

}  // namespace library
