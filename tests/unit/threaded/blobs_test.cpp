// Calls whose data travel in a heap block: what is copied, where it lies, who frees it.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "pipeline/push.h"
#include "support/allocation.h"
#include "support/call_shapes.h"
#include "support/expected_figures.h"
#include "support/threaded_call.h"
#include "threaded/image_size.h"
#include "wgl/records/glrc.h"

namespace {

struct threaded_blobs_test : library::process_test {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
  }
};

const __osw_cmd_queue* own_queue() {
  return __osw_fetch_thread_state()->cmd_queue;
}

__osw_cmd* next_record() {
  return __osw_next_cmd(own_queue());
}

std::vector<u8> numbered(std::size_t bytes) {
  std::vector<u8> memory(bytes);
  for (std::size_t i = 0; i < bytes; ++i) memory[i] = static_cast<u8>(i * 7 + i / 256);
  return memory;
}

bool is_image(const ops::row& row) {
  return row.threaded == ops::family::image || row.threaded == ops::family::compressed;
}

// ---- images ----

TEST_F(threaded_blobs_test, null_pixels_take_no_block_and_keep_the_mask) {
  for (const ops::row& row : ops::all()) {
    if (!is_image(row)) continue;
    SCOPED_TRACE(row.name);
    threaded::prepared_call call = threaded::prepare(row);
    call.arguments[row.count - 1] = 0;
    received::wait_for_parts();
    received::clear();
    const __osw_cmd* record = next_record();
    allocation::stop_failing();
    row.call(row.entry, call.arguments);
    EXPECT_EQ(allocation::calls(), 0);
    EXPECT_EQ(record->blob_mask, 1u << (row.count - 1));
    received::expect_parts({ops::noted(row, call.arguments)});
  }
}

TEST_F(threaded_blobs_test, with_an_unpack_buffer_the_offset_is_passed) {
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 8);
  for (const ops::row& row : ops::all()) {
    if (!is_image(row)) continue;
    SCOPED_TRACE(row.name);
    threaded::prepared_call call = threaded::prepare(row);
    call.arguments[row.count - 1] = 4711;
    received::wait_for_parts();
    received::clear();
    const __osw_cmd* record = next_record();
    row.call(row.entry, call.arguments);
    EXPECT_EQ(record->blob_mask, 0u);
    received::expect_parts({ops::noted(row, call.arguments)});
  }
}

TEST_F(threaded_blobs_test, every_image_block_is_freed_once) {
  for (const ops::row& row : ops::all()) {
    if (!is_image(row)) continue;
    SCOPED_TRACE(row.name);
    threaded::prepared_call call = threaded::prepare(row);
    allocation::watch();
    const __osw_cmd* record = next_record();
    row.call(row.entry, call.arguments);
    const u64 block = record->args[row.count - 1];
    EXPECT_TRUE(allocation::is_live(block));
    received::wait_for_parts();
    EXPECT_EQ(std::ranges::count(allocation::freed(), block), 1);
    allocation::stop_watching();
  }
}

TEST_F(threaded_blobs_test, without_memory_an_image_is_dropped_on_all_parts_alike) {
  for (const ops::row& row : ops::all()) {
    if (!is_image(row)) continue;
    SCOPED_TRACE(row.name);
    threaded::prepared_call call = threaded::prepare(row);
    platform::clear_debug_output();
    allocation::fail_call(1);
    row.call(row.entry, call.arguments);
    allocation::stop_failing();
    EXPECT_EQ(library::reports().size(), 1u);
  }
  received::expect_parts({});
}

i32 image_size(i32 width, i32 height, i32 depth, GLenum format, GLenum type) {
  return __osw_image_size(__osw_fetch_thread_state(), width, height, depth, format, type);
}

TEST_F(threaded_blobs_test, rows_are_padded_to_the_alignment) {
  EXPECT_EQ(image_size(3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE), 12);
  EXPECT_EQ(image_size(2, 1, 1, GL_RGB, GL_UNSIGNED_BYTE), 8);
  EXPECT_EQ(image_size(2, 5, 3, GL_RGB, GL_UNSIGNED_BYTE), 120);
  EXPECT_EQ(image_size(9, 2, 1, GL_COLOR_INDEX, GL_BITMAP), 8);
  osw_glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  EXPECT_EQ(image_size(2, 1, 1, GL_RGB, GL_UNSIGNED_BYTE), 6);
  EXPECT_EQ(image_size(9, 2, 1, GL_COLOR_INDEX, GL_BITMAP), 4);
  osw_glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
  EXPECT_EQ(image_size(3, 2, 1, GL_RGB, GL_UNSIGNED_BYTE), 32);
}

