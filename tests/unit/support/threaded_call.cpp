#include "support/threaded_call.h"

#include <cstring>

#include "support/call_shapes.h"

namespace threaded {

namespace {

// How many of whatever an argument counts: things, or bytes.
constexpr u32 some_items = 3;
constexpr u32 some_size = 37;

// Where a copy that is small lies in the record; 0 for a block of its own whatever its size.
u32 record_slot(const ops::row& row) {
  switch (row.threaded) {
    case ops::family::vector:
    case ops::family::parameters:
    case ops::family::names:
    case ops::family::uniform:
    case ops::family::items:
    case ops::family::text:
    case ops::family::texel:
      return row.count;
    default:
      if (row.op == glDeleteBuffers_op::op || row.op == glDeleteVertexArrays_op::op) return row.count;
      if (row.op == glDeleteFramebuffers_op::op) return row.count;
      return row.op == glDrawBuffers_op::op || row.op == glBindAttribLocation_op::op ? row.count : 0;
  }
}

void add_payload(prepared_call* call, u32 argument, std::size_t bytes, u32 slot) {
  call->payloads.push_back({argument, point_at_memory(call, argument, bytes), slot});
}

void add_payload(prepared_call* call, u32 argument, std::size_t bytes) {
  const u32 slot = record_slot(*call->travels);
  constexpr u32 slots = 32;
  const bool fits = bytes <= (slots - call->travels->count) * sizeof(u64);
  add_payload(call, argument, bytes, fits ? slot : 0);
}

void prepare_vectors(prepared_call* call, const ops::call_shape& shape) {
  const ops::row& row = *call->travels;
  u32 slot = row.count;
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    add_payload(call, i, std::size_t{shape.item_bytes} * row.parameters[i].element_size, slot);
    slot += 2;  // only the rectangles have a second
  }
}

// A pname of which there are several values.
GLenum pname_of(ops::parameter_set set) {
  switch (set) {
    case ops::parameter_set::light:
      return GL_POSITION;
    case ops::parameter_set::light_model:
      return GL_LIGHT_MODEL_AMBIENT;
    case ops::parameter_set::material:
      return GL_EMISSION;
    case ops::parameter_set::tex_gen:
      return GL_EYE_PLANE;
    case ops::parameter_set::tex_env:
      return GL_TEXTURE_ENV_COLOR;
    case ops::parameter_set::tex:
      return GL_TEXTURE_BORDER_COLOR;
    case ops::parameter_set::fog:
      return GL_FOG_COLOR;
    case ops::parameter_set::point:
      return GL_POINT_DISTANCE_ATTENUATION;
    case ops::parameter_set::patch:
      return GL_PATCH_DEFAULT_OUTER_LEVEL;
  }
  return 0;
}

void prepare_parameters(prepared_call* call, const ops::call_shape& shape) {
  const ops::row& row = *call->travels;
  const ops::parameter_set set = ops::set_of(row);
  const GLenum pname = pname_of(set);
  call->arguments[shape.count_at] = pname;
  add_payload(call, shape.data_at,
              std::size_t{ops::values_of(set, pname)} * row.parameters[shape.data_at].element_size);
}

// Rows of 3 pixels of 3 bytes, padded to 12.
void prepare_image(prepared_call* call, const ops::call_shape& shape) {
  constexpr u64 sizes[] = {3, 2, 2};
  const u32 count = call->travels->count;
  std::size_t bytes = 12;
  for (u32 i = 0; i < static_cast<u32>(shape.dimensions); ++i) {
    call->arguments[shape.count_at + i] = sizes[i];
    if (i > 0) bytes *= sizes[i];
  }
  call->arguments[count - 3] = GL_RGB;
  call->arguments[count - 2] = GL_UNSIGNED_BYTE;
  add_payload(call, shape.data_at, bytes);
}

void prepare_items(prepared_call* call, const ops::call_shape& shape, u32 count, std::size_t item_bytes) {
  call->arguments[shape.count_at] = count;
  add_payload(call, shape.data_at, count * item_bytes);
}

void prepare_text(prepared_call* call, const ops::call_shape& shape) {
  constexpr char text[] = "attribute";
  std::vector<u8>& memory = point_at_memory(call, shape.data_at, sizeof text);
  std::memcpy(memory.data(), text, sizeof text);
  call->payloads.push_back({shape.data_at, memory, record_slot(*call->travels)});
}

void prepare_source(prepared_call* call, const ops::call_shape& shape) {
  static const GLchar* const strings[] = {"void ", "main() {}"};
  call->arguments[shape.count_at] = std::size(strings);
  call->arguments[shape.data_at] = driver::bits_of(&strings[0]);
  if (call->travels->op == glShaderSource_op::op) call->arguments[3] = 0;
  call->changes_on_the_way = true;
}

void prepare_texel(prepared_call* call, const ops::call_shape& shape) {
  call->arguments[shape.count_at] = GL_RGB;
  call->arguments[shape.count_at + 1] = GL_FLOAT;
  add_payload(call, shape.data_at, 3 * sizeof(GLfloat));
}

// Short ones, which lie in the record one behind the other, each at a slot of its own.
void prepare_arrays(prepared_call* call, const ops::call_shape& shape) {
  const ops::row& row = *call->travels;
  u32 slot = row.count;
  call->arguments[shape.count_at] = some_items;
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    std::size_t bytes = some_items * row.parameters[i].element_size;
    if (row.op == glShaderBinary_op::op && i == 3) call->arguments[4] = bytes = some_size;
    if (row.op == glSpecializeShader_op::op && i == 1) bytes = sizeof "ab";
    add_payload(call, i, bytes, slot);
    slot += static_cast<u32>((bytes + sizeof(u64) - 1) / sizeof(u64));
  }
  if (row.op != glSpecializeShader_op::op) return;
  call->memory.front().back() = 0;
  call->payloads.front().bytes.back() = 0;
}

