// The two wgl tables row by row: what each row does, and those that only forward in every state of a thread.
#include <gtest/gtest.h>

#include "support/wgl_samples.h"
#include "support/wgl_situations.h"

namespace {

using situations::situation;

constexpr int own = -2;   // the wrapper does work of its own, or the row of such work under another name
constexpr int none = -1;  // nothing is called, and the result is 0

// Which of the system's entries serves a row, in an active and in a bypassed process.
struct row {
  const char* name;
  int active;
  int bypassed;
};

constexpr row rows[] = {
    {"wglChoosePixelFormat", 0, 0},
    {"wglCopyContext", own, 1},
    {"wglCreateContext", own, own},
    {"wglCreateLayerContext", own, 3},
    {"wglDeleteContext", own, 4},
    {"wglDescribeLayerPlane", 5, 5},
    {"wglDescribePixelFormat", 6, 6},
    {"wglGetCurrentContext", 7, 7},
    {"wglGetCurrentDC", 8, 8},
    {"wglGetDefaultProcAddress", 12, 12},
    {"wglGetLayerPaletteEntries", 10, 10},
    {"wglGetPixelFormat", 11, 11},
    {"wglGetProcAddress", own, 12},
    {"wglMakeCurrent", own, own},
    {"wglRealizeLayerPalette", 14, 14},
    {"wglSetLayerPaletteEntries", 15, 15},
    {"wglSetPixelFormat", 16, 16},
    {"wglShareLists", own, 17},
    {"wglSwapBuffers", own, 18},
    {"wglSwapLayerBuffers", own, 19},
    {"wglSwapMultipleBuffers", 20, 20},
    {"wglUseFontBitmapsA", 21, 21},
    {"wglUseFontBitmapsW", 22, 22},
    {"wglUseFontOutlinesA", 23, 23},
    {"wglUseFontOutlinesW", 24, 24},
    {"wglCreateBufferRegionARB", 25, 25},
    {"wglDeleteBufferRegionARB", 26, 26},
    {"wglSaveBufferRegionARB", 27, 27},
    {"wglRestoreBufferRegionARB", 28, 28},
    {"wglGetExtensionsStringARB", 29, 29},
    {"wglGetPixelFormatAttribivARB", 30, 30},
    {"wglGetPixelFormatAttribfvARB", 31, 31},
    {"wglChoosePixelFormatARB", 32, 32},
    {"wglMakeContextCurrentARB", 33, 33},
    {"wglGetCurrentReadDCARB", 34, 34},
    {"wglCreatePbufferARB", own, 35},
    {"wglGetPbufferDCARB", own, 36},
    {"wglReleasePbufferDCARB", own, 37},
    {"wglDestroyPbufferARB", own, 38},
    {"wglQueryPbufferARB", 39, 39},
    {"wglBindTexImageARB", own, 40},
    {"wglReleaseTexImageARB", own, 41},
    {"wglSetPbufferAttribARB", own, 42},
    {"wglCreateContextAttribsARB", 43, 43},
    {"wglCreateDisplayColorTableEXT", 44, 44},
    {"wglLoadDisplayColorTableEXT", 45, 45},
    {"wglBindDisplayColorTableEXT", 46, 46},
    {"wglDestroyDisplayColorTableEXT", 47, 47},
    {"wglGetExtensionsStringEXT", 48, 48},
    {"wglMakeContextCurrentEXT", 33, 33},
    {"wglGetCurrentReadDCEXT", 34, 34},
    {"wglCreatePbufferEXT", own, 35},
    {"wglGetPbufferDCEXT", own, 36},
    {"wglReleasePbufferDCEXT", own, 37},
    {"wglDestroyPbufferEXT", own, 38},
    {"wglQueryPbufferEXT", 39, 39},
    {"wglGetPixelFormatAttribivEXT", 30, 30},
    {"wglGetPixelFormatAttribfvEXT", 31, 31},
    {"wglChoosePixelFormatEXT", 32, 32},
    {"wglSwapIntervalEXT", own, 59},
    {"wglGetSwapIntervalEXT", 60, 60},
    {"wglFastSwitchContextZ4", none, none},
    {"wglGetGLContextZ4", none, none},
};
static_assert(std::size(rows) == wgl_op_count);

bool makes_fonts(int op) {
  return op >= 21 && op <= 24;
}

struct wgl_rows_test : library::process_test, testing::WithParamInterface<situation> {};
INSTANTIATE_TEST_SUITE_P(, wgl_rows_test, situations::all);

constexpr u64 scripted = 0x91827364F5E4D3C2;

TEST_P(wgl_rows_test, a_forward_goes_to_the_system_once_and_with_its_arguments) {
  const situations::stage stage = situations::enter(GetParam());
  const bool active = situations::is_active(GetParam());
  for (const wgl_sample& sample : wgl_samples()) {
    const int target = active ? rows[sample.op].active : rows[sample.op].bypassed;
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
    const row& expected = rows[sample.op];
    EXPECT_STREQ(sample.name, expected.name);
    EXPECT_EQ(sample.active_target, expected.active) << sample.name;
    // The samples do not tell the work of a bypassed process from a forward.
    EXPECT_EQ(sample.forwarded_to, expected.bypassed == own ? sample.op : expected.bypassed) << sample.name;
    EXPECT_EQ(sample.warns, makes_fonts(sample.op)) << sample.name;
  }
}

}  // namespace
