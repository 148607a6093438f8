// The command record, the values in its slots, and a queue as it is made.
#include <bit>
#include <cstddef>
#include <limits>

#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

struct record_test : pipeline_test {};
struct queue_test : pipeline_test, testing::WithParamInterface<int> {};

TEST_F(record_test, fields_lie_where_both_sides_expect_them) {
  EXPECT_EQ(offsetof(__osw_cmd, type), 0u);
  EXPECT_EQ(offsetof(__osw_cmd, op), 4u);
  EXPECT_EQ(offsetof(__osw_cmd, result), 8u);
  EXPECT_EQ(offsetof(__osw_cmd, arg_count), 16u);
  EXPECT_EQ(offsetof(__osw_cmd, args), 24u);
  EXPECT_EQ(offsetof(__osw_cmd, blob_mask), 24u + 32 * 8);
  EXPECT_EQ(offsetof(__osw_cmd, blob_release_count), 28u + 32 * 8);
  EXPECT_EQ(sizeof(__osw_cmd::args), 32u * 8);
  EXPECT_EQ(sizeof(__osw_cmd::result), 8u);
  EXPECT_TRUE((std::is_same_v<decltype(__osw_cmd::op), std::int32_t>));
}

TEST_F(record_test, types_have_their_numbers) {
  EXPECT_EQ(__osw_cmd_wgl, 1u);
  EXPECT_EQ(__osw_cmd_gl, 2u);
  EXPECT_EQ(cmd_sync, 3u);
  EXPECT_EQ(__osw_cmd_exit, 4u);
}

TEST_F(record_test, queue_fields_stand_in_order) {
  const std::size_t offsets[] = {offsetof(__osw_cmd_queue, start_cond),      offsetof(__osw_cmd_queue, done_cond),
                                 offsetof(__osw_cmd_queue, sync_cond),       offsetof(__osw_cmd_queue, start_lock),
                                 offsetof(__osw_cmd_queue, done_lock),       offsetof(__osw_cmd_queue, sync_lock),
                                 offsetof(__osw_cmd_queue, start_mask),      offsetof(__osw_cmd_queue, done_mask),
                                 offsetof(__osw_cmd_queue, sync_mask),       offsetof(__osw_cmd_queue, exit_mask),
                                 offsetof(__osw_cmd_queue, app_bit),         offsetof(__osw_cmd_queue, worker_bits),
                                 offsetof(__osw_cmd_queue, all_bits),        offsetof(__osw_cmd_queue, last_sync_flag),
                                 offsetof(__osw_cmd_queue, wgl_sync_flags),  offsetof(__osw_cmd_queue, gl_sync_flags),
                                 offsetof(__osw_cmd_queue, wgl_op_names),    offsetof(__osw_cmd_queue, gl_op_names),
                                 offsetof(__osw_cmd_queue, wgl_sync_count),  offsetof(__osw_cmd_queue, gl_sync_count),
                                 offsetof(__osw_cmd_queue, send_sync_count), offsetof(__osw_cmd_queue, full_count),
                                 offsetof(__osw_cmd_queue, list_a),          offsetof(__osw_cmd_queue, count_a),
                                 offsetof(__osw_cmd_queue, list_b),          offsetof(__osw_cmd_queue, count_b),
                                 offsetof(__osw_cmd_queue, list_limit),      offsetof(__osw_cmd_queue, read_list),
                                 offsetof(__osw_cmd_queue, read_count),      offsetof(__osw_cmd_queue, fill_list),
                                 offsetof(__osw_cmd_queue, fill_count),      offsetof(__osw_cmd_queue, last_result)};
  for (std::size_t i = 1; i < std::size(offsets); ++i) EXPECT_LT(offsets[i - 1], offsets[i]) << "field " << i;
}

// What a slot keeps of a value is the value's own bits, and nothing above them is read back.
template <class T>
void expect_kept(T value) {
  constexpr u64 own_bits = sizeof(T) == 8 ? ~u64{0} : (u64{1} << (8 * sizeof(T) % 64)) - 1;
  const u64 slot = to_slot(value);
  EXPECT_EQ(slot & own_bits, driver::bits_of(value));
  const u64 dirty = (slot & own_bits) | (0xDEADBEEFCAFEF00D & ~own_bits);
  EXPECT_EQ(driver::bits_of(from_slot<T>(dirty)), driver::bits_of(value));
}

