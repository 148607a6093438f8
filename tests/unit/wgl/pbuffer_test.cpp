// The registry of pbuffers, and the child pbuffers that are made and destroyed with an application's own.
#include <gtest/gtest.h>

#include <cstring>

#include "pipeline/cmd_queue.h"
#include "support/wgl_names.h"
#include "support/wgl_scene.h"
#include "wgl/pbuffer_children.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"

namespace {

using scene::in;
using scene::own_state;
using scene::worker_steps;
using steps = std::vector<scene::step>;

struct wgl_pbuffer_test : library::process_test {};

constexpr char glrc_class[] = "__osw_glrc_window";
constexpr int some_attributes[] = {WGL_PBUFFER_LARGEST_ARB, 1, 0};

int records() {
  int used = 0;
  for (const __osw_pbuffer& record : __osw_pbuffer_registry) used += record.app_hpbuffer != nullptr;
  return used;
}

// Asking for an extension entry of the system needs a binding that has had a context.
library::rendering start_drawing(const library::process_setup& setup = {}) {
  library::start(setup);
  return library::start_rendering();
}

struct pbuffer_part_test : wgl_pbuffer_test, testing::WithParamInterface<int> {};

TEST_P(pbuffer_part_test, one_child_per_part_on_a_hidden_window_of_its_size) {
  const int parts = GetParam();
  const library::rendering rendered = start_drawing({.parts = parts});
  driver::clear_calls();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 3, 70, 50, some_attributes);
  ASSERT_NE(pbuffer, nullptr);
  const __osw_pbuffer* record = __osw_pbuffer_lookup(pbuffer);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->app_hpbuffer, pbuffer);
  EXPECT_EQ(record->app_hdc, rendered.window.hdc);
  EXPECT_EQ(record->pixel_format, 3);
  EXPECT_EQ(record->width, 70);
  EXPECT_EQ(record->height, 50);
  EXPECT_EQ(record->pbuffer_hdc, nullptr);
  const std::vector<platform::window_facts> hidden = platform::windows_of_class(glrc_class);
  const std::vector<HPBUFFERARB> made = driver::pbuffers();
  ASSERT_EQ(hidden.size(), static_cast<std::size_t>(parts));
  ASSERT_EQ(made.size(), static_cast<std::size_t>(parts) + 1);
  std::vector<driver::call> wanted = {
      driver::expect<wglCreatePbufferARB_op>(rendered.window.hdc, 3, 70, 50, some_attributes)};
  for (std::size_t part = 0; part < hidden.size(); ++part) {
    const __osw_pbuffer_part& child = record->parts[part];
    EXPECT_EQ(child.child_hpbuffer, made[part + 1]);
    EXPECT_EQ(WindowFromDC(child.hidden_hdc), hidden[part].hwnd);
    EXPECT_EQ(child.child_hdc, nullptr);
    EXPECT_EQ(hidden[part].rect.right - hidden[part].rect.left, 70);
    EXPECT_EQ(hidden[part].rect.bottom - hidden[part].rect.top, 50);
    EXPECT_EQ(hidden[part].pixel_format, 3);
    wanted.push_back(driver::expect<wglCreatePbufferARB_op>(child.hidden_hdc, 3, 70, 50, some_attributes));
  }
  EXPECT_EQ(driver::calls_of<wglCreatePbufferARB_op>(), wanted);
  EXPECT_TRUE(driver::calls_of<wglGetPixelFormat_op>().empty());
  const u32 syncs = own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer));
  EXPECT_EQ(own_state()->cmd_queue->send_sync_count, syncs + 1);
  wanted.clear();
  for (const HPBUFFERARB one : made) wanted.push_back(driver::expect<wglDestroyPbufferARB_op>(one));
  EXPECT_EQ(driver::calls(), wanted);
  EXPECT_TRUE(platform::windows_of_class(glrc_class).empty());
  EXPECT_EQ(platform::open_device_contexts(), 0);
  const __osw_pbuffer empty{};
  EXPECT_EQ(std::memcmp(&__osw_pbuffer_registry[0], &empty, sizeof empty), 0);
}

