// Entry points: each continues at the slot of its op in whichever table the thread has.
#include <gtest/gtest.h>

#include <cstring>

#include "dispatch/thread_state.h"
#include "support/library.h"
#include "support/op_rows.h"
#include "support/wgl_samples.h"

namespace {

struct entry_test : library::process_test {};

driver::call seen;
int times_seen = 0;
constexpr u64 slot_result = 0x91827364F5E4D3C2;

// A slot that notes what reached it and gives back a result of its own.
template <class Op, class Type>
struct probe;
template <class Op, class Result, class... Parameters>
struct probe<Op, Result(Parameters...)> {
  static Result slot(Parameters... parameters) {
    seen = {};
    seen.space = driver::space_of<Op>;
    seen.op = Op::op;
    seen.argument_count = sizeof...(Parameters);
    seen.arguments = {driver::bits_of(parameters)...};
    ++times_seen;
    if constexpr (!std::is_void_v<Result>) {
      Result result;
      std::memcpy(&result, &slot_result, sizeof result);
      return result;
    }
  }
};

constexpr auto probe_of = []<class Op>() { return as_proc<Op>(probe<Op, typename Op::type>::slot); };
const auto gl_probes = gl_all_list::column<__osw_proc>(probe_of);
const auto wgl_probes = wgl_op_list::column<__osw_proc>(probe_of);

TEST_F(entry_test, every_gl_entry_reaches_its_slot_with_its_arguments) {
  library::start();
  osw_glDebugEntry();
  __osw_thread_state* state = __osw_fetch_thread_state();
  const __osw_proc* const table = state->gl_table;
  state->gl_table = gl_probes.of;
  for (const ops::row& row : ops::every()) {
    times_seen = 0;
    const driver::argument_bits arguments = ops::distinctive(row);
    const u64 result = row.call(row.entry, arguments);
    EXPECT_EQ(times_seen, 1) << row.name;
    EXPECT_EQ(seen, ops::noted(row, arguments));
    EXPECT_EQ(result, ops::result_of(row, slot_result)) << row.name;
  }
  state->gl_table = table;
}

TEST_F(entry_test, every_wgl_entry_reaches_its_slot_with_its_arguments) {
  library::start();
  osw_glDebugEntry();
  __osw_thread_state* state = __osw_fetch_thread_state();
  const __osw_proc* const table = state->wgl_table;
  state->wgl_table = wgl_probes.of;
  for (const wgl_sample& sample : wgl_samples()) {
    times_seen = 0;
    const u64 result = sample.call();
    EXPECT_EQ(times_seen, 1) << sample.name;
    EXPECT_EQ(seen, sample.noted) << sample.name;
    EXPECT_EQ(result, slot_result & sample.result_mask) << sample.name;
  }
  state->wgl_table = table;
}

TEST_F(entry_test, the_lists_of_entries_hold_the_entries_in_op_order) {
  const auto exported = []<class Op>() { return as_proc<Op>(library::exported<Op>); };
  const auto gl = gl_all_list::column<__osw_proc>(exported);
  const auto wgl = wgl_op_list::column<__osw_proc>(exported);
  for (int op = 0; op < gl_all_count; ++op) EXPECT_EQ(__osw_gl_entries[op], gl.of[op]) << __osw_gl_names[op];
  for (int op = 0; op < wgl_op_count; ++op) EXPECT_EQ(__osw_wgl_entries[op], wgl.of[op]) << __osw_wgl_names[op];
}

TEST_F(entry_test, the_metafile_exports_have_no_effect) {
  library::start();
  for (const bool with_context : {false, true}) {
    if (with_context) library::start_rendering();
    driver::clear_calls();
    platform::clear_debug_output();
    osw_Glmf();
    EXPECT_TRUE(driver::calls().empty());
    EXPECT_TRUE(platform::debug_output().empty());
  }
}

TEST_F(entry_test, metafile_exports_need_no_thread_state) {
  library::start();
  osw_Glmf();
  EXPECT_EQ(TlsGetValue(__osw_state_slot), nullptr);
}

}  // namespace
