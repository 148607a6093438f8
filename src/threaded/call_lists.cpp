// Lists of display lists, whose names are of any integer type.
#include "threaded/encoders.h"

void glCallLists_op::encode(GLsizei count, GLenum type_of_names, const void* lists) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCallLists_op>(state, count, type_of_names, lists);
  const auto bytes = static_cast<u64>(payload(count, type_of_names, lists).bytes);
  const void* copy = lists ? __osw_copy_to_blob(lists, bytes, name) : nullptr;
  if (lists && !copy) count = 0;
  push_with_blobs<glCallLists_op>(state, array_blob<glCallLists_op>, count, type_of_names, copy);
}
