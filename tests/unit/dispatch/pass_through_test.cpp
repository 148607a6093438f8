// The tables that do no work on parts: that of a bypassed process, and that of a thread without a context.
#include <gtest/gtest.h>

#include "dispatch/no_context.h"
#include "dispatch/thread_state.h"
#include "support/expected_figures.h"
#include "support/library.h"
#include "support/op_rows.h"
#include "support/result_widths.h"
#include "support/wgl_samples.h"

namespace {

using namespace result_widths;

struct no_context_test : library::process_test {};
struct pass_through_test : library::process_test {};

// In the basic and in the extended mode.
struct no_context_modes_test : no_context_test, testing::WithParamInterface<bool> {};
struct pass_through_modes_test : pass_through_test, testing::WithParamInterface<bool> {};

std::string name_of_mode(const testing::TestParamInfo<bool>& extended) {
  return extended.param ? "extended" : "basic";
}

INSTANTIATE_TEST_SUITE_P(modes, no_context_modes_test, testing::Bool(), name_of_mode);
INSTANTIATE_TEST_SUITE_P(modes, pass_through_modes_test, testing::Bool(), name_of_mode);

TEST_F(no_context_test, stubs_stand_where_the_list_says) {
  library::start();
  int voids = 0;
  for (int op = 0; op < gl_op_count; ++op) {
    const char* const name = __osw_gl_names[op];
    __osw_proc expected = __osw_void_stub;
    if (is_among(name, bytes)) expected = reinterpret_cast<__osw_proc>(__osw_false_stub);
    if (is_among(name, signed_words) || is_among(name, unsigned_words) || is_among(name, whole)) {
      expected = reinterpret_cast<__osw_proc>(__osw_zero_stub);
    }
    EXPECT_EQ(__osw_gl_table_nocontext[op], expected) << name;
    voids += expected == __osw_void_stub;
  }
  EXPECT_EQ(voids, figures::gl_ops_without_result);
}

TEST_P(no_context_modes_test, every_entry_returns_nothing_and_calls_nothing) {
  library::start({.extended = GetParam()});
  osw_glDebugEntry();
  driver::clear_calls();
  for (const ops::row& row : ops::all()) EXPECT_EQ(row.call(row.entry, ops::distinctive(row)), 0u) << row.name;
  EXPECT_TRUE(driver::calls().empty());
}

TEST_F(no_context_test, nothing_is_written_through_pointers) {
  library::start();
  GLint value = 77;
  osw_glGetIntegerv(GL_MAX_TEXTURE_SIZE, &value);
  GLuint names[2] = {5, 6};
  osw_glGenTextures(2, names);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(names[0], 5u);
}

TEST_F(no_context_test, it_is_the_same_in_a_bypassed_process) {
  library::start({.active = false});
  EXPECT_EQ(osw_glIsEnabled(GL_BLEND), GL_FALSE);
  EXPECT_EQ(osw_glGetError(), 0u);
  EXPECT_EQ(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY), nullptr);
  EXPECT_EQ(osw_glRenderMode(GL_RENDER), 0);
  EXPECT_EQ(osw_glGetString(GL_VENDOR), nullptr);
  osw_glClear(1);
  EXPECT_TRUE(driver::calls_of<glClear_op>().empty());
}

constexpr u64 scripted = 0x91827364F5E4D3C2;

TEST_P(pass_through_modes_test, every_gl_op_reaches_the_system_s_entry_of_its_own_name) {
  library::start({.active = false, .extended = GetParam()});
  library::start_rendering();
  for (const ops::row& row : ops::all()) {
    driver::clear_calls();
    driver::set_result(driver::op_space::gl, row.op, scripted);
    const driver::argument_bits arguments = ops::distinctive(row);
    const u64 result = row.call(row.entry, arguments);
    EXPECT_EQ(__osw_fetch_thread_state()->pass_override, nullptr) << row.name;
    if (row.is_driver_op) {
      EXPECT_TRUE(driver::calls().empty()) << row.name;
      continue;
    }
    EXPECT_EQ(driver::calls(), std::vector<driver::call>{ops::noted(row, arguments)});
    EXPECT_EQ(result, ops::result_of(row, scripted)) << row.name;
  }
}

