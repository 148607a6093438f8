// Every op on the threaded path: what the application calls, each part receives once, with the same bytes.
#include <algorithm>

#include "pipeline/push.h"
#include "startup/config/options.h"
#include "support/call_shapes.h"
#include "support/threaded_call.h"
#include "wgl/records/glrc.h"
#include "wgl/records/window_mapping.h"

namespace {

struct way {
  int parts;
  bool on_app_thread;  // OSW_DW_UseAppThreadToQueryState
  bool extended;
};

struct threaded_every_op_test : library::process_test, testing::WithParamInterface<way> {
  void SetUp() override {
    library::start(
        {.parts = GetParam().parts, .query_on_app_thread = GetParam().on_app_thread, .extended = GetParam().extended});
    ASSERT_EQ(ops::all().size(), static_cast<std::size_t>(GetParam().extended ? gl_all_count : gl_op_count));
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

constexpr u64 app_result = 0xA1A2A3A4A5A6A7A8;
constexpr u64 part_result = 0xB1B2B3B4B5B6B7B8;

// Payloads one behind the other.
std::vector<u8> joined_payloads(const threaded::prepared_call& call) {
  std::vector<u8> joined;
  for (const threaded::payload& payload : call.payloads) {
    joined.insert(joined.end(), payload.bytes.begin(), payload.bytes.end());
  }
  return joined;
}

received::reader reader_of(const threaded::prepared_call& call) {
  struct place {
    u32 argument;
    std::size_t bytes;
  };
  std::vector<place> places;
  for (const threaded::payload& payload : call.payloads) places.push_back({payload.argument, payload.bytes.size()});
  return [places](const driver::call& now, const received::calls&) {
    std::vector<u8> joined;
    for (const place& at : places) {
      const std::vector<u8> found = received::memory_at(now.arguments[at.argument], at.bytes);
      joined.insert(joined.end(), found.begin(), found.end());
    }
    return joined;
  };
}

// The record that the call will use, and the counts that tell whether it waited.
struct pipeline_facts {
  const __osw_cmd* next;
  u32 filled;
  u32 waits;
};

u32 waits_of(const __osw_cmd_queue* queue, int op) {
  return op < gl_op_count ? queue->gl_sync_count[op] : queue->wide_sync_count[op - gl_op_count];
}

pipeline_facts look_at_pipeline(const threaded::prepared_call& call) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  return {__osw_next_cmd(queue), *queue->fill_count, waits_of(queue, call.travels->op)};
}

void check_asynchronous_record(const threaded::prepared_call& call, const pipeline_facts& before) {
  u32 mask = 0;
  for (const threaded::payload& payload : call.payloads) {
    if (!payload.record_slot) mask |= 1u << payload.argument;
  }
  EXPECT_EQ(look_at_pipeline(call).filled, before.filled + 1);
  EXPECT_EQ(before.next->type, __osw_cmd_gl);
  EXPECT_EQ(before.next->op, call.travels->op);
  EXPECT_EQ(before.next->arg_count, call.travels->count);
  EXPECT_EQ(before.next->blob_mask, mask);
}

// What the call did to the list before anyone else has waited.
void check_pipeline(const threaded::prepared_call& call, const pipeline_facts& before, bool reaches_parts) {
  if (__osw_fetch_thread_state()->cmd_queue->report != list_kept) {
    EXPECT_EQ(call.travels->op, glFlush_op::op) << "a list was reported";
    return;  // it may have been exchanged
  }
  const pipeline_facts after = look_at_pipeline(call);
  if (!reaches_parts) {
    EXPECT_EQ(after.filled, before.filled);
    EXPECT_EQ(after.waits, before.waits);
  } else if (call.changes_on_the_way && call.travels->threaded == ops::family::own) {
    return;  // several commands
  } else if (call.travels->sync) {
    EXPECT_EQ(after.filled, 0u);
    EXPECT_EQ(after.waits, before.waits + 1);
  } else if (!call.travels->result_size || OSW_DW_UseAppThreadToQueryState) {
    check_asynchronous_record(call, before);
  }
}

void check_part(const threaded::prepared_call& call, const pipeline_facts& before, const received::calls& logged) {
  ASSERT_EQ(logged.size(), 1u);
  driver::argument_bits expected = call.arguments;
  for (const threaded::payload& payload : call.payloads) {
    const u64 got = logged[0].what.arguments[payload.argument];
    EXPECT_NE(got, expected[payload.argument]) << "the application's own pointer";
    if (payload.record_slot) {
      EXPECT_EQ(got, driver::bits_of(&before.next->args[payload.record_slot]));
    }
    expected[payload.argument] = got;
  }
  EXPECT_EQ(logged[0].what, ops::noted(*call.travels, expected));
  EXPECT_EQ(logged[0].memory, joined_payloads(call));
}

int count_of(const received::calls& logged, int op) {
  return static_cast<int>(std::ranges::count_if(logged, [=](const auto& one) { return one.what.op == op; }));
}

int upload_of(int copy) {
  switch (copy) {
    case glCopyPixels_op::op:
      return glDrawPixels_op::op;
    case glCopyTexImage1D_op::op:
      return glTexImage1D_op::op;
    case glCopyTexImage2D_op::op:
      return glTexImage2D_op::op;
    case glCopyTexSubImage1D_op::op:
      return glTexSubImage1D_op::op;
    case glCopyTexSubImage2D_op::op:
      return glTexSubImage2D_op::op;
    default:
      return glTexSubImage3D_op::op;
  }
}

// The ops whose call does not arrive as it was made.
void check_changed_call(const threaded::prepared_call& call, int part, const received::calls& logged) {
  const driver::argument_bits& sent = call.arguments;
  switch (call.travels->op) {
    case glViewportOffsetZ4_op::op: {
      const __osw_child_part& child = __osw_fetch_thread_state()->window_mapping->parts[part];
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what,
                driver::expect<glViewportOffsetZ4_op>(child.viewport_offset_x, child.viewport_offset_y));
      return;
    }
    case glGetQueryObjectui64v_op::op:
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what.op, call.travels->op);
      EXPECT_EQ(logged[0].what.arguments[0], sent[0]);
      EXPECT_EQ(logged[0].what.arguments[1], sent[1]);
      EXPECT_NE(logged[0].what.arguments[2], sent[2]);
      return;
    case glCreateShaderProgramv_op::op:
    case glTransformFeedbackVaryings_op::op:
    case glTransformFeedbackVaryingsEXT_op::op:
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what.op, call.travels->op);
      EXPECT_EQ(logged[0].what.arguments[1], sent[1]);
      EXPECT_NE(logged[0].what.arguments[2], sent[2]);
      return;
    case glShaderSource_op::op:
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what.op, call.travels->op);
      EXPECT_EQ(logged[0].what.arguments[0], sent[0]);
      EXPECT_EQ(logged[0].what.arguments[1], 1u);
      EXPECT_EQ(logged[0].what.arguments[3], 0u);
      return;
    case glMultiDrawElements_op::op:
    case glMultiDrawElementsBaseVertex_op::op:
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].what.op, call.travels->op);
      for (const std::size_t same : {0, 2, 4}) EXPECT_EQ(logged[0].what.arguments[same], sent[same]);
      for (const std::size_t copied : {1, 3}) EXPECT_NE(logged[0].what.arguments[copied], sent[copied]);
      return;
    case glReadPixels_op::op:
      for (const received::call& one : logged) {
        if (one.what.op == glReadPixels_op::op) {
          EXPECT_EQ(one.what.arguments[6], sent[6]);
        }
      }
      return;
    default:
      EXPECT_EQ(count_of(logged, call.travels->op), 0);
      EXPECT_EQ(count_of(logged, upload_of(call.travels->op)), 1);
  }
}

