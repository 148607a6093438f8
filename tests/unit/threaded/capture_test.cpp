// Draws from client arrays: what the parts read, and when the application has to wait.
#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "pipeline/push.h"
#include "support/allocation.h"
#include "support/received.h"
#include "wgl/records/glrc.h"

namespace {

struct threaded_capture_test : library::process_test {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
  }
};

const __osw_cmd_queue* own_queue() {
  return __osw_fetch_thread_state()->cmd_queue;
}

__osw_client_state& own_arrays() {
  return __osw_fetch_thread_state()->glrc->client_state;
}

std::vector<u8> numbered(std::size_t bytes) {
  std::vector<u8> memory(bytes);
  for (std::size_t i = 0; i < bytes; ++i) memory[i] = static_cast<u8>(i * 5 + i / 256);
  return memory;
}

// Bytes that a draw finds in an array: `bytes` from `offset` on, behind the pointer that the context was given last.
received::reader array_at_draw(int pointer_op, u32 pointer_argument, std::size_t offset, std::size_t bytes) {
  return [=](const driver::call& now, const received::calls& before) {
    // The application's own context reads the application's memory itself.
    const HGLRC app = __osw_glrc_registry[0].app_hglrc;
    if (now.context == app) return std::vector<u8>();
    const auto latest = std::find_if(before.rbegin(), before.rend(),
                                     [=](const received::call& one) { return one.what.op == pointer_op; });
    if (latest == before.rend()) return std::vector<u8>();
    return received::memory_at(latest->what.arguments[pointer_argument] + offset, bytes);
  };
}

// Calls made so far are settled and forgotten: what follows is the draw alone.
void begin_draw() {
  received::wait_for_parts();
  received::clear();
}

const received::call* find_draw(const received::calls& logged, int op) {
  const auto found = std::ranges::find_if(logged, [=](const received::call& one) { return one.what.op == op; });
  return found == logged.end() ? nullptr : &*found;
}

void expect_draw_memory(int op, const std::vector<u8>& expected) {
  received::for_each_part([&](const received::calls& logged) {
    const received::call* draw = find_draw(logged, op);
    ASSERT_NE(draw, nullptr);
    EXPECT_EQ(draw->memory, expected);
  });
}

u64 sent_pointer(std::size_t position, u32 argument) {
  received::wait_for_parts();
  return received::of_part(0).at(position).what.arguments[argument];
}

TEST_F(threaded_capture_test, a_draw_without_arrays_is_one_record) {
  const __osw_cmd* record = __osw_next_cmd(own_queue());
  osw_glDrawArrays(GL_POINTS, 1, 2);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  EXPECT_EQ(record->blob_mask, 0u);
  received::expect_parts({driver::expect<glDrawArrays_op>(GL_POINTS, 1, 2)});
}

TEST_F(threaded_capture_test, a_draw_from_buffers_alone_is_one_record) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 3);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  osw_glDrawArrays(GL_TRIANGLES, 0, 3);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  received::expect_parts({driver::expect<glDrawArrays_op>(GL_TRIANGLES, 0, 3)});
}