TEST_F(pass_through_test, every_wgl_op_is_forwarded) {
  library::start({.active = false});
  library::start_rendering();
  for (const wgl_sample& sample : wgl_samples()) {
    // Each has a test of its own.
    if (sample.op == wglCreateContext_op::op || sample.op == wglMakeCurrent_op::op) continue;
    const bool forwarded = sample.forwarded_to >= 0;
    driver::clear_calls();
    if (forwarded) driver::set_result(driver::op_space::wgl, sample.forwarded_to, scripted);
    EXPECT_EQ(sample.call(), forwarded ? scripted & sample.result_mask : 0) << sample.name;
    driver::clear_scripts();
    driver::call expected = sample.noted;
    expected.op = sample.forwarded_to;
    EXPECT_EQ(driver::calls(), forwarded ? std::vector<driver::call>{expected} : std::vector<driver::call>())
        << sample.name;
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(pass_through_test, ext_rows_go_to_arb_entries) {
  library::start({.active = false});
  library::start_rendering();
  const std::pair<int, int> rows[] = {{wglGetDefaultProcAddress_op::op, wglGetProcAddress_op::op},
                                      {wglMakeContextCurrentEXT_op::op, wglMakeContextCurrentARB_op::op},
                                      {wglGetCurrentReadDCEXT_op::op, wglGetCurrentReadDCARB_op::op},
                                      {wglCreatePbufferEXT_op::op, wglCreatePbufferARB_op::op},
                                      {wglGetPbufferDCEXT_op::op, wglGetPbufferDCARB_op::op},
                                      {wglReleasePbufferDCEXT_op::op, wglReleasePbufferDCARB_op::op},
                                      {wglDestroyPbufferEXT_op::op, wglDestroyPbufferARB_op::op},
                                      {wglQueryPbufferEXT_op::op, wglQueryPbufferARB_op::op},
                                      {wglGetPixelFormatAttribivEXT_op::op, wglGetPixelFormatAttribivARB_op::op},
                                      {wglGetPixelFormatAttribfvEXT_op::op, wglGetPixelFormatAttribfvARB_op::op},
                                      {wglChoosePixelFormatEXT_op::op, wglChoosePixelFormatARB_op::op}};
  for (const auto& [row, target] : rows) {
    driver::clear_calls();
    // Any op's function takes these arguments in registers, and what is left over does no harm.
    driver::set_result(driver::op_space::wgl, target, 0);
    reinterpret_cast<u64 (*)(u64, u64, u64, u64, u64, u64)>(__osw_wgl_entries[row])(0, 0, 0, 0, 0, 0);
    ASSERT_EQ(driver::calls().size(), 1u) << __osw_wgl_names[row];
    EXPECT_EQ(driver::calls()[0].op, target) << __osw_wgl_names[row];
  }
}

// In a bypassed and in an active process.
struct either_process_test : pass_through_test, testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(, either_process_test, testing::Bool());

TEST_P(either_process_test, create_context_is_a_layer_context_of_the_main_plane) {
  library::start({.active = GetParam()});
  const library::app_window window = library::open_window();
  driver::clear_calls();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  EXPECT_NE(context, nullptr);
  ASSERT_EQ(driver::calls_of<wglCreateLayerContext_op>().size(), 1u);
  EXPECT_EQ(driver::calls_of<wglCreateLayerContext_op>()[0], driver::expect<wglCreateLayerContext_op>(window.hdc, 0));
  for (const driver::call& call : driver::calls_of<wglCreateContext_op>()) {
    EXPECT_NE(call.arguments[0], driver::bits_of(window.hdc));
  }
  EXPECT_EQ(driver::calls_of<wglCreateContext_op>().size(), GetParam() ? 2u : 0u);
}

TEST_P(either_process_test, the_driver_s_own_rows_are_kept_from_the_application) {
  library::start({.active = GetParam()});
  const library::rendering rendered = library::start_rendering();
  EXPECT_NE(__osw_sys_wgl[wglFastSwitchContextZ4_op::op], nullptr);
  EXPECT_NE(__osw_sys_wgl[wglGetGLContextZ4_op::op], nullptr);
  driver::clear_calls();
  EXPECT_EQ(osw_wglGetGLContextZ4(rendered.context), nullptr);
  EXPECT_FALSE(osw_wglFastSwitchContextZ4(driver::context(rendered.context).driver_context, 0));
  EXPECT_TRUE(driver::calls().empty());
}

TEST_P(either_process_test, the_driver_s_own_gl_ops_do_nothing_outside_the_threaded_path) {
  library::start({.active = GetParam(), .way = library::path::sequential});
  for (const bool with_context : {false, true}) {
    if (with_context) library::start_rendering();
    driver::clear_calls();
    osw_glViewportOffsetZ4(1, 2);
    osw_glDrawableSizeZ4(3, 4);
    EXPECT_TRUE(driver::calls_of<glViewportOffsetZ4_op>().empty());
    EXPECT_TRUE(driver::calls_of<glDrawableSizeZ4_op>().empty());
  }
  EXPECT_EQ(__osw_gl_table_seq[glViewportOffsetZ4_op::op], __osw_void_stub);
  EXPECT_EQ(__osw_gl_table_seq[glDrawableSizeZ4_op::op], __osw_void_stub);
  EXPECT_EQ(__osw_gl_table_pass[glViewportOffsetZ4_op::op], __osw_void_stub);
  EXPECT_EQ(__osw_gl_table_pass[glDrawableSizeZ4_op::op], __osw_void_stub);
}

TEST_F(pass_through_test, gdi_calls_come_through_the_exports) {
  library::start({.active = false});
  const library::app_window window = library::open_window();
  driver::clear_calls();
  PIXELFORMATDESCRIPTOR descriptor;
  EXPECT_EQ(GetPixelFormat(window.hdc), 1);
  EXPECT_GT(DescribePixelFormat(window.hdc, 1, sizeof descriptor, &descriptor), 0);
  EXPECT_TRUE(SwapBuffers(window.hdc));
  const std::vector<driver::call> expected = {
      driver::expect<wglGetPixelFormat_op>(window.hdc),
      driver::expect<wglDescribePixelFormat_op>(window.hdc, 1, 40u, &descriptor),
      driver::expect<wglSwapBuffers_op>(window.hdc)};
  EXPECT_EQ(driver::calls(), expected);
}

}  // namespace
