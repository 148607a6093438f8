#include "support/threaded_call.h"

#include <cctype>
#include <cstring>
#include <map>

namespace threaded {

namespace {

u32 first_digit(const std::string& name) {
  const std::size_t at = name.find_first_of("0123456789");
  return at == std::string::npos ? 0 : static_cast<u32>(name[at] - '0');
}

// glUniform3fv: 3; glUniformMatrix3fv: 9; glUniformMatrix3x2fv: 6.
u32 components_by_name(const std::string& name) {
  const std::size_t at = name.find_first_of("0123456789");
  const u32 first = first_digit(name);
  if (name.find("Matrix") == std::string::npos) return first;
  return first * (name[at + 1] == 'x' ? static_cast<u32>(name[at + 2] - '0') : first);
}

struct sized_name {
  const char* stem;
  GLenum pname;
  u32 elements;
};

constexpr sized_name sized_names[] = {
    {"glLightModel", GL_LIGHT_MODEL_AMBIENT, 4},
    {"glLight", GL_POSITION, 4},
    {"glMaterial", GL_EMISSION, 4},
    {"glTexGen", GL_EYE_PLANE, 4},
    {"glTexEnv", GL_TEXTURE_ENV_COLOR, 4},
    {"glTexParameter", GL_TEXTURE_BORDER_COLOR, 4},
    {"glFog", GL_FOG_COLOR, 4},
    {"glPointParameter", GL_POINT_DISTANCE_ATTENUATION, 3},
};

void add_payload(prepared_call* call, u32 argument, std::size_t bytes, u32 record_slot) {
  call->payloads.push_back({argument, point_at_memory(call, argument, bytes), record_slot});
}

void prepare_vectors(prepared_call* call) {
  const ops::row& row = *call->travels;
  u32 slot = row.count;
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    add_payload(call, i, std::size_t{elements_by_name(row.name)} * row.parameters[i].element_size, slot);
    slot += 2;  // only the rectangles have a second
  }
}

void prepare_sized(prepared_call* call) {
  const ops::row& row = *call->travels;
  for (const sized_name& sized : sized_names) {
    if (!std::string(row.name).starts_with(sized.stem)) continue;
    call->arguments[row.count - 2] = sized.pname;
    add_payload(call, row.count - 1, sized.elements * row.parameters[row.count - 1].element_size, row.count);
    return;
  }
  ADD_FAILURE() << row.name << " has no pname here";
}

void prepare_names(prepared_call* call) {
  call->arguments[0] = 3;
  add_payload(call, 1, 3 * sizeof(GLuint), 2);
}

void prepare_uniform(prepared_call* call) {
  const u32 count = call->travels->count;
  call->arguments[1] = 2;
  add_payload(call, count - 1, 2 * components_by_name(call->travels->name) * sizeof(GLfloat), count);
}

// Rows of 3 pixels of 3 bytes, padded to 12.
void prepare_image(prepared_call* call) {
  constexpr u64 sizes[] = {3, 2, 2};
  const std::string name = call->travels->name;
  const u32 count = call->travels->count;
  const u32 dimensions = first_digit(name);
  const u32 first = name.starts_with("glTexSub") ? 2 + dimensions : 3;
  std::size_t bytes = 12;
  for (u32 i = 0; i < dimensions; ++i) {
    call->arguments[first + i] = sizes[i];
    if (i > 0) bytes *= sizes[i];
  }
  call->arguments[count - 3] = GL_RGB;
  call->arguments[count - 2] = GL_UNSIGNED_BYTE;
  add_payload(call, count - 1, bytes, 0);
}

void prepare_compressed(prepared_call* call) {
  const u32 count = call->travels->count;
  call->arguments[count - 2] = 37;
  add_payload(call, count - 1, 37, 0);
}

void prepare_map(prepared_call* call) {
  call->arguments[1] = 7;
  add_payload(call, 2, 7 * call->travels->parameters[2].element_size, 0);
}

void prepare_elements(prepared_call* call) {
  const u32 count = call->travels->count;
  call->arguments[count - 3] = 5;
  call->arguments[count - 2] = GL_UNSIGNED_SHORT;
  add_payload(call, count - 1, 5 * sizeof(GLushort), 0);
}

// The application's own context gets no contents.
void prepare_buffer_data(prepared_call* call, u32 size_argument, u32 data_argument) {
  call->arguments[size_argument] = 33;
  add_payload(call, data_argument, 33, 0);
  call->mirrored_arguments = call->arguments;
  call->mirrored_arguments[data_argument] = 0;
}

void prepare_attribute_name(prepared_call* call) {
  std::vector<u8>& name = point_at_memory(call, 2, 10);
  std::memcpy(name.data(), "attribute", 10);
  call->payloads.push_back({2, name, 3});
}

void prepare_raw(prepared_call* call) {
  call->arguments[1] = 2;
  point_at_memory(call, 3, 2 * 6 * sizeof(GLfloat));
}

void prepare_source(prepared_call* call) {
  static const GLchar* const strings[] = {"void ", "main() {}"};
  call->arguments[1] = 2;
  call->arguments[2] = driver::bits_of(&strings[0]);
  call->arguments[3] = 0;
  call->changes_on_the_way = true;
}

void prepare_workers_only(prepared_call* call) {
  call->is_mirrored = false;
}

void prepare_read_pixels(prepared_call* call) {
  prepare_workers_only(call);
  for (u32 i = 0; i < 4; ++i) call->arguments[i] = 2 + i;
  call->changes_on_the_way = true;
}

void prepare_copy(prepared_call* call, std::initializer_list<u64> arguments) {
  std::copy(arguments.begin(), arguments.end(), call->arguments.begin());
  call->changes_on_the_way = true;
}

void as_it_is(prepared_call*) {}

// The ops that the op list gives a form of their own.
const std::map<int, void (*)(prepared_call*)>& own_forms() {
  static const std::map<int, void (*)(prepared_call*)> forms = {
      {glFinish_op::op, as_it_is},
      {glFlush_op::op, as_it_is},
      {glCreateProgram_op::op, as_it_is},
      {glCreateShader_op::op, as_it_is},
      {glEnableClientState_op::op, as_it_is},
      {glDisableClientState_op::op, as_it_is},
      {glEnableVertexAttribArray_op::op, as_it_is},
      {glDisableVertexAttribArray_op::op, as_it_is},
      {glClientActiveTexture_op::op, as_it_is},
      {glBindBuffer_op::op, as_it_is},
      {glBindFramebuffer_op::op, as_it_is},
      {glPixelStoref_op::op, as_it_is},
      {glPixelStorei_op::op, as_it_is},
      {glVertexPointer_op::op, as_it_is},
      {glNormalPointer_op::op, as_it_is},
      {glColorPointer_op::op, as_it_is},
      {glIndexPointer_op::op, as_it_is},
      {glTexCoordPointer_op::op, as_it_is},
      {glEdgeFlagPointer_op::op, as_it_is},
      {glFogCoordPointer_op::op, as_it_is},
      {glSecondaryColorPointer_op::op, as_it_is},
      {glVertexAttribPointer_op::op, as_it_is},
      {glVertexAttribIPointer_op::op, as_it_is},
      {glArrayElement_op::op, as_it_is},
      {glDrawArrays_op::op, as_it_is},
      {glDrawElements_op::op, prepare_elements},
      {glDrawRangeElements_op::op, prepare_elements},
      {glPolygonStipple_op::op, [](prepared_call* call) { add_payload(call, 0, 1024, 0); }},
      {glPixelMapfv_op::op, prepare_map},
      {glPixelMapuiv_op::op, prepare_map},
      {glPixelMapusv_op::op, prepare_map},
      {glCallLists_op::op,
       [](prepared_call* call) {
         call->arguments[0] = 5;
         call->arguments[1] = GL_3_BYTES;
         add_payload(call, 2, 15, 0);
       }},
      {glBufferData_op::op, [](prepared_call* call) { prepare_buffer_data(call, 1, 2); }},
      {glBufferSubData_op::op, [](prepared_call* call) { prepare_buffer_data(call, 2, 3); }},
      {glDrawBuffers_op::op, prepare_names},
      {glBindAttribLocation_op::op, prepare_attribute_name},
      {glUniformMatrix2x3fv_op::op, prepare_raw},
      {glShaderSource_op::op, prepare_source},
      {glGetBufferSubData_op::op, prepare_workers_only},
      {glReadPixels_op::op, prepare_read_pixels},
      {glCopyPixels_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {1, 2, 3, 4, GL_COLOR});
       }},
      {glCopyTexImage1D_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {GL_TEXTURE_1D, 0, GL_RGBA, 1, 2, 3, 0});
       }},
      {glCopyTexImage2D_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {GL_TEXTURE_2D, 0, GL_RGBA, 1, 2, 3, 4, 0});
       }},
      {glCopyTexSubImage1D_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {GL_TEXTURE_1D, 0, 5, 1, 2, 3});
       }},
      {glCopyTexSubImage2D_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {GL_TEXTURE_2D, 0, 5, 6, 1, 2, 3, 4});
       }},
      {glCopyTexSubImage3D_op::op,
       [](prepared_call* call) {
         prepare_copy(call, {GL_TEXTURE_3D, 0, 5, 6, 7, 1, 2, 3, 4});
       }},
  };
  return forms;
}

