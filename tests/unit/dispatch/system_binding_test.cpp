// Binding of the system's library.
#include "dispatch/system.h"

#include <algorithm>

#include "dispatch/thread_state.h"
#include "ops/names.h"
#include "support/expected_figures.h"
#include "support/library.h"

namespace {

struct binding_test : library::process_test {};

const std::string error_text = "OGLSPANWrapper Error: ";
const std::string warning_text = "OGLSPANWrapper Warning: ";

TEST_F(binding_test, before_a_context_the_exports_are_there) {
  library::start();
  osw_glDebugEntry();
  for (int op = 0; op < wgl_op_count; ++op) {
    EXPECT_EQ(__osw_sys_wgl[op] != nullptr, op < figures::exported_wgl_ops) << __osw_wgl_names[op];
  }
  EXPECT_TRUE(platform::debug_output().empty());
  EXPECT_EQ(__osw_wgl_bound_done, 0u);
  EXPECT_EQ(__osw_gl_bound_done, 0u);
  for (const __osw_proc entry : __osw_sys_gl) EXPECT_EQ(entry, nullptr);
}

TEST_F(binding_test, each_state_before_a_context_binds_again) {
  library::start();
  for (int thread = 1; thread <= 3; ++thread) {
    library::run_on_new_thread([] { osw_glDebugEntry(); });
    EXPECT_EQ(platform::load_count("opengl32sys.dll"), thread);
  }
}

// Whoever calls through the table meanwhile waits: it stops changing with the first context.
TEST_F(binding_test, a_binding_empties_the_table_before_it_fills_it) {
  library::start();
  osw_glGetError();
  int asked = 0;
  driver::on_call<wglGetProcAddress_op>([&](driver::live_call& call) {
    const int op = find_wgl_op(reinterpret_cast<const char*>(call.what.arguments[0]));
    if (op < 0) return;
    ++asked;
    for (int later = op; later < wgl_op_count; ++later) EXPECT_EQ(__osw_sys_wgl[later], nullptr) << later;
  });
  library::run_on_new_thread([] { osw_glGetError(); });
  EXPECT_GT(asked, 0);
  EXPECT_NE(__osw_sys_wgl[wglMakeCurrent_op::op], nullptr);
}

TEST_F(binding_test, the_first_make_current_completes_both_tables) {
  library::start();
  library::start_rendering();
  EXPECT_EQ(__osw_wgl_bound_done, 1u);
  EXPECT_EQ(__osw_gl_bound_done, 1u);
  for (int op = 0; op < wgl_op_count; ++op) EXPECT_NE(__osw_sys_wgl[op], nullptr) << __osw_wgl_names[op];
  for (int op = 0; op < gl_op_count; ++op) EXPECT_NE(__osw_sys_gl[op], nullptr) << __osw_gl_names[op];
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(binding_test, the_pass_through_make_current_completes_them_too) {
  library::start({.active = false});
  library::start_rendering();
  EXPECT_EQ(__osw_wgl_bound_done, 1u);
  EXPECT_EQ(__osw_gl_bound_done, 1u);
  EXPECT_NE(__osw_sys_wgl[wglCreateContextAttribsARB_op::op], nullptr);
  EXPECT_NE(__osw_sys_gl[glDrawableSizeZ4_op::op], nullptr);
}

TEST_F(binding_test, each_slot_holds_the_entry_of_its_name) {
  library::start({.active = false});
  library::start_rendering();
  for (int op = 0; op < wgl_op_count; ++op) {
    driver::set_reach(__osw_wgl_names[op], driver::reach::both);
    EXPECT_EQ(__osw_sys_wgl[op], reinterpret_cast<__osw_proc>(driver::export_of(__osw_wgl_names[op])));
  }
  for (int op = 0; op < gl_op_count; ++op) {
    driver::set_reach(__osw_gl_names[op], driver::reach::both);
    EXPECT_EQ(__osw_sys_gl[op], reinterpret_cast<__osw_proc>(driver::export_of(__osw_gl_names[op])));
  }
}

TEST_F(binding_test, a_missing_entry_is_warned_of_once) {
  library::prepare();
  for (const char* name : {"wglSwapIntervalEXT", "glBlendColor", "glClearDepth"}) {
    driver::set_reach(name, driver::reach::nowhere);
  }
  platform::attach_process();
  const library::rendering rendered = library::start_rendering();
  EXPECT_EQ(__osw_sys_wgl[wglSwapIntervalEXT_op::op], nullptr);
  const std::vector<std::string> expected = {
      warning_text + "cannot get function wglSwapIntervalEXT's address.\n",
      warning_text + "cannot get function glClearDepth's address.\n",
      warning_text + "cannot get function glBlendColor's address.\n",
  };
  EXPECT_EQ(library::reports(), expected);
  platform::clear_debug_output();
  const int loads = platform::load_count("opengl32sys.dll");
  osw_wglMakeCurrent(nullptr, nullptr);
  osw_wglMakeCurrent(rendered.window.hdc, rendered.context);
  library::run_on_new_thread([] { library::start_rendering(); });
  EXPECT_EQ(platform::load_count("opengl32sys.dll"), loads);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(binding_test, an_export_wins_and_the_driver_is_asked_on_a_null_only) {
  library::prepare();
  driver::set_answer("wglSwapBuffers", 0x1234);
  driver::set_reach("wglSwapIntervalEXT", driver::reach::both);
  driver::set_answer("wglSwapIntervalEXT", 0x5678);
  driver::set_answer("wglGetSwapIntervalEXT", 0x9ABC);
  platform::attach_process();
  library::start_rendering();
  EXPECT_EQ(__osw_sys_wgl[wglSwapBuffers_op::op], reinterpret_cast<__osw_proc>(driver::export_of("wglSwapBuffers")));
  EXPECT_EQ(__osw_sys_wgl[wglSwapIntervalEXT_op::op],
            reinterpret_cast<__osw_proc>(driver::export_of("wglSwapIntervalEXT")));
  EXPECT_EQ(reinterpret_cast<u64>(__osw_sys_wgl[wglGetSwapIntervalEXT_op::op]), 0x9ABCu);
  for (const driver::call& call : driver::calls_of<wglGetProcAddress_op>()) {
    const std::string name = reinterpret_cast<const char*>(call.arguments[0]);
    EXPECT_NE(name, "wglSwapBuffers");
    EXPECT_NE(name, "wglSwapIntervalEXT");
  }
}

TEST_F(binding_test, answers_that_are_no_addresses_count_as_none) {
  library::prepare();
  const std::pair<const char*, INT_PTR> answers[] = {{"glBlendColor", 0},
                                                     {"glBlendEquation", 1},
                                                     {"glDrawRangeElements", 2},
                                                     {"glTexImage3D", 3},
                                                     {"glTexSubImage3D", -1}};
  for (const auto& [name, answer] : answers) driver::set_answer(name, answer);
  driver::set_answer("wglSwapIntervalEXT", -1);
  platform::attach_process();
  library::start_rendering();
  for (int op = 0; op < gl_op_count; ++op) {
    const bool missing =
        std::ranges::any_of(answers, [&](const auto& one) { return std::string(one.first) == __osw_gl_names[op]; });
    EXPECT_EQ(__osw_sys_gl[op] == nullptr, missing) << __osw_gl_names[op];
  }
  EXPECT_EQ(__osw_sys_wgl[wglSwapIntervalEXT_op::op], nullptr);
  EXPECT_EQ(library::reports().size(), 6u);
}

constexpr const char* required_names[] = {"wglCopyContext",     "wglCreateContext",     "wglCreateLayerContext",
                                          "wglDeleteContext",   "wglGetCurrentContext", "wglGetCurrentDC",
                                          "wglGetProcAddress",  "wglMakeCurrent",       "wglShareLists",
                                          "wglUseFontBitmapsA", "wglUseFontBitmapsW"};

TEST_F(binding_test, a_required_entry_is_missed_at_each_bind_until_the_first_context) {
  library::prepare();
  driver::set_reach("wglCopyContext", driver::reach::nowhere);
  platform::attach_process();
  const std::string must_exist = error_text + "cannot find function wglCopyContext in opengl32sys.dll\n, it MUST exist";
  for (int i = 0; i < 2; ++i) {
    platform::clear_debug_output();
    library::run_on_new_thread([] { osw_glDebugEntry(); });
    EXPECT_EQ(library::reports(), std::vector<std::string>{must_exist});
  }
  platform::clear_debug_output();
  library::start_rendering();
  const std::vector<std::string> at_context = {must_exist, must_exist,
                                               warning_text + "cannot get function wglCopyContext's address.\n"};
  EXPECT_EQ(library::reports(), at_context);
  platform::clear_debug_output();
  library::run_on_new_thread([] { osw_glDebugEntry(); });
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(binding_test, exactly_eleven_entries_are_required) {
  library::prepare();
  for (int op = 0; op < wgl_op_count; ++op) driver::set_reach(__osw_wgl_names[op], driver::reach::nowhere);
  platform::attach_process();
  osw_glDebugEntry();
  std::vector<std::string> expected = {error_text + "cannot find function wglGetProcAddress in opengl32sys.dll\n"};
  for (const char* name : required_names) {
    expected.push_back(error_text + "cannot find function " + name + " in opengl32sys.dll\n, it MUST exist");
  }
  EXPECT_EQ(library::reports(), expected);
}

TEST_F(binding_test, a_library_that_does_not_load_is_reported) {
  library::prepare();
  platform::withdraw_library("opengl32sys.dll");
  platform::attach_process();
  osw_glDebugEntry();
  const std::vector<std::string> lines = library::reports();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], error_text + "cannot load opengl32sys.dll\n");
  EXPECT_NE(std::ranges::find(lines, error_text + "cannot find function wglGetProcAddress in opengl32sys.dll\n"),
            lines.end());
  EXPECT_EQ(osw_glGetError(), 0u);
}

TEST_F(binding_test, binding_at_once_on_many_threads_leaves_complete_tables) {
  library::start({.active = false});
  library::run_on_new_threads(6, [] {
    library::start_rendering();
    for (int op = 0; op < gl_op_count; ++op) EXPECT_NE(__osw_sys_gl[op], nullptr) << op;
    osw_glClear(3);
  });
  EXPECT_EQ(driver::calls_of<glClear_op>().size(), 6u);
}

}  // namespace
