// The ops that act on the bound context, render to texture and the swap interval, and those that only forward.
#include <gtest/gtest.h>

#include "pipeline/cmd_queue.h"
#include "support/wgl_names.h"
#include "support/wgl_scene.h"
#include "wgl/records/pbuffer.h"

namespace {

using scene::driver_context;
using scene::in;
using scene::own_state;
using scene::own_steps;
using scene::worker_steps;
using steps = std::vector<scene::step>;

struct wgl_bound_context_test : library::process_test {};

constexpr int some_attributes[] = {WGL_FRONT_LEFT_ARB, 1, 0};

struct application {
  library::rendering rendered;
  HPBUFFERARB pbuffer = nullptr;
  HPBUFFERARB children[2] = {};
};

application start_application(const library::process_setup& setup = {}) {
  library::start(setup);
  application started;
  started.rendered = library::start_rendering();
  started.pbuffer = osw_wglCreatePbufferARB(started.rendered.window.hdc, 1, 70, 50, nullptr);
  const __osw_pbuffer* record = __osw_pbuffer_lookup(started.pbuffer);
  for (int part = 0; part < 2; ++part) started.children[part] = record->parts[part].child_hpbuffer;
  driver::clear_calls();
  return started;
}

TEST_F(wgl_bound_context_test, threaded_textures_travel_in_the_list) {
  const application app = start_application({.query_on_app_thread = false});
  osw_glClear(1);
  EXPECT_EQ(osw_wglBindTexImageARB(app.pbuffer, WGL_FRONT_LEFT_ARB), 1);
  osw_glClear(2);
  EXPECT_EQ(osw_wglReleaseTexImageARB(app.pbuffer, WGL_BACK_LEFT_ARB), 1);
  EXPECT_TRUE(driver::calls().empty());
  library::finish();
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = app.rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(
        worker_steps(part),
        (steps{in<glClear_op>(child, 1u), in<wglBindTexImageARB_op>(child, app.children[part], WGL_FRONT_LEFT_ARB),
               in<glClear_op>(child, 2u), in<wglReleaseTexImageARB_op>(child, app.children[part], WGL_BACK_LEFT_ARB)}));
  }
  EXPECT_TRUE(own_steps().empty());
}

TEST_F(wgl_bound_context_test, threaded_textures_of_an_unknown_pbuffer_reach_no_part) {
  start_application();
  const auto unknown = reinterpret_cast<HPBUFFERARB>(0x99990);
  EXPECT_EQ(osw_wglBindTexImageARB(unknown, 1), 1);
  EXPECT_EQ(osw_wglReleaseTexImageARB(unknown, 1), 1);
  EXPECT_EQ(osw_wglBindTexImageARB(nullptr, 1), 1);
  library::finish();
  EXPECT_TRUE(driver::calls_of<wglBindTexImageARB_op>().empty());
  EXPECT_TRUE(driver::calls_of<wglReleaseTexImageARB_op>().empty());
}

TEST_F(wgl_bound_context_test, threaded_attributes_wait_for_the_workers) {
  const application app = start_application();
  osw_glFlush();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
  const HGLRC context = app.rendered.context;
  EXPECT_EQ(own_steps(), (steps{in<wglSetPbufferAttribARB_op>(context, app.pbuffer, some_attributes)}));
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = app.rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(worker_steps(part).back(), in<wglSetPbufferAttribARB_op>(child, app.children[part], some_attributes));
  }
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 0u);
  // What the workers find does not change the result; what the system says does.
  driver::clear_calls();
  driver::fail_call<wglSetPbufferAttribARB_op>(1);
  EXPECT_FALSE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
  EXPECT_EQ(driver::calls().size(), 1u);
  driver::fail_call<wglSetPbufferAttribARB_op>(2);
  EXPECT_TRUE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
}

