// What the issuing thread keeps of client arrays, buffer bindings and the pixel store.
#include <cstring>

#include "dispatch/thread_state.h"
#include "support/received.h"
#include "wgl/records/glrc.h"

namespace {

struct threaded_arrays_test : library::process_test {
  void SetUp() override {
    library::start();
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

__osw_client_state& own_arrays() {
  return __osw_fetch_thread_state()->glrc->client_state;
}

void expect_entry(u32 index, u32 array, i32 size, u32 type, u8 normalized, i32 stride, u64 pointer) {
  const __osw_client_array& entry = own_arrays().arrays[index];
  SCOPED_TRACE(index);
  EXPECT_EQ(entry.array, array);
  EXPECT_EQ(entry.size, size);
  EXPECT_EQ(entry.type, type);
  EXPECT_EQ(entry.normalized, normalized);
  EXPECT_EQ(entry.stride, stride);
  EXPECT_EQ(driver::bits_of(entry.pointer), pointer);
  EXPECT_EQ(entry.index, index);
}

const void* at(u64 address) {
  return reinterpret_cast<const void*>(address);
}

TEST_F(threaded_arrays_test, each_pointer_call_fills_its_entry) {
  osw_glVertexPointer(3, GL_FLOAT, 24, at(0x1000));
  osw_glNormalPointer(GL_BYTE, 0, at(0x2000));
  osw_glColorPointer(4, GL_UNSIGNED_BYTE, 4, at(0x3000));
  osw_glIndexPointer(GL_SHORT, 2, at(0x4000));
  osw_glTexCoordPointer(2, GL_DOUBLE, 16, at(0x5000));
  osw_glEdgeFlagPointer(1, at(0x6000));
  osw_glFogCoordPointer(GL_FLOAT, 8, at(0x7000));
  osw_glSecondaryColorPointer(3, GL_UNSIGNED_SHORT, 6, at(0x8000));
  osw_glVertexAttribPointer(15, 2, GL_INT, GL_TRUE, 12, at(0x9000));
  osw_glVertexAttribIPointer(3, 1, GL_UNSIGNED_INT, 20, at(0xA000));
  expect_entry(0, GL_VERTEX_ARRAY, 3, GL_FLOAT, 0, 24, 0x1000);
  expect_entry(1, GL_COLOR_ARRAY, 4, GL_UNSIGNED_BYTE, 0, 4, 0x3000);
  expect_entry(2, GL_NORMAL_ARRAY, 3, GL_BYTE, 0, 0, 0x2000);
  expect_entry(3, GL_TEXTURE_COORD_ARRAY, 2, GL_DOUBLE, 0, 16, 0x5000);
  expect_entry(11, GL_FOG_COORD_ARRAY, 1, GL_FLOAT, 0, 8, 0x7000);
  expect_entry(12, GL_SECONDARY_COLOR_ARRAY, 3, GL_UNSIGNED_SHORT, 0, 6, 0x8000);
  expect_entry(13, GL_INDEX_ARRAY, 1, GL_SHORT, 0, 2, 0x4000);
  expect_entry(14, GL_EDGE_FLAG_ARRAY, 1, GL_UNSIGNED_BYTE, 0, 1, 0x6000);
  expect_entry(31, 15, 2, GL_INT, GL_TRUE, 12, 0x9000);
  expect_entry(19, 3, 1, GL_UNSIGNED_INT, 0, 20, 0xA000);
  EXPECT_EQ(own_arrays().buffered_mask, 0u);
  EXPECT_EQ(own_arrays().enabled_mask, 0u);
  received::expect_parts({driver::expect<glVertexPointer_op>(3, GL_FLOAT, 24, at(0x1000)),
                          driver::expect<glNormalPointer_op>(GL_BYTE, 0, at(0x2000)),
                          driver::expect<glColorPointer_op>(4, GL_UNSIGNED_BYTE, 4, at(0x3000)),
                          driver::expect<glIndexPointer_op>(GL_SHORT, 2, at(0x4000)),
                          driver::expect<glTexCoordPointer_op>(2, GL_DOUBLE, 16, at(0x5000)),
                          driver::expect<glEdgeFlagPointer_op>(1, at(0x6000)),
                          driver::expect<glFogCoordPointer_op>(GL_FLOAT, 8, at(0x7000)),
                          driver::expect<glSecondaryColorPointer_op>(3, GL_UNSIGNED_SHORT, 6, at(0x8000)),
                          driver::expect<glVertexAttribPointer_op>(15, 2, GL_INT, GL_TRUE, 12, at(0x9000)),
                          driver::expect<glVertexAttribIPointer_op>(3, 1, GL_UNSIGNED_INT, 20, at(0xA000))});
}

struct array_bit {
  GLenum array;
  u32 bit;
};

constexpr array_bit array_bits[] = {{GL_VERTEX_ARRAY, 0},     {GL_COLOR_ARRAY, 1},
                                    {GL_NORMAL_ARRAY, 2},     {GL_TEXTURE_COORD_ARRAY, 3},
                                    {GL_FOG_COORD_ARRAY, 11}, {GL_SECONDARY_COLOR_ARRAY, 12},
                                    {GL_INDEX_ARRAY, 13},     {GL_EDGE_FLAG_ARRAY, 14}};

TEST_F(threaded_arrays_test, client_arrays_have_their_bits) {
  for (const array_bit& one : array_bits) {
    osw_glEnableClientState(one.array);
    EXPECT_EQ(own_arrays().enabled_mask, 1u << one.bit) << one.array;
    osw_glDisableClientState(one.array);
    EXPECT_EQ(own_arrays().enabled_mask, 0u) << one.array;
  }
}

TEST_F(threaded_arrays_test, attributes_have_the_upper_bits) {
  for (GLuint attribute = 0; attribute < 16; ++attribute) {
    osw_glEnableVertexAttribArray(attribute);
    EXPECT_EQ(own_arrays().enabled_mask, 1u << (attribute + 16));
    osw_glDisableVertexAttribArrayARB(attribute);
    EXPECT_EQ(own_arrays().enabled_mask, 0u);
  }
}

TEST_F(threaded_arrays_test, an_unknown_array_stands_for_the_first_bit) {
  osw_glEnableClientState(0);
  EXPECT_EQ(own_arrays().enabled_mask, 1u);
  osw_glDisableClientState(0x7777);
  EXPECT_EQ(own_arrays().enabled_mask, 0u);
  osw_glEnableVertexAttribArray(16);
  EXPECT_EQ(own_arrays().enabled_mask, 1u);
  osw_glDisableVertexAttribArray(16);
  EXPECT_EQ(own_arrays().enabled_mask, 0u);
  osw_glEnableVertexAttribArray(0xFFFFFFFF);
  EXPECT_EQ(own_arrays().enabled_mask, 1u);
  received::expect_parts({driver::expect<glEnableClientState_op>(0), driver::expect<glDisableClientState_op>(0x7777),
                          driver::expect<glEnableVertexAttribArray_op>(16),
                          driver::expect<glDisableVertexAttribArray_op>(16),
                          driver::expect<glEnableVertexAttribArray_op>(0xFFFFFFFF)});
}

TEST_F(threaded_arrays_test, pointers_of_an_attribute_of_16_and_above_are_sent_and_not_kept) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 5);
  const __osw_client_state before = own_arrays();
  osw_glVertexAttribPointer(16, 4, GL_FLOAT, 1, 16, at(0x1000));
  osw_glVertexAttribIPointer(40, 4, GL_INT, 16, at(0x2000));
  EXPECT_EQ(std::memcmp(&before, &own_arrays(), sizeof before), 0);
  received::expect_parts({driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, 5),
                          driver::expect<glVertexAttribPointer_op>(16, 4, GL_FLOAT, 1, 16, at(0x1000)),
                          driver::expect<glVertexAttribIPointer_op>(40, 4, GL_INT, 16, at(0x2000))});
}