void prepare_reading(prepared_call* call) {
  const ops::call_shape& shape = ops::shape_of(call->travels->op);
  switch (shape.what) {
    case ops::reads::unknown:
      ADD_FAILURE() << call->travels->name << " has no shape in call_shapes.cpp";
      return;
    case ops::reads::vectors:
      return prepare_vectors(call, shape);
    case ops::reads::parameters:
      return prepare_parameters(call, shape);
    case ops::reads::items:
      return prepare_items(call, shape, some_items, shape.item_bytes);
    case ops::reads::image:
      return prepare_image(call, shape);
    case ops::reads::sized:
      return prepare_items(call, shape, some_size, 1);
    case ops::reads::lists:
      call->arguments[shape.count_at + 1] = GL_3_BYTES;
      return prepare_items(call, shape, some_items, 3);
    case ops::reads::stipple:
      return add_payload(call, shape.data_at, ops::stipple_bytes);
    case ops::reads::text:
      return prepare_text(call, shape);
    case ops::reads::source:
      return prepare_source(call, shape);
    case ops::reads::texel:
      return prepare_texel(call, shape);
    case ops::reads::arrays:
      return prepare_arrays(call, shape);
    case ops::reads::element_draw:
      call->arguments[shape.count_at + 1] = GL_UNSIGNED_SHORT;
      return prepare_items(call, shape, some_items, sizeof(GLushort));
    case ops::reads::elsewhere:
    case ops::reads::nothing:
    case ops::reads::some_bytes:
    case ops::reads::array_draw:
    case ops::reads::array_element:
      return;
  }
}

void prepare_copy(prepared_call* call, std::initializer_list<u64> arguments) {
  std::copy(arguments.begin(), arguments.end(), call->arguments.begin());
  call->changes_on_the_way = true;
}

// Figures of draws in memory, which the application's own context is told of as one of no draws.
void prepare_figures(prepared_call* call, u32 data_at, u32 draws_at, std::size_t bytes) {
  const u32 count = call->travels->count;
  if (draws_at) {
    call->arguments[draws_at] = 2;
    call->arguments[count - 1] = 0;
    bytes *= 2;
  }
  add_payload(call, data_at, bytes, count);
  call->mirrored_arguments = call->arguments;
  if (draws_at) call->mirrored_arguments[draws_at] = 0;
}

void prepare_indirect_draw(prepared_call* call, const ops::row& several, u32 data_at, std::size_t bytes) {
  prepare_figures(call, data_at, 0, bytes);
  call->mirrored_as = &several;
  call->mirrored_arguments[data_at + 1] = call->mirrored_arguments[data_at + 2] = 0;
}

void prepare_several_arrays(prepared_call* call) {
  call->arguments[3] = 3;
  add_payload(call, 1, 3 * sizeof(GLint), 4);
  add_payload(call, 2, 3 * sizeof(GLsizei), 6);
}

void prepare_several_elements(prepared_call* call) {
  static const GLsizei counts[] = {1, 2};
  static const GLushort values[] = {4, 5};
  static const void* const indices[] = {values, values};
  static const GLint bases[] = {6, 7};
  call->arguments[1] = driver::bits_of(&counts[0]);
  call->arguments[2] = GL_UNSIGNED_SHORT;
  call->arguments[3] = driver::bits_of(&indices[0]);
  call->arguments[4] = std::size(counts);
  if (call->travels->count > 5) call->arguments[5] = driver::bits_of(&bases[0]);
  call->changes_on_the_way = true;
}

// Draws of several ranges, and by figures in memory. Result: whether the call is one.
bool prepare_draw(prepared_call* call) {
  switch (call->travels->op) {
    case glMultiDrawArrays_op::op:
      prepare_several_arrays(call);
      return true;
    case glMultiDrawElements_op::op:
    case glMultiDrawElementsBaseVertex_op::op:
      prepare_several_elements(call);
      return true;
    case glDrawArraysIndirect_op::op:
      prepare_indirect_draw(call, ops::of(glMultiDrawArraysIndirect_op::op), 1, 16);
      return true;
    case glDrawElementsIndirect_op::op:
      prepare_indirect_draw(call, ops::of(glMultiDrawElementsIndirect_op::op), 2, 20);
      return true;
    case glMultiDrawArraysIndirect_op::op:
      prepare_figures(call, 1, 2, 16);
      return true;
    case glMultiDrawElementsIndirect_op::op:
      prepare_figures(call, 2, 3, 20);
      return true;
    case glMultiDrawArraysIndirectCount_op::op:
      prepare_figures(call, 1, 3, 16);
      return true;
    case glMultiDrawElementsIndirectCount_op::op:
      prepare_figures(call, 2, 4, 20);
      return true;
    case glDispatchComputeIndirect_op::op:
      call->mirrored_as = &ops::of(glDispatchCompute_op::op);
      call->mirrored_arguments.fill(0);
      return true;
    default:
      return false;
  }
}

