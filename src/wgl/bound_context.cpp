// The handlers of ops that act on the thread's bound context: render to texture, and the swap interval. Threaded they
// travel in the list with the GL commands around them; on the sequential path they are repeated on every part here.
#include "dispatch/report.h"
#include "pipeline/push.h"
#include "pipeline/threads.h"
#include "sequential/parts/switch.h"
#include "wgl/main_table.h"
#include "wgl/records/pbuffer.h"

namespace {

// The pbuffer's record, or null after a report.
const __osw_pbuffer* find_record(HPBUFFERARB hpbuffer, const char* function) {
  const __osw_pbuffer* pbuffer = hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  if (!pbuffer) __osw_report(severity_warning, "%s of a pbuffer without child pbuffers reaches no part.\n", function);
  return pbuffer;
}

// Calls the system's entry on each part's own pbuffer. Result: the results ANDed, and 0 for a pbuffer without a record.
template <class Op, class Argument>
BOOL repeat_on_pbuffers(__osw_thread_state* state, HPBUFFERARB hpbuffer, Argument argument) {
  const __osw_pbuffer* pbuffer = find_record(hpbuffer, Op::name);
  if (!pbuffer) return 0;
  BOOL result = 1;
  __osw_for_each_part(state,
                      [&](i32 part) { result &= sys_wgl<Op>(state)(pbuffer->parts[part].child_hpbuffer, argument); });
  return result;
}

template <class Op, int count>
void push(__osw_thread_state* state, const u64 (&slots)[count]) {
  __osw_push_wgl_cmd(state, Op::op, count, slots, 0);
}

// The application's own pbuffer never gets the texture binding.
template <class Op>
BOOL bind_or_release_tex_image(HPBUFFERARB hpbuffer, int buffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (state->seq_path) return repeat_on_pbuffers<Op>(state, hpbuffer, buffer) & 1;
  if (!__osw_has_pipeline(state)) return 0;
  find_record(hpbuffer, Op::name);
  push<Op>(state, {to_slot(hpbuffer), to_slot(buffer)});
  return 1;
}

BOOL __osw_seq_swap_interval(__osw_thread_state* state, int interval) {
  BOOL result = 1;
  __osw_for_each_part(state, [&](i32) { result &= sys_wgl<wglSwapIntervalEXT_op>(state)(interval); });
  return result;
}

}  // namespace

template <>
BOOL wgl_main<wglBindTexImageARB_op>(HPBUFFERARB hpbuffer, int buffer) {
  return bind_or_release_tex_image<wglBindTexImageARB_op>(hpbuffer, buffer);
}

template <>
BOOL wgl_main<wglReleaseTexImageARB_op>(HPBUFFERARB hpbuffer, int buffer) {
  return bind_or_release_tex_image<wglReleaseTexImageARB_op>(hpbuffer, buffer);
}

template <>
BOOL wgl_main<wglSetPbufferAttribARB_op>(HPBUFFERARB hpbuffer, const int* attributes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglSetPbufferAttribARB_op>(state)(hpbuffer, attributes);
  if (!result) return result;
  if (state->seq_path) return result & repeat_on_pbuffers<wglSetPbufferAttribARB_op>(state, hpbuffer, attributes);
  if (!__osw_has_pipeline(state)) return result;
  find_record(hpbuffer, wglSetPbufferAttribARB_op::name);
  push<wglSetPbufferAttribARB_op>(state, {to_slot(hpbuffer), to_slot(attributes)});
  return result;
}

template <>
BOOL wgl_main<wglSwapIntervalEXT_op>(int interval) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglSwapIntervalEXT_op>(state)(interval);
  if (state->seq_path) return result & __osw_seq_swap_interval(state, interval);
  if (__osw_has_pipeline(state)) push<wglSwapIntervalEXT_op>(state, {to_slot(interval)});
  return result;
}
