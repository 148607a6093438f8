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

// The window, of which each part has a share, to a texture or an object, which each part has whole.
struct window_copies_test : pack_buffer_test {
  // What the driver says of the program's state, in every context.
  void answer_state() {
    driver::on_call<glGetIntegerv_op>([](driver::live_call& call) {
      auto* value = reinterpret_cast<GLint*>(call.what.arguments[1]);
      switch (call.what.arguments[0]) {
        case GL_PIXEL_UNPACK_BUFFER_BINDING:
          *value = 6;
          break;
        case GL_TEXTURE_BINDING_2D:
          *value = 9;
          break;
        case GL_PACK_ALIGNMENT:
          *value = 4;
          break;
        default:
          break;
      }
    });
    driver::on_call<glGetFloatv_op>([](driver::live_call& call) {
      const u64 name = call.what.arguments[0];
      *reinterpret_cast<GLfloat*>(call.what.arguments[1]) = name == GL_RED_SCALE    ? 2.0f
                                                            : name == GL_DEPTH_BIAS ? 0.5f
                                                            : is_scale(name)        ? 1.0f
                                                                                    : 0.0f;
    });
  }
  static bool is_scale(u64 name) {
    return name == GL_GREEN_SCALE || name == GL_BLUE_SCALE || name == GL_ALPHA_SCALE || name == GL_DEPTH_SCALE;
  }
  // A part's calls without its questions, and without how it places its share.
  std::vector<driver::call> changes_on(int part) const {
    std::vector<driver::call> found = on_part(part);
    std::erase_if(found, [](const driver::call& call) {
      const std::string name = driver::name_of(driver::op_space::gl, call.op);
      return name.starts_with("glGet") || call.op == glReadPixels_op::op ||
             (call.op == glPixelStorei_op::op && is_placement(call.arguments[0]));
    });
    return found;
  }
  static bool is_placement(u64 name) {
    return name == GL_PACK_ROW_LENGTH || name == GL_PACK_IMAGE_HEIGHT || name == GL_PACK_SKIP_ROWS ||
           name == GL_PACK_SKIP_PIXELS;
  }
  struct extent {
    GLint width, height;
  };
  extent size() const {
    const RECT client = __osw_load_rect(__osw_fetch_thread_state()->window_mapping->client_rect);
    return {client.right - client.left, client.bottom - client.top};
  }
};

// The order: nothing stands in the read's way, the copy changes values once, and all is as before afterwards.
TEST_P(window_copies_test, the_state_of_transfers_is_the_program_s_again_afterwards) {
  answer_state();
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 6);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
  finish();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 10, 20, 30, 40, 0);
  wait();
  for (int part = 0; part < 4; ++part) {
    std::vector<driver::call> changes = changes_on(part);
    const auto upload = std::ranges::find(changes, +glTexImage2D_op::op, &driver::call::op);
    ASSERT_NE(upload, changes.end());
    EXPECT_EQ(upload->arguments[3], 30u);
    EXPECT_EQ(upload->arguments[4], 40u);
    EXPECT_NE(upload->arguments[8], 0u);
    upload->arguments = {};
    driver::call image = expect<glTexImage2D_op>(0u, 0, 0, 0, 0, 0, 0u, 0u, nullptr);
    EXPECT_EQ(changes, (std::vector<driver::call>{
                           expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 0u),
                           expect<glPixelStorei_op>(GL_PACK_ALIGNMENT, 1),
                           expect<glPixelStorei_op>(GL_UNPACK_ROW_LENGTH, 0),
                           expect<glPixelStorei_op>(GL_UNPACK_SKIP_ROWS, 0),
                           expect<glPixelStorei_op>(GL_UNPACK_ALIGNMENT, 1),
                           expect<glPixelTransferf_op>(GL_RED_SCALE, 1.0f),
                           expect<glPixelTransferf_op>(GL_DEPTH_BIAS, 0.0f),
                           expect<glPixelTransferf_op>(GL_RED_SCALE, 2.0f),
                           expect<glPixelTransferf_op>(GL_DEPTH_BIAS, 0.5f),
                           image,
                           expect<glPixelStorei_op>(GL_PACK_ALIGNMENT, 4),
                           expect<glPixelStorei_op>(GL_UNPACK_ROW_LENGTH, 100),
                           expect<glPixelStorei_op>(GL_UNPACK_SKIP_ROWS, 3),
                           expect<glPixelStorei_op>(GL_UNPACK_ALIGNMENT, 4),
                           expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 6u),
                       }));
  }
}

TEST_P(window_copies_test, depth_and_stencil_travel_as_what_the_image_holds) {
  const struct {
    GLenum internal_format, format, type;
  } images[] = {{GL_RGB, GL_RGBA, GL_UNSIGNED_BYTE},
                {GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT},
                {GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8}};
  for (const auto& image : images) {
    driver::on_call<glGetTexLevelParameteriv_op>([=](driver::live_call& call) {
      EXPECT_EQ(call.what.arguments[1], 2u) << "the level that is copied to";
      *reinterpret_cast<GLint*>(call.what.arguments[3]) = static_cast<GLint>(image.internal_format);
    });
    finish();
    osw_glCopyTexSubImage2DEXT(GL_TEXTURE_2D, 2, 1, 2, 0, 0, 8, 8);
    wait();
    for (int part = 0; part < 4; ++part) {
      std::vector<driver::call> uploads = on_part(part);
      std::erase_if(uploads, [](const driver::call& call) { return call.op != glTexSubImage2D_op::op; });
      ASSERT_EQ(uploads.size(), 1u);
      EXPECT_EQ(uploads[0].arguments[6], image.format);
      EXPECT_EQ(uploads[0].arguments[7], image.type);
    }
  }
}

