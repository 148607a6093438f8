// The two wgl tables row by row: what each row does, and those that only forward in every state of a thread.
#include <gtest/gtest.h>

#include "support/wgl_samples.h"
#include "support/wgl_situations.h"

namespace {

using situations::situation;

constexpr int own = -2;     // the wrapper does work of its own, or the row of such work under another name
constexpr int none = -1;    // nothing is called, and the result is 0
constexpr int itself = -3;  // the system's entry of the row's own name

// Which of the system's entries serves a row, in an active and in a bypassed process.
struct row {
  const char* name;
  int active;
  int bypassed;
};

constexpr row rows[] = {
    {"wglChoosePixelFormat", itself, itself},
    {"wglCopyContext", own, itself},
    {"wglCreateContext", own, own},
    {"wglCreateLayerContext", own, itself},
    {"wglDeleteContext", own, itself},
    {"wglDescribeLayerPlane", itself, itself},
    {"wglDescribePixelFormat", itself, itself},
    {"wglGetCurrentContext", itself, itself},
    {"wglGetCurrentDC", itself, itself},
    {"wglGetDefaultProcAddress", wglGetProcAddress_op::op, wglGetProcAddress_op::op},
    {"wglGetLayerPaletteEntries", itself, itself},
    {"wglGetPixelFormat", itself, itself},
    {"wglGetProcAddress", own, itself},
    {"wglMakeCurrent", own, own},
    {"wglRealizeLayerPalette", itself, itself},
    {"wglSetLayerPaletteEntries", itself, itself},
    {"wglSetPixelFormat", itself, itself},
    {"wglShareLists", own, itself},
    {"wglSwapBuffers", own, itself},
    {"wglSwapLayerBuffers", own, itself},
    {"wglSwapMultipleBuffers", itself, itself},
    {"wglUseFontBitmapsA", itself, itself},
    {"wglUseFontBitmapsW", itself, itself},
    {"wglUseFontOutlinesA", itself, itself},
    {"wglUseFontOutlinesW", itself, itself},
    {"wglCreateBufferRegionARB", itself, itself},
    {"wglDeleteBufferRegionARB", itself, itself},
    {"wglSaveBufferRegionARB", itself, itself},
    {"wglRestoreBufferRegionARB", itself, itself},
    {"wglGetExtensionsStringARB", itself, itself},
    {"wglGetPixelFormatAttribivARB", itself, itself},
    {"wglGetPixelFormatAttribfvARB", itself, itself},
    {"wglChoosePixelFormatARB", itself, itself},
    {"wglMakeContextCurrentARB", itself, itself},
    {"wglGetCurrentReadDCARB", itself, itself},
    {"wglCreatePbufferARB", own, itself},
    {"wglGetPbufferDCARB", own, itself},
    {"wglReleasePbufferDCARB", own, itself},
    {"wglDestroyPbufferARB", own, itself},
    {"wglQueryPbufferARB", itself, itself},
    {"wglBindTexImageARB", own, itself},
    {"wglReleaseTexImageARB", own, itself},
    {"wglSetPbufferAttribARB", own, itself},
    {"wglCreateContextAttribsARB", itself, itself},
    {"wglCreateDisplayColorTableEXT", itself, itself},
    {"wglLoadDisplayColorTableEXT", itself, itself},
    {"wglBindDisplayColorTableEXT", itself, itself},
    {"wglDestroyDisplayColorTableEXT", itself, itself},
    {"wglGetExtensionsStringEXT", itself, itself},
    {"wglMakeContextCurrentEXT", wglMakeContextCurrentARB_op::op, wglMakeContextCurrentARB_op::op},
    {"wglGetCurrentReadDCEXT", wglGetCurrentReadDCARB_op::op, wglGetCurrentReadDCARB_op::op},
    {"wglCreatePbufferEXT", own, wglCreatePbufferARB_op::op},
    {"wglGetPbufferDCEXT", own, wglGetPbufferDCARB_op::op},
    {"wglReleasePbufferDCEXT", own, wglReleasePbufferDCARB_op::op},
    {"wglDestroyPbufferEXT", own, wglDestroyPbufferARB_op::op},
    {"wglQueryPbufferEXT", wglQueryPbufferARB_op::op, wglQueryPbufferARB_op::op},
    {"wglGetPixelFormatAttribivEXT", wglGetPixelFormatAttribivARB_op::op, wglGetPixelFormatAttribivARB_op::op},
    {"wglGetPixelFormatAttribfvEXT", wglGetPixelFormatAttribfvARB_op::op, wglGetPixelFormatAttribfvARB_op::op},
    {"wglChoosePixelFormatEXT", wglChoosePixelFormatARB_op::op, wglChoosePixelFormatARB_op::op},
    {"wglSwapIntervalEXT", own, itself},
    {"wglGetSwapIntervalEXT", itself, itself},
    {"wglFastSwitchContextZ4", none, none},
    {"wglGetGLContextZ4", none, none},
};
static_assert(std::size(rows) == wgl_op_count);

int active_entry(int op) {
  return rows[op].active == itself ? op : rows[op].active;
}

int bypassed_entry(int op) {
  return rows[op].bypassed == itself ? op : rows[op].bypassed;
}

bool makes_fonts(int op) {
  return op >= wglUseFontBitmapsA_op::op && op <= wglUseFontOutlinesW_op::op;
}

struct wgl_rows_test : library::process_test, testing::WithParamInterface<situation> {};
INSTANTIATE_TEST_SUITE_P(, wgl_rows_test, situations::all);

constexpr u64 scripted = 0x91827364F5E4D3C2;

TEST_P(wgl_rows_test, a_forward_goes_to_the_system_once_and_with_its_arguments) {
  const situations::stage stage = situations::enter(GetParam());
  const bool active = situations::is_active(GetParam());
  for (const wgl_sample& sample : wgl_samples()) {
    const int target = active ? active_entry(sample.op) : bypassed_entry(sample.op);
    if (target == own) continue;
    driver::clear_calls();
    platform::clear_debug_output();
    if (target != none) driver::set_result(driver::op_space::wgl, target, scripted);
    u64 result = 1;
    situations::act(stage, [&] { result = sample.call(); });
    EXPECT_EQ(result, target == none ? 0 : scripted & sample.result_mask) << sample.name;
    driver::clear_scripts();
    driver::call expected = sample.noted;
    expected.op = target;
    EXPECT_EQ(driver::calls(), target == none ? std::vector<driver::call>() : std::vector{expected}) << sample.name;
    std::vector<std::string> warnings;
    if (active && makes_fonts(sample.op)) {
      warnings.push_back("OGLSPANWrapper Warning: " + std::string(sample.name) + " is called!\n");
    }
    EXPECT_EQ(library::reports(), warnings) << sample.name;
  }
  situations::leave(stage);
}

TEST(wgl_row_words_test, the_list_says_of_each_row_what_it_does) {
  for (const wgl_sample& sample : wgl_samples()) {
    EXPECT_STREQ(sample.name, rows[sample.op].name);
    EXPECT_EQ(sample.active_target, active_entry(sample.op)) << sample.name;
    // The samples do not tell the work of a bypassed process from a forward.
    const int bypassed = bypassed_entry(sample.op);
    EXPECT_EQ(sample.forwarded_to, bypassed == own ? sample.op : bypassed) << sample.name;
    EXPECT_EQ(sample.warns, makes_fonts(sample.op)) << sample.name;
  }
}

}  // namespace