TEST_F(threaded_capture_test, interleaved_arrays_share_one_copy) {
  std::vector<u8> memory = numbered(24 * 4);
  const std::vector<u8> before = memory;
  osw_glVertexPointer(3, GL_FLOAT, 24, memory.data());
  osw_glNormalPointer(GL_FLOAT, 24, memory.data() + 12);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  begin_draw();
  received::read(glDrawArrays_op::op, array_at_draw(glVertexPointer_op::op, 3, 0, memory.size()));
  osw_glDrawArrays(GL_QUADS, 0, 4);
  std::ranges::fill(memory, 0xEE);
  EXPECT_EQ(own_arrays().group_count, 1u);
  EXPECT_EQ(own_arrays().groups[0].alloc_size, 96u);
  EXPECT_EQ(own_arrays().arrays[0].group_offset, 0u);
  EXPECT_EQ(own_arrays().arrays[2].group_offset, 12u);
  expect_draw_memory(glDrawArrays_op::op, before);
  const u64 block = sent_pointer(0, 3);
  EXPECT_NE(block, driver::bits_of(memory.data()));
  received::expect_parts({driver::expect<glVertexPointer_op>(3, GL_FLOAT, 24, reinterpret_cast<void*>(block)),
                          driver::expect<glNormalPointer_op>(GL_FLOAT, 24, reinterpret_cast<void*>(block + 12)),
                          driver::expect<glDrawArrays_op>(GL_QUADS, 0, 4),
                          driver::expect<glVertexPointer_op>(3, GL_FLOAT, 24, memory.data()),
                          driver::expect<glNormalPointer_op>(GL_FLOAT, 24, memory.data() + 12)});
  received::expect_app({driver::expect<glDrawArrays_op>(GL_QUADS, 0, 4)});
}

TEST_F(threaded_capture_test, a_lower_pointer_moves_the_groups_base_down) {
  std::vector<u8> memory = numbered(24 * 2);
  osw_glVertexPointer(3, GL_FLOAT, 24, memory.data() + 12);
  osw_glNormalPointer(GL_FLOAT, 24, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  begin_draw();
  // The draw reads vertices as far as the group's copy goes.
  received::read(glDrawArrays_op::op, array_at_draw(glNormalPointer_op::op, 2, 0, memory.size()));
  osw_glDrawArrays(GL_LINES, 0, 2);
  EXPECT_EQ(own_arrays().group_count, 1u);
  EXPECT_EQ(own_arrays().arrays[0].group_offset, 12u);
  EXPECT_EQ(own_arrays().arrays[2].group_offset, 0u);
  expect_draw_memory(glDrawArrays_op::op, memory);
  EXPECT_EQ(sent_pointer(0, 3), sent_pointer(1, 2) + 12);
}

TEST_F(threaded_capture_test, arrays_a_stride_apart_are_two_groups) {
  std::vector<u8> memory = numbered(32 * 2);
  osw_glVertexPointer(4, GL_FLOAT, 16, memory.data());
  osw_glColorPointer(4, GL_FLOAT, 16, memory.data() + 16);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_COLOR_ARRAY);
  begin_draw();
  osw_glDrawArrays(GL_LINES, 0, 3);
  EXPECT_EQ(own_arrays().group_count, 2u);
  EXPECT_EQ(own_arrays().groups[1].blob_offset, 48u);
  EXPECT_EQ(sent_pointer(1, 3), sent_pointer(0, 3) + 48);
}

// GL's own binding: that of the last glBindBuffer, until the buffer is deleted.
void answer_array_binding(GLint bound) {
  driver::on_call<glGetIntegerv_op>([bound](driver::live_call& live) {
    EXPECT_EQ(live.what.arguments[0], u64{GL_ARRAY_BUFFER_BINDING});
    *reinterpret_cast<GLint*>(live.what.arguments[1]) = bound;
  });
}

TEST_F(threaded_capture_test, addresses_are_set_with_no_array_buffer_bound) {
  std::vector<u8> memory = numbered(32);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 3);
  answer_array_binding(3);
  begin_draw();
  osw_glDrawArrays(GL_LINES, 0, 4);
  const u64 block = sent_pointer(1, 3);
  const driver::call unbind = driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, 0);
  const driver::call bind = driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, 3);
  received::expect_parts({unbind, driver::expect<glVertexPointer_op>(2, GL_FLOAT, 8, reinterpret_cast<void*>(block)),
                          bind, driver::expect<glDrawArrays_op>(GL_LINES, 0, 4), unbind,
                          driver::expect<glVertexPointer_op>(2, GL_FLOAT, 8, memory.data()), bind});
  // One question, whose result is the library's own.
  const received::calls& own = received::of_app();
  ASSERT_EQ(own.size(), 2u);
  const auto* result = reinterpret_cast<GLint*>(own[1].what.arguments[1]);
  received::expect_app({driver::expect<glDrawArrays_op>(GL_LINES, 0, 4),
                        driver::expect<glGetIntegerv_op>(GL_ARRAY_BUFFER_BINDING, const_cast<GLint*>(result))});
}

