// Making a context current: the calls the system and each part receive, in order, and the state after each outcome.
#include <gtest/gtest.h>

#include <cstring>

#include "pipeline/cmd_queue.h"
#include "support/allocation.h"
#include "support/wgl_scene.h"
#include "wgl/records/glrc.h"

namespace {

using scene::driver_context;
using scene::in;
using scene::own_state;
using scene::own_steps;
using scene::worker_steps;
using steps = std::vector<scene::step>;

struct wgl_make_current_test : library::process_test {};

// A window of 300 by 200 over the seam of two parts, with a context that has not been current.
struct application {
  library::app_window window;
  HGLRC context = nullptr;
  std::vector<HGLRC> children;
};

application prepare_application(RECT rect = {860, 100, 1160, 300}) {
  application prepared;
  prepared.window = library::open_window(rect);
  prepared.context = osw_wglCreateContext(prepared.window.hdc);
  prepared.children = driver::contexts_made_after(prepared.context, 2);
  return prepared;
}

HDC child_hdc(const application& bound, int part) {
  return scene::mapping_of(bound.window.hwnd).parts[part].child_hdc;
}

// Less what the window's and the children's making asks for.
steps without_formats(const steps& all) {
  steps kept = all;
  std::erase_if(kept, [](const scene::step& step) {
    const bool format = step.call.op == wglGetPixelFormat_op::op || step.call.op == wglSetPixelFormat_op::op ||
                        step.call.op == wglDescribePixelFormat_op::op;
    return step.call.space == driver::op_space::wgl && format;
  });
  return kept;
}

TEST_F(wgl_make_current_test, the_first_binding_threaded) {
  library::start();
  const application bound = prepare_application();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_EQ(without_formats(own_steps()),
            (steps{in<wglGetCurrentDC_op>(nullptr), in<wglMakeCurrent_op>(nullptr, bound.window.hdc, bound.context),
                   in<glDrawableSizeZ4_op>(bound.context, -1, -1)}));
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = bound.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(
        worker_steps(part),
        (steps{in<wglMakeCurrent_op>(nullptr, child_hdc(bound, part), child), in<glViewport_op>(child, 0, 0, 300, 200),
               in<glViewportOffsetZ4_op>(child, part == 0 ? 0 : -100, 0), in<glDrawableSizeZ4_op>(child, 300, 200)}));
  }
}

TEST_F(wgl_make_current_test, the_first_binding_sequential) {
  library::start({.way = library::path::sequential});
  const application bound = prepare_application();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  const HGLRC app = bound.context;
  const HGLRC first = bound.children[0];
  const HGLRC second = bound.children[1];
  const auto to = [](HGLRC from, HGLRC target) {
    return in<wglFastSwitchContextZ4_op>(from, driver_context(target), 0);
  };
  EXPECT_EQ(without_formats(own_steps()),
            (steps{in<wglGetCurrentDC_op>(nullptr), in<wglMakeCurrent_op>(nullptr, bound.window.hdc, app),
                   in<wglGetGLContextZ4_op>(app, app), in<wglGetGLContextZ4_op>(app, first),
                   in<wglGetGLContextZ4_op>(app, second),
                   // the first viewport
                   to(app, first), in<glViewport_op>(first, 0, 0, 300, 200), to(first, second),
                   in<glViewport_op>(second, 0, 0, 300, 200), to(second, app),
                   // the offsets
                   to(app, first), in<glViewportOffsetZ4_op>(first, 0, 0), to(first, second),
                   in<glViewportOffsetZ4_op>(second, -100, 0), to(second, app),
                   // the size
                   in<glDrawableSizeZ4_op>(app, -1, -1), to(app, first), in<glDrawableSizeZ4_op>(first, 300, 200),
                   to(first, second), in<glDrawableSizeZ4_op>(second, 300, 200), to(second, app)}));
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(part), (steps{in<wglMakeCurrent_op>(nullptr, child_hdc(bound, part),
                                                               bound.children[static_cast<std::size_t>(part)])}));
  }
  const __osw_glrc* record = own_state()->glrc;
  EXPECT_EQ(record->app_gl_context, driver_context(app));
  EXPECT_EQ(record->child_gl_context[0], driver_context(first));
  EXPECT_EQ(record->child_gl_context[1], driver_context(second));
}