TEST_F(threaded_arrays_test, the_client_unit_chooses_the_texture_coordinates_entry) {
  for (u32 unit = 0; unit <= 8; ++unit) {
    osw_glClientActiveTexture(GL_TEXTURE0 + unit);
    EXPECT_EQ(own_arrays().client_texture, unit);
    osw_glTexCoordPointer(2, GL_FLOAT, 8, at(0x100 * (unit + 1)));
    expect_entry(unit + 3, GL_TEXTURE_COORD_ARRAY, 2, GL_FLOAT, 0, 8, 0x100 * (unit + 1));
    osw_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    EXPECT_EQ(own_arrays().enabled_mask, 1u << (unit + 3));
    osw_glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  }
  // Unit 8 has taken the entry of the fog coordinates.
  osw_glFogCoordPointer(GL_FLOAT, 4, at(0x77));
  expect_entry(11, GL_FOG_COORD_ARRAY, 1, GL_FLOAT, 0, 4, 0x77);
}

TEST_F(threaded_arrays_test, units_beyond_8_are_sent_and_not_kept) {
  osw_glClientActiveTexture(GL_TEXTURE2);
  osw_glClientActiveTexture(GL_TEXTURE9);
  osw_glClientActiveTexture(GL_TEXTURE0 - 1);
  EXPECT_EQ(own_arrays().client_texture, 2u);
  received::expect_parts({driver::expect<glClientActiveTexture_op>(GL_TEXTURE2),
                          driver::expect<glClientActiveTexture_op>(GL_TEXTURE9),
                          driver::expect<glClientActiveTexture_op>(GL_TEXTURE0 - 1)});
}

