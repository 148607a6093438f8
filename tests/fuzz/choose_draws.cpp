// Draws: before each, the arrays that lie in memory have all that the draw reads of them, and not a byte more.
#include <algorithm>
#include <cstring>

#include "wide_stream.h"

namespace fuzz {

namespace {

struct drawn_range {
  u64 first, end;  // vertices
  u64 instances = 1;
  u64 base_instance = 0;
};

// ---- arrays in memory ----

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
      call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + number - 3});
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
    call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + number - 3});
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

// ---- indices ----

constexpr GLenum index_types[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT, GL_UNSIGNED_INT};

struct indices {
  GLenum type = GL_UNSIGNED_SHORT;
  u32 count = 0;
  u32 lowest = 0;
  u32 span = 1;
};

indices any_indices(source* from) {
  return {one_of(from, index_types), 1 + below(from, 16), below(from, 40), 1 + below(from, 12)};
}

// The first names the lowest and the last the highest, so that a draw reads just what it is said to.
void write_indices(stream* run, u8* bytes, const indices& of) {
  const u32 size = bytes_of_index(of.type);
  for (u32 i = 0; i < of.count; ++i) {
    u32 index = of.lowest + below(&run->random, of.span);
    if (i == 0) index = of.lowest;
    if (i + 1 == of.count && of.count > 1) index = of.lowest + of.span - 1;
    std::memcpy(bytes + i * size, &index, size);
  }
}

drawn_range range_of_indices(const indices& of, i32 base, u64 instances, u64 base_instance) {
  const u64 span = of.count > 1 ? of.span : 1;
  const u64 first = static_cast<u64>(std::int64_t{of.lowest} + base);
  return {first, first + span, instances, base_instance};
}

// The indices in the object's buffer, at an offset that is the result.
u64 upload_indices(stream* run, const indices& of, u32 skipped) {
  const u64 bytes = u64{of.count} * bytes_of_index(of.type);
  u8* data = take_block(&run->memory, skipped + bytes);
  write_indices(run, data + skipped, of);
  call(run, glBufferData_op::op, {GL_ELEMENT_ARRAY_BUFFER, skipped + bytes, driver::bits_of(data), GL_STATIC_DRAW});
  return skipped;
}

u64 indices_in_memory(stream* run, const indices& of) {
  u8* data = take_block(&run->memory, u64{of.count} * bytes_of_index(of.type));
  write_indices(run, data, of);
  return driver::bits_of(data);
}

bool has_element_buffer(const stream& run) {
  return run.wide.part.vao->elements != nullptr;
}

// ---- draws ----

void draw_arrays(stream* run) {
  source* from = &run->random;
  const u64 first = below(from, 20);
  const u64 count = one_in(from, 10) ? 0 : 1 + below(from, 16);
  const u64 instances = below(from, 4);
  const u64 base = below(from, 3);
  switch (below(from, 4)) {
    case 0:
      settle_arrays(run, {first, first + count});
      call(run, glDrawArrays_op::op, {GL_TRIANGLES, first, count});
      return;
    case 1:
      settle_arrays(run, {first, first + count});
      call(run, glDrawArraysEXT_op::op, {GL_TRIANGLES, first, count});
      return;
    case 2:
      settle_arrays(run, {first, first + count, instances, 0});
      call(run, glDrawArraysInstanced_op::op, {GL_TRIANGLES, first, count, instances});
      return;
    default:
      settle_arrays(run, {first, first + count, instances, base});
      call(run, glDrawArraysInstancedBaseInstance_op::op, {GL_TRIANGLES, first, count, instances, base});
  }
}

void draw_by(stream* run, u32 which, const indices& of, u64 at, i32 base_value, u64 instances, u64 base_instance) {
  const u64 base = bits_of_number(base_value);
  const GLenum type = of.type;
  const u64 count = of.count;
  switch (which) {
    case 0:
      call(run, glDrawElements_op::op, {GL_LINES, count, type, at});
      return;
    case 1:
      call(run, glDrawRangeElements_op::op, {GL_LINES, of.lowest, of.lowest + of.span, count, type, at});
      return;
    case 2:
      call(run, glDrawElementsBaseVertex_op::op, {GL_LINES, count, type, at, base});
      return;
    case 3:
      call(run, glDrawRangeElementsBaseVertex_op::op,
           {GL_LINES, of.lowest, of.lowest + of.span, count, type, at, base});
      return;
    case 4:
      call(run, glDrawElementsInstanced_op::op, {GL_LINES, count, type, at, instances});
      return;
    case 5:
      call(run, glDrawElementsInstancedBaseVertex_op::op, {GL_LINES, count, type, at, instances, base});
      return;
    case 6:
      call(run, glDrawElementsInstancedBaseInstance_op::op, {GL_LINES, count, type, at, instances, base_instance});
      return;
    default:
      call(run, glDrawElementsInstancedBaseVertexBaseInstance_op::op,
           {GL_LINES, count, type, at, instances, base, base_instance});
  }
}