struct binding_path_test : wgl_make_current_test, testing::WithParamInterface<library::path> {};

// The children are bound after the application's own context, all of them before any is told its geometry, and all
// have their offset before any is told the size.
TEST_P(binding_path_test, the_application_comes_first) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  const std::vector<driver::call> bindings = driver::calls_of<wglMakeCurrent_op>();
  const std::vector<driver::call> viewports = driver::calls_of<glViewport_op>();
  ASSERT_EQ(bindings.size(), 3u);
  ASSERT_EQ(viewports.size(), 2u);
  EXPECT_EQ(bindings[0].thread_id, GetCurrentThreadId());
  EXPECT_GT(viewports[0].sequence, bindings[2].sequence);
  const std::vector<driver::call> offsets = driver::calls_of<glViewportOffsetZ4_op>();
  ASSERT_EQ(offsets.size(), 2u);
  for (const driver::call& size : driver::calls_of<glDrawableSizeZ4_op>()) {
    EXPECT_GT(size.sequence, offsets[1].sequence);
  }
  EXPECT_EQ(driver::current_binding().context, bound.context);
  EXPECT_EQ(driver::current_binding().switched_to, bound.context);
  EXPECT_EQ(driver::current_binding().draw, bound.window.hdc);
}

TEST_P(binding_path_test, the_state_of_a_binding) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  const bool threaded = GetParam() == library::path::threaded;
  const __osw_thread_state* state = own_state();
  EXPECT_EQ(state->gl_table, threaded ? __osw_gl_table_mt : __osw_gl_table_seq);
  EXPECT_EQ(state->mode, threaded ? 2 : 1);
  EXPECT_EQ(state->seq_path, threaded ? 0 : 1);
  EXPECT_EQ(state->has_context, 1);
  EXPECT_EQ(state->current_hdc, bound.window.hdc);
  EXPECT_EQ(state->current_hglrc, bound.context);
  EXPECT_EQ(state->window_mapping, &scene::mapping_of(bound.window.hwnd));
  EXPECT_EQ(state->pbuffer, nullptr);
  EXPECT_EQ(state->glrc, __osw_glrc_lookup(bound.context));
  EXPECT_EQ(state->glrc->viewport_set, 1u);
  EXPECT_EQ(state->thread_ctrl, TlsGetValue(__osw_ctrl_slot));
  EXPECT_EQ(state->sys_gl, __osw_sys_gl);
  EXPECT_EQ(state->wgl_table, __osw_wgl_table_main);
  // A worker for each part and the swap thread, on both paths.
  EXPECT_EQ(platform::live_threads(), 3);
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(driver::context(bound.children[static_cast<std::size_t>(part)]).current_on,
              state->thread_ctrl->worker_thread_id[part]);
  }
}

TEST_P(binding_path_test, repeating_the_binding_fails_and_touches_nothing) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  osw_wglSwapBuffers(bound.window.hdc);
  const __osw_thread_state before = *own_state();
  driver::clear_calls();
  EXPECT_FALSE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_EQ(std::memcmp(&before, own_state(), sizeof before), 0);
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentDC_op>(bound.context), in<wglGetCurrentContext_op>(bound.context)}));
  EXPECT_EQ(own_state()->frame_count, 1);
}

TEST_P(binding_path_test, a_release_and_the_next_binding) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  __osw_cmd_queue* const queue = own_state()->cmd_queue;
  const __osw_thread_ctrl started = own_state()->started;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, nullptr));
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentDC_op>(bound.context), in<wglGetCurrentContext_op>(bound.context),
                                in<wglMakeCurrent_op>(bound.context, bound.window.hdc, nullptr)}));
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = bound.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(worker_steps(part), (steps{in<wglMakeCurrent_op>(child, nullptr, nullptr)}));
    EXPECT_EQ(driver::context(child).current_on, 0u);
  }
  const __osw_thread_state* state = own_state();
  EXPECT_EQ(state->mode, 0);
  EXPECT_EQ(state->gl_table, __osw_gl_table_nocontext);
  EXPECT_EQ(state->seq_path, 0);
  EXPECT_EQ(state->has_context, 0);
  EXPECT_EQ(state->thread_ctrl, nullptr);
  EXPECT_EQ(state->window_mapping, nullptr);
  EXPECT_EQ(state->pbuffer, nullptr);
  EXPECT_EQ(state->glrc, nullptr);
  EXPECT_EQ(state->cmd_queue, queue);
  EXPECT_EQ(platform::live_threads(), 3);
  // The same threads serve the next binding, which brings no second viewport.
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_EQ(own_state()->cmd_queue, queue);
  EXPECT_EQ(std::memcmp(own_state()->thread_ctrl, &started, sizeof started), 0);
  EXPECT_EQ(platform::live_threads(), 3);
  EXPECT_TRUE(driver::calls_of<glViewport_op>().empty());
  EXPECT_EQ(driver::calls_of<glViewportOffsetZ4_op>().size(), 2u);
  EXPECT_EQ(driver::calls_of<wglMakeCurrent_op>().size(), 3u);
}

