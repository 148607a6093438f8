// The registry of contexts, and the child contexts that are made, copied, shared and deleted with an application's own.
#include <gtest/gtest.h>

#include <cstring>

#include "pipeline/cmd_queue.h"
#include "support/wgl_scene.h"
#include "wgl/context.h"
#include "wgl/records/glrc.h"

namespace {

using scene::in;
using scene::own_state;
using scene::own_steps;
using scene::worker_steps;
using steps = std::vector<scene::step>;

struct wgl_context_test : library::process_test {};

int records() {
  int used = 0;
  for (const __osw_glrc& record : __osw_glrc_registry) used += record.app_hglrc != nullptr;
  return used;
}

std::size_t live_contexts() {
  std::size_t live = 0;
  for (const driver::context_facts& facts : driver::contexts()) live += facts.live;
  return live;
}

struct context_part_test : wgl_context_test, testing::WithParamInterface<int> {};

TEST_P(context_part_test, a_context_has_one_child_per_part) {
  const int parts = GetParam();
  library::start({.parts = parts});
  const library::app_window window = library::open_window(library::usual_rect, 3);
  std::vector<platform::window_facts> hidden;
  std::vector<std::size_t> alive;
  driver::on_call<wglCreateContext_op>([&](driver::live_call& live) {
    const auto hdc = reinterpret_cast<HDC>(live.what.arguments[0]);
    hidden.push_back(platform::window(WindowFromDC(hdc)));
    alive.push_back(platform::windows_of_class("__osw_glrc_window").size());
  });
  const HGLRC context = osw_wglCreateContext(window.hdc);
  ASSERT_NE(context, nullptr);
  const std::vector<driver::context_facts> made = driver::contexts();
  ASSERT_EQ(made.size(), static_cast<std::size_t>(parts) + 1);
  EXPECT_EQ(made[0].hglrc, context);
  EXPECT_EQ(made[0].made_with, 3);
  EXPECT_EQ(made[0].made_on, window.hdc);
  ASSERT_EQ(hidden.size(), static_cast<std::size_t>(parts));
  const __osw_glrc* record = __osw_glrc_lookup(context);
  ASSERT_NE(record, nullptr);
  for (std::size_t part = 0; part < hidden.size(); ++part) {
    EXPECT_EQ(made[part + 1].made_with, 2);
    EXPECT_EQ(record->child_hglrc[part], made[part + 1].hglrc);
    EXPECT_EQ(record->child_gl_context[part], nullptr);
    EXPECT_EQ(hidden[part].class_name, "__osw_glrc_window");
    EXPECT_EQ(hidden[part].pixel_format, 3);
    // Each is gone before the next is made.
    EXPECT_EQ(alive[part], 1u);
  }
  for (int unused = parts; unused < max_parts; ++unused) EXPECT_EQ(record->child_hglrc[unused], nullptr);
  EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  EXPECT_EQ(platform::call_count("GetWindowDC"), parts);
  EXPECT_EQ(platform::call_count("ReleaseDC"), parts);
  EXPECT_EQ(platform::open_device_contexts(), 0);
  EXPECT_TRUE(scene::child_windows(window.hwnd).empty());
}

INSTANTIATE_TEST_SUITE_P(, context_part_test, testing::Values(1, 2, 4, 16));

TEST_F(wgl_context_test, a_new_record_stands_at_the_defaults_of_gl) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  const __osw_glrc* record = __osw_glrc_lookup(context);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record, &__osw_glrc_registry[0]);
  EXPECT_EQ(record->app_hglrc, context);
  EXPECT_EQ(record->app_gl_context, nullptr);
  EXPECT_EQ(record->viewport_set, 0u);
  EXPECT_EQ(record->client_state.enabled_mask, 0u);
  EXPECT_EQ(record->client_state.array_buffer, 0u);
  for (const __osw_pixel_store* store : {&record->pack_store, &record->unpack_store}) {
    for (const pixel_store_field& field : pixel_store_fields) {
      EXPECT_EQ(get_field(*store, field), field.pack == GL_PACK_ALIGNMENT ? 4 : 0);
    }
  }
}

TEST_F(wgl_context_test, a_layer_plane_stays_with_the_application) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateLayerContext(window.hdc, 2);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(driver::calls_of<wglCreateLayerContext_op>(),
            std::vector{driver::expect<wglCreateLayerContext_op>(window.hdc, 2)});
  EXPECT_EQ(driver::calls_of<wglCreateContext_op>().size(), 2u);
  driver::clear_calls();
  ASSERT_NE(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(driver::calls_of<wglCreateLayerContext_op>(),
            std::vector{driver::expect<wglCreateLayerContext_op>(window.hdc, 0)});
}

