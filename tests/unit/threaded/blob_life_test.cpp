// Every encoder that copies into heap blocks: with and without data, without memory, and who frees the blocks.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "pipeline/push.h"
#include "support/allocation.h"
#include "support/call_shapes.h"
#include "support/expected_figures.h"
#include "support/threaded_call.h"

namespace {

bool is_one_of(int op, std::initializer_list<int> ops) {
  return std::ranges::find(ops, op) != ops.end();
}

// All but the one uniform that hands the application's own memory on.
bool copies_into_blocks(const ops::row& row) {
  switch (row.threaded) {
    case ops::family::image:
    case ops::family::compressed:
    case ops::family::names:
    case ops::family::uniform:
    case ops::family::items:
      return true;
    case ops::family::own:
      return is_one_of(row.op,
                       {glPolygonStipple_op::op, glPixelMapfv_op::op, glPixelMapuiv_op::op, glPixelMapusv_op::op,
                        glCallLists_op::op, glBufferData_op::op, glBufferSubData_op::op, glShaderSource_op::op});
    default:
      return false;
  }
}

std::vector<const ops::row*> copying_rows() {
  std::vector<const ops::row*> found;
  for (const ops::row& row : ops::all()) {
    if (copies_into_blocks(row)) found.push_back(&row);
  }
  return found;
}

u32 data_argument(const ops::row& row) {
  return ops::shape_of(row.op).data_at;
}

bool fits_the_record_when_small(const ops::row& row) {
  return row.threaded == ops::family::names || row.threaded == ops::family::uniform ||
         row.threaded == ops::family::items;
}

// A call whose data are too large for the record.
threaded::prepared_call prepare_large(const ops::row& row) {
  threaded::prepared_call call = threaded::prepare(row);
  if (fits_the_record_when_small(row)) {
    constexpr u64 items = 100;
    constexpr std::size_t largest_item = 16 * sizeof(GLdouble);
    threaded::point_at_memory(&call, data_argument(row), items * largest_item);
    call.arguments[ops::shape_of(row.op).count_at] = items;
  }
  return call;
}

void make(const threaded::prepared_call& call) {
  call.entered->call(call.entered->entry, call.arguments);
}

struct blob_life_test : library::process_test, testing::WithParamInterface<int> {};

TEST_P(blob_life_test, every_block_is_freed_once_by_the_last_part) {
  library::start({.parts = GetParam()});
  received::watch(library::start_rendering());
  const std::vector<const ops::row*> rows = copying_rows();
  EXPECT_EQ(std::ssize(rows), figures::copying_blobs);
  for (const ops::row* row : rows) {
    SCOPED_TRACE(row->name);
    const threaded::prepared_call call = prepare_large(*row);
    const __osw_cmd* record = __osw_next_cmd(__osw_fetch_thread_state()->cmd_queue);
    allocation::watch();
    make(call);
    ASSERT_NE(record->blob_mask, 0u);
    const u64 block = record->args[__builtin_ctz(record->blob_mask)];
    EXPECT_TRUE(allocation::is_live(block));
    received::wait_for_parts();
    allocation::stop_watching();
    EXPECT_EQ(std::ranges::count(allocation::freed(), block), 1);
  }
}

TEST_P(blob_life_test, blocks_that_nobody_replayed_are_freed_with_their_thread) {
  library::start({.parts = GetParam()});
  std::vector<u64> blocks;
  const library::app_window window = library::open_window();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    library::start_rendering_in(window);
    allocation::watch();
    for (const ops::row* row : copying_rows()) {
      const __osw_cmd* record = __osw_next_cmd(__osw_fetch_thread_state()->cmd_queue);
      make(prepare_large(*row));
      blocks.push_back(record->args[__builtin_ctz(record->blob_mask)]);
    }
  });
  library::end_thread(thread);
  platform::wait_for_live_threads(0);
  const std::vector<std::uintptr_t> freed = allocation::freed();
  allocation::stop_watching();
  EXPECT_EQ(std::ssize(blocks), figures::copying_blobs);
  for (u64 block : blocks) EXPECT_EQ(std::ranges::count(freed, block), 1);
}

INSTANTIATE_TEST_SUITE_P(parts, blob_life_test, testing::Values(1, 2, 4, 16));

struct blob_memory_test : library::process_test {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
  }
};

TEST_F(blob_memory_test, without_data_the_call_goes_out_on_all_parts) {
  for (const ops::row* row : copying_rows()) {
    if (row->op == glShaderSource_op::op) continue;  // without an array of strings there is nothing to call it with
    SCOPED_TRACE(row->name);
    threaded::prepared_call call = threaded::prepare(*row);
    call.arguments[data_argument(*row)] = 0;
    received::clear();
    make(call);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what.op, row->op);
      const bool in_record = fits_the_record_when_small(*row);
      EXPECT_EQ(logged[0].what.arguments[data_argument(*row)] != 0, in_record) << "null, or a zeroed slot";
    });
  }
}

// What an unpack buffer means nothing to takes its data from memory as ever.
TEST_F(blob_memory_test, an_unpack_buffer_is_nothing_to_calls_that_take_no_pixels) {
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 8);
  int checked = 0;
  for (const ops::row* row : copying_rows()) {
    const bool takes_pixels =
        row->threaded == ops::family::image || row->threaded == ops::family::compressed ||
        is_one_of(row->op, {glPolygonStipple_op::op, glPixelMapfv_op::op, glPixelMapuiv_op::op, glPixelMapusv_op::op});
    if (takes_pixels) continue;
    SCOPED_TRACE(row->name);
    ++checked;
    const threaded::prepared_call call = prepare_large(*row);
    const __osw_cmd* record = __osw_next_cmd(__osw_fetch_thread_state()->cmd_queue);
    make(call);
    EXPECT_NE(record->blob_mask, 0u);
    received::wait_for_parts();
  }
  EXPECT_EQ(checked, figures::copying_blobs_without_pixels);
}

// What each part must have received of a call that found no memory; nothing where it was dropped.
std::vector<driver::call> without_memory(const threaded::prepared_call& call) {
  const ops::row& row = *call.travels;
  driver::argument_bits left = call.arguments;
  left[data_argument(row)] = 0;
  if (fits_the_record_when_small(row)) {
    left[ops::shape_of(row.op).count_at] = 0;
  } else if (row.op == glCallLists_op::op) {
    left[0] = 0;
  } else if (row.op == glBufferSubData_op::op) {
    left[2] = 0;
  } else if (row.op != glBufferData_op::op) {
    return {};
  }
  return {ops::noted(row, left)};
}

TEST_F(blob_memory_test, without_memory_a_call_does_nothing_on_all_parts_alike) {
  for (const ops::row* row : copying_rows()) {
    SCOPED_TRACE(row->name);
    const threaded::prepared_call call = prepare_large(*row);
    received::clear();
    platform::clear_debug_output();
    allocation::fail_call(1);
    make(call);
    allocation::stop_failing();
    EXPECT_EQ(library::reports().size(), 1u);
    received::expect_parts(without_memory(call));
  }
}

TEST_F(blob_memory_test, without_memory_long_names_and_many_draw_buffers_are_dropped) {
  const std::vector<GLenum> buffers(61, GL_BACK);
  const std::string name(232, 'n');
  platform::clear_debug_output();
  allocation::fail_call(1, true);
  osw_glDrawBuffers(61, buffers.data());
  osw_glBindAttribLocation(1, 2, name.c_str());
  allocation::stop_failing();
  EXPECT_EQ(library::reports().size(), 2u);
  received::expect_parts({});
}

}  // namespace