// To bind a deleted buffer again would make a new one of its name, which stays bound.
TEST_F(threaded_capture_test, a_deleted_array_buffer_is_not_bound_again) {
  std::vector<u8> memory = numbered(32);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  const GLuint buffer = 5;
  osw_glBindBuffer(GL_ARRAY_BUFFER, buffer);
  osw_glDeleteBuffers(1, &buffer);
  answer_array_binding(0);
  begin_draw();
  osw_glDrawArrays(GL_LINES, 0, 4);
  const u64 block = sent_pointer(0, 3);
  received::expect_parts({driver::expect<glVertexPointer_op>(2, GL_FLOAT, 8, reinterpret_cast<void*>(block)),
                          driver::expect<glDrawArrays_op>(GL_LINES, 0, 4),
                          driver::expect<glVertexPointer_op>(2, GL_FLOAT, 8, memory.data())});
}

// Pages on both sides of an address whose lower half is 0, and behind the next such one.
struct far_pages {
  static constexpr std::size_t apart = std::size_t{1} << 32;
  static constexpr std::size_t page = 4096;
  GLubyte* all;
  GLubyte* border;
  far_pages() {
    void* const reserved = mmap(nullptr, 3 * apart, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    EXPECT_NE(reserved, MAP_FAILED);
    all = static_cast<GLubyte*>(reserved);
    border = all + (apart - reinterpret_cast<std::uintptr_t>(all) % apart);
    EXPECT_EQ(mprotect(border - page, 2 * page, PROT_READ | PROT_WRITE), 0);
    EXPECT_EQ(mprotect(border + apart, page, PROT_READ | PROT_WRITE), 0);
  }
  ~far_pages() { munmap(all, 3 * apart); }
};

// Two arrays of one block that lies on both sides.
TEST_F(threaded_capture_test, a_block_may_lie_on_both_sides_of_four_gigabytes) {
  const far_pages pages;
  GLubyte* const across = pages.border - 4;
  for (int i = 0; i < 48; ++i) across[i] = static_cast<GLubyte>(i);
  osw_glVertexPointer(3, GL_FLOAT, 24, across + 12);
  osw_glNormalPointer(GL_FLOAT, 24, across);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  received::read(glDrawArrays_op::op, array_at_draw(glVertexPointer_op::op, 3, 0, 12));
  begin_draw();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  EXPECT_EQ(own_arrays().group_count, 1u);
  EXPECT_EQ(sent_pointer(0, 3), sent_pointer(1, 2) + 12);
  expect_draw_memory(glDrawArrays_op::op, std::vector<u8>(across + 12, across + 24));
}

// Equal lower halves do not make two arrays neighbours.
TEST_F(threaded_capture_test, arrays_four_gigabytes_apart_are_two_groups) {
  const far_pages pages;
  osw_glVertexPointer(3, GL_FLOAT, 24, pages.border);
  osw_glNormalPointer(GL_FLOAT, 24, pages.border + far_pages::apart + 12);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  begin_draw();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  EXPECT_EQ(own_arrays().group_count, 2u);
  received::wait_for_parts();
}

// Enables attributes from 0 on, of `size` values of `type`, 16 bytes apart, at these places of the memory.
template <std::size_t count>
void point_attributes(const std::vector<u8>& memory, const std::size_t (&places)[count], GLint size, GLenum type) {
  for (GLuint i = 0; i < count; ++i) {
    osw_glVertexAttribPointer(i, size, type, GL_FALSE, 16, memory.data() + places[i]);
    osw_glEnableVertexAttribArray(i);
  }
}

// As wide lines pair each vertex with the next: a base that goes down must not send an array of another group to before
// the block.
TEST_F(threaded_capture_test, no_array_is_aimed_below_its_block) {
  const std::vector<u8> memory = numbered(16 * 8);
  point_attributes(memory, {8, 24, 0, 16}, 2, GL_FLOAT);
  begin_draw();
  osw_glDrawArrays(GL_LINES, 0, 4);
  received::wait_for_parts();
  for (std::size_t i = 0; i < 4; ++i) EXPECT_LT(own_arrays().arrays[16 + i].group_offset, 16u) << i;
}

// Which arrays a base that goes down takes along is told by stride and distance, and not by their group.
TEST_F(threaded_capture_test, a_lower_base_takes_along_what_lies_near_it_in_any_group) {
  const std::vector<u8> memory = numbered(16 * 8);
  // 40 and 30 are of the first group, whose base comes down to 22; 20 and 24 have opened and joined the second before.
  point_attributes(memory, {40, 20, 24, 30, 22}, 1, GL_UNSIGNED_SHORT);
  begin_draw();
  osw_glDrawArrays(GL_LINES, 0, 4);
  received::wait_for_parts();
  const u32 groups[] = {0, 1, 1, 0, 0};
  const u32 offsets[] = {10, 0, 2, 8, 0};
  EXPECT_EQ(own_arrays().group_count, 2u);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(own_arrays().arrays[16 + i].group, groups[i]) << i;
    EXPECT_EQ(own_arrays().arrays[16 + i].group_offset, offsets[i]) << i;
  }
}

