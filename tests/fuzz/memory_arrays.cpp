#include "memory_arrays.h"

#include <algorithm>

namespace fuzz {

namespace {

struct array_call {
  int op;
  array_format format;
};

constexpr GLenum types[] = {GL_FLOAT, GL_FLOAT,          GL_DOUBLE, GL_BYTE,         GL_UNSIGNED_BYTE,
                            GL_SHORT, GL_UNSIGNED_SHORT, GL_INT,    GL_UNSIGNED_INT, GL_HALF_FLOAT};
constexpr GLenum integer_types[] = {GL_INT, GL_UNSIGNED_INT, GL_SHORT, GL_UNSIGNED_BYTE};

// Sizes and types are those that GL takes of the array.
array_call any_fixed(source* from, u32 number) {
  constexpr GLenum floats[] = {GL_FLOAT, GL_DOUBLE};
  constexpr GLenum numbers[] = {GL_SHORT, GL_FLOAT, GL_INT};
  constexpr GLenum colors[] = {GL_UNSIGNED_BYTE, GL_FLOAT, GL_UNSIGNED_SHORT};
  constexpr GLenum normals[] = {GL_BYTE, GL_FLOAT};
  if (number == 0) return {glVertexPointer_op::op, {between(from, 2, 4), one_of(from, numbers)}};
  if (number == 1) return {glColorPointer_op::op, {between(from, 3, 4), one_of(from, colors)}};
  if (number == 2) return {glNormalPointer_op::op, {3, one_of(from, normals)}};
  if (number < fog_array) return {glTexCoordPointer_op::op, {between(from, 1, 4), one_of(from, numbers)}};
  if (number == fog_array) return {glFogCoordPointer_op::op, {1, one_of(from, floats)}};
  if (number == 12) return {glSecondaryColorPointer_op::op, {3, one_of(from, colors)}};
  if (number == 13) return {glIndexPointer_op::op, {1, GL_INT}};
  return {glEdgeFlagPointer_op::op, {1, GL_UNSIGNED_BYTE}};
}

array_call any_attribute(source* from) {
  const i32 size = between(from, 1, 4);
  switch (below(from, 6)) {
    case 0:
      return {glVertexAttribIPointer_op::op, {size, one_of(from, integer_types), 0, value_kind::integers}};
    case 1:
      return {glVertexAttribLPointer_op::op, {size, GL_DOUBLE, 0, value_kind::doubles}};
    case 2:
      return {glVertexAttribPointer_op::op, {4, GL_INT_2_10_10_10_REV, 1}};
    default:
      return {glVertexAttribPointer_op::op, {size, one_of(from, types), static_cast<u8>(one_in(from, 4))}};
  }
}

array_call any_call(source* from, u32 number) {
  return number < first_attribute ? any_fixed(from, number) : any_attribute(from);
}

void select_unit(stream* run, u32 unit) {
  if (run->wide.part.client_texture != unit) call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + unit});
}

void set_pointer(stream* run, u32 number, const array_call& set, u64 stride, u64 pointer) {
  const u64 size = static_cast<u64>(set.format.size);
  const GLenum type = set.format.type;
  switch (set.op) {
    case glVertexAttribPointer_op::op:
      call(run, set.op, {number - first_attribute, size, type, set.format.normalized, stride, pointer});
      return;
    case glVertexAttribIPointer_op::op:
    case glVertexAttribLPointer_op::op:
      call(run, set.op, {number - first_attribute, size, type, stride, pointer});
      return;
    case glTexCoordPointer_op::op:
      select_unit(run, number - 3);
      call(run, set.op, {size, type, stride, pointer});
      return;
    case glEdgeFlagPointer_op::op:
      call(run, set.op, {stride, pointer});
      return;
    case glNormalPointer_op::op:
    case glIndexPointer_op::op:
    case glFogCoordPointer_op::op:
      call(run, set.op, {type, stride, pointer});
      return;
    default:
      call(run, set.op, {size, type, stride, pointer});
  }
}

