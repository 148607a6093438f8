// What a thread without a current context calls: stubs that do nothing.
#pragma once

#include <type_traits>

#include "ops/ops.h"

// Returns at once and sets no result. Also the six Glmf exports, and the driver's private ops where they have no
// handler.
void __osw_void_stub();

// Returns false, as a GLboolean.
GLboolean __osw_false_stub();

// Returns 0, good for any integer and for a null pointer.
u64 __osw_zero_stub();

// The one of them that an op's result asks for. Arguments are left to the caller in this platform's calling convention,
// so one stub serves every prototype with the same kind of result.
template <class Op>
inline __osw_proc stub_of() {
  using result = typename prototype<typename Op::type>::result;
  if constexpr (std::is_void_v<result>) {
    return __osw_void_stub;
  } else if constexpr (std::is_same_v<result, GLboolean>) {
    return reinterpret_cast<__osw_proc>(__osw_false_stub);
  } else {
    return reinterpret_cast<__osw_proc>(__osw_zero_stub);
  }
}

// Fills `__osw_gl_table_nocontext`. Process attach only.
void __osw_fill_gl_table_nocontext();
