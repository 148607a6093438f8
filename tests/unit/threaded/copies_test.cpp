// Framebuffer copies on the threaded path: read back through the parts, and sent out to all of them as an upload.
#include <algorithm>
#include <cstring>

#include "pipeline/push.h"
#include "startup/config/options.h"
#include "support/allocation.h"
#include "support/copy_formats.h"
#include "support/received.h"
#include "wgl/records/glrc.h"
#include "wgl/records/window_mapping.h"

namespace {

struct threaded_copies_test : library::process_test {
  void SetUp() override {
    library::start({.parts = 2, .parts_are_monitors = true});
    received::watch(library::start_rendering());
    set_depths(32, 24);
  }
  static void set_depths(BYTE color, BYTE depth) {
    PIXELFORMATDESCRIPTOR& pfd = __osw_fetch_thread_state()->window_mapping->pfd;
    pfd.cColorBits = color;
    pfd.cDepthBits = depth;
  }
};

void begin() {
  received::wait_for_parts();
  received::clear();
}

// The calls of some ops that a part has received.
std::vector<driver::call> calls_of(int part, std::initializer_list<int> ops) {
  std::vector<driver::call> found;
  for (const received::call& one : received::of_part(part)) {
    if (std::ranges::find(ops, one.what.op) != ops.end()) found.push_back(one.what);
  }
  return found;
}

driver::call only_call(int part, int op) {
  const std::vector<driver::call> found = calls_of(part, {op});
  EXPECT_EQ(found.size(), 1u) << driver::name_of(driver::op_space::gl, op) << " on part " << part;
  return found.empty() ? driver::call() : found[0];
}

void expect_transfer(const driver::call& call, u32 format_argument, const transfer& expected) {
  EXPECT_EQ(call.arguments[format_argument], expected.format);
  EXPECT_EQ(call.arguments[format_argument + 1], expected.type);
}

// A read of the rectangle's share on part 0, and an upload of the whole on both parts.
void expect_copy(int own_op, int upload_op, u32 upload_format, const transfer& expected) {
  received::wait_for_parts();
  for (int part = 0; part < received::parts(); ++part) {
    SCOPED_TRACE(part);
    EXPECT_TRUE(calls_of(part, {own_op}).empty());
    expect_transfer(only_call(part, upload_op), upload_format, expected);
  }
  expect_transfer(only_call(0, glReadPixels_op::op), 4, expected);
  EXPECT_EQ(only_call(0, upload_op).arguments, only_call(1, upload_op).arguments);
}

TEST_F(threaded_copies_test, the_drawables_depths_choose_the_format) {
  for (const copy_format& one : copy_formats) {
    SCOPED_TRACE(testing::Message() << one.kind << ' ' << int{one.color} << ' ' << int{one.depth});
    set_depths(one.color, one.depth);
    begin();
    osw_glCopyPixels(10, 20, 5, 6, one.kind);
    expect_copy(glCopyPixels_op::op, glDrawPixels_op::op, 2, one.expected);
  }
}

struct internal_format_case {
  GLenum internal_format;
  transfer expected;
};

constexpr internal_format_case internal_formats[] = {{GL_RGBA8, {GL_RGBA, GL_UNSIGNED_BYTE}},
                                                     {GL_STENCIL_INDEX, {0, 0}},
                                                     {GL_DEPTH_COMPONENT, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT}},
                                                     {GL_DEPTH_COMPONENT16, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT}},
                                                     {GL_DEPTH_COMPONENT24, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT}},
                                                     {GL_DEPTH_COMPONENT32, {GL_RGBA, GL_UNSIGNED_BYTE}}};

TEST_F(threaded_copies_test, the_internal_format_chooses_the_kind) {
  for (const internal_format_case& one : internal_formats) {
    SCOPED_TRACE(one.internal_format);
    begin();
    osw_glCopyTexImage2D(GL_TEXTURE_2D, 1, one.internal_format, 10, 20, 5, 6, 0);
    expect_copy(glCopyTexImage2D_op::op, glTexImage2D_op::op, 6, one.expected);
  }
}

void answer_internal_format(GLenum format) {
  driver::on_call<glGetTexLevelParameteriv_op>([=](driver::live_call& live) {
    EXPECT_EQ(live.what.arguments[1], 0u) << "level 0, whatever is copied to";
    EXPECT_EQ(live.what.arguments[2], 4099u);
    relaxed_store(*reinterpret_cast<GLint*>(live.what.arguments[3]), static_cast<GLint>(format));
  });
}

