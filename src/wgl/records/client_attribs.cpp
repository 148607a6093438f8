#include "wgl/records/client_attribs.h"

#include <cstdlib>

void free_client_attribs(client_attrib_stack* stack) {
  for (u32 i = 0; i < stack->depth; ++i) free(stack->saved[i]);
  *stack = {};
}
