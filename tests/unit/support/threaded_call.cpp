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
      return row.count;
    default:
      return row.op == glDrawBuffers_op::op || row.op == glBindAttribLocation_op::op ? row.count : 0;
  }
}

void add_payload(prepared_call* call, u32 argument, std::size_t bytes, u32 slot) {
  call->payloads.push_back({argument, point_at_memory(call, argument, bytes), slot});
}

void add_payload(prepared_call* call, u32 argument, std::size_t bytes) {
  add_payload(call, argument, bytes, record_slot(*call->travels));
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
  call->arguments[1] = std::size(strings);
  call->arguments[shape.data_at] = driver::bits_of(&strings[0]);
  call->arguments[3] = 0;
  call->changes_on_the_way = true;
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
    case ops::reads::element_draw:
      call->arguments[shape.count_at + 1] = GL_UNSIGNED_SHORT;
      return prepare_items(call, shape, some_items, sizeof(GLushort));
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

// What is peculiar to calls whose ops have an encoder of their own, besides what they read.
void prepare_own(prepared_call* call) {
  switch (call->travels->op) {
    case glBufferData_op::op:
    case glBufferSubData_op::op:
      // The application's own context gets no contents.
      call->mirrored_arguments = call->arguments;
      call->mirrored_arguments[ops::shape_of(call->travels->op).data_at] = 0;
      return;
    case glUniformMatrix2x3fv_op::op:
      // So few travel as the application's own pointer.
      call->payloads.clear();
      return;
    case glGetBufferSubData_op::op:
      call->is_mirrored = false;
      return;
    case glReadPixels_op::op:
      call->is_mirrored = false;
      return prepare_copy(call, {2, 3, 4, 5});
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
    case ops::family::alias:
      ADD_FAILURE() << call->travels->name << " is an alias of an alias";
      return;
    default:
      prepare_reading(call);
      return prepare_own(call);
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
  call.arguments = ops::distinctive(*call.travels);
  call.mirrored_arguments.fill(~u64{0});
  prepare_by_family(&call);
  if (call.mirrored_arguments[0] == ~u64{0}) call.mirrored_arguments = call.arguments;
  return call;
}

}  // namespace threaded