TEST_F(threaded_copies_test, a_part_of_a_texture_takes_the_textures_own_format) {
  for (const bool option_on : {true, false}) {
    SCOPED_TRACE(option_on);
    OSW_DW_UseAppThreadToQueryState = option_on;
    answer_internal_format(GL_DEPTH_COMPONENT24);
    begin();
    osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 3, 7, 8, 10, 20, 5, 6);
    expect_copy(glCopyTexSubImage2D_op::op, glTexSubImage2D_op::op, 6, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT});
    EXPECT_EQ(calls_of(0, {glGetTexLevelParameteriv_op::op}).size(), option_on ? 0u : 1u);
  }
}

// The upload with its pixels left out: they lie in a block of the library's.
driver::call without_pixels(driver::call call) {
  call.arguments[call.argument_count - 1] = 0;
  return call;
}

template <class Upload, class... Arguments>
void expect_upload(Arguments... arguments) {
  received::wait_for_parts();
  for (int part = 0; part < received::parts(); ++part) {
    const driver::call upload = only_call(part, Upload::op);
    EXPECT_NE(upload.arguments[upload.argument_count - 1], 0u);
    EXPECT_EQ(without_pixels(upload), driver::expect<Upload>(arguments..., nullptr)) << "part " << part;
  }
}

TEST_F(threaded_copies_test, each_copy_becomes_its_upload) {
  constexpr GLenum format = GL_RGBA;
  constexpr GLenum type = GL_UNSIGNED_BYTE;
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  expect_upload<glDrawPixels_op>(5, 6, format, type);
  begin();
  osw_glCopyTexImage1D(GL_TEXTURE_1D, 2, GL_RGB8, 10, 20, 5, 1);
  expect_upload<glTexImage1D_op>(GL_TEXTURE_1D, 2, GL_RGB8, 5, 1, format, type);
  begin();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 2, GL_RGB8, 10, 20, 5, 6, 1);
  expect_upload<glTexImage2D_op>(GL_TEXTURE_2D, 2, GL_RGB8, 5, 6, 1, format, type);
  begin();
  osw_glCopyTexSubImage1D(GL_TEXTURE_1D, 2, 3, 10, 20, 5);
  expect_upload<glTexSubImage1D_op>(GL_TEXTURE_1D, 2, 3, 5, format, type);
  begin();
  osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 2, 3, 4, 10, 20, 5, 6);
  expect_upload<glTexSubImage2D_op>(GL_TEXTURE_2D, 2, 3, 4, 5, 6, format, type);
  begin();
  osw_glCopyTexSubImage3D(GL_TEXTURE_3D, 2, 3, 4, 5, 10, 20, 6, 7);
  expect_upload<glTexSubImage3D_op>(GL_TEXTURE_3D, 2, 3, 4, 5, 6, 7, 1, format, type);
}

// Each part writes its number into its share; the upload carries both shares.
TEST_F(threaded_copies_test, the_upload_carries_what_every_part_has_read) {
  driver::on_call<glReadPixels_op>([](driver::live_call& live) {
    const bool left = live.what.arguments[0] != 0;  // the right part's share begins at its own left edge
    auto* pixels = reinterpret_cast<GLubyte*>(live.what.arguments[6]) + (left ? 0 : 8);
    std::memset(pixels, left ? 0x11 : 0x22, 8);
  });
  received::read(glTexImage1D_op::op, received::bytes_at(7, 16));
  begin();
  osw_glCopyTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, 298, 20, 4, 0);
  std::vector<u8> expected(16, 0x11);
  std::fill(expected.begin() + 8, expected.end(), 0x22);
  received::for_each_part([&](const received::calls& logged) { EXPECT_EQ(logged.back().memory, expected); });
}

const std::vector<driver::call> no_calls;

TEST_F(threaded_copies_test, buffers_are_unbound_and_both_come_back_on_the_pack_target) {
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 11);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 12);
  begin();
  allocation::watch();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  received::wait_for_parts();
  EXPECT_EQ(allocation::live_blocks(), 0) << "the pixels travel as a block, freed by the last part";
  allocation::stop_watching();
  const std::vector<driver::call> expected = {driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 0),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 0),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 11),
                                              driver::expect<glBindBuffer_op>(GL_PIXEL_PACK_BUFFER, 12)};
  for (int part : {0, 1}) EXPECT_EQ(calls_of(part, {glBindBuffer_op::op}), expected);
  const __osw_client_state& kept = __osw_fetch_thread_state()->glrc->client_state;
  EXPECT_EQ(kept.pack_buffer, 11u);
  EXPECT_EQ(kept.unpack_buffer, 12u);
}