INSTANTIATE_TEST_SUITE_P(, pbuffer_part_test, testing::Values(1, 2, 4, 16));

TEST_F(wgl_pbuffer_test, a_refused_pbuffer_gets_no_children) {
  const library::rendering rendered = start_drawing();
  driver::clear_calls();
  driver::fail_call<wglCreatePbufferARB_op>(1);
  EXPECT_EQ(osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr), nullptr);
  EXPECT_EQ(driver::calls().size(), 1u);
  EXPECT_EQ(records(), 0);
}

TEST_F(wgl_pbuffer_test, a_child_that_cannot_be_made_keeps_what_was_made) {
  expects_message_boxes = true;
  const library::rendering rendered = start_drawing({.parts = 4});
  driver::fail_call<wglCreatePbufferARB_op>(4);
  EXPECT_EQ(osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr), nullptr);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating child pbuffer failed!"}}));
  EXPECT_EQ(records(), 0);
  EXPECT_EQ(driver::pbuffers().size(), 3u);
  EXPECT_EQ(platform::windows_of_class(glrc_class).size(), 3u);
  EXPECT_TRUE(driver::calls_of<wglDestroyPbufferARB_op>().empty());
}

TEST_F(wgl_pbuffer_test, a_missing_window_is_shown_first) {
  expects_message_boxes = true;
  const library::rendering rendered = start_drawing();
  driver::on_call<wglCreatePbufferARB_op>([](driver::live_call& live) {
    live.answered = live.what.arguments[0] == 0;  // as the system does without a device context
  });
  platform::fail_call("CreateWindowExA", 1);
  EXPECT_EQ(osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr), nullptr);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating glrc window failed!"},
                                                     {nullptr, "Creating child pbuffer failed!"}}));
}

TEST_F(wgl_pbuffer_test, registering_again_creates_nothing) {
  const library::rendering rendered = start_drawing();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr);
  driver::clear_calls();
  EXPECT_EQ(__osw_pbuffer_register(own_state(), pbuffer, rendered.window.hdc, 1, 9, 9, nullptr), 1u);
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_EQ(records(), 1);
  EXPECT_EQ(__osw_pbuffer_lookup(pbuffer)->width, 70);
  EXPECT_EQ(__osw_pbuffer_lookup(nullptr), &__osw_pbuffer_registry[1]);
}

TEST_F(wgl_pbuffer_test, the_65th_pbuffer_has_no_record) {
  const library::rendering rendered = start_drawing();
  std::vector<HPBUFFERARB> made;
  for (int i = 0; i < max_pbuffers; ++i) {
    made.push_back(osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr));
    ASSERT_EQ(__osw_pbuffer_lookup(made.back()), &__osw_pbuffer_registry[i]);
  }
  const HPBUFFERARB last = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr);
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(__osw_pbuffer_lookup(last), nullptr);
  EXPECT_EQ(driver::pbuffers().size(), 65u * 3u);
  // Its device context cannot be had, nor released.
  EXPECT_EQ(osw_wglGetPbufferDCARB(last), nullptr);
  const HDC hdc = reinterpret_cast<HDC>(driver::bits_of(last));
  driver::set_result<wglReleasePbufferDCARB_op>(1);
  EXPECT_EQ(osw_wglReleasePbufferDCARB(last, hdc), 0);
  const u32 syncs = own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDestroyPbufferARB(last));
  EXPECT_EQ(driver::calls(), std::vector{driver::expect<wglDestroyPbufferARB_op>(last)});
  EXPECT_EQ(own_state()->cmd_queue->send_sync_count, syncs);
  EXPECT_TRUE(osw_wglDestroyPbufferARB(made[9]));
  const HPBUFFERARB next = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr);
  EXPECT_EQ(__osw_pbuffer_lookup(next), &__osw_pbuffer_registry[9]);
}