TEST_F(threaded_arrays_test, an_array_stays_buffered_until_its_next_pointer_call) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 9);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  osw_glVertexAttribPointer(2, 3, GL_FLOAT, 0, 0, nullptr);
  EXPECT_EQ(own_arrays().buffered_mask, 1u | 1u << 18);
  EXPECT_EQ(own_arrays().arrays[0].buffer, 9u);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 0);
  EXPECT_EQ(own_arrays().buffered_mask, 1u | 1u << 18);
  EXPECT_EQ(own_arrays().arrays[0].buffer, 9u);
  osw_glVertexPointer(3, GL_FLOAT, 0, at(0x1000));
  EXPECT_EQ(own_arrays().buffered_mask, 1u << 18);
  EXPECT_EQ(own_arrays().arrays[0].buffer, 0u);
}

TEST_F(threaded_arrays_test, an_array_that_was_buffered_is_drawn_without_capture_after_a_bind_of_0) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 9);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 0);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  received::wait_for_parts();
  received::clear();
  osw_glDrawArrays(GL_TRIANGLES, 0, 3);
  received::expect_parts({driver::expect<glDrawArrays_op>(GL_TRIANGLES, 0, 3)});
}

TEST_F(threaded_arrays_test, five_bindings_are_kept) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 1);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 2);
  osw_glBindBufferARB(GL_PIXEL_PACK_BUFFER, 3);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 4);
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 5);
  osw_glBindBuffer(GL_UNIFORM_BUFFER, 6);
  osw_glBindFramebuffer(GL_READ_FRAMEBUFFER, 7);
  osw_glBindFramebufferEXT(GL_DRAW_FRAMEBUFFER, 8);
  const __osw_client_state& kept = own_arrays();
  EXPECT_EQ(kept.array_buffer, 1u);
  EXPECT_EQ(kept.element_buffer, 2u);
  EXPECT_EQ(kept.pack_buffer, 3u);
  EXPECT_EQ(kept.unpack_buffer, 4u);
  EXPECT_EQ(kept.framebuffer, 5u);
}

TEST_F(threaded_arrays_test, either_bind_writes_whatever_of_the_five_its_target_names) {
  osw_glBindBuffer(GL_FRAMEBUFFER, 21);
  osw_glBindFramebuffer(GL_ARRAY_BUFFER, 22);
  EXPECT_EQ(own_arrays().framebuffer, 21u);
  EXPECT_EQ(own_arrays().array_buffer, 22u);
}

