// Process attach and detach, thread detach, the bypass decision.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "dispatch/bypass.h"
#include "dispatch/system.h"
#include "dispatch/thread_state.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "startup/config/process_identity.h"
#include "startup/config/shared.h"
#include "support/allocation.h"
#include "support/library.h"
#include "wgl/child_windows.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

struct life_test : library::process_test {};
using life_death_test = life_test;

__osw_thread_state* own_state() {
  return static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
}

int open_thread_handles() {
  const std::vector<std::string> left = platform::leaks(true);
  return static_cast<int>(std::ranges::count(left, "thread handle"));
}

TEST_F(life_test, attach_takes_the_process_s_identity) {
  library::prepare({.executable = "C:\\Program Files\\Some Maker\\Draw It.exe"});
  platform::set_process_id(1234);
  EXPECT_EQ(platform::attach_process(), TRUE);
  EXPECT_EQ(__osw_hinstance, library::module_handle);
  EXPECT_EQ(__osw_process_id, 1234u);
  EXPECT_STREQ(__osw_app_exe_name, "Draw It.exe");
  EXPECT_EQ(__osw_app_special_window, -1);
}

TEST_F(life_test, a_name_without_a_directory_is_taken_whole) {
  library::prepare({.executable = "app.exe"});
  platform::attach_process();
  EXPECT_STREQ(__osw_app_exe_name, "app.exe");
}

TEST_F(life_test, a_very_long_path_is_cut) {
  library::prepare({.active = false, .executable = "C:\\" + std::string(400, 'a') + ".exe"});
  platform::attach_process();
  EXPECT_EQ(std::strlen(__osw_app_exe_name), 256u);
}

TEST_F(life_test, the_special_application_is_known_by_name_in_any_case) {
  library::prepare({.active = false, .executable = "C:\\dir\\sldworks.EXE"});
  platform::attach_process();
  EXPECT_EQ(__osw_app_special_window, 0);
  // The list decides on its own.
  EXPECT_EQ(__osw_enable_wrapper_bypass, 1u);
}

TEST_F(life_test, nothing_configured_means_bypassed) {
  library::prepare({.active = false});
  platform::attach_process();
  EXPECT_EQ(__osw_shared.enable, 0u);
  EXPECT_EQ(__osw_enable_wrapper_bypass, 1u);
}

TEST_F(life_test, a_listed_process_is_active) {
  library::start();
  EXPECT_EQ(__osw_enable_wrapper_bypass, 0u);
}

TEST_F(life_test, a_process_that_is_not_listed_is_bypassed) {
  library::start({.list = "other.exe another.exe"});
  EXPECT_EQ(__osw_enable_wrapper_bypass, 1u);
}

TEST_F(life_test, a_missing_list_means_bypassed) {
  library::prepare();
  EnablePerformanceOptimization("/nowhere/list");
  platform::attach_process();
  EXPECT_EQ(__osw_enable_wrapper_bypass, 1u);
}

TEST_F(life_test, case_of_the_executable_does_not_count) {
  library::start({.executable = "C:\\dir\\myapp.exe", .list = "MyApp.EXE"});
  EXPECT_EQ(__osw_enable_wrapper_bypass, 0u);
}

TEST_F(life_test, the_shared_path_survives_a_disable) {
  char* const kept = EnablePerformanceOptimization("first");
  EXPECT_EQ(kept, __osw_shared.list_path);
  EXPECT_EQ(__osw_shared.enable, 1u);
  EnablePerformanceOptimization("a");
  EXPECT_STREQ(__osw_shared.list_path, "a");
  EXPECT_EQ(std::memcmp(__osw_shared.list_path + 1, std::string(259, '\0').data(), 259), 0);
  DisablePerformanceOptimization();
  EXPECT_EQ(__osw_shared.enable, 0u);
  EXPECT_STREQ(__osw_shared.list_path, "a");
}

TEST_F(life_test, a_disabled_list_is_not_read) {
  library::prepare();
  DisablePerformanceOptimization();
  platform::attach_process();
  EXPECT_EQ(__osw_enable_wrapper_bypass, 1u);
  EXPECT_NE(__osw_shared.list_path[0], 0);
}

TEST_F(life_test, a_path_is_cut_at_259_characters) {
  EnablePerformanceOptimization(std::string(259, 'x').c_str());
  EXPECT_EQ(std::strlen(__osw_shared.list_path), 259u);
  EnablePerformanceOptimization(std::string(400, 'y').c_str());
  EXPECT_EQ(std::string(__osw_shared.list_path), std::string(259, 'y'));
}

TEST_F(life_test, the_decision_is_taken_at_attach_alone) {
  library::start();
  DisablePerformanceOptimization();
  library::run_on_new_thread([] {
    osw_glDebugEntry();
    EXPECT_EQ(own_state()->wgl_table, __osw_wgl_table_main);
  });
  EXPECT_EQ(__osw_enable_wrapper_bypass, 0u);
}

struct no_stop_test : life_test, testing::WithParamInterface<const char*> {};

