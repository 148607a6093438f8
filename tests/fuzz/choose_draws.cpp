// Draws, with indices and figures in buffers and in memory.
#include <algorithm>
#include <cstring>

#include "memory_arrays.h"

namespace fuzz {

namespace {

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

// One element is of no instance. A pointer that is set takes its attribute to the binding of the same number.
bool may_be_divided(const vertex_array_object& object) {
  for (u32 i = 0; i < attributes; ++i) {
    const attribute& attrib = object.attribs[i];
    if (attrib.enabled && (object.bindings[i].divisor || object.bindings[attrib.binding].divisor)) return true;
  }
  return false;
}

void draw_element(stream* run) {
  if (may_be_divided(*run->wide.part.vao)) begin_anew(run);
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
  if (one_in(&run->random, 6)) begin_anew(run);
  constexpr void (*choices[])(stream*) = {draw_arrays,   draw_arrays,   draw_arrays,         draw_elements,
                                          draw_elements, draw_elements, draw_several_arrays, draw_several_elements,
                                          draw_indirect, draw_element,  draw_element,        dispatch};
  one_of(&run->random, choices)(run);
  ruin_memory(run);
}

}  // namespace fuzz