TEST_F(threaded_capture_test, a_draw_that_begins_below_0_is_waited_for) {
  std::vector<u8> memory = numbered(64);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  const u32 waits = own_queue()->send_sync_count;
  osw_glDrawArrays(GL_POINTS, -1, 3);
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  received::expect_parts({driver::expect<glDrawArrays_op>(GL_POINTS, -1, 3)});
}

TEST_F(threaded_capture_test, more_indices_than_a_block_holds_draw_nothing) {
  constexpr std::size_t count = std::size_t{1} << 29;
  void* const indices =
      mmap(nullptr, count * sizeof(GLuint), PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(indices, MAP_FAILED);
  platform::clear_debug_output();
  begin_draw();
  osw_glDrawElements(GL_POINTS, count, GL_UNSIGNED_INT, indices);
  received::expect_parts({});
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: no memory for the data of glDrawElements\n"});
  munmap(indices, count * sizeof(GLuint));
}

// Only the bytes of the vertices drawn are there to be read.
TEST_F(threaded_capture_test, a_draw_reads_its_vertices_and_no_byte_more) {
  std::vector<u8> memory = numbered(40);
  const std::vector<u8> before = memory;
  osw_glVertexPointer(2, GL_FLOAT, 8, reinterpret_cast<void*>(driver::bits_of(memory.data()) - 80));
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  received::read(glDrawArrays_op::op, array_at_draw(glVertexPointer_op::op, 3, 80, 40));
  osw_glDrawArrays(GL_POINTS, 10, 5);
  std::ranges::fill(memory, 0xEE);
  EXPECT_EQ(own_arrays().groups[0].alloc_size, 120u);
  EXPECT_EQ(own_arrays().groups[0].copy_start, 80u);
  EXPECT_EQ(own_arrays().groups[0].copy_size, 40u);
  expect_draw_memory(glDrawArrays_op::op, before);
}

TEST_F(threaded_capture_test, a_stride_of_0_is_that_of_packed_vertices) {
  std::vector<u8> memory = numbered(3 * 2 * 5);
  osw_glVertexPointer(3, GL_SHORT, 0, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  received::read(glDrawArrays_op::op, array_at_draw(glVertexPointer_op::op, 3, 0, memory.size()));
  osw_glDrawArrays(GL_POINTS, 0, 5);
  EXPECT_EQ(own_arrays().groups[0].stride, 6u);
  EXPECT_EQ(own_arrays().groups[0].alloc_size, 32u);
  expect_draw_memory(glDrawArrays_op::op, memory);
  // The workers take the application's own stride.
  EXPECT_EQ(received::of_part(1)[0].what.arguments[2], 0u);
}

TEST_F(threaded_capture_test, each_array_is_aimed_by_its_own_call) {
  std::vector<u8> memory = numbered(256);
  osw_glIndexPointer(GL_FLOAT, 16, memory.data());
  osw_glEdgeFlagPointer(16, memory.data() + 4);
  osw_glFogCoordPointer(GL_FLOAT, 16, memory.data() + 8);
  osw_glSecondaryColorPointer(3, GL_UNSIGNED_BYTE, 16, memory.data() + 12);
  osw_glVertexAttribPointer(5, 4, GL_BYTE, GL_TRUE, 16, memory.data());
  osw_glVertexAttribIPointer(6, 4, GL_BYTE, 16, memory.data() + 4);
  for (GLenum array : {GL_INDEX_ARRAY, GL_EDGE_FLAG_ARRAY, GL_FOG_COORD_ARRAY, GL_SECONDARY_COLOR_ARRAY}) {
    osw_glEnableClientState(array);
  }
  osw_glEnableVertexAttribArray(5);
  osw_glEnableVertexAttribArray(6);
  begin_draw();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  EXPECT_EQ(own_arrays().group_count, 1u);
  const u64 block = sent_pointer(2, 2);  // the index array has the base
  const auto aim = [&](u64 base) {
    const auto at = [=](u64 offset) { return reinterpret_cast<void*>(base + offset); };
    return std::vector<driver::call>{driver::expect<glFogCoordPointer_op>(GL_FLOAT, 16, at(8)),
                                     driver::expect<glSecondaryColorPointer_op>(3, GL_UNSIGNED_BYTE, 16, at(12)),
                                     driver::expect<glIndexPointer_op>(GL_FLOAT, 16, at(0)),
                                     driver::expect<glEdgeFlagPointer_op>(16, at(4)),
                                     driver::expect<glVertexAttribPointer_op>(5, 4, GL_BYTE, GL_TRUE, 16, at(0)),
                                     driver::expect<glVertexAttribPointer_op>(6, 4, GL_BYTE, GL_FALSE, 16, at(4))};
  };
  std::vector<driver::call> expected = aim(block);
  expected.push_back(driver::expect<glDrawArrays_op>(GL_POINTS, 0, 2));
  const std::vector<driver::call> restored = aim(driver::bits_of(memory.data()));
  expected.insert(expected.end(), restored.begin(), restored.end());
  received::expect_parts(expected);
}

TEST_F(threaded_capture_test, coordinates_of_another_unit_are_set_under_that_unit) {
  std::vector<u8> memory = numbered(64);
  osw_glClientActiveTexture(GL_TEXTURE3);
  osw_glTexCoordPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  osw_glClientActiveTexture(GL_TEXTURE1);
  begin_draw();
  osw_glDrawArrays(GL_POINTS, 0, 8);
  const u64 block = sent_pointer(1, 3);
  received::expect_parts({driver::expect<glClientActiveTexture_op>(GL_TEXTURE3),
                          driver::expect<glTexCoordPointer_op>(2, GL_FLOAT, 8, reinterpret_cast<void*>(block)),
                          driver::expect<glClientActiveTexture_op>(GL_TEXTURE1),
                          driver::expect<glDrawArrays_op>(GL_POINTS, 0, 8),
                          driver::expect<glClientActiveTexture_op>(GL_TEXTURE3),
                          driver::expect<glTexCoordPointer_op>(2, GL_FLOAT, 8, memory.data()),
                          driver::expect<glClientActiveTexture_op>(GL_TEXTURE1)});
}

// ---- elements ----

// Vertices 3 to 6 are there alone, behind a pointer to where vertex 0 would be.
struct elements {
  std::vector<u8> vertices = numbered(4 * 8);
  std::vector<u8> before = vertices;
  elements() {
    osw_glVertexPointer(2, GL_FLOAT, 8, reinterpret_cast<void*>(driver::bits_of(vertices.data()) - 3 * 8));
    osw_glEnableClientState(GL_VERTEX_ARRAY);
    begin_draw();
  }
};

template <class Index>
void check_elements(GLenum type, bool range) {
  elements drawn;
  std::vector<Index> indices = {5, 3, 6, 3};
  const std::vector<Index> indices_before = indices;
  const int op = range ? glDrawRangeElements_op::op : glDrawElements_op::op;
  const u32 index_argument = range ? 5 : 3;
  const auto vertices = array_at_draw(glVertexPointer_op::op, 3, 3 * 8, 4 * 8);
  received::read(op, [=](const driver::call& now, const received::calls& before) {
    std::vector<u8> both = received::memory_at(now.arguments[index_argument], 4 * sizeof(Index));
    const std::vector<u8> more = vertices(now, before);
    both.insert(both.end(), more.begin(), more.end());
    return both;
  });
  const __osw_cmd* draw_record = __osw_next_cmd(own_queue()) + 1;
  if (range) {
    osw_glDrawRangeElements(GL_LINES, 0, 1, 4, type, indices.data());
    EXPECT_EQ(draw_record->blob_mask, 1u << 5 | 1u << 6);
  } else {
    osw_glDrawElements(GL_LINES, 4, type, indices.data());
    EXPECT_EQ(draw_record->blob_mask, 1u << 3 | 1u << 4);
  }
  std::ranges::fill(indices, Index{0});
  std::ranges::fill(drawn.vertices, 0xEE);
  std::vector<u8> expected(4 * sizeof(Index));
  std::memcpy(expected.data(), indices_before.data(), expected.size());
  expected.insert(expected.end(), drawn.before.begin(), drawn.before.end());
  expect_draw_memory(op, expected);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 3u);
    EXPECT_EQ(logged[0].what.op, glVertexPointer_op::op);
    EXPECT_EQ(logged[2].what.op, glVertexPointer_op::op);
    EXPECT_EQ(logged[2].what.arguments[3], driver::bits_of(drawn.vertices.data()) - 3 * 8);
    if (range) {
      EXPECT_EQ(logged[1].what.arguments[1], 0u) << "the application's own range is passed on";
      EXPECT_EQ(logged[1].what.arguments[2], 1u);
    }
  });
}