TEST_F(wgl_context_test, a_refused_context_gets_no_children) {
  library::start();
  const library::app_window window = library::open_window();
  driver::fail_call<wglCreateLayerContext_op>(1);
  EXPECT_EQ(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_TRUE(driver::contexts().empty());
  EXPECT_EQ(records(), 0);
  EXPECT_EQ(platform::call_count("CreateWindowExA"), 0);
}

TEST_F(wgl_context_test, a_child_that_cannot_be_made_keeps_what_was_made) {
  expects_message_boxes = true;
  library::start({.parts = 4});
  const library::app_window window = library::open_window();
  driver::fail_call<wglCreateContext_op>(3);
  EXPECT_EQ(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating child glrc failed!"}}));
  EXPECT_EQ(records(), 0);
  EXPECT_EQ(live_contexts(), 3u);
  EXPECT_EQ(driver::calls_of<wglCreateContext_op>().size(), 3u);
  EXPECT_TRUE(driver::calls_of<wglDeleteContext_op>().empty());
  // The hidden window goes whatever came of it.
  EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  EXPECT_EQ(platform::open_device_contexts(), 0);
}

TEST_F(wgl_context_test, registering_again_creates_nothing) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  driver::clear_calls();
  const int windows = platform::call_count("CreateWindowExA");
  EXPECT_EQ(__osw_glrc_register(own_state(), window.hdc, context), 1u);
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_EQ(platform::call_count("CreateWindowExA"), windows);
  EXPECT_EQ(records(), 1);
}

TEST_F(wgl_context_test, a_scan_for_zero_finds_the_first_free_slot) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC first = osw_wglCreateContext(window.hdc);
  const HGLRC second = osw_wglCreateContext(window.hdc);
  const HGLRC third = osw_wglCreateContext(window.hdc);
  EXPECT_EQ(__osw_glrc_lookup(nullptr), &__osw_glrc_registry[3]);
  EXPECT_EQ(__osw_glrc_lookup(third), &__osw_glrc_registry[2]);
  EXPECT_TRUE(osw_wglDeleteContext(second));
  EXPECT_EQ(__osw_glrc_lookup(nullptr), &__osw_glrc_registry[1]);
  EXPECT_EQ(__osw_glrc_lookup(second), nullptr);
  const HGLRC fourth = osw_wglCreateContext(window.hdc);
  EXPECT_EQ(__osw_glrc_lookup(fourth), &__osw_glrc_registry[1]);
  EXPECT_EQ(__osw_glrc_lookup(first), &__osw_glrc_registry[0]);
}

TEST_F(wgl_context_test, the_65th_context_works_without_a_record) {
  library::start();
  const library::app_window window = library::open_window();
  std::vector<HGLRC> made;
  for (int i = 0; i < max_glrcs; ++i) {
    made.push_back(osw_wglCreateContext(window.hdc));
    ASSERT_NE(made.back(), nullptr);
    ASSERT_EQ(__osw_glrc_lookup(made.back()), &__osw_glrc_registry[i]);
  }
  const HGLRC last = osw_wglCreateContext(window.hdc);
  EXPECT_NE(last, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(last), nullptr);
  // Its children exist, and nobody holds them.
  EXPECT_EQ(live_contexts(), 65u * 3u);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDeleteContext(last));
  EXPECT_EQ(driver::calls_of<wglDeleteContext_op>(), std::vector{driver::expect<wglDeleteContext_op>(last)});
  EXPECT_EQ(live_contexts(), 65u * 3u - 1u);
  EXPECT_EQ(records(), 64);
  // A freed slot is there for the next.
  EXPECT_TRUE(osw_wglDeleteContext(made[40]));
  const HGLRC next = osw_wglCreateContext(window.hdc);
  EXPECT_EQ(__osw_glrc_lookup(next), &__osw_glrc_registry[40]);
}

TEST_F(wgl_context_test, the_record_of_a_deleted_context_is_zero_again) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(__osw_glrc_registry[0].viewport_set, 1u);
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
  const __osw_glrc empty{};
  EXPECT_EQ(std::memcmp(&__osw_glrc_registry[0], &empty, sizeof empty), 0);
  EXPECT_EQ(live_contexts(), 0u);
}

