// What replay makes of a wgl command on each part: the part's own handles in the place of the application's.
#include <set>

#include "startup/config/monitors.h"
#include "support/expected_figures.h"
#include "support/issuing.h"
#include "support/wgl_names.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

using namespace issuing;

struct wgl_replay_test : pipeline_test {
  void begin(int parts = 4) {
    library::start({.parts = parts, .query_on_app_thread = false});
    rendered = library::start_rendering();
    forget();
  }
  void forget() {
    if (queue()) empty_list();
    driver::clear_calls();
    platform::clear_debug_output();
  }
  // The calls that the part's worker has made since.
  std::vector<driver::call> worker_calls(int part) {
    return driver::calls_of_thread(state()->started.worker_thread_id[part]);
  }
  HDC child_hdc(int part) { return state()->window_mapping->parts[part].child_hdc; }
  HGLRC child(int part) { return rendered.children[static_cast<std::size_t>(part)]; }
  // Every part's worker made the one call that `expected` gives for it, and nobody else made any.
  void expect_one_call_each(const std::function<driver::call(int part)>& expected) {
    for (int part = 0; part < __osw_part_count; ++part) {
      EXPECT_EQ(worker_calls(part), std::vector{expected(part)}) << "part " << part;
    }
  }
  void expect_no_call() {
    for (int part = 0; part < __osw_part_count; ++part) EXPECT_EQ(worker_calls(part), std::vector<driver::call>());
  }
  library::rendering rendered;
};

template <class Op>
void push(std::initializer_list<u64> slots) {
  __osw_push_wgl_cmd(state(), Op::op, static_cast<u32>(slots.size()), slots.begin(), 0);
}

template <class Handle>
u64 bits(Handle handle) {
  return driver::bits_of(handle);
}

TEST_F(wgl_replay_test, a_binding_makes_each_child_current_on_its_worker) {
  library::start({.parts = 4, .query_on_app_thread = false});
  rendered = library::start_rendering();
  std::set<HDC> hdcs;
  for (int part = 0; part < 4; ++part) {
    const std::vector<driver::call> calls = worker_calls(part);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0], driver::expect<wglMakeCurrent_op>(child_hdc(part), child(part)));
    EXPECT_EQ(driver::context(child(part)).current_on, state()->started.worker_thread_id[part]);
    hdcs.insert(child_hdc(part));
    EXPECT_EQ(GetParent(WindowFromDC(child_hdc(part))), rendered.window.hwnd);
  }
  EXPECT_EQ(hdcs.size(), 4u);
}

TEST_F(wgl_replay_test, a_binding_takes_nothing_from_the_command_s_device_context) {
  begin();
  push<wglMakeCurrent_op>({0x1234, 0x5678});
  expect_one_call_each([&](int part) { return driver::expect<wglMakeCurrent_op>(child_hdc(part), child(part)); });
}

TEST_F(wgl_replay_test, a_release_releases_on_each_worker) {
  begin();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  expect_one_call_each([](int) { return driver::expect<wglMakeCurrent_op>(nullptr, nullptr); });
  for (int part = 0; part < 4; ++part) EXPECT_EQ(driver::context(child(part)).current_on, 0u);
}

TEST_F(wgl_replay_test, the_deletion_of_the_current_context_releases_first) {
  begin();
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
  expect_one_call_each([](int) { return driver::expect<wglMakeCurrent_op>(nullptr, nullptr); });
  for (int part = 0; part < 4; ++part) EXPECT_FALSE(driver::context(child(part)).live);
}

struct bound_pbuffer {
  HPBUFFERARB handle;
  HDC hdc;
  const __osw_pbuffer* record;
};

bound_pbuffer open_pbuffer(HDC like) {
  bound_pbuffer opened{};
  opened.handle = osw_wglCreatePbufferARB(like, 1, 64, 32, nullptr);
  opened.hdc = osw_wglGetPbufferDCARB(opened.handle);
  opened.record = __osw_pbuffer_lookup(opened.handle);
  EXPECT_NE(opened.record, nullptr);
  return opened;
}

TEST_F(wgl_replay_test, a_pbuffer_binds_each_part_s_own) {
  begin();
  const bound_pbuffer pbuffer = open_pbuffer(rendered.window.hdc);
  forget();
  EXPECT_TRUE(osw_wglMakeCurrent(pbuffer.hdc, rendered.context));
  std::set<HDC> hdcs;
  for (int part = 0; part < 4; ++part) {
    const HDC hdc = pbuffer.record->parts[part].child_hdc;
    EXPECT_EQ(worker_calls(part), std::vector{driver::expect<wglMakeCurrent_op>(hdc, child(part))});
    hdcs.insert(hdc);
  }
  EXPECT_EQ(hdcs.size(), 4u);
  EXPECT_FALSE(hdcs.contains(pbuffer.hdc) || hdcs.contains(nullptr));
  osw_wglMakeCurrent(nullptr, nullptr);
  EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer.handle));
}

