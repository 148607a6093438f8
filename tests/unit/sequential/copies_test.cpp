// Framebuffer copies on the sequential path: one read from all parts, one upload to all of them, and the pixel state as
// it was.
#include <algorithm>
#include <cstring>

#include "dispatch/thread_state.h"
#include "support/allocation.h"
#include "support/copy_formats.h"
#include "support/pixel_state.h"
#include "support/sequential_steps.h"
#include "wgl/records/window_mapping.h"

namespace {

using pixel_state::store_value;

struct sequential_copies_test : library::process_test {
  void SetUp() override {
    rendered = sequential::start({.parts = 2, .parts_are_monitors = true});
    set_depths(32, 24);
    pixel_state::serve(rendered);
  }
  static void set_depths(BYTE color, BYTE depth) {
    PIXELFORMATDESCRIPTOR& pfd = __osw_fetch_thread_state()->window_mapping->pfd;
    pfd.cColorBits = color;
    pfd.cDepthBits = depth;
  }
  void set(GLenum name, GLint value) { pixel_state::set(rendered, name, value); }
  void expect_state(GLenum name, GLint value) {
    for (HGLRC child : rendered.children) EXPECT_EQ((pixel_state::all()[{child, name}]), value) << name;
  }
  std::vector<driver::call> calls_of(std::size_t part, int op) {
    std::vector<driver::call> found = sequential::calls_in(rendered.children[part]);
    std::erase_if(found, [=](const driver::call& one) { return one.op != op; });
    return found;
  }
  library::rendering rendered;
};

TEST_F(sequential_copies_test, the_drawables_depths_choose_the_format) {
  for (const copy_format& one : copy_formats) {
    SCOPED_TRACE(testing::Message() << one.kind << ' ' << int{one.color} << ' ' << int{one.depth});
    set_depths(one.color, one.depth);
    driver::clear_calls();
    osw_glCopyPixels(10, 20, 5, 6, one.kind);
    const std::vector<driver::call> reads = calls_of(0, glReadPixels_op::op);
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].arguments[4], one.expected.format);
    EXPECT_EQ(reads[0].arguments[5], one.expected.type);
    for (std::size_t part : {0, 1}) {
      const std::vector<driver::call> draws = calls_of(part, glDrawPixels_op::op);
      ASSERT_EQ(draws.size(), 1u);
      EXPECT_EQ(draws[0], driver::expect<glDrawPixels_op>(5, 6, one.expected.format, one.expected.type,
                                                          reinterpret_cast<void*>(reads[0].arguments[6])));
      EXPECT_TRUE(calls_of(part, glCopyPixels_op::op).empty());
    }
  }
}

TEST_F(sequential_copies_test, depth_of_32_bits_in_a_texture_counts_as_color) {
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT32, 10, 20, 5, 6, 0);
  EXPECT_EQ(calls_of(0, glReadPixels_op::op).at(0).arguments[4], GL_RGBA);
  driver::clear_calls();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, 10, 20, 5, 6, 0);
  EXPECT_EQ(calls_of(0, glReadPixels_op::op).at(0).arguments[4], GL_DEPTH_COMPONENT);
}

TEST_F(sequential_copies_test, part_0_alone_is_asked_for_a_textures_format_at_level_0) {
  driver::on_call<glGetTexLevelParameteriv_op>(
      [](driver::live_call& live) { *reinterpret_cast<GLint*>(live.what.arguments[3]) = GL_DEPTH_COMPONENT16; });
  osw_glCopyTexSubImage1D(GL_TEXTURE_1D, 4, 2, 10, 20, 5);
  const std::vector<driver::call> asked = calls_of(0, glGetTexLevelParameteriv_op::op);
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0].arguments[1], 0u);
  EXPECT_EQ(asked[0].arguments[2], 4099u);
  EXPECT_TRUE(calls_of(1, glGetTexLevelParameteriv_op::op).empty());
  EXPECT_EQ(calls_of(0, glReadPixels_op::op).at(0).arguments[4], GL_DEPTH_COMPONENT);
}

