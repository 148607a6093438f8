// Client arrays with vertices in them: packed or strided ones of their own, and sets that are interleaved in one block.
#include <algorithm>

#include "stream.h"

namespace fuzz {

namespace {

constexpr u64 most_bytes = 0x7FFFFFFF;

// The call that sets array `number`, without its pointer.
struct pointer_call {
  int op;
  GLenum type;
  i32 size;
  u8 normalized;
};

constexpr GLenum types[] = {GL_FLOAT, GL_FLOAT,          GL_DOUBLE, GL_BYTE,        GL_UNSIGNED_BYTE,
                            GL_SHORT, GL_UNSIGNED_SHORT, GL_INT,    GL_UNSIGNED_INT};

pointer_call choose_pointer_call(source* from, u32 number) {
  pointer_call call{glVertexAttribPointer_op::op, one_of(from, types), between(from, 1, 4), 0};
  if (number >= first_attribute) {
    if (one_in(from, 6)) call.op = glVertexAttribIPointer_op::op;
    call.normalized = call.op == glVertexAttribPointer_op::op && one_in(from, 4);
    return call;
  }
  constexpr int ops[] = {glVertexPointer_op::op,         glColorPointer_op::op,    glNormalPointer_op::op,
                         glTexCoordPointer_op::op,       glTexCoordPointer_op::op, glTexCoordPointer_op::op,
                         glTexCoordPointer_op::op,       glTexCoordPointer_op::op, glTexCoordPointer_op::op,
                         glTexCoordPointer_op::op,       glTexCoordPointer_op::op, glFogCoordPointer_op::op,
                         glSecondaryColorPointer_op::op, glIndexPointer_op::op,    glEdgeFlagPointer_op::op};
  call.op = ops[std::min<u32>(number, 14)];
  if (call.op == glNormalPointer_op::op) call.size = 3;
  if (call.op == glIndexPointer_op::op || call.op == glFogCoordPointer_op::op) call.size = 1;
  if (call.op == glEdgeFlagPointer_op::op) call = {call.op, GL_UNSIGNED_BYTE, 1, 0};
  return call;
}

u32 element_bytes(const pointer_call& call) {
  return static_cast<u32>(call.size) * component_bytes(call.type);
}

void set_pointer(stream* run, u32 number, const pointer_call& call, i32 stride_value, u64 pointer) {
  const u64 size = static_cast<u64>(call.size);
  const u64 stride = driver::bits_of(stride_value);
  switch (call.op) {
    case glVertexAttribPointer_op::op:
      return make_call(run, call.op, {number - first_attribute, size, call.type, call.normalized, stride, pointer});
    case glVertexAttribIPointer_op::op:
      return make_call(run, call.op, {number - first_attribute, size, call.type, stride, pointer});
    case glTexCoordPointer_op::op:
      if (run->expected.record.client_texture != number - 3) {
        make_call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + number - 3});
      }
      return make_call(run, call.op, {size, call.type, stride, pointer});
    case glEdgeFlagPointer_op::op:
      return make_call(run, call.op, {stride, pointer});
    case glNormalPointer_op::op:
    case glIndexPointer_op::op:
    case glFogCoordPointer_op::op:
      return make_call(run, call.op, {call.type, stride, pointer});
    default:
      return make_call(run, call.op, {size, call.type, stride, pointer});
  }
}

struct wanted {
  u32 first, end;  // vertices
  u32 beyond;      // bytes
};

// A pointer to where vertex 0 would be, so that the first vertex wanted is the block's first byte.
u64 behind_first(const memory_block& block, u64 stride, const wanted& range) {
  return driver::bits_of(block.bytes) - stride * range.first;
}

void set_alone(stream* run, u32 number, const wanted& range) {
  const pointer_call call = choose_pointer_call(&run->random, number);
  const u32 packed = element_bytes(call);
  const u32 stride = one_in(&run->random, 3) ? packed : packed + below(&run->random, 20);
  const array_slot* slot =
      take_slot(&run->memory, u64{stride} * (range.end - range.first) + range.beyond, 1u << number);
  if (!slot) return;
  const bool unsaid = stride == packed && one_in(&run->random, 2);
  set_pointer(run, number, call, unsaid ? 0 : static_cast<i32>(stride), behind_first(slot->block, stride, range));
}