TEST_F(wgl_pbuffer_test, a_failed_destroy_keeps_the_children) {
  const library::rendering rendered = start_drawing();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr);
  driver::fail_call<wglDestroyPbufferARB_op>(1);
  EXPECT_FALSE(osw_wglDestroyPbufferARB(pbuffer));
  EXPECT_EQ(driver::pbuffers().size(), 3u);
  EXPECT_EQ(records(), 1);
  // Of the system's result the low bit is kept.
  driver::set_result<wglDestroyPbufferARB_op>(6);
  EXPECT_EQ(osw_wglDestroyPbufferARB(pbuffer), 0);
  EXPECT_EQ(records(), 0);
}

// ---- device contexts ----

TEST_F(wgl_pbuffer_test, a_device_context_of_each_child) {
  const library::rendering rendered = start_drawing();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr);
  const __osw_pbuffer* record = __osw_pbuffer_lookup(pbuffer);
  driver::clear_calls();
  const HDC hdc = osw_wglGetPbufferDCARB(pbuffer);
  ASSERT_NE(hdc, nullptr);
  EXPECT_EQ(record->pbuffer_hdc, hdc);
  EXPECT_EQ(__osw_pbuffer_of_hdc(hdc), record);
  EXPECT_EQ(driver::calls(), (std::vector{driver::expect<wglGetPbufferDCARB_op>(pbuffer),
                                          driver::expect<wglGetPbufferDCARB_op>(record->parts[0].child_hpbuffer),
                                          driver::expect<wglGetPbufferDCARB_op>(record->parts[1].child_hpbuffer)}));
  const HDC first = record->parts[0].child_hdc;
  const HDC second = record->parts[1].child_hdc;
  EXPECT_NE(first, second);
  driver::clear_calls();
  EXPECT_EQ(osw_wglReleasePbufferDCARB(pbuffer, hdc), 1);
  EXPECT_EQ(driver::calls(),
            (std::vector{driver::expect<wglReleasePbufferDCARB_op>(pbuffer, hdc),
                         driver::expect<wglReleasePbufferDCARB_op>(record->parts[0].child_hpbuffer, first),
                         driver::expect<wglReleasePbufferDCARB_op>(record->parts[1].child_hpbuffer, second)}));
  // The record goes on answering to it.
  EXPECT_EQ(__osw_pbuffer_of_hdc(hdc), record);
  EXPECT_EQ(record->parts[1].child_hdc, second);
  driver::clear_calls();
  driver::fail_call<wglGetPbufferDCARB_op>(1);
  EXPECT_EQ(osw_wglGetPbufferDCARB(pbuffer), nullptr);
  driver::fail_call<wglReleasePbufferDCARB_op>(1);
  EXPECT_EQ(osw_wglReleasePbufferDCARB(pbuffer, hdc), 0);
  EXPECT_EQ(driver::calls().size(), 2u);
  EXPECT_EQ(record->pbuffer_hdc, hdc);
  driver::set_result<wglReleasePbufferDCARB_op>(6);
  EXPECT_EQ(osw_wglReleasePbufferDCARB(pbuffer, hdc), 0);
}

struct pbuffer_path_test : wgl_pbuffer_test, testing::WithParamInterface<library::path> {};

struct bound_pbuffer {
  HPBUFFERARB pbuffer = nullptr;
  HDC hdc = nullptr;
  HGLRC context = nullptr;
  std::vector<HGLRC> children;
};

// Bound in the place of the window that is bound.
bound_pbuffer bind_pbuffer(const library::rendering& rendered) {
  bound_pbuffer bound;
  bound.pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 70, 50, nullptr);
  bound.hdc = osw_wglGetPbufferDCARB(bound.pbuffer);
  bound.context = osw_wglCreateContext(bound.hdc);
  bound.children = driver::contexts_made_after(bound.context, 2);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(bound.hdc, bound.context));
  return bound;
}