TEST_F(wgl_bound_context_test, threaded_interval) {
  const application app = start_application();
  EXPECT_EQ(osw_wglSwapIntervalEXT(3), 1);
  EXPECT_EQ(own_steps(), (steps{in<wglSwapIntervalEXT_op>(app.rendered.context, 3)}));
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 1u);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = app.rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(worker_steps(part).at(0), in<wglSwapIntervalEXT_op>(child, 3));
  }
  driver::clear_calls();
  EXPECT_EQ(osw_wglGetSwapIntervalEXT(), 3);
  EXPECT_EQ(driver::calls().size(), 1u);
  // A failure on the application's context is told, and the parts are told all the same.
  driver::fail_call<wglSwapIntervalEXT_op>(1);
  EXPECT_EQ(osw_wglSwapIntervalEXT(-1), 0);
  library::finish();
  EXPECT_EQ(driver::calls_of<wglSwapIntervalEXT_op>(), std::vector(3, driver::expect<wglSwapIntervalEXT_op>(-1)));
}

// The calls of one round over both parts on the application's thread.
template <class Op, class Argument>
steps sequential_round(const application& app, Argument argument) {
  const HGLRC own = app.rendered.context;
  const HGLRC first = app.rendered.children[0];
  const HGLRC second = app.rendered.children[1];
  return {in<wglFastSwitchContextZ4_op>(own, driver_context(first), 0), in<Op>(first, app.children[0], argument),
          in<wglFastSwitchContextZ4_op>(first, driver_context(second), 0), in<Op>(second, app.children[1], argument),
          in<wglFastSwitchContextZ4_op>(second, driver_context(own), 0)};
}

TEST_F(wgl_bound_context_test, sequential_textures) {
  const application app = start_application({.way = library::path::sequential});
  EXPECT_EQ(osw_wglBindTexImageARB(app.pbuffer, WGL_FRONT_LEFT_ARB), 1);
  EXPECT_EQ(own_steps(), (sequential_round<wglBindTexImageARB_op>(app, WGL_FRONT_LEFT_ARB)));
  driver::clear_calls();
  EXPECT_EQ(osw_wglReleaseTexImageARB(app.pbuffer, WGL_BACK_LEFT_ARB), 1);
  EXPECT_EQ(own_steps(), (sequential_round<wglReleaseTexImageARB_op>(app, WGL_BACK_LEFT_ARB)));
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(worker_steps(part).empty());
  for (int failing = 1; failing <= 2; ++failing) {
    driver::clear_calls();
    driver::fail_call<wglBindTexImageARB_op>(failing);
    EXPECT_EQ(osw_wglBindTexImageARB(app.pbuffer, WGL_FRONT_LEFT_ARB), 0);
    EXPECT_EQ(own_steps(), (sequential_round<wglBindTexImageARB_op>(app, WGL_FRONT_LEFT_ARB)));
  }
  driver::set_result<wglBindTexImageARB_op>(3);
  EXPECT_EQ(osw_wglBindTexImageARB(app.pbuffer, WGL_FRONT_LEFT_ARB), 1);
}

TEST_F(wgl_bound_context_test, sequential_attributes) {
  const application app = start_application({.way = library::path::sequential});
  EXPECT_TRUE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
  steps wanted = {in<wglSetPbufferAttribARB_op>(app.rendered.context, app.pbuffer, some_attributes)};
  const steps round = sequential_round<wglSetPbufferAttribARB_op>(app, some_attributes);
  wanted.insert(wanted.end(), round.begin(), round.end());
  EXPECT_EQ(own_steps(), wanted);
  driver::clear_calls();
  driver::fail_call<wglSetPbufferAttribARB_op>(1);
  EXPECT_FALSE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
  EXPECT_EQ(driver::calls().size(), 1u);
  driver::clear_calls();
  driver::fail_call<wglSetPbufferAttribARB_op>(3);
  EXPECT_FALSE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
  EXPECT_EQ(own_steps(), wanted);
}