TEST_P(no_stop_test, attach_goes_on) {
  setenv("Z4OSW_DEBUG_BREAK", GetParam(), 1);
  library::start();
  EXPECT_EQ(__osw_enable_wrapper_bypass, 0u);
}

INSTANTIATE_TEST_SUITE_P(, no_stop_test, testing::Values("0", "no", ""));

TEST_F(life_death_test, attach_stops_for_the_debugger_before_it_asks_for_anything) {
  EXPECT_EXIT(
      {
        setenv("Z4OSW_DEBUG_BREAK", "1", 1);
        library::prepare();
        platform::on_each_call([](const char*, ULONG_PTR) { std::_Exit(1); });
        std::signal(SIGALRM, SIG_DFL);
        alarm(1);
        platform::attach_process();
      },
      testing::KilledBySignal(SIGALRM), "");
}

TEST_F(life_test, attach_waits_until_the_dead_loop_option_is_cleared) {
  library::prepare();
  platform::set_registry_number(library::registry_path, "OSW_DW_DeadLoopWhenLoadDll", 1);
  std::atomic<bool> attached{false};
  // Somebody outside the process, whom the loader lock does not hold back.
  std::thread editor([&] {
    while (platform::call_count("RegOpenKeyA") < 200) std::this_thread::yield();
    EXPECT_FALSE(attached);
    platform::set_registry_number(library::registry_path, "OSW_DW_DeadLoopWhenLoadDll", 0);
  });
  EXPECT_EQ(platform::attach_process(), TRUE);
  attached = true;
  editor.join();
  EXPECT_EQ(OSW_DW_DeadLoopWhenLoadDll, 0u);
}