TEST_P(binding_path_test, from_one_context_to_another_without_a_release) {
  library::start({.way = GetParam()});
  const application first = prepare_application();
  const application second = prepare_application({0, 0, 100, 60});
  EXPECT_TRUE(osw_wglMakeCurrent(first.window.hdc, first.context));
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(second.window.hdc, second.context));
  for (int part = 0; part < 2; ++part) {
    const auto at = static_cast<std::size_t>(part);
    EXPECT_EQ(worker_steps(part).at(0),
              in<wglMakeCurrent_op>(first.children[at], child_hdc(second, part), second.children[at]));
    EXPECT_TRUE(driver::gl_calls_in(first.children[at]).empty());
    EXPECT_EQ(driver::context(first.children[at]).current_on, 0u);
  }
  // Another context's first viewport is its own.
  EXPECT_EQ(driver::calls_of<glViewport_op>(), std::vector(2, driver::expect<glViewport_op>(0, 0, 100, 60)));
  EXPECT_EQ(own_state()->window_mapping, &scene::mapping_of(second.window.hwnd));
}

TEST_P(binding_path_test, the_figures_begin_anew_with_each_binding) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  osw_wglSwapBuffers(bound.window.hdc);
  osw_wglSwapBuffers(bound.window.hdc);
  EXPECT_EQ(own_state()->frame_count, 2);
  __osw_cmd_queue* const queue = own_state()->cmd_queue;
  queue->gl_sync_count[0] = 7;
  queue->gl_sync_count[gl_op_count - 1] = 7;
  queue->wgl_sync_count[0] = 7;
  queue->wgl_sync_count[wgl_op_count - 1] = 7;
  queue->send_sync_count = 7;
  queue->full_count = 7;
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(own_state()->frame_count, 0);
  EXPECT_EQ(queue->gl_sync_count[0], 0u);
  EXPECT_EQ(queue->wgl_sync_count[0], 0u);
  EXPECT_EQ(queue->wgl_sync_count[wgl_op_count - 1], 0u);
  EXPECT_EQ(queue->gl_sync_count[gl_op_count - 1], 0u);
  EXPECT_EQ(queue->send_sync_count, 0u);
  EXPECT_EQ(queue->full_count, 0u);
  // The command that tells the workers comes after, and is counted.
  EXPECT_EQ(queue->wgl_sync_count[wglMakeCurrent_op::op], 1u);
}

TEST_P(binding_path_test, a_refused_binding_stores_the_pair_alone) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  const application refused = prepare_application({0, 0, 100, 60});
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  __osw_thread_state wanted = *own_state();
  driver::clear_calls();
  driver::fail_call<wglMakeCurrent_op>(1);
  EXPECT_FALSE(osw_wglMakeCurrent(refused.window.hdc, refused.context));
  wanted.current_hdc = refused.window.hdc;
  wanted.current_hglrc = refused.context;
  EXPECT_EQ(std::memcmp(&wanted, own_state(), sizeof wanted), 0);
  EXPECT_TRUE(scene::child_windows(refused.window.hwnd).empty());
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(worker_steps(part).empty());
}

TEST_P(binding_path_test, a_context_that_is_current_elsewhere_is_refused) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    EXPECT_FALSE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
    EXPECT_EQ(own_state()->mode, 0);
    EXPECT_EQ(own_state()->cmd_queue, nullptr);
  });
  library::end_thread(thread);
}