TEST_F(threaded_arrays_test, what_is_not_tracked_leaves_the_record_alone) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 3);
  osw_glVertexPointer(3, GL_FLOAT, 0, at(0x10));
  osw_glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glVertexPointer(2, GL_SHORT, 4, at(0x20));
  const __osw_client_state before = own_arrays();
  osw_glPopClientAttrib();
  const GLuint name = 3;
  osw_glDeleteBuffers(1, &name);
  osw_glInterleavedArrays(GL_V3F, 0, at(0x30));
  osw_glVertexPointerEXT(4, GL_INT, 16, 2, at(0x40));
  osw_glColorPointerEXT(4, GL_INT, 16, 2, at(0x40));
  osw_glSecondaryColorPointerEXT(3, GL_INT, 16, at(0x40));
  osw_glLockArraysEXT(0, 4);
  osw_glUnlockArraysEXT();
  EXPECT_EQ(std::memcmp(&before, &own_arrays(), sizeof before), 0);
}

TEST_F(threaded_arrays_test, another_context_has_a_record_of_its_own) {
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 4);
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  ASSERT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, other));
  EXPECT_EQ(own_arrays().enabled_mask, 0u);
  EXPECT_EQ(own_arrays().array_buffer, 0u);
  ASSERT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(own_arrays().enabled_mask, 1u);
  EXPECT_EQ(own_arrays().array_buffer, 4u);
}

// What the draw finds there was said on another thread.
TEST_F(threaded_arrays_test, the_record_goes_with_its_context_to_another_thread) {
  const std::vector<GLfloat> vertices(8);
  osw_glVertexPointer(2, GL_FLOAT, 0, vertices.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glClientActiveTexture(GL_TEXTURE2);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 6);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 7);
  ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  const library::app_thread_pointer other = library::start_thread();
  library::run(other, [&] {
    ASSERT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
    expect_entry(0, GL_VERTEX_ARRAY, 2, GL_FLOAT, 0, 0, driver::bits_of(vertices.data()));
    EXPECT_EQ(own_arrays().enabled_mask, 1u);
    EXPECT_EQ(own_arrays().client_texture, 2u);
    EXPECT_EQ(own_arrays().unpack_buffer, 6u);
    EXPECT_EQ(__osw_fetch_thread_state()->glrc->unpack_store.row_length, 7);
    received::wait_for_parts();
    received::clear();
    osw_glDrawArrays(GL_LINES, 0, 4);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 3u) << "the draw goes out with its vertices";
      EXPECT_EQ(logged[0].what.op, glVertexPointer_op::op);
      EXPECT_NE(logged[0].what.arguments[3], driver::bits_of(vertices.data()));
      EXPECT_EQ(logged[1].what, driver::expect<glDrawArrays_op>(GL_LINES, 0, 4));
      EXPECT_EQ(logged[2].what, driver::expect<glVertexPointer_op>(2, GL_FLOAT, 0, vertices.data()));
    });
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  });
  library::end_thread(other);
}

// ---- pixel store ----

struct store_value {
  GLenum pack;
  GLenum unpack;
  i32 value;
};

constexpr store_value store_values[] = {
    {GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES, 1},     {GL_PACK_LSB_FIRST, GL_UNPACK_LSB_FIRST, 1},
    {GL_PACK_ROW_LENGTH, GL_UNPACK_ROW_LENGTH, 70000}, {GL_PACK_SKIP_ROWS, GL_UNPACK_SKIP_ROWS, 3},
    {GL_PACK_SKIP_PIXELS, GL_UNPACK_SKIP_PIXELS, 4},   {GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT, 8},
    {GL_PACK_IMAGE_HEIGHT, GL_UNPACK_IMAGE_HEIGHT, 9}, {GL_PACK_SKIP_IMAGES, GL_UNPACK_SKIP_IMAGES, 6}};

