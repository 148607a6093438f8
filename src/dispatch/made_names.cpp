#include "dispatch/made_names.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"
#include "ops/payload.h"

namespace {

// Any thread.
std::atomic<bool> is_reported;

// Wakes who waits for names that another thread of its part has made too much.
CRITICAL_SECTION names_lock;
CONDITION_VARIABLE names_removed;

// How often a part begins again to look for names that it lacks, and how many milliseconds after the last time if no
// other has given any back.
constexpr int most_rounds = 20;
constexpr DWORD round_length = 5;

bool is_in(const GLuint* sorted, GLsizei count, GLuint name) {
  return std::binary_search(sorted, sorted + count, name);
}

bool are_equal(const GLuint* first, const GLuint* second, GLsizei count) {
  return memcmp(first, second, static_cast<u64>(count) * sizeof *first) == 0;
}

void report_names(const char* function, i32 part) {
  if (is_reported.exchange(true)) return;
  __osw_report(severity_warning, "%s has made other names on part %d than the program got.\n", function, part);
}

void compare_names(const char* function, i32 part, const GLuint* got, const GLuint* made, GLsizei count) {
  if (!are_equal(got, made, count)) report_names(function, part);
}

void wait_for_removal() {
  EnterCriticalSection(&names_lock);
  SleepConditionVariableCS(&names_removed, &names_lock, round_length);
  LeaveCriticalSection(&names_lock);
}

// Brings to the front the names that are not in `sorted`, but for 0, which is none. Result: how many these are.
GLsizei surplus_first(GLuint* names, GLsizei count, const GLuint* sorted, GLsizei sorted_count) {
  GLuint* const end =
      std::partition(names, names + count, [=](GLuint name) { return name && !is_in(sorted, sorted_count, name); });
  return static_cast<GLsizei>(end - names);
}

// Takes what is in `found`, which is sorted, out of `names`. Result: how many are left.
GLsizei take_out(GLuint* names, GLsizei count, const GLuint* found, GLsizei found_count) {
  GLuint* const end =
      std::remove_if(names, names + count, [=](GLuint name) { return is_in(found, found_count, name); });
  return static_cast<GLsizei>(end - names);
}

// Deletes those of a part's names that are not among the program's, which are sorted. Result: how many of the program's
// the part has not; they are what is left of those.
GLsizei give_back(const name_calls& calls, GLuint* made, GLsizei made_count, GLuint* program, GLsizei count) {
  const GLsizei surplus = surplus_first(made, made_count, program, count);
  std::sort(made + surplus, made + made_count);
  const GLsizei missing = take_out(program, count, made + surplus, made_count - surplus);
  if (surplus) {
    calls.remove(calls.on, surplus, made);
    WakeAllConditionVariable(&names_removed);
  }
  return missing;
}

// Makes more names, ever more at once, until none of `missing` is left or there are too many, and gives back those that
// are not wanted. `more`: room for these. Result: how many are missing still.
GLsizei make_missing(const name_calls& calls, GLuint* missing, GLsizei count, GLuint* more) {
  GLsizei made = 0;
  GLsizei left = count;
  std::fill(more, more + calls.most, 0u);
  for (GLsizei step = 1; left && made + step <= calls.most; step *= 2) {
    calls.make(calls.on, step, more + made);
    for (GLsizei i = made; i < made + step; ++i) left -= is_in(missing, count, more[i]);
    made += step;
  }
  return give_back(calls, more, made, missing, count);
}

// `room`: for the program's names, and for the part's or for those that are made more. Result: whether the part has all
// of the program's names now.
bool mend_names(const name_calls& calls, const GLuint* got, const GLuint* made, GLsizei count, GLuint* room) {
  GLuint* const missing = room;
  GLuint* const more = room + count;
  std::copy(got, got + count, missing);
  std::copy(made, made + count, more);
  std::sort(missing, missing + count);
  GLsizei left = give_back(calls, more, count, missing, count);
  for (int round = 0; left && round < most_rounds; ++round) {
    if (round) wait_for_removal();
    left = make_missing(calls, missing, left, more);
  }
  return left == 0;
}

}  // namespace

void make_names_lock() {
  InitializeCriticalSection(&names_lock);
  InitializeConditionVariable(&names_removed);
}

void delete_names_lock() {
  DeleteCriticalSection(&names_lock);
}

void match_names(const name_calls& calls, const char* function, i32 part, const GLuint* got, GLuint* made,
                 GLsizei count) {
  if (are_equal(got, made, count)) return;
  // A part that has made none will make no more.
  const bool has_made = std::find(made, made + count, 0u) == made + count;
  if (has_made && calls.remove && !is_reported.load()) {
    const u64 room = static_cast<u64>(count) + static_cast<u64>(std::max(count, calls.most));
    auto* block = static_cast<GLuint*>(malloc(room * sizeof *made));
    if (block && mend_names(calls, got, made, count, block)) std::copy(got, got + count, made);
    free(block);
  }
  compare_names(function, part, got, made, count);
}

bool open_names(names_of_parts* names, GLsizei count, i32 parts, const char* function) {
  names->count = count;
  names->parts = std::max(parts, 0);
  const u64 bytes = __osw_checked_bytes(count, static_cast<u64>(names->parts) * sizeof(GLuint));
  if (bytes <= sizeof names->few) {
    names->of_part = names->few;
  } else if (bytes != too_many_bytes) {
    names->of_part = static_cast<GLuint*>(calloc(bytes, 1));
  }
  if (!names->of_part) __osw_report(severity_error, "no memory for the data of %s\n", function);
  return names->of_part;
}

GLuint* names_of(const names_of_parts& names, i32 part) {
  return names.of_part + static_cast<u64>(part) * static_cast<u64>(names.count);
}

const GLuint* names_for_program(const names_of_parts& names) {
  const i32 last = names.parts - 1;
  return last >= 0 && names_of(names, last)[0] ? names_of(names, last) : nullptr;
}

void give_names(names_of_parts* names, const char* function, GLuint* program) {
  const GLsizei count = names->count;
  if (const GLuint* got = names_for_program(*names)) {
    std::copy(got, got + count, program);
    for (i32 part = 0; part < names->parts; ++part) {
      compare_names(function, part, program, names_of(*names, part), count);
    }
  }
  if (names->of_part != names->few) free(names->of_part);
}
