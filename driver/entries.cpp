// The driver's entries: one function per op. Each is the driver's own form of the call, where there is one, or passes
// it on to the host. The names carry a prefix, because the public headers declare the plain ones as imports.
#include "entries.h"

#include <type_traits>

#include "binding.h"
#include "host.h"
#include "ops/entry_table.h"
#include "own_ops.h"
#include "stand_in.h"

namespace {

template <class Op, class... Arguments>
inline auto call_bound(Arguments... arguments) {
  if constexpr (has_own_call<Op>) {
    return own_call<Op>::call(arguments...);
  } else {
    return host_gl_entry<Op>()(arguments...);
  }
}

// What ends a frame where no buffers are swapped.
template <class Op>
constexpr bool shows_frame = std::is_same_v<Op, glFlush_op> || std::is_same_v<Op, glFinish_op>;

// The first call on a binding that was only noted, or any on one that is refused. Apart from the function below, so
// that the path of every other call is a load, a test and a jump.
template <class Op, class... Arguments>
[[gnu::noinline, gnu::cold]] auto bind_and_call(Arguments... arguments) {
  using result = decltype(call_bound<Op>(arguments...));
  if constexpr (shows_frame<Op>) retry_refused();
  if (!driver_bind_for_call()) return result();
  return call_bound<Op>(arguments...);
}

template <class Op, class... Arguments>
inline auto call_gl(Arguments... arguments) {
  if constexpr (!is_noted<Op>) {
    if (!bound_thread()) [[unlikely]]
      return bind_and_call<Op>(arguments...);
  }
  return call_bound<Op>(arguments...);
}

template <class Op, class Value>
inline Value host_value(Value value) {
  if constexpr (std::is_same_v<Value, HDC> && !asks_for_font<Op>) {
    return host_hdc(value);
  } else {
    return value;
  }
}

// The thread's binding is made real first where the host looks at it. The depth is watched because the host may come
// back here through gdi32.
template <class Op, class... Arguments>
inline auto pass_wgl(Arguments... arguments) {
  using result = decltype(host_wgl_entry<Op>()(arguments...));
  thread_state* thread = this_thread();
  if (!thread || thread->depth >= deepest_call) return result();
  if constexpr (asks_current_context<Op>) {
    if (!driver_bind_for_call()) return result();
  }
  ++thread->depth;
  if constexpr (std::is_void_v<result>) {
    host_wgl_entry<Op>()(host_value<Op>(arguments)...);
    --thread->depth;
  } else {
    const result value = host_wgl_entry<Op>()(host_value<Op>(arguments)...);
    --thread->depth;
    return value;
  }
}

template <class Op, class... Arguments>
inline auto call_wgl(Arguments... arguments) {
  if constexpr (has_own_call<Op>) {
    return own_call<Op>::call(arguments...);
  } else {
    return pass_wgl<Op>(arguments...);
  }
}

}  // namespace

#define GL_OP(number, function, sync, threaded, sequential, replay, alias, payload, result, parameters, arguments) \
  extern "C" result driver_##function parameters {                                                                 \
    return call_gl<function##_op> arguments;                                                                       \
  }                                                                                                                \
  template <>                                                                                                      \
  constexpr function##_op::type* entry_point<function##_op> = driver_##function;
#include "ops/gl_ops.inc"
#undef GL_OP

#define WGL_OP(number, function, sync, main, pass, replay, result, parameters, arguments) \
  extern "C" result driver_##function parameters {                                        \
    return call_wgl<function##_op> arguments;                                             \
  }                                                                                       \
  template <>                                                                             \
  constexpr function##_op::type* entry_point<function##_op> = driver_##function;
#include "ops/wgl_ops.inc"
#undef WGL_OP

const __osw_proc (&driver_gl_entries)[gl_op_count] = entry_table<gl_op_list>::entries;
const __osw_proc (&driver_wgl_entries)[wgl_op_count] = entry_table<wgl_op_list>::entries;
