#include "support/recording_driver.h"
#include "support/wgl_names.h"

#include <gtest/gtest.h>

#include "platform/desktop.h"
#include "platform/process.h"

namespace {

struct driver_test : testing::Test {
  void SetUp() override {
    platform::reset();
    driver::reset();
    module = LoadLibraryA("opengl32sys.dll");
  }
  void TearDown() override { platform::reset(); }
  HMODULE module = nullptr;
};

template <class Op>
typename Op::type* by_export(HMODULE module) {
  return reinterpret_cast<typename Op::type*>(reinterpret_cast<__osw_proc>(GetProcAddress(module, Op::name)));
}

template <class Op>
typename Op::type* by_name(HMODULE module) {
  return reinterpret_cast<typename Op::type*>(
      reinterpret_cast<__osw_proc>(by_export<wglGetProcAddress_op>(module)(Op::name)));
}

HDC drawable() {
  const HDC hdc = GetDC(platform::create_window());
  platform::set_dc_pixel_format(hdc, 1);
  return hdc;
}

HGLRC bind_context(HMODULE module, HDC hdc) {
  const HGLRC hglrc = by_export<wglCreateContext_op>(module)(hdc);
  EXPECT_TRUE(by_export<wglMakeCurrent_op>(module)(hdc, hglrc));
  return hglrc;
}

TEST_F(driver_test, exports_are_those_of_the_platforms_library) {
  EXPECT_NE(GetProcAddress(module, "glClearIndex"), nullptr);
  EXPECT_NE(GetProcAddress(module, "wglUseFontOutlinesW"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "glBlendColor"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "wglFastSwitchContextZ4"), nullptr);
  driver::set_reach("glClear", driver::reach::nowhere);
  EXPECT_EQ(GetProcAddress(module, "glClear"), nullptr);
}

TEST_F(driver_test, names_are_answered_under_a_context_alone) {
  EXPECT_EQ(by_name<glBlendColor_op>(module), nullptr);
  bind_context(module, drawable());
  EXPECT_NE(by_name<glBlendColor_op>(module), nullptr);
  EXPECT_EQ(by_name<glClear_op>(module), nullptr);
  driver::set_reach("glClear", driver::reach::both);
  EXPECT_NE(by_name<glClear_op>(module), nullptr);
  driver::set_answer("glBlendColor", -1);
  EXPECT_EQ(reinterpret_cast<INT_PTR>(by_name<glBlendColor_op>(module)), -1);
  driver::set_reach("glBlendEquation", driver::reach::nowhere);
  EXPECT_EQ(by_name<glBlendEquation_op>(module), nullptr);
}

TEST_F(driver_test, arguments_are_noted_as_they_came) {
  const HGLRC hglrc = bind_context(module, drawable());
  driver::clear_calls();
  by_export<glColor4f_op>(module)(1.0f, -0.0f, 0.5f, 2.0f);
  by_export<glVertex2d_op>(module)(0.1, -1e300);
  by_export<glVertex2s_op>(module)(-1, 2);
  by_export<glColorMask_op>(module)(1, 0, 255, 0);
  by_export<glBitmap_op>(module)(-1, 2, 3.0f, 4.0f, 5.0f, 6.0f, nullptr);
  const std::vector<driver::call> expected = {
      driver::expect<glColor4f_op>(1.0f, -0.0f, 0.5f, 2.0f), driver::expect<glVertex2d_op>(0.1, -1e300),
      driver::expect<glVertex2s_op>(-1, 2), driver::expect<glColorMask_op>(1, 0, 255, 0),
      driver::expect<glBitmap_op>(-1, 2, 3.0f, 4.0f, 5.0f, 6.0f, nullptr)};
  EXPECT_EQ(driver::calls_in(hglrc), expected);
  EXPECT_EQ(driver::calls()[0].arguments[1], 0x80000000u);
  EXPECT_EQ(driver::calls()[2].arguments[0], 0xFFFFu);
  EXPECT_EQ(driver::calls()[4].argument_count, 7u);
}

struct zero_call {
  const char* name;
  u32 count;
  void (*run)(FARPROC entry);
};

template <class Type>
struct call_of;
template <class Result, class... Parameters>
struct call_of<Result(Parameters...)> {
  static constexpr u32 count = sizeof...(Parameters);
  static void run(FARPROC entry) {
    reinterpret_cast<Result (*)(Parameters...)>(reinterpret_cast<__osw_proc>(entry))(Parameters{}...);
  }
};

constexpr auto zero_calls = gl_op_list::column<zero_call>([]<class Op>() -> zero_call {
  return {Op::name, call_of<typename Op::type>::count, call_of<typename Op::type>::run};
});

TEST_F(driver_test, every_gl_entry_notes_its_op) {
  for (int op = 0; op < gl_op_count; ++op) {
    const zero_call& call = zero_calls.of[op];
    driver::set_reach(call.name, driver::reach::exported);
    driver::clear_calls();
    call.run(driver::export_of(call.name));
    ASSERT_EQ(driver::calls().size(), 1u) << call.name;
    EXPECT_EQ(driver::calls()[0].op, op);
    EXPECT_EQ(driver::calls()[0].argument_count, call.count) << call.name;
  }
}

TEST_F(driver_test, results_come_whole_from_the_script) {
  const HGLRC first = bind_context(module, drawable());
  const HGLRC second = by_export<wglCreateContext_op>(module)(by_export<wglGetCurrentDC_op>(module)());
  const auto get_error = by_export<glGetError_op>(module);
  EXPECT_EQ(get_error(), 0u);
  driver::set_result<glGetError_op>(GL_INVALID_ENUM);
  driver::set_result_in<glGetError_op>(second, GL_INVALID_OPERATION);
  EXPECT_EQ(get_error(), GLenum{GL_INVALID_ENUM});
  by_export<wglMakeCurrent_op>(module)(by_export<wglGetCurrentDC_op>(module)(), second);
  EXPECT_EQ(get_error(), GLenum{GL_INVALID_OPERATION});
  driver::set_result<glIsEnabled_op>(0xFFFFFF00);
  EXPECT_EQ(by_export<glIsEnabled_op>(module)(0), 0);
  driver::set_result<glGetString_op>(0x123456789ABCDEF0);
  EXPECT_EQ(reinterpret_cast<u64>(by_export<glGetString_op>(module)(0)), 0x123456789ABCDEF0u);
  EXPECT_TRUE(driver::context(first).live);
}

TEST_F(driver_test, a_script_runs_inside_the_call) {
  bind_context(module, drawable());
  driver::on_call<glGetIntegerv_op>([](driver::live_call& live) {
    *reinterpret_cast<GLint*>(live.what.arguments[1]) = static_cast<GLint>(live.what.arguments[0]) + 1;
  });
  GLint value = 0;
  by_export<glGetIntegerv_op>(module)(41, &value);
  EXPECT_EQ(value, 42);
  int all = 0;
  driver::on_every_call([&](driver::live_call&) { ++all; });
  by_export<glFlush_op>(module)();
  EXPECT_EQ(all, 1);
}

TEST_F(driver_test, an_op_fails_once_when_ordered) {
  const HDC hdc = drawable();
  driver::fail_call<wglCreateContext_op>(2);
  const auto create = by_export<wglCreateContext_op>(module);
  EXPECT_NE(create(hdc), nullptr);
  EXPECT_EQ(create(hdc), nullptr);
  EXPECT_NE(create(hdc), nullptr);
  EXPECT_EQ(driver::contexts().size(), 2u);
}

TEST_F(driver_test, a_context_is_current_on_one_thread) {
  const HDC hdc = drawable();
  const HGLRC hglrc = bind_context(module, hdc);
  EXPECT_EQ(by_export<wglGetCurrentContext_op>(module)(), hglrc);
  const auto make_current = by_export<wglMakeCurrent_op>(module);
  platform::join(platform::start_thread([&] {
    EXPECT_FALSE(make_current(hdc, hglrc));
    EXPECT_FALSE(by_export<wglDeleteContext_op>(module)(hglrc));
  }));
  EXPECT_TRUE(make_current(nullptr, nullptr));
  platform::join(platform::start_thread([&] {
    EXPECT_TRUE(make_current(hdc, hglrc));
    EXPECT_EQ(driver::context(hglrc).current_on, GetCurrentThreadId());
    EXPECT_TRUE(by_export<wglDeleteContext_op>(module)(hglrc));
    EXPECT_EQ(by_export<wglGetCurrentContext_op>(module)(), nullptr);
  }));
  EXPECT_FALSE(make_current(hdc, hglrc));
  EXPECT_FALSE(driver::context(hglrc).live);
}

TEST_F(driver_test, a_context_needs_a_drawable_with_its_pixel_format) {
  const HDC bare = GetDC(platform::create_window());
  EXPECT_EQ(by_export<wglCreateContext_op>(module)(bare), nullptr);
  const HGLRC hglrc = by_export<wglCreateContext_op>(module)(drawable());
  const HDC other = GetDC(platform::create_window());
  EXPECT_TRUE(by_export<wglSetPixelFormat_op>(module)(other, 2, nullptr));
  EXPECT_FALSE(by_export<wglMakeCurrent_op>(module)(other, hglrc));
}

TEST_F(driver_test, the_fast_switch_takes_gl_calls_elsewhere) {
  const HDC hdc = drawable();
  const HGLRC first = bind_context(module, hdc);
  const HGLRC second = by_export<wglCreateContext_op>(module)(hdc);
  const HANDLE second_driver = by_name<wglGetGLContextZ4_op>(module)(second);
  EXPECT_NE(second_driver, nullptr);
  EXPECT_EQ(second_driver, driver::context(second).driver_context);
  EXPECT_TRUE(by_name<wglFastSwitchContextZ4_op>(module)(second_driver, 0));
  by_export<glFlush_op>(module)();
  EXPECT_EQ(driver::gl_calls_in(second).size(), 1u);
  EXPECT_TRUE(driver::gl_calls_in(first).empty());
  EXPECT_EQ(driver::current_binding().context, first);
  EXPECT_EQ(driver::current_binding().switched_to, second);
  EXPECT_EQ(by_name<wglGetGLContextZ4_op>(module)(nullptr), nullptr);
}

TEST_F(driver_test, contexts_are_counted_off_per_thread) {
  const HDC hdc = drawable();
  const auto create = by_export<wglCreateContext_op>(module);
  const HGLRC app = by_export<wglCreateLayerContext_op>(module)(hdc, 0);
  const HGLRC first = create(hdc);
  platform::join(platform::start_thread([&] { create(hdc); }));
  const HGLRC second = create(hdc);
  create(hdc);
  EXPECT_EQ(driver::contexts_made_after(app, 2), (std::vector<HGLRC>{first, second}));
}

TEST_F(driver_test, a_pbuffer_has_a_device_context) {
  const HDC hdc = drawable();
  bind_context(module, hdc);
  const HPBUFFERARB pbuffer = by_name<wglCreatePbufferARB_op>(module)(hdc, 2, 64, 32, nullptr);
  const HDC pbuffer_hdc = by_name<wglGetPbufferDCARB_op>(module)(pbuffer);
  EXPECT_EQ(WindowFromDC(pbuffer_hdc), nullptr);
  EXPECT_EQ(platform::dc_pixel_format(pbuffer_hdc), 2);
  int width = 0;
  EXPECT_TRUE(by_name<wglQueryPbufferARB_op>(module)(pbuffer, WGL_PBUFFER_WIDTH_ARB, &width));
  EXPECT_EQ(width, 64);
  EXPECT_EQ(driver::pbuffers().size(), 1u);
  EXPECT_EQ(by_name<wglReleasePbufferDCARB_op>(module)(pbuffer, pbuffer_hdc), 1);
  EXPECT_TRUE(by_name<wglDestroyPbufferARB_op>(module)(pbuffer));
  EXPECT_FALSE(by_name<wglDestroyPbufferARB_op>(module)(pbuffer));
  EXPECT_EQ(platform::open_device_contexts(), 0);
}

TEST_F(driver_test, a_call_without_a_context_or_under_a_lock_is_noted) {
  by_export<glFlush_op>(module)();
  EXPECT_EQ(driver::calls_without_context(), std::vector<std::string>{"glFlush"});
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  EnterCriticalSection(&section);
  by_export<wglGetCurrentContext_op>(module)();
  LeaveCriticalSection(&section);
  DeleteCriticalSection(&section);
  EXPECT_EQ(driver::calls_under_lock(), std::vector<std::string>{"wglGetCurrentContext"});
}

TEST_F(driver_test, a_digest_stands_for_the_calls) {
  const HGLRC hglrc = bind_context(module, drawable());
  driver::record(driver::recording::digest);
  driver::clear_calls();
  by_export<glClear_op>(module)(5);
  by_export<glFlush_op>(module)();
  const u64 five = 5;
  const u64 expected = driver::digest_after(driver::digest_after(driver::empty_digest, glClear_op::op, &five, 1),
                                            glFlush_op::op, nullptr, 0);
  EXPECT_EQ(driver::context(hglrc).digest, expected);
  EXPECT_EQ(driver::context(hglrc).gl_calls, 2u);
  EXPECT_TRUE(driver::calls().empty());
}

TEST_F(driver_test, nothing_is_kept_when_switched_off) {
  driver::record(driver::recording::off);
  bind_context(module, drawable());
  by_export<glColor4f_op>(module)(1, 1, 1, 1);
  EXPECT_EQ(by_export<glGetError_op>(module)(), 0u);
  EXPECT_EQ(GetProcAddress(module, "glClear"), GetProcAddress(module, "glFlush"));
  EXPECT_TRUE(driver::calls().empty());
}

}  // namespace