TEST_F(threaded_blobs_test, row_length_and_image_height_take_the_place_of_the_sizes) {
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 10);
  EXPECT_EQ(image_size(2, 3, 1, GL_RGBA, GL_UNSIGNED_BYTE), 120);
  osw_glPixelStorei(GL_UNPACK_IMAGE_HEIGHT, 7);
  EXPECT_EQ(image_size(2, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE), 560);
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 5);
  EXPECT_EQ(image_size(2, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE), 560);
}

TEST_F(threaded_blobs_test, an_image_of_two_dimensions_takes_as_many_rows_as_the_image_height) {
  constexpr std::size_t bytes = 4 * 4 * 7;
  std::vector<u8> memory = numbered(bytes);
  const std::vector<u8> before = memory;
  osw_glPixelStorei(GL_UNPACK_IMAGE_HEIGHT, 7);
  received::read(glTexImage2D_op::op, received::bytes_at(8, bytes));
  received::read(glTexSubImage2D_op::op, received::bytes_at(8, bytes));
  received::wait_for_parts();
  received::clear();
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 3, 0, GL_RGBA, GL_UNSIGNED_BYTE, memory.data());
  osw_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 4, 3, GL_RGBA, GL_UNSIGNED_BYTE, memory.data());
  std::ranges::fill(memory, 0xEE);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 2u);
    for (const received::call& one : logged)
      EXPECT_EQ(one.memory, before) << driver::name_of(one.what.space, one.what.op);
  });
}

TEST_F(threaded_blobs_test, sizes_that_no_memory_holds_copy_nothing) {
  EXPECT_EQ(image_size(-1, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE), 0);
  EXPECT_EQ(image_size(1, -2, 1, GL_RGBA, GL_UNSIGNED_BYTE), 0);
  EXPECT_EQ(image_size(0x40000000, 4, 1, GL_RGBA, GL_FLOAT), 0);
  EXPECT_EQ(image_size(0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, GL_RGBA, GL_FLOAT), 0);
}

struct pixel_figures {
  GLenum name;
  u32 figure;
};

TEST_F(threaded_blobs_test, components_of_each_format) {
  const pixel_figures by_format[] = {{GL_RGB, 3},
                                     {GL_BGR, 3},
                                     {GL_RGB_INTEGER, 3},
                                     {GL_BGR_INTEGER, 3},
                                     {GL_RGBA, 4},
                                     {GL_BGRA, 4},
                                     {GL_ABGR_EXT, 4},
                                     {GL_RGBA_INTEGER, 4},
                                     {GL_BGRA_INTEGER, 4},
                                     {GL_LUMINANCE_ALPHA, 2},
                                     {GL_RG, 2},
                                     {GL_RG_INTEGER, 2},
                                     {GL_LUMINANCE_ALPHA_INTEGER_EXT, 2},
                                     {GL_RED, 1},
                                     {GL_DEPTH_COMPONENT, 1},
                                     {GL_ALPHA, 1},
                                     {GL_LUMINANCE, 1},
                                     {0, 1}};
  for (const pixel_figures& one : by_format) {
    EXPECT_EQ(__osw_pixel_components(one.name, GL_UNSIGNED_BYTE), one.figure) << one.name;
  }
}

