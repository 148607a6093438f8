// The encoder of each op, by the op list's word for it. Encoders that enter another one, as an application's call
// would, find it here. The encoder of an op whose row says `own` is name_op::encode, in this folder.
#pragma once

#include "dispatch/alias.h"
#include "threaded/encode_blob.h"
#include "threaded/encode_names.h"
#include "threaded/encode_pointer.h"

template <class Op>
inline typename Op::type* encoder();

// Hands the call on to the base op's encoder, whose op travels in the place of the alias's own.
template <class Op, class Result, class... Parameters>
Result encode_alias(Parameters... arguments) {
  if constexpr (std::is_void_v<Result>) {
    call_as_base(encoder<typename Op::base>(), arguments...);
  } else {
    return alias_argument<Result>(call_as_base(encoder<typename Op::base>(), arguments...));
  }
}

// The function in `__osw_gl_table_mt`.
template <class Op>
inline typename Op::type* encoder() {
  if constexpr (Op::threaded::value == threaded_word::own) {
    return Op::encode;
  } else if constexpr (Op::threaded::value == threaded_word::query) {
    return encode_query<Op>;
  } else if constexpr (Op::threaded::value == threaded_word::copied) {
    return encode_copied<Op>;
  } else if constexpr (Op::threaded::value == threaded_word::array) {
    return encode_pointer<Op>;
  } else if constexpr (Op::threaded::value == threaded_word::create) {
    return encode_names<Op>;
  } else if constexpr (Op::threaded::value == threaded_word::app_only) {
    return encode_app_only<Op>;
  } else if constexpr (Op::threaded::value == threaded_word::alias) {
    return encode_alias<Op>;
  } else {
    static_assert(Op::threaded::value == threaded_word::plain);
    return encode_plain<Op>;
  }
}