// What the application's own context is told of its unpack buffer during a copy, when GL has `bound` there.
std::vector<driver::call> own_bindings(GLint bound) {
  driver::on_call<glGetIntegerv_op>([bound](driver::live_call& live) {
    if (live.what.arguments[0] != GL_PIXEL_UNPACK_BUFFER_BINDING) return;
    *reinterpret_cast<GLint*>(live.what.arguments[1]) = bound;
  });
  begin();
  osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 10, 20, 5, 6);
  received::wait_for_parts();
  std::vector<driver::call> found;
  for (const received::call& one : received::of_app()) {
    if (one.what.op == glBindBuffer_op::op) found.push_back(one.what);
  }
  return found;
}

TEST_F(threaded_copies_test, the_own_context_uploads_from_memory_and_has_its_buffer_back) {
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 12);
  EXPECT_EQ(own_bindings(12), (std::vector<driver::call>{driver::expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 0),
                                                         driver::expect<glBindBuffer_op>(GL_PIXEL_UNPACK_BUFFER, 12)}));
}

// To bind it again would make a new buffer of its name, and the application's next upload would read from that.
TEST_F(threaded_copies_test, a_deleted_unpack_buffer_is_not_bound_on_the_own_context) {
  const GLuint buffer = 12;
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  osw_glDeleteBuffers(1, &buffer);
  EXPECT_EQ(own_bindings(0), no_calls);
}

TEST_F(threaded_copies_test, without_buffers_nothing_is_bound) {
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  received::wait_for_parts();
  for (int part : {0, 1}) EXPECT_EQ(calls_of(part, {glBindBuffer_op::op}), no_calls);
}

// What part 1, which has no share of the rectangle and thus no read of its own, is told of the pixel store.
std::vector<driver::call> store_calls() {
  received::wait_for_parts();
  return calls_of(1, {glPixelStorei_op::op});
}

driver::call store(GLenum name, GLint value) {
  return driver::expect<glPixelStorei_op>(name, value);
}

void set_stores() {
  osw_glPixelStorei(GL_PACK_SWAP_BYTES, 1);
  osw_glPixelStorei(GL_PACK_ROW_LENGTH, 30);
  osw_glPixelStorei(GL_PACK_IMAGE_HEIGHT, 31);
  osw_glPixelStorei(GL_UNPACK_LSB_FIRST, 1);
  osw_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 2);
  osw_glPixelStorei(GL_UNPACK_SKIP_IMAGES, 3);
}

TEST_F(threaded_copies_test, a_copy_of_pixels_clears_and_restores_both_stores) {
  set_stores();
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  const std::vector<driver::call> expected = {
      store(GL_PACK_SWAP_BYTES, 0),    store(GL_PACK_ROW_LENGTH, 0),    store(GL_UNPACK_LSB_FIRST, 0),
      store(GL_UNPACK_SKIP_PIXELS, 0), store(GL_UNPACK_SKIP_IMAGES, 0), store(GL_PACK_SWAP_BYTES, 1),
      store(GL_PACK_ROW_LENGTH, 30),   store(GL_PACK_IMAGE_HEIGHT, 31), store(GL_UNPACK_LSB_FIRST, 1),
      store(GL_UNPACK_SKIP_PIXELS, 2), store(GL_UNPACK_SKIP_IMAGES, 3)};
  EXPECT_EQ(store_calls(), expected);
}

TEST_F(threaded_copies_test, a_copy_to_a_texture_leaves_the_unpack_store) {
  set_stores();
  begin();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  const std::vector<driver::call> expected = {store(GL_PACK_SWAP_BYTES, 0), store(GL_PACK_ROW_LENGTH, 0),
                                              store(GL_PACK_SWAP_BYTES, 1), store(GL_PACK_ROW_LENGTH, 30),
                                              store(GL_PACK_IMAGE_HEIGHT, 31)};
  EXPECT_EQ(store_calls(), expected);
}

struct field_value {
  GLenum name;
  GLint value;
};

constexpr field_value pack_fields[] = {{GL_PACK_SWAP_BYTES, 1}, {GL_PACK_LSB_FIRST, 2},   {GL_PACK_ROW_LENGTH, 3},
                                       {GL_PACK_SKIP_ROWS, 4},  {GL_PACK_SKIP_PIXELS, 5}, {GL_PACK_IMAGE_HEIGHT, 6},
                                       {GL_PACK_SKIP_IMAGES, 7}};
constexpr field_value unpack_fields[] = {
    {GL_UNPACK_SWAP_BYTES, 11},  {GL_UNPACK_LSB_FIRST, 12},    {GL_UNPACK_ROW_LENGTH, 13}, {GL_UNPACK_SKIP_ROWS, 14},
    {GL_UNPACK_SKIP_PIXELS, 15}, {GL_UNPACK_IMAGE_HEIGHT, 16}, {GL_UNPACK_SKIP_IMAGES, 17}};