TEST_F(threaded_blobs_test, sizes_and_packing_of_each_type) {
  const pixel_figures by_type[] = {{GL_BYTE, 1},
                                   {GL_UNSIGNED_BYTE, 1},
                                   {GL_BITMAP, 1},
                                   {GL_UNSIGNED_BYTE_3_3_2, 1},
                                   {GL_UNSIGNED_BYTE_2_3_3_REV, 1},
                                   {GL_SHORT, 2},
                                   {GL_UNSIGNED_SHORT, 2},
                                   {GL_HALF_FLOAT, 2},
                                   {GL_UNSIGNED_SHORT_4_4_4_4, 2},
                                   {GL_UNSIGNED_SHORT_5_5_5_1, 2},
                                   {GL_UNSIGNED_SHORT_5_6_5, 2},
                                   {GL_UNSIGNED_SHORT_5_6_5_REV, 2},
                                   {GL_UNSIGNED_SHORT_4_4_4_4_REV, 2},
                                   {GL_UNSIGNED_SHORT_1_5_5_5_REV, 2},
                                   {GL_INT, 4},
                                   {GL_UNSIGNED_INT, 4},
                                   {GL_FLOAT, 4},
                                   {GL_UNSIGNED_INT_8_8_8_8, 4},
                                   {GL_UNSIGNED_INT_10_10_10_2, 4},
                                   {GL_UNSIGNED_INT_8_8_8_8_REV, 4},
                                   {GL_UNSIGNED_INT_2_10_10_10_REV, 4},
                                   {GL_UNSIGNED_INT_24_8, 4},
                                   {GL_UNSIGNED_INT_10F_11F_11F_REV, 4},
                                   {GL_UNSIGNED_INT_5_9_9_9_REV, 4},
                                   {GL_FLOAT_32_UNSIGNED_INT_24_8_REV, 0},
                                   {GL_DOUBLE, 0},
                                   {0, 0}};
  for (const pixel_figures& one : by_type) EXPECT_EQ(__osw_pixel_type_size(one.name), one.figure) << one.name;
  for (const GLenum type :
       {GL_UNSIGNED_BYTE_3_3_2, GL_UNSIGNED_SHORT_4_4_4_4, GL_UNSIGNED_SHORT_5_5_5_1, GL_UNSIGNED_INT_8_8_8_8,
        GL_UNSIGNED_INT_10_10_10_2, GL_UNSIGNED_BYTE_2_3_3_REV, GL_UNSIGNED_SHORT_5_6_5, GL_UNSIGNED_SHORT_5_6_5_REV,
        GL_UNSIGNED_SHORT_4_4_4_4_REV, GL_UNSIGNED_SHORT_1_5_5_5_REV, GL_UNSIGNED_INT_8_8_8_8_REV,
        GL_UNSIGNED_INT_2_10_10_10_REV, GL_UNSIGNED_INT_24_8, GL_UNSIGNED_INT_10F_11F_11F_REV,
        GL_UNSIGNED_INT_5_9_9_9_REV, GL_FLOAT_32_UNSIGNED_INT_24_8_REV}) {
    EXPECT_EQ(__osw_pixel_components(GL_RGBA, type), 1u) << type;
  }
  EXPECT_EQ(__osw_pixel_components(GL_RGBA, GL_FLOAT), 4u);
}

// ---- small or large ----

struct sized_array {
  const ops::row* row;
  u32 count_argument;
  std::size_t item;  // bytes
  u32 room() const { return (cmd_slots - row->count) * 8; }
};

std::vector<sized_array> sized_arrays() {
  std::vector<sized_array> found;
  for (const ops::row& row : ops::all()) {
    if (row.threaded != ops::family::names && row.threaded != ops::family::uniform) continue;
    const ops::call_shape& shape = ops::shape_of(row.op);
    found.push_back({&row, shape.count_at, shape.item_bytes});
  }
  return found;
}

void check_sized_array(const sized_array& array, std::size_t items, bool null) {
  const ops::row& row = *array.row;
  SCOPED_TRACE(testing::Message() << row.name << ' ' << items << (null ? " null" : ""));
  const std::size_t bytes = items * array.item;
  const bool in_record = bytes <= array.room();
  const u32 last = row.count - 1;
  driver::argument_bits arguments = ops::distinctive(row);
  std::vector<u8> memory = numbered(bytes);
  const std::vector<u8> expected = null ? std::vector<u8>() : memory;
  arguments[array.count_argument] = items;
  arguments[last] = null ? 0 : driver::bits_of(memory.data());
  received::clear();
  received::forget_readers();
  if (!null) received::read(row.op, received::bytes_at(last, bytes));
  const __osw_cmd* record = next_record();
  row.call(row.entry, arguments);
  const u32 mask = record->blob_mask;
  std::ranges::fill(memory, 0xEE);
  EXPECT_EQ(mask, in_record || null ? 0u : 1u << last);
  if (in_record) {
    arguments[last] = driver::bits_of(&record->args[row.count]);
    if (null) {
      EXPECT_EQ(record->args[row.count], 0u);
    }
  } else if (!null) {
    EXPECT_NE(record->args[last], arguments[last]);
    arguments[last] = record->args[last];
  }
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].what, ops::noted(row, arguments));
    EXPECT_EQ(logged[0].memory, expected);
  });
}