std::vector<i32> values_of(const __osw_pixel_store& store) {
  return {store.swap_bytes,  store.lsb_first, store.row_length,   store.skip_rows,
          store.skip_pixels, store.alignment, store.image_height, store.skip_images};
}

const std::vector<i32> initial_store = {0, 0, 0, 0, 0, 4, 0, 0};

TEST_F(threaded_arrays_test, each_pixel_store_name_writes_its_field) {
  const __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  EXPECT_EQ(values_of(glrc->pack_store), initial_store);
  EXPECT_EQ(values_of(glrc->unpack_store), initial_store);
  for (std::size_t i = 0; i < std::size(store_values); ++i) {
    std::vector<i32> expected = initial_store;
    expected[i] = store_values[i].value;
    osw_glPixelStorei(store_values[i].pack, store_values[i].value);
    EXPECT_EQ(values_of(glrc->pack_store), expected) << i;
    EXPECT_EQ(values_of(glrc->unpack_store), initial_store) << i;
    osw_glPixelStoref(store_values[i].unpack, static_cast<GLfloat>(store_values[i].value));
    EXPECT_EQ(values_of(glrc->unpack_store), expected) << i;
    osw_glPixelStorei(store_values[i].pack, initial_store[i]);
    osw_glPixelStorei(store_values[i].unpack, initial_store[i]);
  }
}

TEST_F(threaded_arrays_test, an_unknown_pixel_store_name_writes_nothing_and_is_sent) {
  const __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  osw_glPixelStorei(0x1234, 7);
  EXPECT_EQ(values_of(glrc->pack_store), initial_store);
  EXPECT_EQ(values_of(glrc->unpack_store), initial_store);
  received::expect_parts({driver::expect<glPixelStorei_op>(0x1234, 7)});
}

TEST_F(threaded_arrays_test, the_two_flags_keep_the_low_8_bits_and_are_sent_whole) {
  const __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  std::vector<driver::call> sent;
  for (const GLint value : {256, 257, 0x7FFFFF02, -1}) {
    for (const GLenum name : {GL_PACK_SWAP_BYTES, GL_PACK_LSB_FIRST, GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST}) {
      osw_glPixelStorei(name, value);
      sent.push_back(driver::expect<glPixelStorei_op>(name, value));
    }
    for (const __osw_pixel_store* kept : {&glrc->pack_store, &glrc->unpack_store}) {
      EXPECT_EQ(kept->swap_bytes, value & 0xFF) << value;
      EXPECT_EQ(kept->lsb_first, value & 0xFF) << value;
    }
  }
  received::expect_parts(sent);
}

TEST_F(threaded_arrays_test, a_number_that_gl_refuses_is_sent_and_not_kept) {
  const __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  std::vector<driver::call> sent;
  const auto refuse = [&](GLenum name, GLint value) {
    osw_glPixelStorei(name, value);
    sent.push_back(driver::expect<glPixelStorei_op>(name, value));
    EXPECT_EQ(values_of(glrc->pack_store), initial_store) << name << ' ' << value;
    EXPECT_EQ(values_of(glrc->unpack_store), initial_store) << name << ' ' << value;
  };
  for (const GLint value : {-8, -1, 0, 3, 5, 6, 7, 9, 16}) {
    refuse(GL_PACK_ALIGNMENT, value);
    refuse(GL_UNPACK_ALIGNMENT, value);
  }
  for (std::size_t i = 2; i < std::size(store_values); ++i) {  // from the first number on
    refuse(store_values[i].pack, -1);
    refuse(store_values[i].unpack, -1);
  }
  received::expect_parts(sent);
}

TEST_F(threaded_arrays_test, the_float_form_is_truncated_for_the_record_and_sent_whole) {
  const __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  osw_glPixelStoref(GL_UNPACK_ROW_LENGTH, 12.9f);
  EXPECT_EQ(glrc->unpack_store.row_length, 12);
  received::expect_parts({driver::expect<glPixelStoref_op>(GL_UNPACK_ROW_LENGTH, 12.9f)});
}

}  // namespace