// In an order of chance, so that a later array may lie lower than an earlier one.
void set_interleaved(stream* run, const std::vector<u32>& numbers, const wanted& range) {
  std::vector<pointer_call> calls;
  std::vector<u32> offsets(numbers.size());
  std::vector<std::size_t> order(numbers.size());
  u32 arrays = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    calls.push_back(choose_pointer_call(&run->random, numbers[i]));
    arrays |= 1u << numbers[i];
    order[i] = i;
  }
  for (std::size_t i = order.size() - 1; i > 0; --i) {
    std::swap(order[i], order[below(&run->random, static_cast<u32>(i + 1))]);
  }
  u32 stride = 0;
  u32 highest = 0;
  for (const std::size_t i : order) {
    highest = offsets[i] = stride;
    stride += element_bytes(calls[i]) + below(&run->random, 3) * 4;
  }
  // What a copy takes begins with the lowest array that is drawn and has whole strides.
  const array_slot* slot =
      take_slot(&run->memory, u64{stride} * (range.end - range.first) + highest + range.beyond, arrays);
  if (!slot) return;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    set_pointer(run, numbers[i], calls[i], static_cast<i32>(stride),
                behind_first(slot->block, stride, range) + offsets[i]);
  }
}

bool is_beyond_a_block(const client_array& array, u32 end) {
  return (u64{bytes_apart(array)} * end + 7) / 8 * 8 > most_bytes;
}

// Whether what is drawn of the array lies in memory.
bool is_there(stream* run, u32 number, const wanted& range) {
  const array_slot* slot = slot_of(&run->memory, number);
  if (!slot) return false;
  const client_array& array = run->expected.record.arrays[number];
  const u64 stride = bytes_apart(array);
  const u64 begin = driver::bits_of(slot->block.bytes);
  const u64 first = array.pointer + stride * range.first;
  return first >= begin && array.pointer + stride * range.end + range.beyond <= begin + slot->block.size;
}

bool needs_memory(stream* run, u32 number, const wanted& range, bool sane_only) {
  const gl_context& record = run->expected.record;
  const client_array& array = record.arrays[number];
  if (!(record.enabled & 1u << number) || !array.is_set || array.buffered) return false;
  if (!sane_only && is_beyond_a_block(array, range.end)) return false;
  if (!sane_only && bytes_apart(array) == 0) return false;
  return !is_there(run, number, range);
}

}  // namespace

void prepare_arrays(stream* run, u32 first, u32 end, bool sane_only, u32 beyond) {
  const wanted range{first, end, beyond};
  // A single buffered array, enabled or not, keeps an element from being unrolled: mostly there is none.
  const bool unbuffers = sane_only && !one_in(&run->random, 4);
  std::vector<u32> numbers;
  for (u32 i = 0; i < array_count; ++i) {
    const bool buffered = run->expected.record.arrays[i].buffered;
    if ((buffered && unbuffers) || needs_memory(run, i, range, sane_only)) numbers.push_back(i);
  }
  if (numbers.empty()) return;
  if (run->expected.record.array_buffer) make_call(run, glBindBuffer_op::op, {GL_ARRAY_BUFFER, 0});
  if (numbers.size() > 1 && one_in(&run->random, 2)) {
    set_interleaved(run, numbers, range);
  } else {
    for (const u32 number : numbers) set_alone(run, number, range);
  }
  if (one_in(&run->random, 4)) make_call(run, glBindBuffer_op::op, {GL_ARRAY_BUFFER, 7});
}

void ruin_arrays(stream* run) {
  for (array_slot& slot : run->memory.slots) {
    if (!slot.block.bytes || !slot.arrays) continue;
    if (one_in(&run->random, 3)) {
      close_slot(&run->memory, &slot);
    } else {
      fill_with_noise(&run->memory, slot.block.bytes, slot.block.size);
    }
  }
}

}  // namespace fuzz
