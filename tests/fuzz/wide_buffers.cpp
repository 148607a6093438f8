// Mapped buffers: the program sees one mapping, and what it writes is in the buffer of every part once it is flushed or
// unmapped.
#include <cstring>

#include "wide_expectation.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

bool names_buffer(int op) {
  return op == glMapNamedBuffer_op::op || op == glMapNamedBufferRange_op::op || op == glUnmapNamedBuffer_op::op ||
         op == glFlushMappedNamedBufferRange_op::op || op == glGetNamedBufferPointerv_op::op;
}

bool maps(int op) {
  return op == glMapBuffer_op::op || op == glMapBufferRange_op::op || op == glMapNamedBuffer_op::op ||
         op == glMapNamedBufferRange_op::op;
}

bool flushes(int op) {
  return op == glFlushMappedBufferRange_op::op || op == glFlushMappedNamedBufferRange_op::op;
}

void take(const wide_expectation& all, buffer_object* buffer, u64 offset, u64 size) {
  const auto block = all.blocks.find(buffer->name);
  if (block == all.blocks.end() || !size) return;
  std::memcpy(buffer->bytes.data() + buffer->map_offset + offset, block->second + offset, size);
}

// What the program has written since it mapped the buffer, unless it flushes by itself.
outcome expect_unmap(wide_expectation* all, buffer_object* buffer, int op, arguments_of a) {
  const bool was_mapped = buffer && buffer->is_mapped;
  if (was_mapped) {
    const bool is_written = buffer->map_access & GL_MAP_WRITE_BIT && !(buffer->map_access & GL_MAP_FLUSH_EXPLICIT_BIT);
    if (is_written) take(*all, buffer, 0, buffer->map_length);
    all->blocks.erase(buffer->name);
  }
  reach(&all->part, op, a);
  reach(&all->app, op, a);
  return {.knows_result = true, .result = was_mapped};
}

outcome expect_flush(const wide_expectation& all, buffer_object* buffer, arguments_of a) {
  const bool is_valid = buffer && buffer->is_mapped && buffer->map_access & GL_MAP_FLUSH_EXPLICIT_BIT &&
                        a[1] <= buffer->map_length && a[2] <= buffer->map_length - a[1];
  if (is_valid) take(all, buffer, a[1], a[2]);
  return {};
}

outcome expect_pointer(const wide_expectation& all, const buffer_object* buffer, arguments_of a) {
  if (a[1] != GL_BUFFER_MAP_POINTER || !buffer) return {};
  const auto block = all.blocks.find(buffer->name);
  const bool is_mapped = buffer->is_mapped && block != all.blocks.end();
  const u64 pointer = is_mapped ? reinterpret_cast<u64>(block->second) : 0;
  outcome made;
  made.written.at = a[2];
  made.written.bytes.resize(sizeof pointer);
  std::memcpy(made.written.bytes.data(), &pointer, sizeof pointer);
  return made;
}

}  // namespace

bool is_mapping_call(int op) {
  return maps(op) || flushes(op) || op == glUnmapBuffer_op::op || op == glUnmapNamedBuffer_op::op ||
         op == glGetBufferPointerv_op::op || op == glGetNamedBufferPointerv_op::op;
}

buffer_object* mapped_buffer(const gl_model& model, int op, arguments_of a) {
  const auto which = static_cast<GLuint>(a[0]);
  return names_buffer(op) ? named_buffer(model, which) : bound_buffer(model, which);
}

// Whether there is a mapping is known before, and where it is only afterwards.
outcome expect_mapping(wide_expectation* all, int op, arguments_of a) {
  buffer_object* buffer = mapped_buffer(all->part, op, a);
  if (maps(op)) {
    map_of_call(&all->part, op, a);
    map_of_call(&all->app, op, a);
    return {};
  }
  if (flushes(op)) return expect_flush(*all, buffer, a);
  if (op == glGetBufferPointerv_op::op || op == glGetNamedBufferPointerv_op::op) return expect_pointer(*all, buffer, a);
  return expect_unmap(all, buffer, op, a);
}

}  // namespace fuzz