void check_app(const threaded::prepared_call& call, bool option_on) {
  received::calls logged = received::of_app();
  // Whether it is within a display list is asked first.
  if (call.travels->op == glDispatchComputeIndirect_op::op) {
    std::erase_if(logged, [](const received::call& one) { return one.what.op == glGetIntegerv_op::op; });
  }
  if (!call.is_mirrored || !option_on) {
    EXPECT_EQ(received::without_memory(logged), std::vector<driver::call>());
    return;
  }
  ASSERT_FALSE(logged.empty());
  EXPECT_EQ(logged[0].what, ops::noted(*call.mirrored_as, call.mirrored_arguments));
  const bool is_copy = call.changes_on_the_way && call.travels->op != glShaderSource_op::op &&
                       call.travels->threaded == ops::family::own;
  if (!is_copy) {
    EXPECT_EQ(logged.size(), 1u);
  }
}

void check_parts(const threaded::prepared_call& call, const pipeline_facts& before, bool reaches_parts) {
  for (int part = 0; part < received::parts(); ++part) {
    SCOPED_TRACE(testing::Message() << "part " << part);
    const received::calls& logged = received::of_part(part);
    if (!reaches_parts || (call.is_for_first_part && part > 0)) {
      EXPECT_EQ(received::without_memory(logged), std::vector<driver::call>());
    } else if (call.changes_on_the_way) {
      check_changed_call(call, part, logged);
    } else {
      check_part(call, before, logged);
    }
  }
}

