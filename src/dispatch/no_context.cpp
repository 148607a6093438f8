#include "dispatch/no_context.h"

#include <type_traits>

#include "ops/tables.h"

void __osw_void_stub() {}

GLboolean __osw_false_stub() {
  return 0;
}

u64 __osw_zero_stub() {
  return 0;
}

namespace {

// Arguments are left to the caller in this platform's calling convention, so one stub serves every prototype with the
// same kind of result.
template <class Result>
__osw_proc stub_for() {
  if constexpr (std::is_void_v<Result>) {
    return __osw_void_stub;
  } else if constexpr (std::is_same_v<Result, GLboolean>) {
    return reinterpret_cast<__osw_proc>(__osw_false_stub);
  } else {
    return reinterpret_cast<__osw_proc>(__osw_zero_stub);
  }
}

}  // namespace

void __osw_fill_gl_table_nocontext() {
  for_each_gl_op(
      []<class Op>() { __osw_gl_table_nocontext[Op::op] = stub_for<typename prototype<typename Op::type>::result>(); });
}