TEST_F(threaded_blobs_test, arrays_go_into_the_record_up_to_its_room_and_into_a_block_beyond) {
  const std::vector<sized_array> arrays = sized_arrays();
  EXPECT_EQ(std::ssize(arrays), figures::sized_arrays);
  for (const sized_array& array : arrays) {
    const std::size_t most = array.room() / array.item;
    for (const std::size_t items : {std::size_t{1}, most, most + 1, std::size_t{500}}) {
      check_sized_array(array, items, false);
      check_sized_array(array, items, true);
    }
  }
}

TEST_F(threaded_blobs_test, the_limits_are_60_names_and_58_floats) {
  const std::vector<GLuint> names(61, 7);
  const __osw_cmd* record = next_record();
  osw_glDeleteTextures(60, names.data());
  EXPECT_EQ(record->blob_mask, 0u);
  record = next_record();
  osw_glDeleteTextures(61, names.data());
  EXPECT_EQ(record->blob_mask, 2u);
  const std::vector<GLfloat> floats(59);
  record = next_record();
  osw_glUniform1fv(1, 58, floats.data());
  EXPECT_EQ(record->blob_mask, 0u);
  record = next_record();
  osw_glUniform1fv(1, 59, floats.data());
  EXPECT_EQ(record->blob_mask, 4u);
  const std::vector<GLfloat> matrices(16 * 4);
  record = next_record();
  osw_glUniformMatrix4fv(1, 3, 0, matrices.data());
  EXPECT_EQ(record->blob_mask, 0u);
  record = next_record();
  osw_glUniformMatrix4fv(1, 4, 0, matrices.data());
  EXPECT_EQ(record->blob_mask, 8u);
}

TEST_F(threaded_blobs_test, negative_counts_copy_nothing_and_pass_on) {
  const GLfloat values[4] = {};
  const GLuint names[4] = {};
  osw_glUniform4fv(1, -1, values);
  osw_glDeleteTextures(-5, names);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[0].what.arguments[1], 0xFFFFFFFFu);
    EXPECT_EQ(logged[1].what.arguments[0], 0xFFFFFFFBu);
  });
}

// A part that was told of more than it gets would read whatever lies behind the block.
TEST_F(threaded_blobs_test, more_than_a_block_holds_is_dropped_with_a_report) {
  const GLfloat values[4] = {};
  const GLuint names[4] = {};
  platform::clear_debug_output();
  osw_glUniform4fv(1, 0x7FFFFFFF, values);
  osw_glDeleteTextures(0x7FFFFFFF, names);
  received::expect_parts(
      {driver::expect<glUniform4fv_op>(1, 0, nullptr), driver::expect<glDeleteTextures_op>(0, nullptr)});
  EXPECT_EQ(library::reports(),
            (std::vector<std::string>{"OGLSPANWrapper Error: no memory for the data of glUniform4fv\n",
                                      "OGLSPANWrapper Error: no memory for the data of glDeleteTextures\n"}));
}

TEST_F(threaded_blobs_test, an_image_of_two_gigabytes_reaches_no_part) {
  const u8 pixels[4] = {};
  platform::clear_debug_output();
  osw_glTexImage3D(GL_TEXTURE_3D, 0, GL_LUMINANCE16, 1024, 1024, 1024, 0, GL_LUMINANCE, GL_UNSIGNED_SHORT, pixels);
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0x7FFFFFFF, 0x7FFFFFFF, 0, GL_RGBA, GL_FLOAT, pixels);
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 0x7FFFFFF0);
  osw_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  // Without a block there is nothing that could be too small.
  osw_glTexImage3D(GL_TEXTURE_3D, 0, GL_LUMINANCE16, 1024, 1024, 1024, 0, GL_LUMINANCE, GL_UNSIGNED_SHORT, nullptr);
  received::expect_parts({driver::expect<glPixelStorei_op>(GL_UNPACK_SKIP_ROWS, 0x7FFFFFF0),
                          driver::expect<glTexImage3D_op>(GL_TEXTURE_3D, 0, GL_LUMINANCE16, 1024, 1024, 1024, 0,
                                                          GL_LUMINANCE, GL_UNSIGNED_SHORT, nullptr)});
  EXPECT_EQ(library::reports(),
            (std::vector<std::string>{"OGLSPANWrapper Error: no memory for the data of glTexImage3D\n",
                                      "OGLSPANWrapper Error: no memory for the data of glTexImage2D\n",
                                      "OGLSPANWrapper Error: no memory for the data of glTexSubImage2D\n"}));
}