TEST_P(window_copies_test, a_blit_from_the_window_is_each_part_s_from_what_was_gathered) {
  answer_state();
  driver::hand_out_names();
  osw_glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7);
  finish();
  const auto [width, height] = size();
  // Mirrored, twice as large, and over the window's edges.
  osw_glBlitFramebuffer(width + 10, 20, 50, height + 5, 0, 0, 640, 480, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  wait();
  for (int part = 0; part < 4; ++part) {
    const std::vector<driver::call> changes = changes_on(part);
    const auto find = [&](int op) {
      const auto found = std::ranges::find(changes, op, &driver::call::op);
      return found == changes.end() ? driver::call{} : *found;
    };
    const driver::call image = find(glTexImage2D_op::op);
    EXPECT_EQ(image.arguments[2], static_cast<u64>(GL_RGBA8));
    EXPECT_EQ(image.arguments[3], static_cast<u64>(width - 50));
    EXPECT_EQ(image.arguments[4], static_cast<u64>(height - 20));
    EXPECT_EQ(find(glBlitFramebuffer_op::op),
              (expect<glBlitFramebuffer_op>(width + 10 - 50, 0, 0, height + 5 - 20, 0, 0, 640, 480, GL_COLOR_BUFFER_BIT,
                                            GL_NEAREST)));
    EXPECT_EQ(find(glFramebufferTexture2D_op::op),
              (expect<glFramebufferTexture2D_op>(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 1u, 0)));
    const auto blit = std::ranges::find(changes, +glBlitFramebuffer_op::op, &driver::call::op);
    ASSERT_GE(changes.end() - blit, 5);
    EXPECT_EQ(blit[1], (expect<glBindFramebuffer_op>(GL_READ_FRAMEBUFFER, 0u)));
    EXPECT_EQ(blit[2], (expect<glBindTexture_op>(GL_TEXTURE_2D, 9u)));
    EXPECT_EQ(blit[3].op, +glDeleteFramebuffers_op::op);
    EXPECT_EQ(blit[4].op, +glDeleteTextures_op::op);
    EXPECT_TRUE(driver::taken_names(rendered.children[static_cast<std::size_t>(part)]).empty());
  }
  EXPECT_TRUE(copies_alone() == false) << "the window is read again";
}

// Where a filter takes in neighbours, the image is the window's, to the last bit.
TEST_P(window_copies_test, a_filtered_blit_is_from_all_of_the_window) {
  osw_glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7);
  finish();
  osw_glBlitFramebuffer(10, 20, 50, 70, 0, 0, 640, 480, GL_COLOR_BUFFER_BIT, GL_LINEAR);
  wait();
  const auto [width, height] = size();
  for (int part = 0; part < 4; ++part) {
    const std::vector<driver::call> changes = changes_on(part);
    const auto image = std::ranges::find(changes, +glTexImage2D_op::op, &driver::call::op);
    ASSERT_NE(image, changes.end());
    EXPECT_EQ(image->arguments[3], static_cast<u64>(width));
    EXPECT_EQ(image->arguments[4], static_cast<u64>(height));
    EXPECT_EQ(std::ranges::count(changes, expect<glBlitFramebuffer_op>(10, 20, 50, 70, 0, 0, 640, 480,
                                                                       GL_COLOR_BUFFER_BIT, GL_LINEAR)),
              1);
  }
}

TEST_P(window_copies_test, a_blit_that_reads_nothing_of_the_window_is_each_part_s_own) {
  const GLint right = size().width;
  const struct {
    GLint x0, x1;
    GLbitfield mask;
    GLenum filter;
    GLuint read;
  } blits[] = {{0, 8, GL_COLOR_BUFFER_BIT, GL_NEAREST, 7},
               {0, 8, 0, GL_NEAREST, 0},
               {0, 8, GL_DEPTH_BUFFER_BIT, GL_LINEAR, 0},
               {0, 8, 0x8000, GL_NEAREST, 0},
               {0, 8, GL_COLOR_BUFFER_BIT, GL_REPEAT, 0},
               {-9, -2, GL_COLOR_BUFFER_BIT, GL_NEAREST, 0},
               {right + 2, 0x7FFFFFFF, GL_COLOR_BUFFER_BIT, GL_NEAREST, 0}};
  for (const auto& blit : blits) {
    osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, blit.read);
    finish();
    osw_glBlitFramebufferEXT(blit.x0, 0, blit.x1, 8, 0, 0, 8, 8, blit.mask, blit.filter);
    wait();
    for (int part = 0; part < 4; ++part) {
      const std::vector<driver::call> calls = on_part(part);
      ASSERT_EQ(calls.size(), 1u) << blit.x0;
      EXPECT_TRUE(calls[0].op == glBlitFramebuffer_op::op || calls[0].op == glBlitFramebufferEXT_op::op);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(paths, window_copies_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });
INSTANTIATE_TEST_SUITE_P(paths, pack_buffer_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });
INSTANTIATE_TEST_SUITE_P(paths, framebuffers_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });

}  // namespace