// An op without handlers.
void check_nothing(const ops::row& row) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  received::clear();
  const u32 filled = *queue->fill_count;
  EXPECT_EQ(row.call(row.entry, ops::distinctive(row)), 0u);
  EXPECT_EQ(*queue->fill_count, filled);
  received::wait_for_parts();
  EXPECT_TRUE(received::of_app().empty());
  for (int part = 0; part < received::parts(); ++part) EXPECT_TRUE(received::of_part(part).empty());
}

// An op of which the parts never hear, whatever the option says.
void check_app_alone(const threaded::prepared_call& call) {
  received::clear();
  const pipeline_facts before = look_at_pipeline(call);
  const u64 result = call.entered->call(call.entered->entry, call.arguments);
  check_pipeline(call, before, false);
  received::expect_parts({});
  check_app(call, true);
  EXPECT_EQ(result, ops::result_of(*call.entered, app_result));
}

void check(const ops::row& row) {
  SCOPED_TRACE(row.name);
  if (row.threaded == ops::family::none) return check_nothing(row);
  if (ops::shape_of(row.op).what == ops::reads::elsewhere) return;
  // There its strings depend on what the shader is, which sources_test looks at.
  const bool is_source = row.op == glShaderSource_op::op || row.base == glShaderSource_op::op;
  if (threaded_every_op_test::GetParam().extended && is_source) return;
  __osw_thread_state* state = __osw_fetch_thread_state();
  state->glrc->client_state = {};
  free_array_objects(&state->glrc->arrays);
  free_client_attribs(&state->glrc->client_attribs);
  const bool option_on = OSW_DW_UseAppThreadToQueryState != 0;
  threaded::prepared_call call = threaded::prepare(row);
  if (call.is_for_app_alone) return check_app_alone(call);
  const bool reaches_parts = call.reaches_parts_always || !option_on;
  received::clear();
  received::forget_readers();
  if (!call.payloads.empty()) received::read(call.travels->op, reader_of(call));
  const pipeline_facts before = look_at_pipeline(call);
  const u64 result = row.call(row.entry, call.arguments);
  check_pipeline(call, before, reaches_parts);
  if (!call.travels->sync) {
    for (std::vector<u8>& block : call.memory) std::ranges::fill(block, 0xEE);
  }
  received::wait_for_parts();
  check_app(call, option_on);
  check_parts(call, before, reaches_parts);
  EXPECT_EQ(result, row.result_size ? ops::result_of(row, option_on ? app_result : part_result) : 0);
}

TEST_P(threaded_every_op_test, each_part_receives_the_call_once) {
  received::answer_app(app_result);
  received::answer_parts(part_result);
  for (const ops::row& row : ops::all()) {
    // Other names than the program's would be mended.
    const bool has_same_names = ops::makes_names(row) && OSW_DW_UseAppThreadToQueryState;
    if (has_same_names) received::answer_parts(app_result);
    check(row);
    if (has_same_names) received::answer_parts(part_result);
  }
}

INSTANTIATE_TEST_SUITE_P(parts, threaded_every_op_test,
                         testing::Values(way{1, true}, way{2, true}, way{4, true}, way{16, true}, way{1, false},
                                         way{2, false}, way{4, false}, way{16, false}, way{1, true, true},
                                         way{2, true, true}, way{4, true, true}, way{16, true, true},
                                         way{2, false, true}, way{4, false, true}),
                         [](const auto& instance) {
                           return std::to_string(instance.param.parts) +
                                  (instance.param.on_app_thread ? "_on" : "_off") +
                                  (instance.param.extended ? "_extended" : "");
                         });

}  // namespace
