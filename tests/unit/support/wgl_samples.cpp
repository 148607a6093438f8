#include "support/wgl_samples.h"

#include <cstring>

namespace {

// For integers all bits of the width are used, and pointers lead nowhere.
template <class Value>
Value argument(std::size_t index) {
  if constexpr (std::is_floating_point_v<Value>) {
    return static_cast<Value>(index) + static_cast<Value>(1.25);
  } else if constexpr (std::is_pointer_v<Value>) {
    return reinterpret_cast<Value>(0x7A00000000000000 + 0x1001 * (index + 1));
  } else {
    return static_cast<Value>(0x8C95A3B1C7D9E5F3 * (index + 1));
  }
}

template <class Op, class Type>
struct sample_of;
template <class Op, class Result, class... Parameters>
struct sample_of<Op, Result(Parameters...)> {
  template <std::size_t... at>
  static u64 call_at(std::index_sequence<at...>) {
    auto* entry = reinterpret_cast<typename Op::type*>(__osw_wgl_entries[Op::op]);
    if constexpr (std::is_void_v<Result>) {
      entry(argument<Parameters>(at)...);
      return 0;
    } else {
      return driver::bits_of(entry(argument<Parameters>(at)...));
    }
  }
  using indices = std::index_sequence_for<Parameters...>;
  static u64 call() { return call_at(indices()); }
  template <std::size_t... at>
  static driver::call noted(std::index_sequence<at...>) {
    driver::call call;
    call.space = driver::op_space::wgl;
    call.op = Op::op;
    call.argument_count = sizeof...(Parameters);
    call.arguments = {driver::bits_of(argument<Parameters>(at))...};
    return call;
  }
  static constexpr u64 result_mask() {
    if constexpr (std::is_void_v<Result>) {
      return 0;
    } else {
      return ~u64{0} >> (64 - 8 * sizeof(Result));
    }
  }
};

// By the list's word for the row of the pass-through table; of a word that names another row, that row's.
template <class Op, class Word>
constexpr int target_of = Op::op;
template <class Op>
constexpr int target_of<Op, wgl_zero> = -1;
template <class Op, class Target>
constexpr int target_of<Op, wgl_to<Target>> = Target::op;

// The same for the table of an active process.
template <class Op, class Word>
constexpr int active_target_of = target_of<Op, Word>;
template <class Op>
constexpr int active_target_of<Op, wgl_own> = -2;
template <class Op, class Target>
constexpr int active_target_of<Op, wgl_row<Target>> = active_target_of<Target, typename Target::main>;

template <class Op>
wgl_sample make() {
  using made = sample_of<Op, typename Op::type>;
  return {Op::name,
          Op::op,
          target_of<Op, typename Op::bypassed>,
          active_target_of<Op, typename Op::main>,
          std::is_same_v<typename Op::main, wgl_warn>,
          made::call,
          made::noted(typename made::indices()),
          made::result_mask()};
}

}  // namespace

const std::array<wgl_sample, wgl_op_count>& wgl_samples() {
  static const auto samples = [] {
    std::array<wgl_sample, wgl_op_count> made;
    for_each_wgl_op([&]<class Op>() { made[Op::op] = make<Op>(); });
    return made;
  }();
  return samples;
}