// What is peculiar to calls whose ops have an encoder of their own, besides what they read.
void prepare_own(prepared_call* call) {
  if (prepare_draw(call)) return;
  switch (call->travels->op) {
    case glBufferData_op::op:
    case glBufferSubData_op::op:
    case glNamedBufferData_op::op:
    case glNamedBufferSubData_op::op:
      // The application's own context gets no contents.
      call->mirrored_arguments = call->arguments;
      call->mirrored_arguments[ops::shape_of(call->travels->op).data_at] = 0;
      return;
    case glUniformMatrix2x3fv_op::op:
      // So few travel as the application's own pointer, in the basic mode.
      if (call->travels->threaded == ops::family::own) call->payloads.clear();
      return;
    case glGetBufferSubData_op::op:
      call->is_mirrored = false;
      return;
    case glReadPixels_op::op:
      prepare_copy(call, {2, 3, 4, 5});
      call->is_mirrored = gl_ops_in_use > gl_op_count;  // a read of nothing, for the errors
      call->mirrored_arguments = call->arguments;
      call->mirrored_arguments[2] = call->mirrored_arguments[3] = 0;
      return;
    case glCopyPixels_op::op:
      return prepare_copy(call, {1, 2, 3, 4, GL_COLOR});
    case glCopyTexImage1D_op::op:
      return prepare_copy(call, {GL_TEXTURE_1D, 0, GL_RGBA, 1, 2, 3, 0});
    case glCopyTexImage2D_op::op:
      return prepare_copy(call, {GL_TEXTURE_2D, 0, GL_RGBA, 1, 2, 3, 4, 0});
    case glCopyTexSubImage1D_op::op:
      return prepare_copy(call, {GL_TEXTURE_1D, 0, 5, 1, 2, 3});
    case glCopyTexSubImage2D_op::op:
      return prepare_copy(call, {GL_TEXTURE_2D, 0, 5, 6, 1, 2, 3, 4});
    case glCopyTexSubImage3D_op::op:
      return prepare_copy(call, {GL_TEXTURE_3D, 0, 5, 6, 7, 1, 2, 3, 4});
    default:
      return;
  }
}

void prepare_by_family(prepared_call* call) {
  switch (call->travels->threaded) {
    case ops::family::plain:
      call->changes_on_the_way = call->travels->op == glViewportOffsetZ4_op::op;
      return;
    case ops::family::query:
      call->reaches_parts_always = false;
      call->changes_on_the_way = call->travels->op == glGetQueryObjectui64v_op::op;
      return;
    case ops::family::app_only:
      call->is_for_app_alone = true;
      return;
    case ops::family::alias:
      ADD_FAILURE() << call->travels->name << " is an alias of an alias";
      return;
    default:
      prepare_reading(call);
      return prepare_own(call);
  }
}

// With no pack buffer bound; in the basic mode they are queries.
bool is_texture_read(int op) {
  switch (op) {
    case glGetTexImage_op::op:
    case glGetCompressedTexImage_op::op:
    case glGetTextureImage_op::op:
    case glGetCompressedTextureImage_op::op:
    case glGetTextureSubImage_op::op:
    case glGetCompressedTextureSubImage_op::op:
    case glGetnTexImage_op::op:
    case glGetnCompressedTexImage_op::op:
      return ops::of(op).threaded == ops::family::own;
    default:
      return false;
  }
}

}  // namespace

std::vector<u8>& point_at_memory(prepared_call* call, u32 argument, std::size_t bytes) {
  std::vector<u8>& block = call->memory.emplace_back(bytes);
  for (std::size_t i = 0; i < bytes; ++i) block[i] = static_cast<u8>(7 * i + 31 * argument + 5);
  call->arguments[argument] = driver::bits_of(block.data());
  return block;
}

prepared_call prepare(const ops::row& row) {
  prepared_call call;
  call.entered = &row;
  call.travels = row.threaded == ops::family::alias ? &ops::of(row.base) : &row;
  call.mirrored_as = call.travels;
  call.arguments = ops::distinctive(*call.travels);
  call.mirrored_arguments.fill(~u64{0});
  prepare_by_family(&call);
  call.is_for_first_part = call.travels->first_part_answers || is_texture_read(call.travels->op);
  if (call.mirrored_arguments[0] == ~u64{0}) call.mirrored_arguments = call.arguments;
  return call;
}

}  // namespace threaded
