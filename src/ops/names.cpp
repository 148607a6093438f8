#include "ops/names.h"

#include <cstring>

namespace {

constexpr auto name_of = []<class Op>() { return Op::name; };
constexpr auto wgl_names = wgl_op_list::column<const char*>(name_of);
constexpr auto gl_names = gl_all_list::column<const char*>(name_of);

int find(const char* name, const char* const* names, int count) {
  for (int op = 0; op < count; ++op) {
    if (strcmp(name, names[op]) == 0) return op;
  }
  return -1;
}

}  // namespace

const char* const (&__osw_wgl_names)[wgl_op_count] = wgl_names.of;
const char* const (&__osw_gl_names)[gl_all_count] = gl_names.of;

int find_wgl_op(const char* name) {
  return find(name, __osw_wgl_names, wgl_op_count);
}

int find_gl_op(const char* name, int count) {
  return find(name, __osw_gl_names, count);
}

__osw_proc known_entry(PROC answer) {
  const auto value = reinterpret_cast<intptr_t>(answer);
  return value >= -1 && value <= 3 ? nullptr : reinterpret_cast<__osw_proc>(answer);
}