// What is read of an array: its own steps, where it goes on by instances.
drawn_range range_of_array(const stream& run, u32 number, const drawn_range& drawn) {
  if (number < first_attribute) return drawn;
  const vertex_array_object& object = *run.wide.part.vao;
  const u32 divisor = object.bindings[number - first_attribute].divisor;
  if (!divisor) return drawn;
  const u64 instances = std::max<u64>(drawn.instances, 1);
  return {drawn.base_instance, drawn.base_instance + (instances - 1) / divisor + 1};
}

// A pointer to where vertex 0 would be, so that the first vertex that is drawn is the block's first byte.
void set_alone(stream* run, u32 number, const drawn_range& drawn) {
  const array_call set = any_call(&run->random, number);
  const drawn_range range = range_of_array(*run, number, drawn);
  const u64 packed = bytes_of_element(set.format);
  const u64 stride = one_in(&run->random, 3) ? packed : packed + below(&run->random, 20);
  const array_slot* slot = take_slot(&run->memory, stride * (range.end - range.first - 1) + packed, 1u << number);
  if (!slot) return;
  const bool unsaid = stride == packed && one_in(&run->random, 2);
  set_pointer(run, number, set, unsaid ? 0 : stride, driver::bits_of(slot->block.bytes) - stride * range.first);
}

void set_interleaved(stream* run, const std::vector<u32>& numbers, const drawn_range& range) {
  std::vector<array_call> calls;
  std::vector<u64> offsets;
  u64 stride = 0;
  u64 last = 0;
  u32 arrays = 0;
  for (const u32 number : numbers) {
    calls.push_back(any_call(&run->random, number));
    offsets.push_back(stride);
    last = stride + bytes_of_element(calls.back().format);
    stride = last + below(&run->random, 3) * 4;
    arrays |= 1u << number;
  }
  const array_slot* slot = take_slot(&run->memory, stride * (range.end - range.first - 1) + last, arrays);
  if (!slot) return;
  const u64 base = driver::bits_of(slot->block.bytes) - stride * range.first;
  for (std::size_t i = 0; i < numbers.size(); ++i) set_pointer(run, numbers[i], calls[i], stride, base + offsets[i]);
}

bool is_there(stream* run, u32 number, const drawn_range& range) {
  const array_slot* slot = slot_of(&run->memory, number);
  if (!slot) return false;
  const vertex_array_object& object = *run->wide.part.vao;
  const bool is_fixed = number < first_attribute;
  const u32 index = is_fixed ? number : number - first_attribute;
  const array_format& format = is_fixed ? object.fixed[index].format : object.attribs[index].format;
  const u64 stride = is_fixed ? stride_of(object.fixed[index]) : static_cast<u64>(object.bindings[index].stride);
  const u64 at =
      is_fixed ? object.fixed[index].pointer : object.bindings[index].offset + object.attribs[index].relative;
  if (!is_fixed && object.attribs[index].binding != index) return false;
  const u64 begin = driver::bits_of(slot->block.bytes);
  const u64 end = at + stride * (range.end - 1) + bytes_of_element(format);
  return at + stride * range.first >= begin && end <= begin + slot->block.size;
}

void disable(stream* run, u32 number) {
  constexpr GLenum names[] = {GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_NORMAL_ARRAY};
  constexpr GLenum later[] = {GL_FOG_COORD_ARRAY, GL_SECONDARY_COLOR_ARRAY, GL_INDEX_ARRAY, GL_EDGE_FLAG_ARRAY};
  if (number >= first_attribute) {
    call(run, glDisableVertexAttribArray_op::op, {number - first_attribute});
  } else if (number < 3) {
    call(run, glDisableClientState_op::op, {names[number]});
  } else if (number < fog_array) {
    select_unit(run, number - 3);
    call(run, glDisableClientState_op::op, {GL_TEXTURE_COORD_ARRAY});
  } else {
    call(run, glDisableClientState_op::op, {later[number - fog_array]});
  }
}