TEST_F(threaded_capture_test, byte_elements) {
  check_elements<GLubyte>(GL_UNSIGNED_BYTE, false);
}
TEST_F(threaded_capture_test, short_elements) {
  check_elements<GLushort>(GL_UNSIGNED_SHORT, false);
}
TEST_F(threaded_capture_test, int_elements) {
  check_elements<GLuint>(GL_UNSIGNED_INT, false);
}
TEST_F(threaded_capture_test, a_wrong_range_is_not_believed) {
  check_elements<GLubyte>(GL_UNSIGNED_BYTE, true);
  check_elements<GLushort>(GL_UNSIGNED_SHORT, true);
  check_elements<GLuint>(GL_UNSIGNED_INT, true);
}

TEST_F(threaded_capture_test, elements_from_a_buffer_with_a_client_array_make_the_application_wait) {
  std::vector<u8> memory = numbered(64);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 4);
  begin_draw();
  const u32 waits = own_queue()->send_sync_count;
  osw_glDrawElements(GL_POINTS, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12));
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  for (int part = 0; part < received::parts(); ++part) EXPECT_EQ(received::of_part(part).size(), 1u);
  received::expect_parts(
      {driver::expect<glDrawElements_op>(GL_POINTS, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12))});
}

// The masks are compared whole: a buffered array that is not enabled makes a client array of the rest.
TEST_F(threaded_capture_test, elements_from_a_buffer_with_a_buffered_array_switched_off_make_the_application_wait) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 3);
  osw_glVertexPointer(2, GL_FLOAT, 8, nullptr);
  osw_glNormalPointer(GL_FLOAT, 12, nullptr);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 4);
  begin_draw();
  const u32 waits = own_queue()->send_sync_count;
  osw_glDrawElements(GL_POINTS, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12));
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  osw_glDrawRangeElements(GL_POINTS, 0, 9, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12));
  EXPECT_EQ(own_queue()->send_sync_count, waits + 2);
  osw_glDrawArrays(GL_POINTS, 0, 4);
  EXPECT_EQ(own_queue()->send_sync_count, waits + 2);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  received::expect_parts(
      {driver::expect<glDrawElements_op>(GL_POINTS, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12)),
       driver::expect<glDrawRangeElements_op>(GL_POINTS, 0, 9, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12)),
       driver::expect<glDrawArrays_op>(GL_POINTS, 0, 4)});
}