TEST_P(pbuffer_path_test, binding_a_pbuffer) {
  const library::rendering rendered = start_drawing({.way = GetParam()});
  const int windows = platform::call_count("CreateWindowExA");
  const bound_pbuffer bound = bind_pbuffer(rendered);
  // Hidden windows alone: two for the pbuffer, two for the context.
  EXPECT_EQ(platform::call_count("CreateWindowExA"), windows + 4);
  const __osw_pbuffer* record = __osw_pbuffer_lookup(bound.pbuffer);
  EXPECT_EQ(own_state()->pbuffer, record);
  EXPECT_EQ(own_state()->window_mapping, nullptr);
  EXPECT_EQ(own_state()->mode, GetParam() == library::path::threaded ? 2 : 1);
  // The first viewport is used up without being issued.
  EXPECT_EQ(own_state()->glrc->viewport_set, 1u);
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(part), (steps{in<wglMakeCurrent_op>(rendered.children[static_cast<std::size_t>(part)],
                                                               record->parts[part].child_hdc,
                                                               bound.children[static_cast<std::size_t>(part)])}));
  }
  // The context of the application is told on the threaded path, with a window or without.
  EXPECT_EQ(driver::calls_of<glDrawableSizeZ4_op>().size(), GetParam() == library::path::threaded ? 1u : 0u);
  EXPECT_EQ(driver::gl_calls_in(bound.context).size(), GetParam() == library::path::threaded ? 1u : 0u);
  EXPECT_TRUE(driver::calls_of<glViewportOffsetZ4_op>().empty());
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, bound.context));
  EXPECT_EQ(own_state()->pbuffer, nullptr);
  EXPECT_TRUE(driver::calls_of<glViewport_op>().empty());
  EXPECT_EQ(driver::calls_of<glViewportOffsetZ4_op>().size(), 2u);
}

TEST_P(pbuffer_path_test, a_released_device_context_is_still_known) {
  const library::rendering rendered = start_drawing({.way = GetParam()});
  const bound_pbuffer bound = bind_pbuffer(rendered);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(osw_wglReleasePbufferDCARB(bound.pbuffer, bound.hdc), 1);
  EXPECT_TRUE(osw_wglMakeCurrent(bound.hdc, bound.context));
  EXPECT_EQ(own_state()->pbuffer, __osw_pbuffer_lookup(bound.pbuffer));
}

// A pbuffer has no window to present.
TEST_P(pbuffer_path_test, swapping_a_pbuffer_presents_nothing) {
  const library::rendering rendered = start_drawing({.way = GetParam()});
  const bound_pbuffer bound = bind_pbuffer(rendered);
  EXPECT_TRUE(osw_wglSwapBuffers(bound.hdc));
  library::finish();
  EXPECT_TRUE(driver::calls_of<wglSwapBuffers_op>().empty());
  EXPECT_EQ(driver::current_binding().switched_to, bound.context);
}

INSTANTIATE_TEST_SUITE_P(, pbuffer_path_test, testing::Values(library::path::threaded, library::path::sequential));

TEST_F(wgl_pbuffer_test, destroying_on_a_thread_without_a_queue) {
  const library::rendering rendered = start_drawing();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr);
    ASSERT_NE(pbuffer, nullptr);
    EXPECT_NE(osw_wglGetPbufferDCARB(pbuffer), nullptr);
    EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer));
    EXPECT_EQ(own_state()->cmd_queue, nullptr);
    EXPECT_TRUE(driver::pbuffers().empty());
    EXPECT_TRUE(platform::windows_of_class(glrc_class).empty());
  });
  library::end_thread(thread);
  EXPECT_EQ(records(), 0);
}

}  // namespace
