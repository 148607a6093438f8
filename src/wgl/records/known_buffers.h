// The contents of buffers that a program maps again and again without giving them up: what it maps then is copied from
// here, and no part has to be asked. Only for a process with one context, on the threaded path, while that context
// follows every call. Any thread, under a lock of their own.
//
// Commands that can change a buffer make its contents unknown, and those of all buffers where they do not say which.
// What shaders write is promised to a mapping only after a barrier, which is such a command, and reads into a pack
// buffer need one to be bound, which is another.
#pragma once

#include "dispatch/thread_state.h"
#include "ops/ops.h"

struct known_contents {
  u32 buffer;  // its name
  u64 size;
  u8* bytes;  // of the heap
};

// Made and deleted with a process of the extended mode.
void make_known_buffers_lock();
void delete_known_buffers_lock();

// Whether the contents of any buffer are known.
bool has_known_buffers();

// Whether a buffer was asked for here before and is not too large: then it is worth knowing.
bool is_worth_knowing(u32 buffer, u64 size);

// Copies contents out. Result: false, and nothing is copied, if they are not known or the buffer has another size.
bool copy_known_contents(u32 buffer, u64 size, GLintptr offset, u64 bytes, u8* to);

// Notes contents; `bytes` are owned here from now on, and freed at once without memory.
void enter_known_contents(const known_contents& contents);

// Takes contents away. Result: whether they were known; then the caller owns the bytes.
bool take_known_contents(u32 buffer, known_contents* taken);

// Makes contents unknown: of one buffer, or of all.
void forget_known_buffer(u32 buffer);
void forget_known_buffers();

// Whether a GL op may change what is in a buffer, or says that something has.
constexpr bool may_change_buffers(i32 op) {
  switch (op) {
    case glBufferData_op::op:
    case glBufferSubData_op::op:
    case glBindBuffer_op::op:
    case glPopClientAttrib_op::op:
    case glDeleteBuffers_op::op:
    case glCopyBufferSubData_op::op:
    case glBeginTransformFeedback_op::op:
    case glEndTransformFeedback_op::op:
    case glBeginTransformFeedbackEXT_op::op:
    case glEndTransformFeedbackEXT_op::op:
    case glMemoryBarrier_op::op:
    case glMemoryBarrierByRegion_op::op:
    case glClearBufferData_op::op:
    case glClearBufferSubData_op::op:
    case glInvalidateBufferData_op::op:
    case glInvalidateBufferSubData_op::op:
    case glNamedBufferData_op::op:
    case glNamedBufferSubData_op::op:
    case glCopyNamedBufferSubData_op::op:
    case glClearNamedBufferData_op::op:
    case glClearNamedBufferSubData_op::op:
      return true;
    default:
      return false;
  }
}

// A command of such an op, with its slots, is about to be appended. On the issuing thread.
void note_buffer_change(const __osw_thread_state* state, i32 op, const u64* args);
