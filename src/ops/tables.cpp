#include "ops/tables.h"

int gl_ops_in_use = gl_op_count;

__osw_proc __osw_sys_wgl[wgl_op_count];
__osw_proc __osw_sys_gl[gl_all_count];

__osw_proc __osw_wgl_table_main[wgl_op_count];
__osw_proc __osw_wgl_table_pass[wgl_op_count];
__osw_proc __osw_gl_table_nocontext[gl_all_count];
__osw_proc __osw_gl_table_seq[gl_all_count];
__osw_proc __osw_gl_table_mt[gl_all_count];
__osw_proc __osw_gl_table_pass[gl_all_count];

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
static_assert(in_order(gl_all_list::column<int>(number_of)));

// Whether a row's payload and its word for the threaded path fit each other. An encoder of its own may use a payload,
// and what makes names has one when it does not return the name.
template <class Op>
constexpr bool payload_is_used() {
  constexpr bool has_payload = requires {
    &Op::payload;
  };
  constexpr threaded_word threaded = Op::threaded::value;
  if (threaded == threaded_word::copied) return has_payload;
  constexpr bool has_result = !std::is_void_v<typename prototype<typename Op::type>::result>;
  if (threaded == threaded_word::create) return has_payload != has_result;
  return threaded == threaded_word::own || !has_payload;
}

// A changed op that copies nothing any more still has its op's.
template <class Op>
constexpr bool payload_is_there() {
  if constexpr (Op::threaded::value == threaded_word::copied || Op::threaded::value == threaded_word::create) {
    return payload_is_used<Op>();
  }
  return true;
}

constexpr bool payloads_are_used() {
  bool all = true;
  for_each_gl_op([&]<class Op>() { all = all && payload_is_used<Op>(); });
  for_each_wide_op([&]<class Op>() { all = all && payload_is_used<Op>(); });
  for_each_changed_op([&]<class Op>() { all = all && payload_is_there<Op>(); });
  return all;
}

static_assert(payloads_are_used());

// An op has all of its handlers or none.
constexpr bool handlers_are_whole() {
  bool all = true;
  const auto look = [&]<class Op>() {
    all = all && has_handlers<Op> == (Op::sequential::value != sequential_word::none) &&
          makes_commands<Op> == (Op::replaying::value != replay_word::none);
  };
  for_each_gl_op(look);
  for_each_wide_op(look);
  for_each_changed_op(look);
  return all;
}

static_assert(handlers_are_whole());

}  // namespace