void draw_elements(stream* run) {
  source* from = &run->random;
  const u32 which = below(from, 8);
  const indices of = any_indices(from);
  const bool has_base = which == 2 || which == 3 || which == 5 || which == 7;
  const i32 base = has_base ? between(from, -static_cast<i32>(of.lowest), 30) : 0;
  const u64 instances = which >= 4 ? below(from, 4) : 1;
  const u64 base_instance = which >= 6 ? below(from, 3) : 0;
  const bool in_buffer = has_element_buffer(*run);
  const u64 offset = in_buffer ? upload_indices(run, of, below(from, 3) * 8) : 0;
  settle_arrays(run, range_of_indices(of, base, instances, base_instance));
  draw_by(run, which, of, in_buffer ? offset : indices_in_memory(run, of), base, instances, base_instance);
}

// ---- several draws ----

void draw_several_arrays(stream* run) {
  source* from = &run->random;
  const u32 draws = below(from, 5);
  const u64 lowest = below(from, 10);
  settle_arrays(run, {lowest, lowest + 12});
  auto* firsts = reinterpret_cast<GLint*>(take_block(&run->memory, draws * sizeof(GLint)));
  auto* counts = reinterpret_cast<GLint*>(take_block(&run->memory, draws * sizeof(GLint)));
  for (u32 i = 0; i < draws; ++i) {
    firsts[i] = static_cast<GLint>(lowest + below(from, 6));
    counts[i] = static_cast<GLint>(below(from, 6));
  }
  call(run, glMultiDrawArrays_op::op, {GL_LINES, driver::bits_of(firsts), driver::bits_of(counts), draws});
}

void draw_several_elements(stream* run) {
  source* from = &run->random;
  const indices of = any_indices(from);
  const bool in_buffer = has_element_buffer(*run);
  const u64 offset = in_buffer ? upload_indices(run, of, 8) : 0;
  const bool has_bases = one_in(from, 2);
  settle_arrays(run, {of.lowest, of.lowest + of.span + 3});
  const u32 draws = below(from, 5);
  auto* counts = reinterpret_cast<GLint*>(take_block(&run->memory, draws * sizeof(GLint)));
  auto* at = reinterpret_cast<u64*>(take_block(&run->memory, draws * sizeof(u64)));
  auto* bases = reinterpret_cast<GLint*>(take_block(&run->memory, draws * sizeof(GLint)));
  for (u32 i = 0; i < draws; ++i) {
    counts[i] = static_cast<GLint>(of.count);
    at[i] = in_buffer ? offset : indices_in_memory(run, of);
    bases[i] = static_cast<GLint>(below(from, 4));
  }
  const u64 lists[] = {driver::bits_of(counts), driver::bits_of(at), driver::bits_of(bases)};
  if (has_bases) {
    call(run, glMultiDrawElementsBaseVertex_op::op, {GL_LINES, lists[0], of.type, lists[1], draws, lists[2]});
  } else {
    call(run, glMultiDrawElements_op::op, {GL_LINES, lists[0], of.type, lists[1], draws});
  }
}

// ---- figures in a buffer or in memory ----

struct figures {
  bool indexed;
  u32 draws;
  u32 stride;  // 0 for packed
  indices of;
};

u64 bytes_of_figures(const figures& drawn) {
  const u64 size = drawn.indexed ? 20 : 16;
  return drawn.draws ? u64{drawn.stride ? drawn.stride : size} * (drawn.draws - 1) + size : 0;
}

u8* write_figures(stream* run, const figures& drawn) {
  u8* data = take_block(&run->memory, bytes_of_figures(drawn));
  const u32 size = drawn.indexed ? 20 : 16;
  for (u32 i = 0; i < drawn.draws; ++i) {
    const u32 words[] = {drawn.of.count, 1, drawn.indexed ? 0 : drawn.of.lowest, 0, 0};
    std::memcpy(data + i * (drawn.stride ? drawn.stride : size), words, size);
  }
  return data;
}