// The read needs five of the pack fields cleared, and all seven come back; the alignments are left alone.
TEST_F(threaded_copies_test, five_pack_and_seven_unpack_fields_are_cleared_and_seven_of_each_come_back) {
  for (const field_value& one : pack_fields) osw_glPixelStorei(one.name, one.value);
  for (const field_value& one : unpack_fields) osw_glPixelStorei(one.name, one.value);
  osw_glPixelStorei(GL_PACK_ALIGNMENT, 1);
  osw_glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  received::wait_for_parts();
  std::vector<driver::call> expected;
  for (int i = 0; i < 5; ++i) expected.push_back(store(pack_fields[i].name, 0));
  for (const field_value& one : unpack_fields) expected.push_back(store(one.name, 0));
  expected.push_back(only_call(1, glDrawPixels_op::op));
  for (const field_value& one : pack_fields) expected.push_back(store(one.name, one.value));
  for (const field_value& one : unpack_fields) expected.push_back(store(one.name, one.value));
  EXPECT_EQ(calls_of(1, {glPixelStorei_op::op, glDrawPixels_op::op}), expected);
}

TEST_F(threaded_copies_test, the_unpack_fields_are_cleared_after_the_read) {
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 4);
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  received::wait_for_parts();
  std::vector<driver::call> found = calls_of(0, {glReadPixels_op::op, glPixelStorei_op::op, glDrawPixels_op::op});
  // The part's read has its own share of the pack state.
  std::erase_if(found, [](const driver::call& one) {
    return one.op == glPixelStorei_op::op && one.arguments[0] != GL_UNPACK_SKIP_ROWS;
  });
  EXPECT_EQ(found, (std::vector<driver::call>{only_call(0, glReadPixels_op::op), store(GL_UNPACK_SKIP_ROWS, 0),
                                              only_call(0, glDrawPixels_op::op), store(GL_UNPACK_SKIP_ROWS, 4)}));
}

// The buffer is the copy's own, and gone when it returns: the read has to be through, and an upload that takes no copy.
TEST_F(threaded_copies_test, a_copy_waits_for_its_read_and_a_copy_of_pixels_for_its_upload_too) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  const auto waits = [queue] {
    u32 all = queue->send_sync_count;
    for (const u32 count : queue->gl_sync_count) all += count;
    return all;
  };
  begin();
  u32 before = waits();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  EXPECT_EQ(waits(), before + 2);
  EXPECT_EQ(queue->gl_sync_count[glReadPixels_op::op], 1u);
  EXPECT_EQ(queue->gl_sync_count[glDrawPixels_op::op], 1u);
  before = waits();
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  EXPECT_EQ(waits(), before + 1);
  EXPECT_EQ(queue->gl_sync_count[glReadPixels_op::op], 2u);
}

TEST_F(threaded_copies_test, the_own_context_copies_and_then_uploads) {
  begin();
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  ASSERT_EQ(received::of_app().size(), 2u);
  EXPECT_EQ(received::of_app()[0].what, driver::expect<glCopyPixels_op>(10, 20, 5, 6, GL_COLOR));
  EXPECT_EQ(received::of_app()[1].what.op, glDrawPixels_op::op);
}

TEST_F(threaded_copies_test, without_pixels_the_upload_still_goes_out) {
  begin();
  osw_glCopyPixels(10, 20, 0, 6, GL_COLOR);
  osw_glCopyPixels(10, 20, 5, -6, GL_COLOR);
  received::wait_for_parts();
  for (int part : {0, 1}) {
    EXPECT_EQ(calls_of(part, {glReadPixels_op::op}), no_calls);
    EXPECT_EQ(calls_of(part, {glDrawPixels_op::op}).size(), 2u);
  }
}

TEST_F(threaded_copies_test, without_memory_a_copy_is_dropped_on_all_parts_alike) {
  begin();
  platform::clear_debug_output();
  allocation::fail_call(1);
  osw_glCopyPixels(10, 20, 5, 6, GL_COLOR);
  allocation::stop_failing();
  EXPECT_EQ(library::reports().size(), 1u);
  received::expect_parts({});
}

TEST_F(threaded_copies_test, the_other_names_are_repeated_on_each_part_as_they_are) {
  begin();
  osw_glCopyTexImage2DEXT(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0);
  received::expect_parts({driver::expect<glCopyTexImage2DEXT_op>(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 5, 6, 0)});
}

}  // namespace