TEST_P(binding_path_test, a_second_thread_has_threads_of_its_own) {
  library::start({.way = GetParam()});
  const application mine = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(mine.window.hdc, mine.context));
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    // The same window, so that both share its children.
    const HGLRC other = osw_wglCreateContext(mine.window.hdc);
    const std::vector<HGLRC> children = driver::contexts_made_after(other, 2);
    EXPECT_TRUE(osw_wglMakeCurrent(mine.window.hdc, other));
    EXPECT_EQ(own_state()->window_mapping, &scene::mapping_of(mine.window.hwnd));
    for (int part = 0; part < 2; ++part) {
      EXPECT_EQ(worker_steps(part).at(0),
                in<wglMakeCurrent_op>(nullptr, child_hdc(mine, part), children[static_cast<std::size_t>(part)]));
    }
  });
  EXPECT_EQ(scene::child_windows(mine.window.hwnd).size(), 2u);
  EXPECT_EQ(platform::live_threads(), 7);
  EXPECT_EQ(driver::current_binding().context, mine.context);
  EXPECT_EQ(driver::context(mine.children[0]).current_on, own_state()->thread_ctrl->worker_thread_id[0]);
  library::end_thread(thread);
  EXPECT_TRUE(platform::wait_for_live_threads(3));
}

// A context bound on one thread, released, and bound on another: the viewport stays what it was.
TEST_P(binding_path_test, a_context_moves_to_another_thread) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
    EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(bound.context));
  });
  EXPECT_TRUE(driver::calls_of<glViewport_op>().empty());
  library::end_thread(thread);
}

// ---- failures of the pipeline ----

struct thread_failure {
  int thread;  // CreateThread calls from the binding on
  const char* text;
};

struct start_failure_test : wgl_make_current_test,
                            testing::WithParamInterface<std::tuple<library::path, thread_failure>> {};

TEST_P(start_failure_test, is_shown_and_tried_again) {
  expects_message_boxes = true;
  const auto& [way, failure] = GetParam();
  library::start({.way = way});
  const application bound = prepare_application();
  driver::clear_calls();
  platform::fail_call("CreateThread", failure.thread);
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, failure.text}}));
  const __osw_thread_state* state = own_state();
  // The drawable and the context are the new ones, the rest is as before.
  EXPECT_EQ(state->window_mapping, &scene::mapping_of(bound.window.hwnd));
  EXPECT_EQ(state->pbuffer, nullptr);
  EXPECT_EQ(state->glrc, __osw_glrc_lookup(bound.context));
  EXPECT_EQ(state->glrc->viewport_set, 0u);
  EXPECT_EQ(state->mode, 0);
  EXPECT_EQ(state->gl_table, __osw_gl_table_nocontext);
  EXPECT_EQ(state->has_context, 0);
  EXPECT_EQ(state->thread_ctrl, nullptr);
  EXPECT_EQ(driver::calls_of<wglMakeCurrent_op>().size(), 1u);
  EXPECT_TRUE(driver::calls_of<glViewport_op>().empty());
  // With no context in between and with one: the next binding makes what is missing.
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_NE(own_state()->mode, 0);
  EXPECT_EQ(platform::live_threads(), 3);
  EXPECT_EQ(driver::calls_of<glViewport_op>().size(), 2u);
  EXPECT_EQ(scene::boxes().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(, start_failure_test,
                         testing::Combine(testing::Values(library::path::threaded, library::path::sequential),
                                          testing::Values(thread_failure{1, "Creating child thread failed!"},
                                                          thread_failure{2, "Creating child thread failed!"},
                                                          thread_failure{3, "Creating swap thread failed!"})));

// The binding's first memory is that of the window's record; the queue's three come next.
TEST_P(binding_path_test, no_memory_for_the_queue_is_not_shown) {
  library::start({.way = GetParam()});
  const application bound = prepare_application();
  for (int n = 2; n <= 4; ++n) {
    SCOPED_TRACE(n);
    // The record of the window exists after the first round.
    allocation::fail_call(n == 2 ? n : n - 1);
    EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
    allocation::stop_failing();
    EXPECT_EQ(own_state()->cmd_queue, nullptr);
    EXPECT_EQ(own_state()->mode, 0);
    EXPECT_EQ(own_state()->has_context, 0);
    EXPECT_EQ(own_state()->window_mapping, &scene::mapping_of(bound.window.hwnd));
    EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(bound.context));
    EXPECT_EQ(platform::live_threads(), 0);
    EXPECT_EQ(driver::current_binding().context, bound.context);
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    EXPECT_EQ(own_state()->window_mapping, nullptr);
  }
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  EXPECT_NE(own_state()->mode, 0);
}