void prepare_own(prepared_call* call) {
  const auto form = own_forms().find(call->travels->op);
  if (form == own_forms().end()) {
    ADD_FAILURE() << call->travels->name << " has no form here";
    return;
  }
  form->second(call);
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
    case ops::family::vector:
      return prepare_vectors(call);
    case ops::family::parameters:
      return prepare_sized(call);
    case ops::family::names:
      return prepare_names(call);
    case ops::family::uniform:
      return prepare_uniform(call);
    case ops::family::image:
      return prepare_image(call);
    case ops::family::compressed:
      return prepare_compressed(call);
    case ops::family::own:
      return prepare_own(call);
    case ops::family::alias:
      ADD_FAILURE() << call->travels->name << " is an alias of an alias";
      return;
  }
}

}  // namespace

std::vector<u8>& point_at_memory(prepared_call* call, u32 argument, std::size_t bytes) {
  std::vector<u8>& block = call->memory.emplace_back(bytes);
  for (std::size_t i = 0; i < bytes; ++i) block[i] = static_cast<u8>(7 * i + 31 * argument + 5);
  call->arguments[argument] = driver::bits_of(block.data());
  return block;
}

u32 elements_by_name(const std::string& name) {
  if (name.starts_with("glRect")) return 2;
  if (name == "glClipPlane") return 4;
  if (name.find("Matrix") != std::string::npos) return 16;
  const u32 digit = first_digit(name);
  return digit ? digit : 1;  // glIndex, glEdgeFlag, glFogCoord
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
