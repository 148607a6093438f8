#include "works.h"

#include <cstring>

namespace {

void write_block(setting_memory* memory, GLbitfield access) {
  const route& through = *memory->through;
  void* mapped = call_of<glMapBufferRange_op>(through)(GL_ARRAY_BUFFER, 0, block_size, access);
  // A driver that does nothing maps nothing.
  if (!mapped) return;
  memcpy(mapped, memory->pixels, block_size);
  call_of<glUnmapBuffer_op>(through)(GL_ARRAY_BUFFER);
}

}  // namespace

void write_whole_block(setting_memory* memory) {
  write_block(memory, GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT);
}

void write_into_block(setting_memory* memory) {
  write_block(memory, GL_MAP_WRITE_BIT);
}

void wait_for_fence(setting_memory* memory) {
  constexpr GLuint64 one_second = 1000000000;
  const route& through = *memory->through;
  const GLsync fence = call_of<glFenceSync_op>(through)(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  call_of<glClientWaitSync_op>(through)(fence, GL_SYNC_FLUSH_COMMANDS_BIT, one_second);
  call_of<glDeleteSync_op>(through)(fence);
}