// The enabled arrays that lie in no buffer.
std::vector<u32> arrays_in_memory(const stream& run) {
  const vertex_array_object& object = *run.wide.part.vao;
  std::vector<u32> numbers;
  for (u32 i = 0; i < fixed_arrays; ++i) {
    if (object.fixed[i].enabled && !object.fixed[i].buffer) numbers.push_back(i);
  }
  for (u32 i = 0; i < attributes; ++i) {
    const attribute& attrib = object.attribs[i];
    if (attrib.enabled && !object.bindings[attrib.binding].buffer) numbers.push_back(first_attribute + i);
  }
  return numbers;
}

// Those that have not got all there that is drawn. Arrays in memory are for the first object; others lose them.
std::vector<u32> missing_arrays(stream* run, const drawn_range& drawn) {
  std::vector<u32> missing;
  for (const u32 number : arrays_in_memory(*run)) {
    if (run->wide.part.vao->name || drawn.end <= drawn.first) {
      disable(run, number);
    } else if (!is_there(run, number, range_of_array(*run, number, drawn))) {
      missing.push_back(number);
    }
  }
  return missing;
}

bool is_divided(const stream& run, u32 number) {
  return number >= first_attribute && run.wide.part.vao->bindings[number - first_attribute].divisor;
}

void set_arrays(stream* run, const std::vector<u32>& numbers, const drawn_range& drawn) {
  if (run->wide.part.bound[array_target]) call(run, glBindBuffer_op::op, {GL_ARRAY_BUFFER, 0});
  const bool divided = std::ranges::any_of(numbers, [&](u32 number) { return is_divided(*run, number); });
  if (numbers.size() > 1 && !divided && one_in(&run->random, 2)) return set_interleaved(run, numbers, drawn);
  for (const u32 number : numbers) set_alone(run, number, drawn);
}

}  // namespace

// A pointer that is set may take another array, which goes by the same binding, to memory with it.
void settle_arrays(stream* run, const drawn_range& drawn) {
  std::vector<u32> missing = missing_arrays(run, drawn);
  const bool sets = !missing.empty();
  for (int tries = 0; tries < 4 && !missing.empty(); ++tries) {
    set_arrays(run, missing, drawn);
    missing = missing_arrays(run, drawn);
  }
  for (const u32 number : missing) disable(run, number);
  if (sets && one_in(&run->random, 4)) call(run, glBindBuffer_op::op, {GL_ARRAY_BUFFER, any_buffer(run)});
}

void begin_anew(stream* run) {
  source* from = &run->random;
  constexpr GLenum arrays[] = {GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_NORMAL_ARRAY, GL_TEXTURE_COORD_ARRAY,
                               GL_FOG_COORD_ARRAY};
  call(run, glBindVertexArray_op::op, {0});
  const vertex_array_object& object = *run->wide.part.vao;
  for (u32 i = 0; i < fixed_arrays; ++i) {
    if (object.fixed[i].enabled) disable(run, i);
  }
  for (u32 i = 0; i < attributes; ++i) {
    if (object.attribs[i].enabled) disable(run, first_attribute + i);
  }
  call(run, glBindBuffer_op::op, {GL_ARRAY_BUFFER, 0});
  for (u32 i = below(from, 4); i > 0; --i) call(run, glEnableClientState_op::op, {one_of(from, arrays)});
  for (u64 i = 0; i < below(from, 4); ++i) {
    call(run, glVertexAttribDivisor_op::op, {i, 0});
    call(run, glVertexAttribPointer_op::op, {i, 4, GL_FLOAT, 0, 0, 0});
    call(run, glEnableVertexAttribArray_op::op, {i});
  }
}

void ruin_memory(stream* run) {
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
