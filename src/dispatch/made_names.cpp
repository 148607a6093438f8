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

}  // namespace

void compare_names(const char* function, i32 part, const GLuint* got, const GLuint* made, GLsizei count) {
  if (memcmp(got, made, static_cast<u64>(count) * sizeof *got) == 0 || is_reported.exchange(true)) return;
  __osw_report(severity_warning, "%s has made other names on part %d than the program got.\n", function, part);
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

void give_names(names_of_parts* names, const char* function, GLuint* program) {
  const GLsizei count = names->count;
  const i32 last = names->parts - 1;
  if (last >= 0 && names_of(*names, last)[0]) {
    memcpy(program, names_of(*names, last), static_cast<u64>(count) * sizeof *program);
    for (i32 part = 0; part < last; ++part) compare_names(function, part, program, names_of(*names, part), count);
  }
  if (names->of_part != names->few) free(names->of_part);
}
