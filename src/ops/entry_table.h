// The entry points in op order, as constants of the file and not filled in while the library loads.
#pragma once

#include "ops/ops.h"

// The entry point of an op. Made where the entry points are.
template <class Op>
constexpr typename Op::type* entry_point = nullptr;

template <class List>
struct entry_table;

template <class Before, class... Ops>
struct entry_table<op_list<Before, Ops...>> {
  static const __osw_proc entries[];
};

template <class Before, class... Ops>
const __osw_proc entry_table<op_list<Before, Ops...>>::entries[] = {reinterpret_cast<__osw_proc>(entry_point<Ops>)...};
