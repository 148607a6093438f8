// Buffer mapping. Each part has a mapping of its own, and the application one zeroed block for all of them: the block
// is copied into every part's mapping when it is unmapped, and not before. One buffer at a time is staged on a thread.
#include <atomic>
#include <cstring>

#include "dispatch/report.h"
#include "sequential/broadcast.h"
#include "sequential/staged_blocks.h"

namespace {

// A figure of the bound buffer, asked of the first part.
GLint ask_first_part(const __osw_thread_state* state, GLenum target, GLenum name) {
  GLint value = 0;
  if (__osw_part_count > 0) {
    __osw_switch_to_part(state, 0);
    sys_gl<glGetBufferParameteriv_op>(state)(target, name, &value);
    __osw_switch_to_app(state);
  }
  return value;
}

void __osw_get_map_pointers(__osw_thread_state* state, GLenum target) {
  __osw_for_each_part(state, [=](i32 part) {
    sys_gl<glGetBufferPointerv_op>(state)(target, GL_BUFFER_MAP_POINTER, &state->map_part_pointers[part]);
  });
}

void forget_staging(__osw_thread_state* state) {
  state->map_staging = nullptr;
  state->map_size = 0;
  memset(state->map_part_pointers, 0, sizeof state->map_part_pointers);
}

// The program is the same in each of its frames: said once, it is known.
void report_second(const char* function) {
  static std::atomic<bool> reported;
  if (reported.exchange(true)) return;
  __osw_report(severity_warning, "%s of a second buffer: what is written to the first one reaches no part.\n",
               function);
}

// Result: the block, or null without memory; the parts are unmapped again then.
void* stage(__osw_thread_state* state, GLenum target, u64 size, const char* function) {
  if (state->map_staging) report_second(function);
  __osw_get_map_pointers(state, target);
  state->map_size = size;
  if (void* block = make_staged_block(state, size, state->map_part_pointers[0])) return block;
  __osw_report(severity_error, "no memory for the buffer of %s\n", function);
  __osw_for_each_part(state, [=](i32) { sys_gl<glUnmapBuffer_op>(state)(target); });
  forget_staging(state);
  return nullptr;
}

// `map` maps the buffer of the part that is current. A buffer that the first part says is mapped already gives null.
template <class Map>
void* map_and_stage(__osw_thread_state* state, GLenum target, u64 size, GLint mapped, const char* function, Map map) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_switch_to_part(state, part);
    map(part);
  }
  void* mapping = mapped ? nullptr : stage(state, target, size, function);
  __osw_switch_to_app(state);
  return mapping;
}

// A part whose mapping failed is passed over.
void copy_to_parts(__osw_thread_state* state) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    void* mapping = state->map_part_pointers[part];
    if (mapping && state->map_staging) memcpy(mapping, state->map_staging, state->map_size);
  }
}

u64 not_negative(int64_t size) {
  return size > 0 ? static_cast<u64>(size) : 0;
}

}  // namespace

void* glMapBuffer_op::broadcast(GLenum target, GLenum access) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  auto* map = seq_target<glMapBuffer_op>(state);
  const GLint size = ask_first_part(state, target, GL_BUFFER_SIZE);
  const GLint mapped = ask_first_part(state, target, GL_BUFFER_MAPPED);
  return map_and_stage(state, target, not_negative(size), mapped, glMapBuffer_op::name,
                       [=](i32) { map(target, access); });
}

void* glMapBufferRange_op::broadcast(GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  auto* map = seq_target<glMapBufferRange_op>(state);
  const GLint mapped = ask_first_part(state, target, GL_BUFFER_MAPPED);
  return map_and_stage(state, target, not_negative(length), mapped, glMapBufferRange_op::name,
                       [=](i32) { map(target, offset, length, access); });
}

GLboolean glUnmapBuffer_op::broadcast(GLenum target) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  auto* unmap = seq_target<glUnmapBuffer_op>(state);
  if (ask_first_part(state, target, GL_BUFFER_MAPPED)) {
    copy_to_parts(state);
    forget_staging(state);
    end_staged_block(state);
  }
  GLboolean result = 0;
  __osw_for_each_part(state, [&](i32) { result = unmap(target); });
  return result;
}