// Each part writes its number where the pack state puts its share.
TEST_F(sequential_copies_test, the_upload_carries_the_shares_side_by_side) {
  driver::on_call<glReadPixels_op>([&](driver::live_call& live) {
    const bool left = live.what.context == rendered.children[0];
    const GLint skip = pixel_state::all()[{live.what.context, GL_PACK_SKIP_PIXELS}];
    EXPECT_EQ((pixel_state::all()[{live.what.context, GL_PACK_ROW_LENGTH}]), 4);
    std::memset(reinterpret_cast<GLubyte*>(live.what.arguments[6]) + 4 * skip, left ? 0x11 : 0x22, 8);
  });
  std::vector<std::vector<u8>> uploads;
  driver::on_call<glTexSubImage2D_op>([&](driver::live_call& live) {
    const auto* pixels = reinterpret_cast<const u8*>(live.what.arguments[8]);
    uploads.emplace_back(pixels, pixels + 16);
  });
  osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 298, 20, 4, 1);
  std::vector<u8> expected(16, 0x11);
  std::fill(expected.begin() + 8, expected.end(), 0x22);
  EXPECT_EQ(uploads, std::vector<std::vector<u8>>(2, expected));
}

constexpr store_value pack_values[] = {{GL_PACK_SWAP_BYTES, 1},  {GL_PACK_LSB_FIRST, 1},   {GL_PACK_ROW_LENGTH, 40},
                                       {GL_PACK_SKIP_ROWS, 2},   {GL_PACK_SKIP_PIXELS, 3}, {GL_PACK_IMAGE_HEIGHT, 50},
                                       {GL_PACK_SKIP_IMAGES, 1}, {GL_PACK_ALIGNMENT, 8}};
constexpr store_value unpack_values[] = {
    {GL_UNPACK_SWAP_BYTES, 1},  {GL_UNPACK_LSB_FIRST, 1},     {GL_UNPACK_ROW_LENGTH, 41}, {GL_UNPACK_SKIP_ROWS, 4},
    {GL_UNPACK_SKIP_PIXELS, 5}, {GL_UNPACK_IMAGE_HEIGHT, 51}, {GL_UNPACK_SKIP_IMAGES, 2}, {GL_UNPACK_ALIGNMENT, 2}};

// The state that stood on each part when an op was called.
template <class Op>
std::vector<pixel_state::values>& watch_state() {
  static std::vector<pixel_state::values> states;
  states.clear();
  driver::on_call<Op>([](driver::live_call&) { states.push_back(pixel_state::all()); });
  return states;
}

TEST_F(sequential_copies_test, a_copy_of_pixels_clears_and_restores_both_stores) {
  for (const store_value& one : pack_values) set(one.name, one.value);
  for (const store_value& one : unpack_values) set(one.name, one.value);
  std::vector<pixel_state::values>& at_upload = watch_state<glDrawPixels_op>();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  ASSERT_EQ(at_upload.size(), 2u);
  for (HGLRC child : rendered.children) {
    for (const store_value& one : unpack_values) {
      EXPECT_EQ((at_upload[0][{child, one.name}]), one.name == GL_UNPACK_ALIGNMENT ? 2 : 0) << one.name;
    }
  }
  for (const store_value& one : pack_values) expect_state(one.name, one.value);
  for (const store_value& one : unpack_values) expect_state(one.name, one.value);
}

TEST_F(sequential_copies_test, a_copy_to_a_texture_uploads_under_the_applications_unpack_store) {
  for (const store_value& one : unpack_values) set(one.name, one.value);
  std::vector<pixel_state::values>& at_upload = watch_state<glTexImage2D_op>();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  ASSERT_EQ(at_upload.size(), 2u);
  for (HGLRC child : rendered.children) {
    for (const store_value& one : unpack_values) EXPECT_EQ((at_upload[1][{child, one.name}]), one.value) << one.name;
  }
}

