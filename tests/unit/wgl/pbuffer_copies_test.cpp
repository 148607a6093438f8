// Framebuffer copies and reads with a pbuffer current, on both paths: each part's pbuffer has the application's size,
// so that each part reads the whole, and the pbuffer's own pixel format chooses the format of a copy.
#include <algorithm>

#include "pipeline/push.h"
#include "support/copy_formats.h"
#include "support/library.h"

namespace {

struct pbuffer_copies_test : library::process_test, testing::WithParamInterface<library::path> {
  void SetUp() override {
    library::start({.way = GetParam()});
    const library::rendering rendered = library::start_rendering();
    constexpr int depth_of_16_bits = 5;
    pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, depth_of_16_bits, 70, 50, nullptr);
    const HDC hdc = osw_wglGetPbufferDCARB(pbuffer);
    const HGLRC context = osw_wglCreateContext(hdc);
    children = driver::contexts_made_after(context, 2);
    ASSERT_TRUE(osw_wglMakeCurrent(hdc, context));
    library::finish();
    driver::clear_calls();
  }
  void TearDown() override {
    osw_wglMakeCurrent(nullptr, nullptr);
    osw_wglDestroyPbufferARB(pbuffer);
    process_test::TearDown();
  }
  // The one call of an op that a part has received since the last one was asked for.
  driver::call only_call(std::size_t part, int op) const {
    std::vector<driver::call> found = driver::gl_calls_in(children[part]);
    std::erase_if(found, [=](const driver::call& one) { return one.op != op; });
    EXPECT_EQ(found.size(), 1u) << driver::name_of(driver::op_space::gl, op) << " on part " << part;
    return found.empty() ? driver::call() : found[0];
  }
  HPBUFFERARB pbuffer = nullptr;
  std::vector<HGLRC> children;
};

constexpr transfer color = {GL_RGBA, GL_UNSIGNED_BYTE};
constexpr transfer depth = {GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT};

struct expected_copy {
  const char* name;
  void (*copy)();
  int upload_op;
  u32 upload_format_at;
  GLsizei height;
  transfer pixels;
};

const expected_copy copies[] = {
    {"pixels", [] { osw_glCopyPixels(10, 20, 5, 6, GL_COLOR); }, glDrawPixels_op::op, 2, 6, color},
    {"depth", [] { osw_glCopyPixels(10, 20, 5, 6, GL_DEPTH); }, glDrawPixels_op::op, 2, 6, depth},
    {"image 1D", [] { osw_glCopyTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, 10, 20, 5, 0); }, glTexImage1D_op::op, 5, 1,
     color},
    {"image 2D", [] { osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, 10, 20, 5, 6, 0); },
     glTexImage2D_op::op, 6, 6, depth},
    {"part 1D", [] { osw_glCopyTexSubImage1D(GL_TEXTURE_1D, 0, 1, 10, 20, 5); }, glTexSubImage1D_op::op, 4, 1, color},
    {"part 2D", [] { osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 10, 20, 5, 6); }, glTexSubImage2D_op::op, 6, 6,
     color},
    {"part 3D", [] { osw_glCopyTexSubImage3D(GL_TEXTURE_3D, 0, 1, 2, 3, 10, 20, 5, 6); }, glTexSubImage3D_op::op, 8, 6,
     color}};

TEST_P(pbuffer_copies_test, each_part_reads_the_whole_and_uploads_it) {
  for (const expected_copy& one : copies) {
    SCOPED_TRACE(one.name);
    driver::clear_calls();
    one.copy();
    library::finish();
    for (std::size_t part : {0, 1}) {
      driver::call read = only_call(part, glReadPixels_op::op);
      read.arguments[6] = 0;
      EXPECT_EQ(read,
                driver::expect<glReadPixels_op>(10, 20, 5, one.height, one.pixels.format, one.pixels.type, nullptr));
      const driver::call upload = only_call(part, one.upload_op);
      EXPECT_EQ(upload.arguments[one.upload_format_at], one.pixels.format);
      EXPECT_EQ(upload.arguments[one.upload_format_at + 1], one.pixels.type);
    }
  }
}

TEST_P(pbuffer_copies_test, a_read_is_cut_at_the_pbuffers_edges) {
  std::vector<GLubyte> pixels(20 * 20 * 4);
  osw_glReadPixels(60, 40, 20, 20, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  library::finish();
  for (std::size_t part : {0, 1}) {
    EXPECT_EQ(only_call(part, glReadPixels_op::op),
              driver::expect<glReadPixels_op>(60, 40, 10, 10, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data()));
  }
}

INSTANTIATE_TEST_SUITE_P(paths, pbuffer_copies_test,
                         testing::Values(library::path::threaded, library::path::sequential),
                         testing::PrintToStringParamName());

}  // namespace
