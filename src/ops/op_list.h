// A list of types, one a row, and what is made of it for each of them.
#pragma once

// Stands in front of the first row, where the rows' commas begin.
struct before_first_op;

// One value per op, in op order.
template <class Value, int count>
struct op_column {
  Value of[count];
};

template <class Before, class... Ops>
struct op_list {
  static constexpr int count = sizeof...(Ops);

  // Calls `work.operator()<Op>()` for each op in order. An array and no fold, because some compilers nest few folds.
  template <class Work>
  static constexpr void for_each(Work work) {
    const char done[] = {(work.template operator()<Ops>(), char{})...};
    (void)done;
  }

  // The column of what `value.operator()<Op>()` gives.
  template <class Value, class Work>
  static constexpr op_column<Value, count> column(Work value) {
    return {{value.template operator()<Ops>()...}};
  }
};

// The rows of two lists, those of the second behind those of the first.
template <class First, class Second>
struct join_op_lists;
template <class Before, class... Firsts, class OtherBefore, class... Seconds>
struct join_op_lists<op_list<Before, Firsts...>, op_list<OtherBefore, Seconds...>> {
  using joined = op_list<Before, Firsts..., Seconds...>;
};
template <class First, class Second>
using joined_op_list = typename join_op_lists<First, Second>::joined;