struct context_path_test : wgl_context_test, testing::WithParamInterface<library::path> {};

TEST_P(context_path_test, deleting_a_context_that_is_not_current) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  const std::vector<HGLRC> children = driver::contexts_made_after(other, 2);
  osw_glFlush();
  const u32 syncs = own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDeleteContext(other));
  EXPECT_EQ(own_steps(),
            (steps{in<wglGetCurrentContext_op>(rendered.context), in<wglDeleteContext_op>(rendered.context, other),
                   in<wglDeleteContext_op>(rendered.context, children[0]),
                   in<wglDeleteContext_op>(rendered.context, children[1])}));
  EXPECT_EQ(own_state()->cmd_queue->send_sync_count, syncs + 1);
  for (int part = 0; part < 2; ++part) {
    // Nothing but what was under way before.
    for (const scene::step& step : worker_steps(part)) EXPECT_EQ(step.call, driver::expect<glFlush_op>());
  }
  EXPECT_EQ(driver::context(rendered.context).current_on, GetCurrentThreadId());
  EXPECT_EQ(records(), 1);
}

TEST_P(context_path_test, deleting_the_current_context_releases_the_workers_first) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const i32 mode = own_state()->mode;
  const __osw_proc* const table = own_state()->gl_table;
  const __osw_glrc* const record = own_state()->glrc;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentContext_op>(rendered.context),
                                in<wglDeleteContext_op>(rendered.context, rendered.context),
                                in<wglDeleteContext_op>(nullptr, rendered.children[0]),
                                in<wglDeleteContext_op>(nullptr, rendered.children[1])}));
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(part),
              (steps{in<wglMakeCurrent_op>(rendered.children[static_cast<std::size_t>(part)], nullptr, nullptr)}));
  }
  EXPECT_EQ(live_contexts(), 0u);
  // Only the pipeline is told.
  EXPECT_EQ(own_state()->mode, mode);
  EXPECT_EQ(own_state()->gl_table, table);
  EXPECT_EQ(own_state()->glrc, record);
  EXPECT_EQ(own_state()->has_context, 1);
  EXPECT_EQ(record->app_hglrc, nullptr);
}

TEST_P(context_path_test, a_failed_delete_still_takes_the_children) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  const std::vector<HGLRC> children = driver::contexts_made_after(other, 2);
  driver::clear_calls();
  driver::fail_call<wglDeleteContext_op>(1);
  EXPECT_FALSE(osw_wglDeleteContext(other));
  EXPECT_TRUE(driver::context(other).live);
  for (const HGLRC child : children) EXPECT_FALSE(driver::context(child).live);
  EXPECT_EQ(__osw_glrc_lookup(other), nullptr);
  EXPECT_TRUE(driver::calls_of<wglMakeCurrent_op>().empty());
}

TEST_P(context_path_test, a_failed_delete_of_the_current_context_releases_nobody) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  driver::fail_call<wglDeleteContext_op>(1);
  EXPECT_FALSE(osw_wglDeleteContext(rendered.context));
  EXPECT_TRUE(driver::calls_of<wglMakeCurrent_op>().empty());
  EXPECT_EQ(driver::calls_of<wglDeleteContext_op>().size(), 3u);
  EXPECT_EQ(records(), 0);
}

TEST_P(context_path_test, copying_reaches_every_child_of_both) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  const std::vector<HGLRC> children = driver::contexts_made_after(other, 2);
  const u32 syncs = own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglCopyContext(other, rendered.context, 0x4Fu));
  EXPECT_EQ(own_steps(), (steps{in<wglCopyContext_op>(rendered.context, other, rendered.context, 0x4Fu),
                                in<wglCopyContext_op>(rendered.context, children[0], rendered.children[0], 0x4Fu),
                                in<wglCopyContext_op>(rendered.context, children[1], rendered.children[1], 0x4Fu)}));
  EXPECT_EQ(own_state()->cmd_queue->send_sync_count, syncs);
  for (int part = 0; part < 2; ++part) EXPECT_EQ(worker_steps(part), steps{});
}

TEST_P(context_path_test, sharing_reaches_each_part_on_its_worker) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  const std::vector<HGLRC> children = driver::contexts_made_after(other, 2);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglShareLists(rendered.context, other));
  EXPECT_EQ(own_steps(), (steps{in<wglShareLists_op>(rendered.context, rendered.context, other)}));
  for (std::size_t part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(static_cast<int>(part)),
              (steps{in<wglShareLists_op>(rendered.children[part], rendered.children[part], children[part])}));
  }
}