// As an application does that restarts its primitives by it.
TEST_F(threaded_capture_test, the_largest_index_makes_the_application_wait) {
  std::vector<u8> memory = numbered(64);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  const GLuint indices[] = {0, 1, 0xFFFFFFFF, 2};
  const u32 waits = own_queue()->send_sync_count;
  osw_glDrawElements(GL_LINE_STRIP, 4, GL_UNSIGNED_INT, indices);
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  for (int part = 0; part < received::parts(); ++part) EXPECT_EQ(received::of_part(part).size(), 1u);
}

TEST_F(threaded_capture_test, elements_and_arrays_from_buffers_wait_for_nobody) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 3);
  osw_glVertexPointer(2, GL_FLOAT, 8, nullptr);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 4);
  begin_draw();
  const u32 waits = own_queue()->send_sync_count;
  osw_glDrawRangeElements(GL_POINTS, 0, 9, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12));
  EXPECT_EQ(own_queue()->send_sync_count, waits);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  received::expect_parts(
      {driver::expect<glDrawRangeElements_op>(GL_POINTS, 0, 9, 4, GL_UNSIGNED_SHORT, reinterpret_cast<void*>(12))});
}

TEST_F(threaded_capture_test, an_empty_draw_captures_nothing_and_goes_out) {
  osw_glVertexPointer(2, GL_FLOAT, 8, reinterpret_cast<void*>(0x10));
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  const GLushort indices[4] = {};
  osw_glDrawArrays(GL_POINTS, 5, 0);
  osw_glDrawArrays(GL_POINTS, 5, -3);
  osw_glDrawArrays(GL_POINTS, -5, 3);
  osw_glDrawElements(GL_POINTS, 0, GL_UNSIGNED_SHORT, indices);
  osw_glDrawElements(GL_POINTS, -1, GL_UNSIGNED_BYTE, indices);
  osw_glDrawElements(GL_POINTS, 4, GL_FLOAT, indices);
  osw_glDrawElements(GL_POINTS, 4, GL_UNSIGNED_INT, nullptr);
  const std::vector<int> expected = {glDrawArrays_op::op,   glDrawArrays_op::op,   glDrawArrays_op::op,
                                     glDrawElements_op::op, glDrawElements_op::op, glDrawElements_op::op,
                                     glDrawElements_op::op};
  received::for_each_part([&](const received::calls& logged) {
    std::vector<int> ops;
    for (const received::call& one : logged) ops.push_back(one.what.op);
    EXPECT_EQ(ops, expected);
  });
}