TEST_F(threaded_blobs_test, one_matrix_uniform_passes_the_applications_own_pointer) {
  const std::vector<GLfloat> few(9 * 6);
  const __osw_cmd* record = next_record();
  osw_glUniformMatrix2x3fv(4, 9, 0, few.data());
  EXPECT_EQ(record->blob_mask, 0u);
  received::expect_parts({driver::expect<glUniformMatrix2x3fv_op>(4, 9, 0, few.data())});
}

TEST_F(threaded_blobs_test, that_uniform_has_the_parts_free_the_applications_memory_when_large) {
  auto* many = static_cast<GLfloat*>(std::calloc(10 * 6, sizeof(GLfloat)));
  const auto block = reinterpret_cast<std::uintptr_t>(many);
  allocation::watch();
  const __osw_cmd* record = next_record();
  osw_glUniformMatrix2x3fv(4, 10, 0, many);
  EXPECT_EQ(record->blob_mask, 8u);
  received::expect_parts({driver::expect<glUniformMatrix2x3fv_op>(4, 10, 0, many)});
  EXPECT_EQ(std::ranges::count(allocation::freed(), block), 1);
  allocation::stop_watching();
}

// ---- stipple, maps, lists ----

TEST_F(threaded_blobs_test, a_stipple_copies_1024_bytes) {
  std::vector<u8> memory = numbered(1024);
  const std::vector<u8> before = memory;
  received::read(glPolygonStipple_op::op, received::bytes_at(0, 1024));
  osw_glPolygonStipple(memory.data());
  std::ranges::fill(memory, 0xEE);
  received::for_each_part([&](const received::calls& logged) { EXPECT_EQ(logged.at(0).memory, before); });
}

TEST_F(threaded_blobs_test, null_stipple_and_maps_keep_the_mask) {
  const __osw_cmd* record = next_record();
  osw_glPolygonStipple(nullptr);
  EXPECT_EQ(record->blob_mask, 1u);
  record = next_record();
  osw_glPixelMapfv(GL_PIXEL_MAP_R_TO_R, 4, nullptr);
  EXPECT_EQ(record->blob_mask, 4u);
  received::expect_parts(
      {driver::expect<glPolygonStipple_op>(nullptr), driver::expect<glPixelMapfv_op>(GL_PIXEL_MAP_R_TO_R, 4, nullptr)});
}

// Of the three maps only the one of floats looks at the binding first.
TEST_F(threaded_blobs_test, with_an_unpack_buffer_integer_maps_are_copied_in_vain) {
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 8);
  const GLuint ints[4] = {};
  const GLushort shorts[4] = {};
  received::wait_for_parts();
  received::clear();
  allocation::watch();
  allocation::stop_failing();
  osw_glPolygonStipple(reinterpret_cast<const GLubyte*>(64));
  osw_glPixelMapfv(GL_PIXEL_MAP_R_TO_R, 4, reinterpret_cast<const GLfloat*>(128));
  EXPECT_EQ(allocation::calls(), 0);
  osw_glPixelMapuiv(GL_PIXEL_MAP_I_TO_I, 4, ints);
  osw_glPixelMapusv(GL_PIXEL_MAP_S_TO_S, 4, shorts);
  EXPECT_EQ(allocation::calls(), 2);
  EXPECT_EQ(allocation::freed().size(), 2u);
  allocation::stop_watching();
  received::expect_parts(
      {driver::expect<glPolygonStipple_op>(reinterpret_cast<const GLubyte*>(64)),
       driver::expect<glPixelMapfv_op>(GL_PIXEL_MAP_R_TO_R, 4, reinterpret_cast<const GLfloat*>(128)),
       driver::expect<glPixelMapuiv_op>(GL_PIXEL_MAP_I_TO_I, 4, ints),
       driver::expect<glPixelMapusv_op>(GL_PIXEL_MAP_S_TO_S, 4, shorts)});
}

TEST_F(threaded_blobs_test, names_of_display_lists_are_sized_by_their_type) {
  const u32 sizes[] = {1, 1, 2, 2, 4, 4, 4, 2, 3, 4};
  for (GLenum type = GL_BYTE; type <= GL_4_BYTES; ++type)
    EXPECT_EQ(__osw_call_lists_size(7, type), 7 * sizes[type - GL_BYTE]);
  EXPECT_EQ(__osw_call_lists_size(7, GL_BYTE - 1), 0u);
  EXPECT_EQ(__osw_call_lists_size(7, GL_DOUBLE), 0u);
  EXPECT_EQ(__osw_call_lists_size(0, GL_INT), 0u);
  EXPECT_EQ(__osw_call_lists_size(-1, GL_INT), 0u);
}

