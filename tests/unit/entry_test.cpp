// Entry points: each continues at the slot of its op in whichever table the thread has.
#include <gtest/gtest.h>

#include "dispatch/thread_state.h"
#include "library.h"
#include "sample_calls.h"

namespace {

struct entry_test : library::process_test {};

driver::call seen;
int times_seen = 0;

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
    if constexpr (!std::is_void_v<Result>) return sample::argument<Result>(Op::op);
  }
};

__osw_proc gl_probes[gl_op_count];
__osw_proc wgl_probes[wgl_op_count];

template <class Op>
void check_entry(typename Op::type* entry) {
  times_seen = 0;
  const u64 result = sample::call<Op>(entry);
  EXPECT_EQ(times_seen, 1) << Op::name;
  EXPECT_EQ(seen, sample::expected<Op>());
  using type = typename Op::type;
  if constexpr (sample::of_type<type>::has_result) {
    using result_type = decltype([]<class Result, class... Parameters>(Result (*)(Parameters...)) -> Result {
      return Result{};
    }(static_cast<type*>(nullptr)));
    EXPECT_EQ(result, driver::bits_of(sample::argument<result_type>(Op::op))) << Op::name;
  } else {
    EXPECT_EQ(result, 0u);
  }
}

TEST_F(entry_test, every_gl_entry_reaches_its_slot_with_its_arguments) {
  library::start();
  osw_glDebugEntry();
#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) \
  gl_probes[number] = as_proc<function##_op>(probe<function##_op, function##_op::type>::slot);
#include "ops/gl_ops.inc"
#undef GL_OP
  __osw_thread_state* state = __osw_fetch_thread_state();
  const __osw_proc* const table = state->gl_table;
  state->gl_table = gl_probes;
#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) \
  check_entry<function##_op>(osw_##function);
#include "ops/gl_ops.inc"
#undef GL_OP
  state->gl_table = table;
}

TEST_F(entry_test, every_wgl_entry_reaches_its_slot_with_its_arguments) {
  library::start();
  osw_glDebugEntry();
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  wgl_probes[number] = as_proc<function##_op>(probe<function##_op, function##_op::type>::slot);
#include "ops/wgl_ops.inc"
#undef WGL_OP
  __osw_thread_state* state = __osw_fetch_thread_state();
  const __osw_proc* const table = state->wgl_table;
  state->wgl_table = wgl_probes;
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  check_entry<function##_op>(osw_##function);
#include "ops/wgl_ops.inc"
#undef WGL_OP
  state->wgl_table = table;
}

TEST_F(entry_test, the_lists_of_entries_hold_the_entries_in_op_order) {
#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) \
  EXPECT_EQ(__osw_gl_entries[number], reinterpret_cast<__osw_proc>(osw_##function)) << #function;
#include "ops/gl_ops.inc"
#undef GL_OP
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  EXPECT_EQ(__osw_wgl_entries[number], reinterpret_cast<__osw_proc>(osw_##function)) << #function;
#include "ops/wgl_ops.inc"
#undef WGL_OP
}

TEST_F(entry_test, the_metafile_exports_have_no_effect) {
  library::start();
  for (const bool with_context : {false, true}) {
    if (with_context) library::start_rendering();
    driver::clear_calls();
    platform::clear_debug_output();
    osw_GlmfBeginGlsBlock();
    osw_GlmfCloseMetaFile();
    osw_GlmfEndGlsBlock();
    osw_GlmfEndPlayback();
    osw_GlmfInitPlayback();
    osw_GlmfPlayGlsRecord();
    EXPECT_TRUE(driver::calls().empty());
    EXPECT_TRUE(platform::debug_output().empty());
  }
}

TEST_F(entry_test, metafile_exports_need_no_thread_state) {
  library::start();
  osw_GlmfBeginGlsBlock();
  EXPECT_EQ(TlsGetValue(__osw_state_slot), nullptr);
}

}  // namespace
