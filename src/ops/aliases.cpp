#include "ops/aliases.h"

#include <cstring>

#include "ops/ops.h"

namespace {

struct alias {
  const char* name;
  int op;
};

#define GL_ALIAS(name, function) {#name, function##_op::op},
constexpr alias aliases[] = {
#include "ops/gl_aliases.inc"
};
#undef GL_ALIAS

}  // namespace

int find_aliased_op(const char* name) {
  for (const alias& each : aliases) {
    if (strcmp(name, each.name) == 0) return each.op;
  }
  return -1;
}
