// Buffers and array objects: made, bound, filled, pointed into and deleted.
#include <algorithm>

#include "wide_stream.h"

namespace fuzz {

namespace {

constexpr GLenum targets[] = {GL_ARRAY_BUFFER,      GL_ARRAY_BUFFER,        GL_ELEMENT_ARRAY_BUFFER,
                              GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_DRAW_INDIRECT_BUFFER,
                              GL_COPY_READ_BUFFER,  GL_COPY_WRITE_BUFFER};
constexpr std::size_t most_objects = 12;

// Of each function all of its names, but those that are left out.
std::vector<std::vector<int>> names_of_functions() {
  std::vector<std::vector<int>> names(gl_all_count);
  for (const ops::row& row : ops::all()) {
    names[static_cast<std::size_t>(function_of(row.op))].push_back(row.op);
  }
  return names;
}

template <class Map>
GLuint any_of(source* from, const Map& objects) {
  if (objects.empty()) return 0;
  auto one = objects.begin();
  std::advance(one, below(from, static_cast<u32>(objects.size())));
  return one->first;
}

u64 block(stream* run, u64 bytes) {
  return driver::bits_of(take_block(&run->memory, bytes));
}

u64 names_block(stream* run, const std::vector<GLuint>& names) {
  auto* list = reinterpret_cast<GLuint*>(take_block(&run->memory, names.size() * sizeof(GLuint)));
  std::ranges::copy(names, list);
  return driver::bits_of(list);
}

// ---- buffers ----

void make_buffers(stream* run) {
  if (run->wide.part.buffers.size() >= most_objects) return;
  const int op = one_in(&run->random, 2) ? glGenBuffers_op::op : glCreateBuffers_op::op;
  const GLuint first = run->wide.part.next_name;
  call(run, op, {2, block(run, 2 * sizeof(GLuint))});
  call(run, glBindBuffer_op::op, {one_of(&run->random, targets), first});
}

void define_buffer(stream* run) {
  source* from = &run->random;
  const u64 size = one_in(from, 8) ? 20000 : below(from, 600);
  const bool has_data = !one_in(from, 4);
  const GLuint named = any_buffer(run);
  if (one_in(from, 2) && named) {
    call(run, glNamedBufferData_op::op, {named, size, has_data ? block(run, size) : 0, GL_STATIC_DRAW});
  } else {
    call(run, glBufferData_op::op, {one_of(from, targets), size, has_data ? block(run, size) : 0, GL_STREAM_DRAW});
  }
}

// GL refuses to change or to read what is mapped.
buffer_object* unmapped(stream* run, GLenum target) {
  buffer_object* buffer = bound_buffer(run->wide.part, target);
  return buffer && !buffer->is_mapped && !buffer->bytes.empty() ? buffer : nullptr;
}

void replace_contents(stream* run) {
  source* from = &run->random;
  const GLenum target = one_of(from, targets);
  const buffer_object* buffer = unmapped(run, target);
  if (!buffer) return;
  const u32 offset = below(from, static_cast<u32>(buffer->bytes.size()));
  const u64 size = below(from, static_cast<u32>(buffer->bytes.size()) - offset + 1);
  if (one_in(from, 2)) {
    call(run, glBufferSubData_op::op, {target, offset, size, block(run, size)});
  } else {
    call(run, glNamedBufferSubData_op::op, {buffer->name, offset, size, block(run, size)});
  }
}

void copy_contents(stream* run) {
  const buffer_object* from = unmapped(run, GL_COPY_READ_BUFFER);
  const buffer_object* to = unmapped(run, GL_COPY_WRITE_BUFFER);
  if (!from || !to || from == to) return;
  const u64 size = below(&run->random, static_cast<u32>(std::min(from->bytes.size(), to->bytes.size()))) + 1;
  call(run, glCopyBufferSubData_op::op,
       {GL_COPY_READ_BUFFER, GL_COPY_WRITE_BUFFER, from->bytes.size() - size, 0, size});
}

// What was put aside with the client state is left in peace, for what becomes of it is the driver's own.
void delete_buffer(stream* run) {
  const GLuint name = any_buffer(run);
  if (!name || !run->wide.part.saved.empty()) return;
  call(run, glDeleteBuffers_op::op, {1, names_block(run, {name})});
}

void bind_buffer(stream* run) {
  const GLuint name = one_in(&run->random, 3) ? 0 : any_buffer(run);
  call(run, glBindBuffer_op::op, {one_of(&run->random, targets), name});
}

// ---- array objects ----

void make_object(stream* run) {
  if (run->wide.part.vaos.size() >= most_objects) return;
  const int op = one_in(&run->random, 2) ? glGenVertexArrays_op::op : glCreateVertexArrays_op::op;
  const GLuint first = run->wide.part.next_name;
  call(run, op, {1, block(run, sizeof(GLuint))});
  call(run, glBindVertexArray_op::op, {first});
}

void delete_object(stream* run) {
  const GLuint name = any_vao(run);
  if (name) call(run, glDeleteVertexArrays_op::op, {1, names_block(run, {name})});
}

void bind_object(stream* run) {
  call(run, glBindVertexArray_op::op, {one_in(&run->random, 2) ? 0 : any_vao(run)});
}

constexpr GLenum types[] = {GL_FLOAT, GL_FLOAT, GL_BYTE, GL_UNSIGNED_BYTE, GL_SHORT, GL_HALF_FLOAT, GL_INT, GL_DOUBLE};
constexpr GLenum integer_types[] = {GL_INT, GL_UNSIGNED_INT, GL_SHORT, GL_UNSIGNED_BYTE};
constexpr u64 few_attributes = 6;

// An attribute in the buffer that is bound, or an offset of no buffer, which an object that is not the first refuses.
void point_attribute(stream* run) {
  source* from = &run->random;
  const bool has_buffer = run->wide.part.bound[array_target] != nullptr;
  if (!has_buffer && !run->wide.part.vao->name) return;
  const u64 index = below(from, few_attributes);
  const u64 size = 1 + below(from, 4);
  const u64 stride = below(from, 3) * 16;
  const u64 offset = has_buffer ? below(from, 64) * 4 : 0;
  switch (below(from, 3)) {
    case 0:
      call(run, glVertexAttribIPointer_op::op, {index, size, one_of(from, integer_types), stride, offset});
      return;
    case 1:
      call(run, glVertexAttribLPointer_op::op, {index, size, GL_DOUBLE, stride, offset});
      return;
    default:
      call(run, glVertexAttribPointer_op::op, {index, size, one_of(from, types), below(from, 2), stride, offset});
  }
}

void point_fixed(stream* run) {
  source* from = &run->random;
  if (!run->wide.part.bound[array_target]) return;
  const u64 stride = below(from, 3) * 12;
  const u64 offset = below(from, 64) * 4;
  switch (below(from, 4)) {
    case 0:
      call(run, glVertexPointer_op::op, {2 + below(from, 3), GL_FLOAT, stride, offset});
      return;
    case 1:
      call(run, glColorPointerEXT_op::op, {3 + below(from, 2), GL_UNSIGNED_BYTE, stride, 10, offset});
      return;
    case 2:
      call(run, glTexCoordPointer_op::op, {1 + below(from, 4), GL_SHORT, stride, offset});
      return;
    default:
      call(run, glInterleavedArrays_op::op, {GL_V2F + below(from, 14), stride * 4, offset});
  }
}

void set_format(stream* run) {
  source* from = &run->random;
  const u64 index = below(from, few_attributes);
  const u64 size = 1 + below(from, 4);
  const u64 relative = below(from, 16) * 4;
  const GLuint named = any_vao(run);
  switch (below(from, 5)) {
    case 0:
      call(run, glVertexAttribFormat_op::op, {index, size, one_of(from, types), below(from, 2), relative});
      return;
    case 1:
      call(run, glVertexAttribIFormat_op::op, {index, size, one_of(from, integer_types), relative});
      return;
    case 2:
      call(run, glVertexAttribLFormat_op::op, {index, size, GL_DOUBLE, relative});
      return;
    case 3:
      if (named) call(run, glVertexArrayAttribFormat_op::op, {named, index, size, one_of(from, types), 0, relative});
      return;
    default:
      if (named) call(run, glVertexArrayAttribIFormat_op::op, {named, index, size, GL_INT, relative});
  }
}

// Several at once lie in blocks of their own.
void set_several(stream* run, GLuint named) {
  const u32 count = 1 + below(&run->random, 4);
  auto* buffers = reinterpret_cast<GLuint*>(take_block(&run->memory, count * sizeof(GLuint)));
  auto* offsets = reinterpret_cast<std::int64_t*>(take_block(&run->memory, count * sizeof(std::int64_t)));
  auto* strides = reinterpret_cast<GLsizei*>(take_block(&run->memory, count * sizeof(GLsizei)));
  for (u32 i = 0; i < count; ++i) {
    buffers[i] = any_buffer(run);
    offsets[i] = below(&run->random, 32) * 4;
    strides[i] = static_cast<GLsizei>(4 + below(&run->random, 8) * 4);
  }
  const u64 first = below(&run->random, 4);
  const u64 lists[] = {driver::bits_of(buffers), driver::bits_of(offsets), driver::bits_of(strides)};
  if (named) {
    call(run, glVertexArrayVertexBuffers_op::op, {named, first, count, lists[0], lists[1], lists[2]});
  } else {
    call(run, glBindVertexBuffers_op::op, {first, count, lists[0], lists[1], lists[2]});
  }
}

void set_binding(stream* run) {
  source* from = &run->random;
  const u64 index = below(from, few_attributes);
  const GLuint named = one_in(from, 2) ? any_vao(run) : 0;
  switch (below(from, 5)) {
    case 0:
      call(run, glVertexAttribBinding_op::op, {index, below(from, few_attributes)});
      return;
    case 1:
      call(run, glVertexBindingDivisor_op::op, {index, below(from, 3)});
      return;
    case 2:
      call(run, glBindVertexBuffer_op::op,
           {index, any_buffer(run), below(from, 32) * u64{4}, 4 + below(from, 9) * u64{4}});
      return;
    case 3:
      call(run, glVertexAttribDivisor_op::op, {index, below(from, 3)});
      return;
    default:
      set_several(run, named);
  }
}

void set_named(stream* run) {
  source* from = &run->random;
  const GLuint named = any_vao(run);
  const u64 index = below(from, few_attributes);
  if (!named) return;
  switch (below(from, 5)) {
    case 0:
      call(run, glVertexArrayElementBuffer_op::op, {named, any_buffer(run)});
      return;
    case 1:
      call(run, glVertexArrayVertexBuffer_op::op, {named, index, any_buffer(run), 16, 20});
      return;
    case 2:
      call(run, glVertexArrayAttribBinding_op::op, {named, index, below(from, few_attributes)});
      return;
    case 3:
      call(run, glVertexArrayBindingDivisor_op::op, {named, index, below(from, 3)});
      return;
    default:
      call(run, one_in(from, 2) ? glEnableVertexArrayAttrib_op::op : glDisableVertexArrayAttrib_op::op, {named, index});
  }
}

void switch_array(stream* run) {
  source* from = &run->random;
  constexpr GLenum arrays[] = {GL_VERTEX_ARRAY,    GL_COLOR_ARRAY,           GL_NORMAL_ARRAY, GL_TEXTURE_COORD_ARRAY,
                               GL_FOG_COORD_ARRAY, GL_SECONDARY_COLOR_ARRAY, GL_INDEX_ARRAY,  GL_EDGE_FLAG_ARRAY};
  switch (below(from, 5)) {
    case 0:
      call(run, glEnableVertexAttribArray_op::op, {below(from, few_attributes)});
      return;
    case 1:
      call(run, glDisableVertexAttribArray_op::op, {below(from, 16)});
      return;
    case 2:
      call(run, glEnableClientState_op::op, {one_of(from, arrays)});
      return;
    case 3:
      call(run, glDisableClientState_op::op, {one_of(from, arrays)});
      return;
    default:
      call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + below(from, texture_units)});
  }
}

