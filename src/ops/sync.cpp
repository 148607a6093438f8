#include "ops/tables.h"

u32 __osw_wgl_sync_flags[wgl_op_count];
u32 __osw_gl_sync_flags[gl_all_count];
const char* __osw_wgl_op_names[wgl_op_count];
const char* __osw_gl_op_names[gl_all_count];
u32 __osw_wgl_sync_filled;
u32 __osw_gl_sync_filled;

namespace {

// As the statistics name an op: the parts are put together at compile time.
template <class Op>
struct label_of {
  static constexpr int size = [] {
    int length = 0;
    while (Op::name[length]) ++length;
    return static_cast<int>(sizeof "__osw_" - 1 + sizeof "_op") + length;
  }();
  static constexpr op_column<char, size> text = [] {
    op_column<char, size> built{};
    int end = 0;
    for (const char* part : {"__osw_", Op::name, "_op"}) {
      for (; *part; ++part) built.of[end++] = *part;
    }
    return built;
  }();
};

// Flag and label go together: only an op that can make the issuing thread wait is ever counted and printed.
template <class Op>
void mark(u32* flags, const char** labels) {
  constexpr bool waits = Op::sync == op_sync::sync;
  flags[Op::op] = waits;
  labels[Op::op] = nullptr;
  if constexpr (waits) labels[Op::op] = label_of<Op>::text.of;
}

}  // namespace

void __osw_fill_wgl_sync() {
  for_each_wgl_op([]<class Op>() { mark<Op>(__osw_wgl_sync_flags, __osw_wgl_op_names); });
  __osw_wgl_sync_filled = 1;
}

void __osw_fill_gl_sync() {
  for_each_gl_form_in_use([]<class Op>() { mark<Op>(__osw_gl_sync_flags, __osw_gl_op_names); });
  __osw_gl_sync_filled = 1;
}