u64 place_figures(stream* run, const figures& drawn) {
  if (!run->wide.part.bound[indirect_target]) return driver::bits_of(write_figures(run, drawn));
  return 0;
}

// Whoever counts the draws finds the figure at the beginning of a buffer of its own.
bool bind_count(stream* run, u32 draws) {
  const GLuint name = any_unmapped_buffer(run);
  const buffer_object* indirect = run->wide.part.bound[indirect_target].get();
  const buffer_object* elements = run->wide.part.vao->elements.get();
  if (!name || (indirect && indirect->name == name) || (elements && elements->name == name)) return false;
  call(run, glBindBuffer_op::op, {GL_PARAMETER_BUFFER, name});
  u8* data = take_block(&run->memory, sizeof draws);
  std::memcpy(data, &draws, sizeof draws);
  call(run, glBufferData_op::op, {GL_PARAMETER_BUFFER, sizeof draws, driver::bits_of(data), GL_STATIC_DRAW});
  return true;
}

void draw_by_figures(stream* run, const figures& drawn, u32 which) {
  const u64 at = place_figures(run, drawn);
  const GLenum type = drawn.of.type;
  const u64 most = drawn.draws;
  switch (which * 2 + drawn.indexed) {
    case 0:
      call(run, glDrawArraysIndirect_op::op, {GL_LINES, at});
      return;
    case 1:
      call(run, glDrawElementsIndirect_op::op, {GL_LINES, type, at});
      return;
    case 2:
      call(run, glMultiDrawArraysIndirect_op::op, {GL_LINES, at, most, drawn.stride});
      return;
    case 3:
      call(run, glMultiDrawElementsIndirect_op::op, {GL_LINES, type, at, most, drawn.stride});
      return;
    case 4:
      call(run, glMultiDrawArraysIndirectCount_op::op, {GL_LINES, at, 0, most, drawn.stride});
      return;
    default:
      call(run, glMultiDrawElementsIndirectCount_op::op, {GL_LINES, type, at, 0, most, drawn.stride});
  }
}

void draw_indirect(stream* run) {
  source* from = &run->random;
  const u32 which = below(from, 3);
  figures drawn{one_in(from, 2), which ? 1 + below(from, 4) : 1, which && one_in(from, 2) ? 24u : 0u,
                any_indices(from)};
  const buffer_object* indirect = run->wide.part.bound[indirect_target].get();
  if (drawn.indexed && (!has_element_buffer(*run) || run->wide.part.vao->elements.get() == indirect)) return;
  if (which == 2 && !bind_count(run, 1 + below(from, drawn.draws))) return;
  if (drawn.indexed) upload_indices(run, drawn.of, 0);
  if (run->wide.part.bound[indirect_target]) {
    u8* data = write_figures(run, drawn);
    call(run, glBufferData_op::op,
         {GL_DRAW_INDIRECT_BUFFER, bytes_of_figures(drawn), driver::bits_of(data), GL_STREAM_DRAW});
  }
  const u64 lowest = drawn.of.lowest;
  const u64 span = drawn.indexed ? drawn.of.count > 1 ? drawn.of.span : 1 : drawn.of.count;
  settle_arrays(run, {lowest, lowest + span});
  draw_by_figures(run, drawn, which);
}

// One element is of no instance.
bool has_divided_array(const vertex_array_object& object) {
  return std::ranges::any_of(object.attribs, [&](const attribute& attrib) {
    return attrib.enabled && object.bindings[attrib.binding].divisor;
  });
}

void draw_element(stream* run) {
  if (has_divided_array(*run->wide.part.vao)) return;
  const u64 element = below(&run->random, 20);
  settle_arrays(run, {element, element + 1});
  call(run, one_in(&run->random, 3) ? glArrayElementEXT_op::op : glArrayElement_op::op, {element});
}

void dispatch(stream* run) {
  call(run, glDispatchComputeIndirect_op::op, {below(&run->random, 8) * u64{4}});
}

}  // namespace

void choose_draw(stream* run) {
  unmap_all(run);
  constexpr void (*choices[])(stream*) = {
      draw_arrays,         draw_arrays,           draw_arrays,   draw_elements, draw_elements, draw_elements,
      draw_several_arrays, draw_several_elements, draw_indirect, draw_element,  dispatch};
  one_of(&run->random, choices)(run);
  ruin_memory(run);
}

}  // namespace fuzz
