// Copies from framebuffer objects, which every part has whole, and from the window, of which it has a share.
#include <algorithm>
#include <vector>

#include "support/issuing.h"
#include "support/received.h"
#include "wgl/records/window_mapping.h"

namespace {

using driver::expect;

struct framebuffers_test : issuing::pipeline_test, testing::WithParamInterface<library::path> {
  void SetUp() override {
    library::start({.parts = 4, .way = GetParam(), .extended = true});
    rendered = library::start_rendering();
    finish();
  }
  static bool is_threaded() { return GetParam() == library::path::threaded; }
  static void finish() {
    if (is_threaded()) issuing::empty_list();
    driver::clear_calls();
  }
  static void wait() {
    if (is_threaded()) issuing::empty_list();
  }
  std::vector<driver::call> on_part(int part) const { return library::part_calls(rendered, part); }
  std::vector<driver::call> reads_on(int part) const {
    std::vector<driver::call> found = on_part(part);
    std::erase_if(found, [](const driver::call& call) { return call.op != glReadPixels_op::op; });
    return found;
  }

  // Whether each part copies by itself. What is gathered reaches the parts as an upload.
  bool copies_alone() const {
    finish();
    osw_glCopyTexSubImage1D(GL_TEXTURE_1D, 0, 5, 1, 2, 3);
    wait();
    const std::vector<driver::call> copy = {expect<glCopyTexSubImage1D_op>(GLenum{GL_TEXTURE_1D}, 0, 5, 1, 2, 3)};
    int count = 0;
    for (int part = 0; part < 4; ++part) count += on_part(part) == copy;
    EXPECT_TRUE(count == 0 || count == 4) << count;
    return count != 0;
  }

  library::rendering rendered;
};

TEST_P(framebuffers_test, what_is_bound_for_reading_counts) {
  EXPECT_FALSE(copies_alone());
  osw_glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7);
  EXPECT_FALSE(copies_alone()) << "what is drawn to is not what is read";
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 7);
  EXPECT_TRUE(copies_alone());
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  EXPECT_FALSE(copies_alone());
  osw_glBindFramebufferEXT(GL_FRAMEBUFFER, 7);
  EXPECT_TRUE(copies_alone());
}

TEST_P(framebuffers_test, an_object_that_is_deleted_gives_way_to_the_window) {
  const GLuint names[] = {3, 7};
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 7);
  osw_glDeleteFramebuffers(1, names);
  EXPECT_TRUE(copies_alone());
  osw_glDeleteFramebuffers(2, names);
  EXPECT_FALSE(copies_alone());
}

TEST_P(framebuffers_test, another_context_has_bindings_of_its_own) {
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 7);
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, other));
  EXPECT_FALSE(copies_alone());
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_TRUE(copies_alone());
}

TEST_P(framebuffers_test, each_part_copies_from_an_object_by_itself) {
  const struct {
    void (*call)();
    driver::call received;
  } copies[] = {{[] { osw_glCopyPixels(1, 2, 3, 4, GL_COLOR); }, expect<glCopyPixels_op>(1, 2, 3, 4, GLenum{GL_COLOR})},
                {[] { osw_glCopyTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, 1, 2, 3, 0); },
                 expect<glCopyTexImage1D_op>(GLenum{GL_TEXTURE_1D}, 0, GLenum{GL_RGBA}, 1, 2, 3, 0)},
                {[] { osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 2, 3, 4, 0); },
                 expect<glCopyTexImage2D_op>(GLenum{GL_TEXTURE_2D}, 0, GLenum{GL_RGBA}, 1, 2, 3, 4, 0)},
                {[] { osw_glCopyTexSubImage1D(GL_TEXTURE_1D, 0, 5, 1, 2, 3); },
                 expect<glCopyTexSubImage1D_op>(GLenum{GL_TEXTURE_1D}, 0, 5, 1, 2, 3)},
                {[] { osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 5, 6, 1, 2, 3, 4); },
                 expect<glCopyTexSubImage2D_op>(GLenum{GL_TEXTURE_2D}, 0, 5, 6, 1, 2, 3, 4)},
                {[] { osw_glCopyTexSubImage3D(GL_TEXTURE_3D, 0, 5, 6, 7, 1, 2, 3, 4); },
                 expect<glCopyTexSubImage3D_op>(GLenum{GL_TEXTURE_3D}, 0, 5, 6, 7, 1, 2, 3, 4)}};
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 7);
  for (const auto& copy : copies) {
    finish();
    copy.call();
    wait();
    for (int part = 0; part < 4; ++part) EXPECT_EQ(on_part(part), std::vector<driver::call>{copy.received});
  }
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  for (const auto& copy : copies) {
    finish();
    copy.call();
    wait();
    for (int part = 0; part < 4; ++part) {
      for (const driver::call& call : on_part(part)) EXPECT_NE(call, copy.received) << "the window is gathered";
    }
  }
}