TEST_F(sequential_copies_test, a_pack_buffer_is_unbound_for_the_read_and_bound_after_it) {
  set(GL_PIXEL_PACK_BUFFER_BINDING, 7);
  std::vector<pixel_state::values>& at_read = watch_state<glReadPixels_op>();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  ASSERT_EQ(at_read.size(), 1u);
  for (HGLRC child : rendered.children) EXPECT_EQ((at_read[0][{child, GL_PIXEL_PACK_BUFFER_BINDING}]), 0);
  expect_state(GL_PIXEL_PACK_BUFFER_BINDING, 7);
}

TEST_F(sequential_copies_test, an_unpack_buffer_comes_back_on_the_pack_target) {
  set(GL_PIXEL_PACK_BUFFER_BINDING, 7);
  set(GL_PIXEL_UNPACK_BUFFER_BINDING, 9);
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  expect_state(GL_PIXEL_PACK_BUFFER_BINDING, 9);
  expect_state(GL_PIXEL_UNPACK_BUFFER_BINDING, 0);
  const std::vector<driver::call> expected = {driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 0),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 0),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 7),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 9)};
  for (std::size_t part : {0, 1}) EXPECT_EQ(calls_of(part, glBindBuffer_op::op), expected);
}

TEST_F(sequential_copies_test, the_buffer_is_as_large_as_padded_rows_need) {
  set_depths(24, 24);
  const std::size_t padded = 8 * 3;  // 2 pixels of 3 bytes, aligned to 4 or 8
  driver::on_call<glReadPixels_op>(
      [&](driver::live_call& live) { std::memset(reinterpret_cast<void*>(live.what.arguments[6]), 1, padded); });
  osw_glCopyPixels(10, 20, 2, 3, GL_COLOR);
  EXPECT_EQ(calls_of(0, glReadPixels_op::op).size(), 1u);
}

// Nothing is asked but what decides the format, what is bound, and the state that the copy puts back.
TEST_F(sequential_copies_test, a_copy_asks_for_nothing_else) {
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  const std::vector<GLenum> numbers = {GL_FRAMEBUFFER_BINDING,
                                       GL_PIXEL_PACK_BUFFER_BINDING,
                                       GL_PIXEL_UNPACK_BUFFER_BINDING,
                                       GL_PACK_ROW_LENGTH,
                                       GL_PACK_SKIP_ROWS,
                                       GL_PACK_SKIP_PIXELS,
                                       GL_PACK_IMAGE_HEIGHT,
                                       GL_PACK_SKIP_IMAGES,
                                       GL_PACK_ROW_LENGTH,
                                       GL_PACK_IMAGE_HEIGHT,
                                       GL_PACK_SKIP_ROWS,
                                       GL_PACK_SKIP_PIXELS};
  std::vector<GLenum> asked;
  for (const driver::call& one : calls_of(0, glGetIntegerv_op::op)) {
    asked.push_back(static_cast<GLenum>(one.arguments[0]));
  }
  EXPECT_EQ(asked, numbers);
  EXPECT_EQ(calls_of(0, glGetBooleanv_op::op).size(), 2u);
  EXPECT_TRUE(calls_of(1, glGetIntegerv_op::op).empty());
  EXPECT_TRUE(calls_of(1, glGetBooleanv_op::op).empty());
}

// How the application says how it unpacks, in a way that only a record of its calls can tell.
struct unpack_way {
  const char* name;
  void (*set)();
  std::size_t reached;  // bytes from the first on, for 4 by 4 pixels of 4 bytes
};

constexpr std::size_t row_of_100 = 100 * 4;