TEST_F(threaded_capture_test, a_draw_from_31_separate_arrays_is_captured) {
  std::vector<std::vector<u8>> arrays;
  for (u32 attribute = 0; attribute < 16; ++attribute) {
    arrays.push_back(numbered(4 * 4));
    osw_glVertexAttribPointer(attribute, 1, GL_FLOAT, 0, 4, arrays.back().data());
    osw_glEnableVertexAttribArray(attribute);
  }
  for (u32 unit = 0; unit < 8; ++unit) {
    arrays.push_back(numbered(4 * 4));
    osw_glClientActiveTexture(GL_TEXTURE0 + unit);
    osw_glTexCoordPointer(1, GL_FLOAT, 4, arrays.back().data());
    osw_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  }
  begin_draw();
  received::read(glDrawArrays_op::op, array_at_draw(glTexCoordPointer_op::op, 3, 0, 16));
  osw_glDrawArrays(GL_POINTS, 0, 4);
  for (std::vector<u8>& one : arrays) std::ranges::fill(one, 0xEE);
  EXPECT_EQ(own_arrays().group_count, 24u);
  expect_draw_memory(glDrawArrays_op::op, numbered(16));
}

TEST_F(threaded_capture_test, a_draw_without_memory_is_dropped_on_all_parts_alike) {
  std::vector<u8> memory = numbered(64);
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  const GLushort indices[] = {0, 1, 2};
  platform::clear_debug_output();
  allocation::fail_call(1);
  osw_glDrawArrays(GL_POINTS, 0, 4);
  allocation::fail_call(1);
  osw_glDrawElements(GL_POINTS, 3, GL_UNSIGNED_SHORT, indices);
  allocation::fail_call(2);
  osw_glDrawElements(GL_POINTS, 3, GL_UNSIGNED_SHORT, indices);
  allocation::stop_failing();
  EXPECT_EQ(library::reports().size(), 3u);
  received::expect_parts({});
}

