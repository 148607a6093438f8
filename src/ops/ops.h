// One tag type per op, made from the op lists. Templates over ops take the tag: it carries the op's number, prototype,
// name, sync flag and base op as constants, so that nothing about an op is looked up at run time.
#pragma once

#include "ops/relaxed.h"
#include "ops/types.h"

constexpr int wgl_op_count = 63;
constexpr int gl_op_count = 1102;

// An entry point whose signature the op number stands for. 64-bit Windows has a single calling convention, so none is
// written anywhere.
using __osw_proc = void (*)();

struct none_op;    // base of an op that is no alias
struct driver_op;  // base of the driver's two private ops

enum class op_sync : bool { async = false, sync = true };

// The words of gl_ops.inc's column `threaded`, as types.
enum class parameter_set { light, light_model, material, tex_gen, tex_env, tex, fog, point };
struct family_plain;
struct family_query;
struct family_names;
struct family_image;
struct family_compressed;
struct family_alias;
struct family_own;
template <int elements>
struct vector_family;
template <parameter_set set>
struct parameters_family;
template <int components>
struct uniform_family;

// The words of wgl_ops.inc's columns `main` and `pass`, as types.
struct wgl_forward;
struct wgl_warn;
struct wgl_zero;
struct wgl_own;
template <class Target>
struct wgl_to_entry;
template <class Target>
struct wgl_row_of;

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) struct function##_op;
#include "ops/gl_ops.inc"
#undef GL_OP

#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  struct function##_op;
#include "ops/wgl_ops.inc"
#undef WGL_OP

#define family_vector(elements)    vector_family<elements>
#define family_parameters(set)     parameters_family<parameter_set::set>
#define family_uniform(components) uniform_family<components>
#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  struct function##_op {                                                                    \
    static constexpr int op = number;                                                       \
    static constexpr const char* name = #function;                                          \
    static constexpr op_sync sync = op_sync::sync_mode;                                     \
    using type = result parameters;                                                         \
    using threaded = family_##family;                                                       \
    using base = alias_of##_op;                                                             \
  };
#include "ops/gl_ops.inc"
#undef GL_OP
#undef family_vector
#undef family_parameters
#undef family_uniform

#define wgl_to(target)  wgl_to_entry<target##_op>
#define wgl_row(target) wgl_row_of<target##_op>
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  struct function##_op {                                                                               \
    static constexpr int op = number;                                                                  \
    static constexpr const char* name = #function;                                                     \
    static constexpr op_sync sync = op_sync::sync_mode;                                                \
    using type = result parameters;                                                                    \
    using main = wgl_##main_handler;                                                                   \
    using pass = wgl_##pass_handler;                                                                   \
  };
#include "ops/wgl_ops.inc"
#undef WGL_OP
#undef wgl_to
#undef wgl_row

// The entry of an op in a table of its space, as a function of the op's own type. A relaxed load: the system's wgl
// table may be refilled by another thread's binding.
template <class Op>
inline typename Op::type* entry_in(const __osw_proc* table) {
  return reinterpret_cast<typename Op::type*>(relaxed_load(table[Op::op]));
}

// A function of an op's type, as a table holds it.
template <class Op>
inline __osw_proc as_proc(typename Op::type* function) {
  return reinterpret_cast<__osw_proc>(function);
}