const unpack_way unpack_ways[] = {
    {"by_integers",
     [] {
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 10);
     },
     13 * row_of_100 + 16},
    {"by_floats",
     [] {
       osw_glPixelStoref(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPixelStoref(GL_UNPACK_SKIP_PIXELS, 90);
     },
     3 * row_of_100 + 94 * 4},
    {"what_is_refused_changes_nothing",
     [] {
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, -1);
     },
     3 * row_of_100 + 16},
    {"brought_back_by_a_pop",
     [] {
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
       osw_glPopClientAttrib();
     },
     3 * row_of_100 + 16},
    {"kept_by_a_pop_of_other_state",
     [] {
       osw_glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPopClientAttrib();
     },
     3 * row_of_100 + 16},
    {"a_push_too_many_is_refused",
     [] {
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       for (int i = 0; i < 16; ++i) osw_glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
       osw_glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
       osw_glPopClientAttrib();
     },
     3 * row_of_100 + 16},
    {"a_pop_of_nothing_is_refused",
     [] {
       osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
       osw_glPopClientAttrib();
     },
     3 * row_of_100 + 16},
};

struct unpack_test : sequential_copies_test, testing::WithParamInterface<unpack_way> {};

// Each part reads all that the application's unpack state makes of the image.
TEST_P(unpack_test, the_buffer_holds_what_the_upload_reaches) {
  GetParam().set();
  int uploads = 0;
  driver::on_call<glTexSubImage2D_op>([&](driver::live_call& live) {
    const auto* pixels = reinterpret_cast<const u8*>(live.what.arguments[8]);
    ++uploads;
    EXPECT_EQ(std::count(pixels, pixels + GetParam().reached, 0), static_cast<long>(GetParam().reached));
  });
  osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 10, 20, 4, 4);
  EXPECT_EQ(uploads, 2);
}

INSTANTIATE_TEST_SUITE_P(ways, unpack_test, testing::ValuesIn(unpack_ways),
                         [](const auto& named) { return std::string(named.param.name); });

TEST_F(sequential_copies_test, without_pixels_the_upload_still_runs) {
  osw_glCopyPixels(10, 20, 0, 6, GL_COLOR);
  for (std::size_t part : {0, 1}) {
    EXPECT_TRUE(calls_of(part, glReadPixels_op::op).empty());
    EXPECT_EQ(calls_of(part, glDrawPixels_op::op).size(), 1u);
  }
}

TEST_F(sequential_copies_test, the_application_is_left_with_its_own_context) {
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  EXPECT_EQ(driver::current_binding().switched_to, rendered.context);
  EXPECT_EQ(sequential::steps().back(), sequential::switch_to(rendered.context));
}

// The override of an alias reaches the upload: the alias's entry is called with the upload's arguments.
TEST_F(sequential_copies_test, an_alias_uploads_through_its_own_entry) {
  osw_glCopyTexSubImage1DEXT(GL_TEXTURE_1D, 2, 3, 10, 20, 5);
  for (std::size_t part : {0, 1}) {
    const std::vector<driver::call> reached = calls_of(part, glCopyTexSubImage1DEXT_op::op);
    ASSERT_EQ(reached.size(), 1u);
    // target, level, xoffset, width, format, type: those of the upload.
    EXPECT_EQ(reached[0], driver::expect<glCopyTexSubImage1DEXT_op>(GL_TEXTURE_1D, 2, 3, 5, GL_RGBA, GL_UNSIGNED_BYTE));
    EXPECT_TRUE(calls_of(part, glTexSubImage1D_op::op).empty());
  }
  EXPECT_EQ(calls_of(0, glReadPixels_op::op).size(), 1u);
}

TEST_F(sequential_copies_test, other_copies_are_repeated_on_each_part) {
  osw_glCopyColorTable(1, 2, 3, 4, 5);
  EXPECT_EQ(sequential::steps(),
            sequential::on_each_part(rendered, {driver::expect<glCopyColorTable_op>(1, 2, 3, 4, 5)}));
}

TEST_F(sequential_copies_test, without_memory_a_copy_is_dropped_on_all_parts_alike) {
  platform::clear_debug_output();
  allocation::fail_call(1);
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  allocation::stop_failing();
  EXPECT_EQ(library::reports().size(), 1u);
  for (std::size_t part : {0, 1}) {
    EXPECT_TRUE(calls_of(part, glReadPixels_op::op).empty());
    EXPECT_TRUE(calls_of(part, glDrawPixels_op::op).empty());
  }
}

}  // namespace