// Indices in a buffer that was deleted while another object was bound: where the own context does not follow, nobody
// says that it does not come back with the client state.
bool has_deleted_elements(const gl_model& model) {
  const buffer_pointer& elements = model.vao->elements;
  return elements && named_buffer(model, elements->name) != elements.get();
}

void save_client_state(stream* run) {
  constexpr GLbitfield masks[] = {GL_CLIENT_PIXEL_STORE_BIT, GL_CLIENT_VERTEX_ARRAY_BIT, GL_CLIENT_ALL_ATTRIB_BITS, 0};
  const bool may_push = home(&run->wide) == &run->wide.app || !has_deleted_elements(run->wide.part);
  // Mostly nothing is put aside, for much cannot be done meanwhile.
  if (may_push && one_in(&run->random, 4)) {
    call(run, glPushClientAttrib_op::op, {one_of(&run->random, masks)});
  } else {
    call(run, glPopClientAttrib_op::op, {});
  }
}

}  // namespace

void call(stream* run, int op, std::initializer_list<u64> arguments) {
  static const std::vector<std::vector<int>> names = names_of_functions();
  const std::vector<int>& all = names[static_cast<std::size_t>(op)];
  const bool by_another = all.size() > 1 && one_in(&run->random, 6);
  make_call(run, by_another ? all[below(&run->random, static_cast<u32>(all.size()))] : op, arguments);
}

GLuint any_buffer(stream* run) {
  return any_of(&run->random, run->wide.part.buffers);
}

GLuint any_unmapped_buffer(stream* run) {
  const GLuint name = any_buffer(run);
  const buffer_object* buffer = named_buffer(run->wide.part, name);
  return buffer && !buffer->is_mapped && !buffer->bytes.empty() ? name : 0;
}

GLuint any_vao(stream* run) {
  return any_of(&run->random, run->wide.part.vaos);
}

void choose_objects(stream* run) {
  constexpr void (*choices[])(stream*) = {
      make_buffers,  define_buffer,   define_buffer,   replace_contents, replace_contents, copy_contents,
      delete_buffer, bind_buffer,     bind_buffer,     make_object,      delete_object,    bind_object,
      bind_object,   point_attribute, point_attribute, point_fixed,      set_format,       set_binding,
      set_binding,   set_named,       switch_array,    switch_array,     switch_array,     save_client_state};
  one_of(&run->random, choices)(run);
}

}  // namespace fuzz