TEST_F(record_test, slots_keep_every_kind_of_argument) {
  for (const GLint value : {0, 1, -1, std::numeric_limits<GLint>::min(), std::numeric_limits<GLint>::max()}) {
    expect_kept<GLint>(value);
    expect_kept<GLenum>(static_cast<GLenum>(value));
    expect_kept<GLshort>(static_cast<GLshort>(value));
    expect_kept<GLushort>(static_cast<GLushort>(value));
    expect_kept<GLbyte>(static_cast<GLbyte>(value));
    expect_kept<GLubyte>(static_cast<GLubyte>(value));
    expect_kept<GLintptr>(static_cast<GLintptr>(value) << 31);
  }
  for (const u32 bits : {0u, 0x80000000u, 0x7F800000u, 0x7FC12345u, 0x00000001u, 0x3F800000u}) {
    expect_kept<GLfloat>(std::bit_cast<float>(bits));
  }
  for (const u64 bits : {0ul, 0x8000000000000000ul, 0x7FF0000000000000ul, 0x7FF8000000ABCDEFul, 1ul}) {
    expect_kept<GLdouble>(std::bit_cast<double>(bits));
  }
  expect_kept(reinterpret_cast<void*>(0xFEDCBA9876543210));
  expect_kept(reinterpret_cast<HDC>(0x00007FFFFFFFFFFF));
}

// A command as no encoder makes it: its slots are dirty above what the parameters are wide.
template <class Op, class... Arguments>
void push_dirty(Arguments... arguments) {
  const u64 dirt = 0xDEADBEEFCAFEF00D;
  const auto slot = [&](auto value) {
    constexpr unsigned width = 8 * sizeof value;
    if constexpr (width == 64) return driver::bits_of(value);
    return driver::bits_of(value) | (dirt >> (width % 64) << (width % 64));
  };
  const u64 slots[] = {slot(arguments)...};
  __osw_push_gl_cmd(state(), Op::op, sizeof...(Arguments), slots, 0);
}