// ---- the life of a block ----

struct block_life_test : library::process_test, testing::WithParamInterface<int> {};

TEST_P(block_life_test, the_last_part_frees_the_blocks_of_a_draw_once) {
  library::start({.parts = GetParam()});
  received::watch(library::start_rendering());
  std::vector<u8> memory = numbered(64);
  std::vector<GLubyte> indices = {1, 2, 3};
  osw_glVertexPointer(2, GL_FLOAT, 8, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  begin_draw();
  allocation::watch();
  const __osw_cmd* draw_record = __osw_next_cmd(own_queue()) + 1;
  osw_glDrawElements(GL_LINES, 3, GL_UNSIGNED_BYTE, indices.data());
  const u64 blocks[] = {draw_record->args[3], draw_record->args[4]};
  for (u64 block : blocks) EXPECT_TRUE(allocation::is_live(block));
  received::wait_for_parts();
  const std::vector<std::uintptr_t> freed = allocation::freed();
  for (u64 block : blocks) EXPECT_EQ(std::ranges::count(freed, block), 1);
  allocation::stop_watching();
}

INSTANTIATE_TEST_SUITE_P(parts, block_life_test, testing::Values(1, 2, 4, 16));

TEST_F(threaded_capture_test, blocks_that_nobody_replayed_are_freed_with_the_thread) {
  std::vector<u64> blocks;
  const library::app_window window = library::open_window({200, 200, 400, 400});
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    library::start_rendering_in(window);
    allocation::watch();
    std::vector<u8> memory(32, 1);
    for (int i = 0; i < 10; ++i) {
      const __osw_cmd* record = __osw_next_cmd(own_queue());
      osw_glBufferData(GL_ARRAY_BUFFER, 32, memory.data(), GL_STATIC_DRAW);
      blocks.push_back(record->args[2]);
    }
  });
  library::end_thread(thread);
  platform::wait_for_live_threads(3);  // this thread's own workers and swap thread
  const std::vector<std::uintptr_t> freed = allocation::freed();
  for (u64 block : blocks) EXPECT_EQ(std::ranges::count(freed, block), 1);
  allocation::stop_watching();
}

}  // namespace
