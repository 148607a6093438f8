// Entry points by name.
#include "dispatch/lookup.h"

#include "dispatch/thread_state.h"
#include "support/library.h"

namespace {

struct lookup_test : library::process_test {
  // Every name of the list is known to the driver.
  static void start_with_all_names(bool active = true) {
    library::prepare({.active = active});
    for (const char* name : __osw_wgl_names) driver::set_reach(name, driver::reach::both);
    for (const char* name : __osw_gl_names) driver::set_reach(name, driver::reach::both);
    platform::attach_process();
    library::start_rendering();
    platform::clear_debug_output();
  }
};

__osw_proc entry_of(const char* name) {
  return reinterpret_cast<__osw_proc>(osw_wglGetProcAddress(name));
}

constexpr INT_PTR some_address = 0x7654321;

TEST_F(lookup_test, every_name_of_the_list_gives_its_entry) {
  start_with_all_names();
  for (int op = 0; op < wgl_op_count; ++op) {
    EXPECT_EQ(entry_of(__osw_wgl_names[op]), __osw_wgl_entries[op]) << __osw_wgl_names[op];
  }
  for (int op = 0; op < gl_op_count; ++op) {
    EXPECT_EQ(entry_of(__osw_gl_names[op]), __osw_gl_entries[op]) << __osw_gl_names[op];
  }
  EXPECT_EQ(entry_of("glClear"), reinterpret_cast<__osw_proc>(osw_glClear));
  EXPECT_EQ(entry_of("glDrawableSizeZ4"), reinterpret_cast<__osw_proc>(osw_glDrawableSizeZ4));
  EXPECT_EQ(entry_of("wglGetGLContextZ4"), reinterpret_cast<__osw_proc>(osw_wglGetGLContextZ4));
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(lookup_test, what_the_system_does_not_know_does_not_exist) {
  library::start();
  library::start_rendering();
  EXPECT_EQ(entry_of("glClear"), nullptr);
  driver::set_reach("glBlendColor", driver::reach::nowhere);
  EXPECT_EQ(entry_of("glBlendColor"), nullptr);
  EXPECT_EQ(entry_of(""), nullptr);
  EXPECT_EQ(entry_of("something"), nullptr);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(lookup_test, without_a_context_the_answer_is_the_system_s) {
  library::start();
  EXPECT_EQ(entry_of("glBlendColor"), nullptr);
  library::start_rendering();
  EXPECT_EQ(entry_of("glBlendColor"), reinterpret_cast<__osw_proc>(osw_glBlendColor));
  osw_wglMakeCurrent(nullptr, nullptr);
  EXPECT_EQ(entry_of("glBlendColor"), nullptr);
}

TEST_F(lookup_test, an_answer_that_is_no_address_is_none) {
  library::start();
  library::start_rendering();
  for (const INT_PTR answer : {0, 1, 2, 3, -1}) {
    driver::set_answer("glBlendColor", answer);
    EXPECT_EQ(entry_of("glBlendColor"), nullptr) << answer;
  }
}

TEST_F(lookup_test, what_the_list_lacks_is_hidden_in_silence) {
  library::start();
  library::start_rendering();
  for (const char* name : {"glFoo", "wglNoSuch", "glCLEAR", "glClear ", "glClea", "wglglClear", "gl", "wgl"}) {
    driver::set_answer(name, some_address);
    EXPECT_EQ(entry_of(name), nullptr) << name;
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(lookup_test, a_name_of_neither_prefix_is_reported) {
  library::start();
  library::start_rendering();
  for (const char* name : {"GLCLEAR", "Wglx", "", "g", "w", "wgL", "eglX"}) {
    driver::set_answer(name, some_address);
    platform::clear_debug_output();
    EXPECT_EQ(entry_of(name), nullptr) << name;
    const std::string expected = "OGLSPANWrapper Error: function " + std::string(name) + " needs to be implemented";
    EXPECT_EQ(library::reports(), std::vector<std::string>{expected});
  }
}

TEST_F(lookup_test, a_very_long_name_overruns_nothing) {
  library::start();
  library::start_rendering();
  const std::string name(5000, 'x');
  driver::set_answer(name.c_str(), some_address);
  EXPECT_EQ(entry_of(name.c_str()), nullptr);
  const std::vector<platform::debug_text> texts = platform::debug_output();
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0].text, "OGLSPANWrapper Error: ");
  EXPECT_LT(texts[1].text.size(), 256u);
  EXPECT_TRUE(texts[1].text.starts_with("function xxx"));
}

TEST_F(lookup_test, the_default_look_up_is_the_system_s) {
  library::start();
  library::start_rendering();
  driver::set_answer("glFoo", some_address);
  EXPECT_EQ(reinterpret_cast<INT_PTR>(osw_wglGetDefaultProcAddress("glFoo")), some_address);
  const PROC system_s = osw_wglGetDefaultProcAddress("glBlendColor");
  EXPECT_EQ(reinterpret_cast<__osw_proc>(system_s), __osw_sys_gl[glBlendColor_op::op]);
  EXPECT_NE(system_s, osw_wglGetProcAddress("glBlendColor"));
}

TEST_F(lookup_test, a_bypassed_process_gets_the_system_s_own_entries) {
  start_with_all_names(false);
  driver::set_answer("glFoo", some_address);
  for (const char* name : {"glBlendColor", "glClear", "wglSwapIntervalEXT", "glFoo", "unknown"}) {
    EXPECT_EQ(osw_wglGetProcAddress(name), osw_wglGetDefaultProcAddress(name)) << name;
  }
  EXPECT_EQ(reinterpret_cast<INT_PTR>(osw_wglGetProcAddress("glFoo")), some_address);
  EXPECT_EQ(entry_of("glBlendColor"), __osw_sys_gl[glBlendColor_op::op]);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(lookup_test, a_found_entry_follows_the_thread) {
  library::start();
  library::start_rendering();
  auto* blend_color = reinterpret_cast<glBlendColor_op::type*>(entry_of("glBlendColor"));
  driver::clear_calls();
  library::run_on_new_thread([&] { blend_color(1, 2, 3, 4); });
  EXPECT_TRUE(driver::calls_of<glBlendColor_op>().empty());
  blend_color(1, 2, 3, 4);
  library::finish();
  EXPECT_FALSE(driver::calls_of<glBlendColor_op>().empty());
}

// A program's first context may be a poorer one than the next, as for thumbnails.
TEST_F(lookup_test, what_the_first_context_lacked_is_bound_when_it_is_found) {
  library::prepare({.query_on_app_thread = false});
  driver::set_reach("glBlendColor", driver::reach::nowhere);
  driver::set_reach("wglSwapIntervalEXT", driver::reach::nowhere);
  platform::attach_process();
  EXPECT_EQ(osw_wglGetProcAddress("glBlendColor"), nullptr);
  const library::rendering drawn = library::start_rendering();
  EXPECT_EQ(__osw_sys_gl[glBlendColor_op::op], nullptr);
  EXPECT_EQ(osw_wglGetProcAddress("glBlendColor"), nullptr);
  driver::set_reach("glBlendColor", driver::reach::by_name);
  driver::set_reach("wglSwapIntervalEXT", driver::reach::by_name);
  const auto found =
      reinterpret_cast<glBlendColor_op::type*>(reinterpret_cast<__osw_proc>(osw_wglGetProcAddress("glBlendColor")));
  ASSERT_NE(found, nullptr);
  EXPECT_NE(osw_wglGetProcAddress("wglSwapIntervalEXT"), nullptr);
  EXPECT_NE(__osw_sys_wgl[wglSwapIntervalEXT_op::op], nullptr);
  library::finish();
  driver::clear_calls();
  found(0.25f, 0.5f, 0.75f, 1);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(drawn, part),
              std::vector<driver::call>{driver::expect<glBlendColor_op>(0.25f, 0.5f, 0.75f, 1.0f)});
  }
  const __osw_proc kept = __osw_sys_gl[glBlendEquation_op::op];
  driver::set_answer("glBlendEquation", 0x1234);
  osw_wglGetProcAddress("glBlendEquation");
  EXPECT_EQ(__osw_sys_gl[glBlendEquation_op::op], kept) << "what is bound stays";
}

TEST_F(lookup_test, several_threads_look_up_at_once) {
  start_with_all_names();
  library::run_on_new_threads(4, [] {
    library::start_rendering();
    for (int op = 0; op < gl_op_count; op += 37) EXPECT_EQ(entry_of(__osw_gl_names[op]), __osw_gl_entries[op]);
  });
}

}  // namespace