TEST_F(wgl_replay_test, shared_lists_are_shared_between_the_children_of_each_part) {
  begin();
  const HGLRC second = osw_wglCreateContext(rendered.window.hdc);
  const std::vector<HGLRC> others = driver::contexts_made_after(second, 4);
  forget();
  EXPECT_TRUE(osw_wglShareLists(rendered.context, second));
  expect_one_call_each(
      [&](int part) { return driver::expect<wglShareLists_op>(child(part), others[static_cast<std::size_t>(part)]); });
}

TEST_F(wgl_replay_test, a_swap_presents_each_part_s_child_window) {
  begin();
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglSwapBuffers_op>(child_hdc(part)); });
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_F(wgl_replay_test, a_layer_swap_travels_as_a_plain_one) {
  begin();
  const __osw_cmd* const cmd = __osw_next_cmd(queue());
  EXPECT_TRUE(osw_wglSwapLayerBuffers(rendered.window.hdc, 0x8001));
  EXPECT_EQ(cmd->op, wglSwapBuffers_op::op);
  EXPECT_EQ(cmd->arg_count, 2u);
  EXPECT_EQ(cmd->args[1] & 0xFFFFFFFF, 0x8001u);
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglSwapBuffers_op>(child_hdc(part)); });
}

TEST_F(wgl_replay_test, the_case_of_the_layer_swap_passes_the_planes) {
  begin();
  push<wglSwapLayerBuffers_op>({bits(rendered.window.hdc), 0xDEADBEEF00008001});
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglSwapLayerBuffers_op>(child_hdc(part), 0x8001u); });
}

std::string pointer_text(const void* value) {
  char text[20];
  std::snprintf(text, sizeof text, "%016lX", reinterpret_cast<unsigned long>(value));
  return text;
}

std::vector<std::string> once_per_part(const std::string& text) {
  return std::vector(static_cast<std::size_t>(__osw_part_count), "OGLSPANWrapper Warning: " + text);
}

TEST_F(wgl_replay_test, a_device_context_without_a_window_is_warned_of_and_not_swapped) {
  begin();
  const HDC none = platform::create_windowless_dc();
  EXPECT_TRUE(osw_wglSwapBuffers(none));
  empty_list();
  expect_no_call();
  EXPECT_EQ(library::reports(), once_per_part("hdc (0x" + pointer_text(none) +
                                              ") parameter in wglSwapBuffers is not a valid window hdc.\n"));
  forget();
  push<wglSwapLayerBuffers_op>({bits(none), 1});
  empty_list();
  expect_no_call();
  EXPECT_EQ(library::reports(), once_per_part("hdc (0x" + pointer_text(none) +
                                              ") parameter in wglSwapLayerBuffers is not a valid window hdc.\n"));
  platform::destroy_windowless_dc(none);
}

std::string other_hdc_text(HDC used, HDC bound, const std::string& function) {
  return "for hwnd = 0x" + pointer_text(used) + ", the hdc (0x" + pointer_text(bound) + ") used in " + function +
         " is not the same as the hdc (0x" + pointer_text(used) + ") used in wglMakeCurrent.\n";
}

TEST_F(wgl_replay_test, another_device_context_of_the_window_is_warned_of_and_swapped) {
  library::start({.parts = 4, .query_on_app_thread = false});
  library::app_window window;
  window.hwnd = platform::create_window({.rect = library::usual_rect, .own_dc = false});
  window.hdc = GetDC(window.hwnd);
  PIXELFORMATDESCRIPTOR descriptor;
  platform::describe_pixel_format(1, &descriptor);
  ASSERT_TRUE(SetPixelFormat(window.hdc, 1, &descriptor));
  rendered = library::start_rendering_in(window);
  const HDC other = GetDC(window.hwnd);
  ASSERT_NE(other, window.hdc);
  forget();
  EXPECT_TRUE(osw_wglSwapBuffers(other));
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglSwapBuffers_op>(child_hdc(part)); });
  EXPECT_EQ(library::reports(), once_per_part(other_hdc_text(other, window.hdc, "wglSwapBuffers")));
  forget();
  push<wglSwapLayerBuffers_op>({bits(other), 3});
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglSwapLayerBuffers_op>(child_hdc(part), 3u); });
  EXPECT_EQ(library::reports(), once_per_part(other_hdc_text(other, window.hdc, "wglSwapLayerBuffers")));
  ReleaseDC(window.hwnd, other);
}