TEST_F(threaded_blobs_test, null_lists_keep_the_mask) {
  const __osw_cmd* record = next_record();
  osw_glCallLists(3, GL_INT, nullptr);
  EXPECT_EQ(record->blob_mask, 4u);
  received::expect_parts({driver::expect<glCallLists_op>(3, GL_INT, nullptr)});
}

// ---- buffers ----

TEST_F(threaded_blobs_test, null_buffer_data_keep_the_mask) {
  const __osw_cmd* record = next_record();
  osw_glBufferData(GL_ARRAY_BUFFER, 100, nullptr, GL_STREAM_DRAW);
  EXPECT_EQ(record->blob_mask, 4u);
  record = next_record();
  osw_glBufferSubData(GL_ARRAY_BUFFER, 5, 6, nullptr);
  EXPECT_EQ(record->blob_mask, 8u);
  const std::vector<driver::call> expected = {
      driver::expect<glBufferData_op>(GL_ARRAY_BUFFER, 100, nullptr, GL_STREAM_DRAW),
      driver::expect<glBufferSubData_op>(GL_ARRAY_BUFFER, 5, 6, nullptr)};
  received::expect_parts(expected);
  received::expect_app(expected);
}

TEST_F(threaded_blobs_test, the_own_context_gets_storage_without_contents) {
  const std::vector<u8> data = numbered(10);
  osw_glBufferDataARB(GL_ARRAY_BUFFER, 10, data.data(), GL_STREAM_DRAW);
  osw_glBufferSubDataARB(GL_ARRAY_BUFFER, 2, 3, data.data());
  received::expect_app({driver::expect<glBufferData_op>(GL_ARRAY_BUFFER, 10, nullptr, GL_STREAM_DRAW),
                        driver::expect<glBufferSubData_op>(GL_ARRAY_BUFFER, 2, 3, nullptr)});
}

// ---- shader source ----

// The first string of the array that the call names, up to its end.
std::vector<u8> first_string(const driver::call& now, const received::calls&) {
  const auto* const* strings = reinterpret_cast<const GLchar* const*>(now.arguments[2]);
  const GLchar* text = strings[0] ? strings[0] : "";
  return std::vector<u8>(text, text + std::strlen(text));
}

void check_source(std::vector<const GLchar*> strings, const GLint* lengths, const std::string& joined) {
  SCOPED_TRACE(joined);
  received::clear();
  const __osw_cmd* record = next_record();
  osw_glShaderSource(6, static_cast<GLsizei>(strings.size()), strings.data(), lengths);
  EXPECT_EQ(record->blob_mask, 16u);
  driver::call expected = driver::expect<glShaderSource_op>(6, 1, nullptr, nullptr);
  expected.arguments[2] = driver::bits_of(&record->args[4]);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].what, expected);
    EXPECT_EQ(std::string(logged[0].memory.begin(), logged[0].memory.end()), joined);
  });
}

TEST_F(threaded_blobs_test, source_strings_arrive_as_one) {
  received::read(glShaderSource_op::op, [](const driver::call& now, const received::calls& before) {
    return now.context == __osw_glrc_registry[0].app_hglrc ? std::vector<u8>() : first_string(now, before);
  });
  check_source({"void ", "main", "() {}"}, nullptr, "void main() {}");
  const GLint lengths[] = {4, -1, 2};
  check_source({"void main", " whole ", "() {}"}, lengths, "void whole ()");
  const GLint zero[] = {0, 3};
  check_source({"gone", "yes no"}, zero, "yes");
  check_source({"a", nullptr, "b"}, nullptr, "ab");
  const GLint beyond[] = {100};
  check_source({"short"}, beyond, "short");
  check_source({}, nullptr, "");
}

TEST_F(threaded_blobs_test, source_is_taken_at_the_call) {
  received::read(glShaderSource_op::op, [](const driver::call& now, const received::calls& before) {
    return now.context == __osw_glrc_registry[0].app_hglrc ? std::vector<u8>() : first_string(now, before);
  });
  std::string text = "first";
  const GLchar* strings[] = {text.c_str()};
  osw_glShaderSourceARB(6, 1, strings, nullptr);
  text.assign(5, 'x');
  strings[0] = nullptr;
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(std::string(logged[0].memory.begin(), logged[0].memory.end()), "first");
  });
}

}  // namespace