TEST_F(life_test, attach_loads_no_library_and_makes_no_state) {
  library::start();
  EXPECT_EQ(platform::load_count("opengl32sys.dll"), 0);
  EXPECT_EQ(own_state(), nullptr);
  EXPECT_EQ(library::listed_states(), 0);
  EXPECT_EQ(platform::live_tls_slots(), 2);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(life_test, a_bypassed_process_has_monitors_and_tables_too) {
  library::start({.active = false, .parts = 3});
  EXPECT_EQ(__osw_part_count, 3);
  EXPECT_NE(__osw_gl_table_mt[0], nullptr);
  EXPECT_EQ(__osw_gl_sync_filled, 1u);
}

TEST_F(life_test, a_thread_that_starts_gets_no_state) {
  library::start();
  library::run_on_new_thread([] { EXPECT_EQ(own_state(), nullptr); });
}

TEST_F(life_test, a_thread_that_never_called_makes_and_destroys_a_state_at_its_end) {
  library::start();
  osw_glGetError();
  allocation::watch();
  library::run_on_new_thread([] {});
  allocation::stop_watching();
  EXPECT_EQ(platform::load_count("opengl32sys.dll"), 2);
  EXPECT_EQ(library::listed_states(), 1);
  EXPECT_EQ(allocation::freed().size(), 1u);
  EXPECT_EQ(allocation::live_blocks(), 0);
}

#ifdef OSW_SANITIZED
constexpr int silent_threads = 1000;  // the sanitizers take many times longer to start one
#else
constexpr int silent_threads = 100000;
#endif

// Nothing may be loaded under the loader lock for a program that has no use of it.
TEST_F(life_test, a_process_that_never_called_loads_nothing_at_the_end_of_its_threads) {
  library::start();
  allocation::watch();
  for (int i = 0; i < silent_threads; ++i) library::run_on_new_threads(1, [] {});
  EXPECT_EQ(platform::exit_process(), TRUE);
  allocation::stop_watching();
  EXPECT_EQ(platform::call_count("LoadLibraryA"), 0);
  EXPECT_EQ(platform::call_count("GetProcAddress"), 0);
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_TRUE(allocation::freed().empty());
  EXPECT_EQ(allocation::live_blocks(), 0);
}

// A binding waits for the loader within its lock, and the thread that ends has the loader lock.
TEST_F(life_test, a_thread_ends_while_another_binds) {
  library::start();
  std::atomic<bool> asked{false}, ended{false};
  driver::on_call<wglGetProcAddress_op>([&](driver::live_call&) {
    if (asked.exchange(true)) return;
    library::run_on_new_thread([] {});
    ended = true;
  });
  osw_glGetError();
  EXPECT_TRUE(ended);
  EXPECT_EQ(library::listed_states(), 1);
}

struct late_life_test : life_test, testing::WithParamInterface<bool> {};

// What destructors of a program's own do once the loader has told the library of the thread's end.
TEST_P(late_life_test, a_call_after_the_end_of_its_thread_finds_no_context) {
  library::start({.active = GetParam()});
  std::atomic<int> calls{0};
  platform::after_thread_end([&] {
    if (own_state() == nullptr) return;  // a worker's
    const __osw_thread_state before = *own_state();
    EXPECT_EQ(osw_glGetError(), 0u);
    EXPECT_EQ(osw_glIsEnabled(GL_BLEND), GL_FALSE);
    osw_glFlush();
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    EXPECT_EQ(osw_wglGetCurrentContext(), nullptr);
    EXPECT_EQ(own_state()->gl_table, __osw_gl_table_nocontext);
    EXPECT_EQ(std::memcmp(own_state(), &before, sizeof before), 0) << "other threads share it";
    ++calls;
  });
  library::run_on_new_threads(2, [] {
    library::start_rendering();
    osw_glFlush();
  });
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(library::listed_states(), 0);
}

INSTANTIATE_TEST_SUITE_P(, late_life_test, testing::Bool(),
                         [](const auto& active) { return std::string(active.param ? "active" : "bypassed"); });

// It would end the process at once, and other libraries would not hear of the end.
TEST_F(life_test, no_lock_is_entered_at_the_end_in_which_a_thread_was_stopped) {
  library::start();
  osw_glGetError();
  CRITICAL_SECTION* const locks[] = {&__osw_wgl_bind_lock,   &__osw_gl_bind_lock, &__osw_thread_state_lock,
                                     &__osw_worker_arg_lock, &__osw_glrc_lock,    &__osw_pbuffer_lock,
                                     &__osw_mapping_lock,    &__osw_class_lock};
  std::vector<library::app_thread_pointer> threads;
  for (std::size_t i = 0; i < std::size(locks); ++i) {
    threads.push_back(library::start_thread());
    library::run(threads.back(), [] { library::start_rendering(); });
  }
  for (std::size_t i = 0; i < std::size(locks); ++i) {
    library::run(threads[i], [lock = locks[i]] { EnterCriticalSection(lock); });
  }
  EXPECT_EQ(platform::exit_process(), TRUE);
  EXPECT_EQ(library::listed_states(), 0);
}

TEST_F(life_test, a_thread_that_called_leaves_nothing) {
  library::start();
  allocation::watch();
  library::run_on_new_thread([] {
    osw_glGetError();
    EXPECT_EQ(library::listed_states(), 1);
  });
  allocation::stop_watching();
  EXPECT_EQ(library::listed_states(), 0);
  EXPECT_EQ(allocation::live_blocks(), 0);
}

TEST_F(life_test, a_thread_s_end_survives_a_lack_of_memory) {
  library::start();
  osw_glGetError();
  library::run_on_new_thread([] { allocation::fail_call(1, true); });
  EXPECT_EQ(library::listed_states(), 1);
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: no memory for the state of a thread\n"});
}

TEST_F(life_test, a_thread_that_rendered_leaves_nothing) {
  library::start();
  library::run_on_new_thread([] {
    library::start_rendering();
    osw_glFlush();
    osw_wglMakeCurrent(nullptr, nullptr);
  });
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(library::listed_states(), 0);
  EXPECT_EQ(platform::leaks(true), std::vector<std::string>());
}

TEST_F(life_test, a_thread_may_end_while_it_renders) {
  library::start();
  library::run_on_new_thread([] {
    library::start_rendering();
    osw_glFlush();
  });
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(library::listed_states(), 0);
}

TEST_F(life_test, the_process_ends_with_states_of_threads_that_never_detached) {
  library::start();
  std::vector<library::app_thread_pointer> threads;
  for (int i = 0; i < 3; ++i) {
    threads.push_back(library::start_thread());
    library::run(threads.back(), [] {
      library::start_rendering();
      osw_glFlush();
    });
  }
  EXPECT_EQ(library::listed_states(), 3);
  EXPECT_EQ(platform::live_threads(), 3 * 4);
  EXPECT_EQ(library::listed_arguments(), 3 * 3);
  EXPECT_EQ(open_thread_handles(), 3 * 4);
  EXPECT_EQ(platform::exit_process(), TRUE);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_EQ(library::listed_states(), 0);
  EXPECT_EQ(library::listed_arguments(), 0);
  EXPECT_EQ(open_thread_handles(), 3) << "those of the application's own threads";
}

TEST_F(life_test, the_process_ends_while_the_main_thread_renders) {
  library::start();
  library::start_rendering();
  osw_glFlush();
  EXPECT_EQ(library::listed_states(), 1);
  EXPECT_EQ(library::listed_arguments(), 3);
  EXPECT_EQ(open_thread_handles(), 3);
  EXPECT_EQ(platform::exit_process(), TRUE);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_EQ(library::listed_states(), 0);
  EXPECT_EQ(library::listed_arguments(), 0);
  EXPECT_EQ(open_thread_handles(), 0);
}

TEST_F(life_test, a_library_that_has_bound_nothing_can_be_unloaded) {
  library::start();
  osw_glGetError();
  const library::app_thread_pointer other = library::start_thread();
  library::run(other, [] { osw_glGetError(); });
  EXPECT_EQ(library::listed_states(), 2);
  EXPECT_EQ(platform::detach_process(), TRUE);
  EXPECT_FALSE(platform::process_attached());
  EXPECT_EQ(library::listed_states(), 0);
  library::end_thread(other);
}

TEST_F(life_test, unknown_reasons_are_accepted) {
  library::start();
  EXPECT_EQ(DllMain(library::module_handle, 99, nullptr), TRUE);
}

}  // namespace
