// What the recording driver does for calls that make and delete names of objects.
#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string_view>

#include "support/driver_notes.h"

namespace driver {

namespace {

// What an op does with names: those of the array of its last parameter, as many as the one before it says, or one.
enum class doing { nothing, makes_an_array, returns_one, deletes_an_array, deletes_one };

template <class Array, class Result, class... Parameters>
constexpr bool ends_in(Result (*)(Parameters...)) {
  constexpr bool are_arrays[] = {false, std::is_same_v<Parameters, Array>...};
  return are_arrays[sizeof...(Parameters)];
}

constexpr auto doing_of = []<class Op>() {
  constexpr auto* type = static_cast<typename Op::type*>(nullptr);
  const std::string_view name = Op::name;
  const bool makes = (name.starts_with("glGen") && !name.starts_with("glGenerate")) || name.starts_with("glCreate");
  if (makes) return ends_in<GLuint*>(type) ? doing::makes_an_array : doing::returns_one;
  if (!name.starts_with("glDelete")) return doing::nothing;
  if (ends_in<const GLuint*>(type)) return doing::deletes_an_array;
  return std::is_same_v<typename Op::type, void(GLuint)> ? doing::deletes_one : doing::nothing;
};
constexpr auto doings = gl_all_list::column<doing>(doing_of);

std::atomic<bool> is_on;
std::mutex names_lock;

GLuint make_name(context_record* context) {
  GLuint& name = context->last_name;
  do ++name;
  while (!context->names.insert(name).second);
  return name;
}

void free_name(context_record* context, GLuint name) {
  if (context->names.erase(name) == 0 || name < context->below_names) return;
  context->last_name = std::min(context->last_name, name - 1);
}

}  // namespace

void hand_out_names() {
  is_on.store(true);
}

void skip_names(HGLRC context, u32 count) {
  const std::lock_guard held(names_lock);
  context_record& record = record_of(number_of_context(context));
  const GLuint last = record.names.empty() ? 0 : *record.names.rbegin();
  record.last_name = record.below_names = last + count;
}

void take_names(HGLRC context, const std::vector<GLuint>& names) {
  const std::lock_guard held(names_lock);
  record_of(number_of_context(context)).names.insert(names.begin(), names.end());
}

void free_names(HGLRC context, const std::vector<GLuint>& names) {
  const std::lock_guard held(names_lock);
  for (const GLuint name : names) free_name(&record_of(number_of_context(context)), name);
}

std::vector<GLuint> taken_names(HGLRC context) {
  const std::lock_guard held(names_lock);
  const std::set<GLuint>& names = record_of(number_of_context(context)).names;
  return {names.begin(), names.end()};
}

void perform_on_names(context_record* context, int op, const u64* arguments, u32 count, u64* result) {
  const doing what = doings.of[op];
  if (what == doing::nothing || !is_on.load(std::memory_order_relaxed)) return;
  const std::lock_guard held(names_lock);
  if (what == doing::returns_one) *result = make_name(context);
  if (what == doing::deletes_one) free_name(context, static_cast<GLuint>(arguments[0]));
  if (what == doing::returns_one || what == doing::deletes_one) return;
  auto* names = reinterpret_cast<GLuint*>(arguments[count - 1]);
  const auto wanted = static_cast<GLsizei>(arguments[count - 2]);
  for (GLsizei i = 0; names && i < wanted; ++i) {
    if (what == doing::makes_an_array) {
      names[i] = make_name(context);
    } else {
      free_name(context, names[i]);
    }
  }
}

void reset_names() {
  is_on.store(false);
}

}  // namespace driver