TEST_F(wgl_bound_context_test, sequential_interval) {
  const application app = start_application({.way = library::path::sequential});
  const HGLRC own = app.rendered.context;
  const HGLRC first = app.rendered.children[0];
  const HGLRC second = app.rendered.children[1];
  EXPECT_EQ(osw_wglSwapIntervalEXT(2), 1);
  const steps wanted = {
      in<wglSwapIntervalEXT_op>(own, 2),    in<wglFastSwitchContextZ4_op>(own, driver_context(first), 0),
      in<wglSwapIntervalEXT_op>(first, 2),  in<wglFastSwitchContextZ4_op>(first, driver_context(second), 0),
      in<wglSwapIntervalEXT_op>(second, 2), in<wglFastSwitchContextZ4_op>(second, driver_context(own), 0)};
  EXPECT_EQ(own_steps(), wanted);
  for (int failing = 1; failing <= 3; ++failing) {
    driver::clear_calls();
    driver::fail_call<wglSwapIntervalEXT_op>(failing);
    EXPECT_EQ(osw_wglSwapIntervalEXT(2), 0);
    EXPECT_EQ(own_steps(), wanted);
  }
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 0u);
}

// Without a queue what would have been pushed is left out; what is the application's own still happens.
TEST_F(wgl_bound_context_test, a_thread_without_a_queue) {
  const application app = start_application();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    osw_wglBindTexImageARB(app.pbuffer, 1);
    osw_wglReleaseTexImageARB(app.pbuffer, 1);
    EXPECT_TRUE(driver::calls().empty());
    EXPECT_TRUE(osw_wglSetPbufferAttribARB(app.pbuffer, some_attributes));
    EXPECT_TRUE(osw_wglSwapIntervalEXT(4));
    EXPECT_EQ(driver::calls(), (std::vector{driver::expect<wglSetPbufferAttribARB_op>(app.pbuffer, some_attributes),
                                            driver::expect<wglSwapIntervalEXT_op>(4)}));
    EXPECT_EQ(own_state()->cmd_queue, nullptr);
  });
  library::end_thread(thread);
}

TEST_F(wgl_bound_context_test, a_bypassed_process_calls_the_system_alone) {
  library::start({.active = false});
  const library::rendering rendered = library::start_rendering();
  const HGLRC context = rendered.context;
  const HDC window_hdc = rendered.window.hdc;
  driver::clear_calls();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(window_hdc, 1, 70, 50, nullptr);
  const HDC hdc = osw_wglGetPbufferDCARB(pbuffer);
  EXPECT_TRUE(osw_wglBindTexImageARB(pbuffer, 1));
  EXPECT_TRUE(osw_wglReleaseTexImageARB(pbuffer, 1));
  EXPECT_TRUE(osw_wglSetPbufferAttribARB(pbuffer, some_attributes));
  EXPECT_TRUE(osw_wglSwapIntervalEXT(2));
  EXPECT_TRUE(osw_wglReleasePbufferDCARB(pbuffer, hdc));
  EXPECT_TRUE(osw_wglSwapBuffers(window_hdc));
  EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer));
  const int* no_attributes = nullptr;
  EXPECT_EQ(own_steps(),
            (steps{in<wglCreatePbufferARB_op>(context, window_hdc, 1, 70, 50, no_attributes),
                   in<wglGetPbufferDCARB_op>(context, pbuffer), in<wglBindTexImageARB_op>(context, pbuffer, 1),
                   in<wglReleaseTexImageARB_op>(context, pbuffer, 1),
                   in<wglSetPbufferAttribARB_op>(context, pbuffer, some_attributes),
                   in<wglSwapIntervalEXT_op>(context, 2), in<wglReleasePbufferDCARB_op>(context, pbuffer, hdc),
                   in<wglSwapBuffers_op>(context, window_hdc), in<wglDestroyPbufferARB_op>(context, pbuffer)}));
  EXPECT_EQ(platform::call_count("CreateWindowExA"), 0);
  EXPECT_EQ(platform::live_threads(), 0);
}

// ---- the rest of the table ----

TEST_F(wgl_bound_context_test, the_private_entries_stay_private) {
  start_application({.way = library::path::sequential});
  EXPECT_EQ(driver::bits_of(osw_wglGetGLContextZ4(scene::own_state()->current_hglrc)), 0u);
  EXPECT_EQ(osw_wglFastSwitchContextZ4(nullptr, 0), 0);
  EXPECT_TRUE(driver::calls().empty());
}