INSTANTIATE_TEST_SUITE_P(, context_path_test, testing::Values(library::path::threaded, library::path::sequential));

TEST_F(wgl_context_test, a_failed_copy_or_share_stays_with_the_application) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  driver::clear_calls();
  driver::fail_call<wglCopyContext_op>(1);
  EXPECT_FALSE(osw_wglCopyContext(rendered.context, other, 1));
  driver::fail_call<wglShareLists_op>(1);
  EXPECT_FALSE(osw_wglShareLists(rendered.context, other));
  EXPECT_EQ(driver::calls().size(), 2u);
}

TEST_F(wgl_context_test, a_context_without_a_record_is_copied_and_shared_alone) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const HGLRC alone = osw_wglCreateContextAttribsARB(rendered.window.hdc, nullptr, nullptr);
  ASSERT_NE(alone, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(alone), nullptr);
  EXPECT_EQ(records(), 1);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglCopyContext(rendered.context, alone, 1));
  EXPECT_TRUE(osw_wglCopyContext(alone, rendered.context, 1));
  EXPECT_TRUE(osw_wglShareLists(rendered.context, alone));
  EXPECT_TRUE(osw_wglShareLists(alone, rendered.context));
  EXPECT_EQ(driver::calls().size(), 4u);
  EXPECT_EQ(library::reports().size(), 2u);
}

// Without a queue there are no workers to tell: nothing that would be pushed is missed.
TEST_F(wgl_context_test, a_thread_without_a_queue_deletes_copies_and_shares) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC first = osw_wglCreateContext(window.hdc);
  const HGLRC second = osw_wglCreateContext(window.hdc);
  const std::vector<HGLRC> of_first = driver::contexts_made_after(first, 2);
  const std::vector<HGLRC> of_second = driver::contexts_made_after(second, 2);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglShareLists(first, second));
  EXPECT_TRUE(osw_wglCopyContext(first, second, 1));
  EXPECT_TRUE(osw_wglDeleteContext(first));
  EXPECT_TRUE(osw_wglDeleteContext(second));
  EXPECT_EQ(own_steps(),
            (steps{in<wglShareLists_op>(nullptr, first, second), in<wglCopyContext_op>(nullptr, first, second, 1),
                   in<wglCopyContext_op>(nullptr, of_first[0], of_second[0], 1),
                   in<wglCopyContext_op>(nullptr, of_first[1], of_second[1], 1), in<wglGetCurrentContext_op>(nullptr),
                   in<wglDeleteContext_op>(nullptr, first), in<wglDeleteContext_op>(nullptr, of_first[0]),
                   in<wglDeleteContext_op>(nullptr, of_first[1]), in<wglGetCurrentContext_op>(nullptr),
                   in<wglDeleteContext_op>(nullptr, second), in<wglDeleteContext_op>(nullptr, of_second[0]),
                   in<wglDeleteContext_op>(nullptr, of_second[1])}));
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_EQ(records(), 0);
}

TEST_F(wgl_context_test, deleting_no_context_takes_nothing) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  EXPECT_FALSE(osw_wglDeleteContext(nullptr));
  EXPECT_EQ(own_steps(),
            (steps{in<wglGetCurrentContext_op>(rendered.context), in<wglDeleteContext_op>(rendered.context, HGLRC{})}));
  EXPECT_EQ(records(), 1);
}

TEST_F(wgl_context_test, a_current_context_without_a_record_is_released_on_the_workers_too) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const HGLRC alone = osw_wglCreateContextAttribsARB(rendered.window.hdc, nullptr, nullptr);
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, alone));
  const u32 syncs = own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  EXPECT_TRUE(osw_wglDeleteContext(alone));
  EXPECT_EQ(own_steps(), (steps{in<wglGetCurrentContext_op>(alone), in<wglDeleteContext_op>(alone, alone)}));
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(part), (steps{in<wglMakeCurrent_op>(nullptr, nullptr, nullptr)}));
  }
  EXPECT_EQ(own_state()->cmd_queue->send_sync_count, syncs);
}

TEST_F(wgl_context_test, any_thread_may_delete_a_context) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  library::run_on_new_thread([&] { EXPECT_TRUE(osw_wglDeleteContext(context)); });
  EXPECT_EQ(live_contexts(), 0u);
  EXPECT_EQ(records(), 0);
}

}  // namespace