TEST_F(wgl_replay_test, a_window_without_children_is_left_alone) {
  begin();
  const library::app_window plain = library::open_window();
  forget();
  push<wglSwapBuffers_op>({bits(plain.hdc)});
  empty_list();
  expect_no_call();
}

TEST_F(wgl_replay_test, another_window_s_swap_goes_to_that_window_s_children) {
  begin();
  const library::app_window second = library::open_window({200, 200, 600, 700});
  EXPECT_TRUE(osw_wglMakeCurrent(second.hdc, rendered.context));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  forget();
  EXPECT_TRUE(osw_wglSwapBuffers(second.hdc));
  empty_list();
  const __osw_window_mapping* other = __osw_window_mapping_of(second.hwnd);
  ASSERT_NE(other, nullptr);
  expect_one_call_each([&](int part) { return driver::expect<wglSwapBuffers_op>(other->parts[part].child_hdc); });
}

TEST_F(wgl_replay_test, pbuffer_ops_act_on_each_part_s_own) {
  begin();
  const bound_pbuffer pbuffer = open_pbuffer(rendered.window.hdc);
  const int attributes[] = {WGL_FRONT_LEFT_ARB, 0, 0};
  const auto own = [&](int part) { return pbuffer.record->parts[part].child_hpbuffer; };
  forget();
  EXPECT_TRUE(osw_wglBindTexImageARB(pbuffer.handle, WGL_BACK_LEFT_ARB));
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglBindTexImageARB_op>(own(part), WGL_BACK_LEFT_ARB); });
  forget();
  EXPECT_TRUE(osw_wglReleaseTexImageARB(pbuffer.handle, -1));
  empty_list();
  expect_one_call_each([&](int part) { return driver::expect<wglReleaseTexImageARB_op>(own(part), -1); });
  forget();
  EXPECT_TRUE(osw_wglSetPbufferAttribARB(pbuffer.handle, attributes));
  // The flush has waited: the attributes are the application's memory.
  expect_one_call_each([&](int part) { return driver::expect<wglSetPbufferAttribARB_op>(own(part), attributes); });
  EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer.handle));
}

TEST_F(wgl_replay_test, the_swap_interval_is_the_same_on_all_parts) {
  begin();
  EXPECT_TRUE(osw_wglSwapIntervalEXT(-3));
  empty_list();
  expect_one_call_each([](int) { return driver::expect<wglSwapIntervalEXT_op>(-3); });
}

TEST_F(wgl_replay_test, ops_without_a_case_do_nothing) {
  begin();
  const std::set<int> with_case = {wglMakeCurrent_op::op,         wglShareLists_op::op,
                                   wglSwapBuffers_op::op,         wglSwapLayerBuffers_op::op,
                                   wglBindTexImageARB_op::op,     wglReleaseTexImageARB_op::op,
                                   wglSetPbufferAttribARB_op::op, wglSwapIntervalEXT_op::op};
  const u64 slots[12] = {bits(rendered.window.hdc), bits(rendered.context)};
  int tried = 0;
  for (int op = 0; op < wgl_op_count; ++op) {
    if (with_case.contains(op)) continue;
    __osw_push_wgl_cmd(state(), op, 12, slots, 0);
    ++tried;
  }
  empty_list();
  EXPECT_EQ(tried, figures::wgl_ops_without_replay);
  expect_no_call();
}

TEST_F(wgl_replay_test, no_result_is_handed_back) {
  begin();
  driver::set_result<glGetError_op>(0x502);
  EXPECT_EQ(osw_glGetError(), 0x502u);
  __osw_cmd* const cmd = __osw_next_cmd(queue());
  cmd->result = 0x1111;
  EXPECT_TRUE(osw_wglShareLists(rendered.context, rendered.context));
  EXPECT_EQ(queue()->last_result, 0x502u);
  EXPECT_EQ(cmd->result, 0x1111u);
}

TEST_F(wgl_replay_test, what_the_system_says_on_a_part_is_ignored) {
  begin();
  for (int part = 0; part < 4; ++part) driver::set_result_in<wglSwapBuffers_op>(child(part), 0);
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  push_hints(1);
  empty_list();
  for (int part = 0; part < 4; ++part) EXPECT_EQ(library::part_calls(rendered, part), hints(1));
}

}  // namespace
