// What the driver does with the ops of own_ops.inc.
#pragma once

#include "ops/ops.h"

// The driver's own form of an op, as own_call<Op>::call with the op's prototype. A row without a definition does not
// link; a definition without a row, of a misspelt op or of another prototype does not compile.
template <class Op>
struct own_call;

template <class Op>
concept has_own_call = requires {
  &own_call<Op>::call;
};

// How a wgl call is passed on; see own_ops.inc.
template <class Op>
constexpr bool asks_current_context = false;
template <class Op>
constexpr bool asks_for_font = false;

// Whether the driver takes the call when the host has refused the binding.
template <class Op>
constexpr bool is_noted = false;

#define OWN_GL(function)             \
  template <>                        \
  struct own_call<function##_op> {   \
    static function##_op::type call; \
  };
#define OWN_WGL OWN_GL
#define NOTED_GL(function) \
  OWN_GL(function)         \
  template <>              \
  constexpr bool is_noted<function##_op> = true;
#define FROM_CONTEXT(function) \
  template <>                  \
  constexpr bool asks_current_context<function##_op> = true;
#define FROM_FONT(function) \
  FROM_CONTEXT(function)    \
  template <>               \
  constexpr bool asks_for_font<function##_op> = true;
#include "own_ops.inc"
#undef OWN_GL
#undef OWN_WGL
#undef NOTED_GL
#undef FROM_CONTEXT
#undef FROM_FONT
