#include "ops/tables.h"

__osw_proc __osw_sys_wgl[wgl_op_count];
__osw_proc __osw_sys_gl[gl_op_count];

__osw_proc __osw_wgl_table_main[wgl_op_count];
__osw_proc __osw_wgl_table_pass[wgl_op_count];
__osw_proc __osw_gl_table_nocontext[gl_op_count];
__osw_proc __osw_gl_table_seq[gl_op_count];
__osw_proc __osw_gl_table_mt[gl_op_count];
__osw_proc __osw_gl_table_pass[gl_op_count];

namespace {

constexpr auto number_of = []<class Op>() { return Op::op; };

// A row that is missing, doubled or out of place would shift every table behind it.
template <int count>
constexpr bool in_order(const op_column<int, count>& numbers) {
  for (int i = 0; i < count; ++i) {
    if (numbers.of[i] != i) return false;
  }
  return true;
}

static_assert(in_order(wgl_op_list::column<int>(number_of)));
static_assert(in_order(gl_op_list::column<int>(number_of)));

// Whether a row's payload and its word for the threaded path fit each other. An encoder of its own may use a payload.
template <class Op>
constexpr bool payload_is_used() {
  constexpr bool has_payload = requires {
    &Op::payload;
  };
  constexpr threaded_word threaded = Op::threaded::value;
  if (threaded == threaded_word::copied) return has_payload;
  return threaded == threaded_word::own || !has_payload;
}

constexpr bool payloads_are_used() {
  bool all = true;
  for_each_gl_op([&]<class Op>() { all = all && payload_is_used<Op>(); });
  return all;
}

static_assert(payloads_are_used());

}  // namespace