TEST_F(wgl_bound_context_test, fonts_are_made_in_the_applications_context_with_a_warning) {
  const application app = start_application();
  platform::clear_debug_output();
  const HDC hdc = app.rendered.window.hdc;
  EXPECT_TRUE(osw_wglUseFontBitmapsA(hdc, 1, 2, 3));
  EXPECT_TRUE(osw_wglUseFontBitmapsW(hdc, 1, 2, 3));
  EXPECT_TRUE(osw_wglUseFontOutlinesA(hdc, 1, 2, 3, 0.5f, 1.5f, 4, nullptr));
  EXPECT_TRUE(osw_wglUseFontOutlinesW(hdc, 1, 2, 3, 0.5f, 1.5f, 4, nullptr));
  const HGLRC context = app.rendered.context;
  EXPECT_EQ(own_steps(),
            (steps{in<wglUseFontBitmapsA_op>(context, hdc, 1, 2, 3), in<wglUseFontBitmapsW_op>(context, hdc, 1, 2, 3),
                   in<wglUseFontOutlinesA_op>(context, hdc, 1, 2, 3, 0.5f, 1.5f, 4, nullptr),
                   in<wglUseFontOutlinesW_op>(context, hdc, 1, 2, 3, 0.5f, 1.5f, 4, nullptr)}));
  EXPECT_EQ(library::reports(), (std::vector<std::string>{"OGLSPANWrapper Warning: wglUseFontBitmapsA is called!\n",
                                                          "OGLSPANWrapper Warning: wglUseFontBitmapsW is called!\n",
                                                          "OGLSPANWrapper Warning: wglUseFontOutlinesA is called!\n",
                                                          "OGLSPANWrapper Warning: wglUseFontOutlinesW is called!\n"}));
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(worker_steps(part).empty());
}

TEST_F(wgl_bound_context_test, names_with_ext_are_those_with_arb) {
  const application app = start_application();
  const HDC hdc = app.rendered.window.hdc;
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferEXT(hdc, 1, 9, 8, nullptr);
  ASSERT_NE(__osw_pbuffer_lookup(pbuffer), nullptr);
  const HDC pbuffer_hdc = osw_wglGetPbufferDCEXT(pbuffer);
  EXPECT_EQ(__osw_pbuffer_of_hdc(pbuffer_hdc), __osw_pbuffer_lookup(pbuffer));
  int width = 0;
  EXPECT_TRUE(osw_wglQueryPbufferEXT(pbuffer, WGL_PBUFFER_WIDTH_ARB, &width));
  EXPECT_EQ(width, 9);
  EXPECT_EQ(osw_wglReleasePbufferDCEXT(pbuffer, pbuffer_hdc), 1);
  EXPECT_TRUE(osw_wglDestroyPbufferEXT(pbuffer));
  EXPECT_EQ(__osw_pbuffer_lookup(pbuffer), nullptr);
  EXPECT_EQ(driver::calls_of<wglCreatePbufferARB_op>().size(), 3u);
  EXPECT_EQ(driver::calls_of<wglGetPbufferDCARB_op>().size(), 3u);
  EXPECT_EQ(driver::calls_of<wglQueryPbufferARB_op>().size(), 1u);
  EXPECT_EQ(driver::calls_of<wglReleasePbufferDCARB_op>().size(), 3u);
  EXPECT_EQ(driver::calls_of<wglDestroyPbufferARB_op>().size(), 3u);
  EXPECT_TRUE(driver::calls_of<wglCreatePbufferEXT_op>().empty());
  EXPECT_TRUE(driver::calls_of<wglDestroyPbufferEXT_op>().empty());
}

TEST_F(wgl_bound_context_test, the_list_of_extensions_is_the_systems) {
  start_application();
  driver::set_extensions("WGL_ARB_anything WGL_ARB_create_context");
  EXPECT_STREQ(osw_wglGetExtensionsStringARB(nullptr), "WGL_ARB_anything WGL_ARB_create_context");
  EXPECT_STREQ(osw_wglGetExtensionsStringEXT(), "WGL_ARB_anything WGL_ARB_create_context");
}

}  // namespace
