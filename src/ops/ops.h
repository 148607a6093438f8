// One tag type per op, made from the op lists. Templates over ops take the tag: it carries the op's number, prototype,
// name, sync flag and base op as constants, so that nothing about an op is looked up at run time.
#pragma once

#include "ops/types.h"

constexpr int wgl_op_count = 63;
constexpr int gl_op_count = 1102;

// An entry point whose signature the op number stands for. 64-bit Windows has a single calling convention, so none is
// written anywhere.
using __osw_proc = void (*)();

struct none_op;    // base of an op that is no alias
struct driver_op;  // base of the driver's two private ops

enum class op_sync : bool { async = false, sync = true };

#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) struct function##_op;
#include "ops/gl_ops.inc"
#undef GL_OP

#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) \
  struct function##_op {                                                                      \
    static constexpr int op = number;                                                         \
    static constexpr const char* name = #function;                                            \
    static constexpr op_sync sync = op_sync::sync_mode;                                       \
    using type = result parameters;                                                           \
    using base = alias_of##_op;                                                               \
  };
#include "ops/gl_ops.inc"
#undef GL_OP

#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main, pass) \
  struct function##_op {                                                               \
    static constexpr int op = number;                                                  \
    static constexpr const char* name = #function;                                     \
    static constexpr op_sync sync = op_sync::sync_mode;                                \
    using type = result parameters;                                                    \
  };
#include "ops/wgl_ops.inc"
#undef WGL_OP

// The entry of an op in a table of its space, as a function of the op's own type.
template <class Op>
inline typename Op::type* entry_in(const __osw_proc* table) {
  return reinterpret_cast<typename Op::type*>(table[Op::op]);
}

// A function of an op's type, as a table holds it.
template <class Op>
inline __osw_proc as_proc(typename Op::type* function) {
  return reinterpret_cast<__osw_proc>(function);
}