INSTANTIATE_TEST_SUITE_P(, binding_path_test, testing::Values(library::path::threaded, library::path::sequential));

// ---- without a queue ----

TEST_F(wgl_make_current_test, releasing_nothing_creates_nothing) {
  library::start();
  EXPECT_FALSE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentDC_op>(nullptr), in<wglGetCurrentContext_op>(nullptr)}));
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
  EXPECT_EQ(platform::live_threads(), 0);
}

TEST_F(wgl_make_current_test, a_device_context_without_a_context_on_a_thread_without_a_queue) {
  library::start();
  const library::app_window window = library::open_window();
  osw_wglGetCurrentContext();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, nullptr));
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentDC_op>(nullptr), in<wglMakeCurrent_op>(nullptr, window.hdc, nullptr)}));
  EXPECT_EQ(own_state()->mode, 0);
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
  EXPECT_TRUE(scene::child_windows(window.hwnd).empty());
}

// ---- the choice of the path ----

struct choice {
  DWORD option;
  bool fast_switch;      // wglFastSwitchContextZ4, which takes a driver's context
  bool driver_contexts;  // wglGetGLContextZ4, which alone tells those
  i32 mode;
};

struct path_choice_test : wgl_make_current_test, testing::WithParamInterface<choice> {};

TEST_P(path_choice_test, by_the_option_and_the_driver) {
  const library::path way = GetParam().option ? library::path::threaded : library::path::sequential;
  library::start({.way = way});
  if (!GetParam().fast_switch) driver::set_reach("wglFastSwitchContextZ4", driver::reach::nowhere);
  if (!GetParam().driver_contexts) driver::set_reach("wglGetGLContextZ4", driver::reach::nowhere);
  library::start_rendering();
  EXPECT_EQ(__osw_sys_wgl[wglFastSwitchContextZ4_op::op] != nullptr, GetParam().fast_switch);
  EXPECT_EQ(__osw_sys_wgl[wglGetGLContextZ4_op::op] != nullptr, GetParam().driver_contexts);
  EXPECT_EQ(own_state()->mode, GetParam().mode);
  EXPECT_EQ(own_state()->seq_path, GetParam().mode == 1);
  EXPECT_EQ(driver::calls_of<wglGetGLContextZ4_op>().size(), GetParam().mode == 1 ? 3u : 0u);
}

INSTANTIATE_TEST_SUITE_P(, path_choice_test,
                         testing::Values(choice{0, true, true, 1}, choice{0, false, false, 2},
                                         choice{0, true, false, 2}, choice{0, false, true, 2}, choice{1, true, true, 2},
                                         choice{1, false, false, 2}));

// ---- the other make-current ----

TEST_F(wgl_make_current_test, the_one_with_a_read_drawable_concerns_the_application_alone) {
  library::start();
  const application bound = prepare_application();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.window.hdc, bound.context));
  const application other = prepare_application({0, 0, 50, 50});
  const __osw_thread_state before = *own_state();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeContextCurrentARB(other.window.hdc, bound.window.hdc, other.context));
  EXPECT_EQ(osw_wglGetCurrentReadDCARB(), bound.window.hdc);
  EXPECT_EQ(osw_wglGetCurrentReadDCEXT(), bound.window.hdc);
  EXPECT_TRUE(osw_wglMakeContextCurrentEXT(bound.window.hdc, bound.window.hdc, bound.context));
  EXPECT_EQ(own_steps(),
            (steps{in<wglMakeContextCurrentARB_op>(bound.context, other.window.hdc, bound.window.hdc, other.context),
                   in<wglGetCurrentReadDCARB_op>(other.context), in<wglGetCurrentReadDCARB_op>(other.context),
                   in<wglMakeContextCurrentARB_op>(other.context, bound.window.hdc, bound.window.hdc, bound.context)}));
  EXPECT_EQ(std::memcmp(&before, own_state(), sizeof before), 0);
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(worker_steps(part).empty());
  EXPECT_TRUE(scene::child_windows(other.window.hwnd).empty());
}

}  // namespace