TEST_P(framebuffers_test, an_object_is_read_whole_from_the_first_part) {
  GLubyte pixels[64];
  const std::vector<driver::call> read = {expect<glReadPixels_op>(900, 700, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, pixels)};
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 7);
  finish();
  osw_glReadPixels(900, 700, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  wait();
  EXPECT_EQ(reads_on(0), read);
  for (int part = 1; part < 4; ++part) EXPECT_TRUE(reads_on(part).empty());
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  finish();
  const __osw_window_mapping* window = __osw_fetch_thread_state()->window_mapping;
  const RECT client = __osw_load_rect(window->client_rect);
  osw_glReadPixels(0, 0, client.right - client.left, client.bottom - client.top, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  wait();
  std::vector<std::size_t> counts, shares;
  for (int part = 0; part < 4; ++part) {
    counts.push_back(reads_on(part).size());
    shares.push_back(window->parts[part].visible);
  }
  EXPECT_EQ(counts, shares) << "each reads what it shows of the window";
  EXPECT_EQ(std::ranges::count(shares, 1u), 2);
}

TEST_P(framebuffers_test, an_object_is_read_into_a_buffer_on_every_part) {
  driver::on_call<glGetIntegerv_op>([](driver::live_call& call) {
    if (call.what.arguments[0] == GL_PIXEL_PACK_BUFFER_BINDING) *reinterpret_cast<GLint*>(call.what.arguments[1]) = 5;
  });
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 5);
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 7);
  finish();
  osw_glReadPixels(1, 2, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  wait();
  for (int part = 0; part < 4; ++part) {
    EXPECT_EQ(reads_on(part),
              std::vector<driver::call>{expect<glReadPixels_op>(1, 2, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, nullptr)});
  }
}

// The window, of which each part has a share, into a pack buffer, of which each part has one.
struct pack_buffer_test : framebuffers_test {
  static constexpr GLint buffer_size = 100;
  static constexpr u8 before = 0xAB;

  void bind_buffer() {
    driver::on_call<glGetIntegerv_op>([](driver::live_call& call) {
      auto* value = reinterpret_cast<GLint*>(call.what.arguments[1]);
      if (call.what.arguments[0] == GL_PIXEL_PACK_BUFFER_BINDING) *value = 5;
      if (call.what.arguments[0] == GL_PACK_ALIGNMENT) *value = 4;
    });
    driver::on_call<glGetBufferParameteriv_op>(
        [](driver::live_call& call) { *reinterpret_cast<GLint*>(call.what.arguments[2]) = buffer_size; });
    osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 5);
    finish();
  }
  // Of a call in a part's context; -1 in the application's own.
  int part_of(const driver::call& call) const {
    const auto found = std::ranges::find(rendered.children, call.context);
    return found == rendered.children.end() ? -1 : static_cast<int>(found - rendered.children.begin());
  }
};

TEST_P(pack_buffer_test, the_window_is_gathered_and_put_into_the_buffer_of_every_part) {
  bind_buffer();
  std::vector<std::vector<u8>> uploads(4);
  driver::on_call<glGetBufferSubData_op>([](driver::live_call& call) {
    std::fill_n(reinterpret_cast<u8*>(call.what.arguments[3]), call.what.arguments[2], before);
  });
  // Each part writes a byte of its own.
  driver::on_call<glReadPixels_op>([this](driver::live_call& call) {
    const int part = part_of(call.what);
    if (part >= 0) reinterpret_cast<u8*>(call.what.arguments[6])[part] = static_cast<u8>(part + 1);
  });
  driver::on_call<glBufferSubData_op>([this, &uploads](driver::live_call& call) {
    const int part = part_of(call.what);
    const auto* bytes = reinterpret_cast<const u8*>(call.what.arguments[3]);
    if (part >= 0) uploads[static_cast<std::size_t>(part)].assign(bytes, bytes + call.what.arguments[2]);
    EXPECT_EQ(call.what.arguments[1], 12u);
  });
  const __osw_window_mapping* window = __osw_fetch_thread_state()->window_mapping;
  const RECT client = __osw_load_rect(window->client_rect);
  const GLsizei width = client.right - client.left, height = client.bottom - client.top;
  const GLsizei bytes = 4 * width * height;
  void* const offset = reinterpret_cast<void*>(u64{12});
  driver::on_call<glGetBufferParameteriv_op>(
      [=](driver::live_call& call) { *reinterpret_cast<GLint*>(call.what.arguments[2]) = 12 + bytes; });
  osw_glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, offset);
  wait();
  std::vector<u8> expected(static_cast<std::size_t>(bytes), before);
  int readers = 0;
  for (int part = 0; part < 4; ++part) {
    const std::vector<driver::call> reads = reads_on(part);
    if (reads.empty()) continue;
    ++readers;
    expected[static_cast<std::size_t>(part)] = static_cast<u8>(part + 1);
  }
  EXPECT_GT(readers, 1);
  for (const std::vector<u8>& upload : uploads) EXPECT_EQ(upload, expected);
  for (int part = 0; part < 4; ++part) {
    std::vector<driver::call> bindings = on_part(part);
    std::erase_if(bindings, [](const driver::call& call) { return call.op != glBindBuffer_op::op; });
    EXPECT_EQ(bindings, (std::vector<driver::call>{expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 0u),
                                                   expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 5u)}));
  }
}

// GL says so itself.
TEST_P(pack_buffer_test, what_the_buffer_has_no_room_for_is_not_gathered) {
  bind_buffer();
  void* const offset = reinterpret_cast<void*>(u64{40});
  osw_glReadPixels(0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, offset);
  wait();
  if (is_threaded()) {
    void* const end = reinterpret_cast<void*>(u64{buffer_size});
    EXPECT_EQ(driver::calls().back(), expect<glReadPixels_op>(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, end));
    EXPECT_EQ(driver::calls().back().context, rendered.context);
  }
  for (int part = 0; part < 4; ++part) {
    if (is_threaded()) {
      EXPECT_TRUE(on_part(part).empty());
    } else {
      EXPECT_EQ(on_part(part).back(), expect<glReadPixels_op>(0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, offset));
    }
  }
  EXPECT_TRUE(driver::calls_of<glBufferSubData_op>().empty());
}

INSTANTIATE_TEST_SUITE_P(paths, pack_buffer_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });
INSTANTIATE_TEST_SUITE_P(paths, framebuffers_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });

}  // namespace