TEST_F(record_test, replay_loads_each_argument_at_its_own_width) {
  library::start({.query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering();
  empty_list();
  driver::clear_calls();
  push_dirty<glColor3b_op>(GLbyte{-128}, GLbyte{-1}, GLbyte{127});
  push_dirty<glVertexAttrib4Nub_op>(GLuint{0xFFFFFFFF}, GLubyte{255}, GLubyte{0}, GLubyte{128}, GLubyte{1});
  push_dirty<glColor3s_op>(GLshort{-32768}, GLshort{-1}, GLshort{32767});
  push_dirty<glColor3us_op>(GLushort{65535}, GLushort{0}, GLushort{32768});
  push_dirty<glEdgeFlag_op>(GLboolean{1});
  push_dirty<glHint_op>(GLenum{0xFFFFFFFF}, GLenum{0x80000000});
  push_dirty<glRasterPos2i_op>(GLint{-1}, std::numeric_limits<GLint>::min());
  push_dirty<glVertex3f_op>(GLfloat{-0.0f}, std::bit_cast<GLfloat>(0x7FC12345), GLfloat{1.5f});
  push_dirty<glVertex2d_op>(GLdouble{-0.0}, std::bit_cast<GLdouble>(0x7FF8000000ABCDEF));
  push_dirty<glCallLists_op>(GLsizei{-5}, GLenum{GL_INT}, reinterpret_cast<const void*>(0xFEDCBA9876543210));
  push_dirty<glCopyBufferSubData_op>(GLenum{1}, GLenum{2}, GLintptr{-1}, GLintptr{0x7FFFFFFFFFFFFFFF}, GLsizeiptr{5});
  empty_list();
  const std::vector<driver::call> expected = {
      driver::expect<glColor3b_op>(-128, -1, 127),
      driver::expect<glVertexAttrib4Nub_op>(0xFFFFFFFF, 255, 0, 128, 1),
      driver::expect<glColor3s_op>(-32768, -1, 32767),
      driver::expect<glColor3us_op>(65535, 0, 32768),
      driver::expect<glEdgeFlag_op>(1),
      driver::expect<glHint_op>(0xFFFFFFFF, 0x80000000),
      driver::expect<glRasterPos2i_op>(-1, std::numeric_limits<GLint>::min()),
      driver::expect<glVertex3f_op>(-0.0f, std::bit_cast<GLfloat>(0x7FC12345), 1.5f),
      driver::expect<glVertex2d_op>(-0.0, std::bit_cast<GLdouble>(0x7FF8000000ABCDEF)),
      driver::expect<glCallLists_op>(-5, GL_INT, reinterpret_cast<const void*>(0xFEDCBA9876543210)),
      driver::expect<glCopyBufferSubData_op>(1, 2, -1, 0x7FFFFFFFFFFFFFFF, 5),
  };
  for (int part = 0; part < 2; ++part) EXPECT_EQ(library::part_calls(rendered, part), expected);
  EXPECT_TRUE(driver::gl_calls_in(rendered.context).empty());
}

void expect_new_masks(const __osw_cmd_queue* queue, u32 workers) {
  EXPECT_EQ(queue->start_mask, 0xFFFFFFFFu);
  EXPECT_EQ(queue->done_mask, 0u);
  EXPECT_EQ(queue->sync_mask, 0u);
  EXPECT_EQ(queue->exit_mask, 0u);
  EXPECT_EQ(queue->app_bit, 0x80000000u);
  EXPECT_EQ(queue->worker_bits, workers);
  EXPECT_EQ(queue->all_bits, workers | 0x80000000u);
  EXPECT_EQ(queue->last_sync_flag, 1u);
}

void expect_new_counters(const __osw_cmd_queue* queue) {
  for (const u32 count : queue->wgl_sync_count) EXPECT_EQ(count, 0u);
  for (const u32 count : queue->gl_sync_count) EXPECT_EQ(count, 0u);
  EXPECT_EQ(queue->send_sync_count, 0u);
  EXPECT_EQ(queue->full_count, 0u);
  EXPECT_EQ(queue->last_result, 0u);
}

void expect_new_lists(const __osw_cmd_queue* queue) {
  EXPECT_EQ(queue->list_limit, 5000u);
  EXPECT_EQ(queue->count_a, 0u);
  EXPECT_EQ(queue->count_b, 0u);
  EXPECT_EQ(queue->read_list, &queue->list_a);
  EXPECT_EQ(queue->read_count, &queue->count_a);
  EXPECT_EQ(queue->fill_list, &queue->list_b);
  EXPECT_EQ(queue->fill_count, &queue->count_b);
  // All of the room can be used: a checker of memory would stop this.
  for (__osw_cmd* list : {queue->list_a, queue->list_b}) {
    EXPECT_EQ(list[0].type, 0u);
    list[5099].blob_release_count = 1;
    EXPECT_EQ(list[5099].type, 0u);
  }
}

TEST_P(queue_test, a_new_one_is_as_told) {
  library::start({.parts = GetParam()});
  library::run_on_new_thread([] {
    __osw_thread_state* own = __osw_fetch_thread_state();
    ASSERT_EQ(__osw_create_cmd_queue(own), 1u);
    const __osw_cmd_queue* created = own->cmd_queue;
    expect_new_masks(created, (1u << GetParam()) - 1);
    expect_new_counters(created);
    expect_new_lists(created);
    EXPECT_EQ(created->wgl_sync_flags, __osw_wgl_sync_flags);
    EXPECT_EQ(created->gl_sync_flags, __osw_gl_sync_flags);
    EXPECT_EQ(created->wgl_op_names, static_cast<const char* const*>(__osw_wgl_op_names));
    EXPECT_EQ(created->gl_op_names, static_cast<const char* const*>(__osw_gl_op_names));
    EXPECT_EQ(__osw_create_cmd_queue(own), 1u);
    EXPECT_EQ(own->cmd_queue, created) << "a second one was made";
  });
}

INSTANTIATE_TEST_SUITE_P(parts, queue_test, testing::Values(1, 2, 4, 16));

TEST_F(record_test, a_queue_without_memory_is_no_queue) {
  library::start();
  library::run_on_new_thread([] {
    __osw_thread_state* own = __osw_fetch_thread_state();
    allocation::watch();
    for (int call = 1; call <= 3; ++call) {
      allocation::fail_call(call);
      EXPECT_EQ(__osw_create_cmd_queue(own), 0u) << call;
      EXPECT_EQ(own->cmd_queue, nullptr);
      EXPECT_EQ(allocation::live_blocks(), 0);
    }
    allocation::fail_call(4);
    EXPECT_EQ(__osw_create_cmd_queue(own), 1u);
    EXPECT_EQ(allocation::calls(), 3);
    allocation::stop_failing();
  });
  EXPECT_EQ(allocation::live_blocks(), 0);
  allocation::stop_watching();
}

}  // namespace
