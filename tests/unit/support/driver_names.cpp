// What the recording driver does for calls that make names of objects.
#include <array>
#include <atomic>
#include <string_view>

#include "support/driver_notes.h"

namespace driver {

namespace {

// How an op makes names: into the array of its last parameter, as many as the one before it says, or one as its result.
enum class making { nothing, an_array, a_result };

template <class Result, class... Parameters>
constexpr bool ends_in_array(Result (*)(Parameters...)) {
  constexpr bool are_arrays[] = {false, std::is_same_v<Parameters, GLuint*>...};
  return are_arrays[sizeof...(Parameters)];
}

constexpr auto making_of = []<class Op>() {
  const std::string_view name = Op::name;
  const bool makes = (name.starts_with("glGen") && !name.starts_with("glGenerate")) || name.starts_with("glCreate");
  if (!makes) return making::nothing;
  return ends_in_array(static_cast<typename Op::type*>(nullptr)) ? making::an_array : making::a_result;
};
constexpr auto makings = gl_all_list::column<making>(making_of);

std::atomic<bool> is_on;

}  // namespace

void hand_out_names() {
  is_on.store(true);
}

void skip_names(HGLRC context, u32 count) {
  record_of(number_of_context(context)).names += count;
}

bool make_names(context_record* context, int op, const u64* arguments, u32 count, u64* result) {
  const making how = makings.of[op];
  if (how == making::nothing || !is_on.load(std::memory_order_relaxed)) return false;
  if (how == making::a_result) {
    *result = ++context->names;
    return true;
  }
  auto* names = reinterpret_cast<GLuint*>(arguments[count - 1]);
  const auto wanted = static_cast<GLsizei>(arguments[count - 2]);
  for (GLsizei i = 0; names && i < wanted; ++i) names[i] = ++context->names;
  return true;
}

void reset_names() {
  is_on.store(false);
}

}  // namespace driver
