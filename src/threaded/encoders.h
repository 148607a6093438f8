// The encoder of each op, by the op list's word for its family. Encoders that enter another one, as an application's
// call would, find it here.
#pragma once

#include "dispatch/alias.h"
#include "threaded/encode_blob.h"

// The encoder of an op whose row says `own`: the specialisation for its tag, found by the function's name in this
// folder.
template <class Op, class Result, class... Parameters>
Result encode(Parameters... arguments);

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  template <>                                                                               \
  result encode<function##_op> parameters;
#include "ops/gl_ops.inc"
#undef GL_OP

template <class Op, class Family>
struct encoder_of;

// The function in `__osw_gl_table_mt`.
template <class Op>
inline typename Op::type* encoder() {
  return encoder_of<Op, typename Op::threaded>::get();
}

// Hands the call on to the base op's encoder, whose op travels in the place of the alias's own.
template <class Op, class Result, class... Parameters>
Result encode_alias(Parameters... arguments) {
  if constexpr (std::is_void_v<Result>) {
    call_as_base(encoder<typename Op::base>(), arguments...);
  } else {
    return alias_argument<Result>(call_as_base(encoder<typename Op::base>(), arguments...));
  }
}

template <class Op>
struct encoder_of<Op, family_plain> {
  static typename Op::type* get() { return encode_plain<Op>; }
};

template <class Op>
struct encoder_of<Op, family_query> {
  static typename Op::type* get() { return encode_query<Op>; }
};

template <class Op, int elements>
struct encoder_of<Op, vector_family<elements>> {
  static typename Op::type* get() { return encode_vector<Op, elements>; }
};

template <class Op, parameter_set set>
struct encoder_of<Op, parameters_family<set>> {
  static typename Op::type* get() { return encode_parameters<Op, set>; }
};

template <class Op>
struct encoder_of<Op, family_names> {
  static typename Op::type* get() { return encode_names<Op>; }
};

template <class Op, int components>
struct encoder_of<Op, uniform_family<components>> {
  static typename Op::type* get() { return encode_uniform<Op, components>; }
};

template <class Op>
struct encoder_of<Op, family_image> {
  static typename Op::type* get() { return encode_image<Op>; }
};

template <class Op>
struct encoder_of<Op, family_compressed> {
  static typename Op::type* get() { return encode_compressed<Op>; }
};

template <class Op>
struct encoder_of<Op, family_alias> {
  static typename Op::type* get() { return encode_alias<Op>; }
};

template <class Op>
struct encoder_of<Op, family_own> {
  static typename Op::type* get() { return encode<Op>; }
};
