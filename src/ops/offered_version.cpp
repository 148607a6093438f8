#include "ops/offered_version.h"

#include "ops/ops.h"

namespace {

// What `gl_ops.inc` has, then the versions in the order of gl_wide.inc, where each ends before the first function of
// the next. Those after the last row let a program write to memory that is mapped for good, which is not followed yet.
constexpr offered_version versions[] = {
    {3, 1, 140, glFenceSync_op::op - 1},
    {3, 2, 150, glBindFragDataLocationIndexed_op::op - 1},
    {3, 3, 330, glDrawArraysIndirect_op::op - 1},
    {4, 0, 400, glReleaseShaderCompiler_op::op - 1},
    {4, 1, 410, glDrawArraysInstancedBaseInstance_op::op - 1},
    {4, 2, 420, glClearBufferData_op::op - 1},
    {4, 3, 430, glBufferStorage_op::op - 1},
};

constexpr auto has_handlers_at = gl_all_list::column<bool>([]<class Op>() { return has_handlers<Op>; });

constexpr int first_without_handlers() {
  int op = 0;
  while (op < gl_all_count && has_handlers_at.of[op]) ++op;
  return op;
}

constexpr const offered_version& find_newest() {
  const offered_version* newest = versions;
  for (const offered_version& version : versions) {
    if (version.last_op < first_without_handlers()) newest = &version;
  }
  return *newest;
}

constexpr const offered_version& newest = find_newest();

}  // namespace

const offered_version& newest_offered_version() {
  return newest;
}
