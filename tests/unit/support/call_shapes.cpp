#include "support/call_shapes.h"

#include <array>
#include <string>

namespace ops {

namespace {

u32 first_digit(const std::string& name) {
  const std::size_t at = name.find_first_of("0123456789");
  return at == std::string::npos ? 0 : static_cast<u32>(name[at] - '0');
}

// glUniform3fv: 3; glUniformMatrix3fv: 9; glUniformMatrix3x2fv: 6.
u32 components_by_name(const std::string& name) {
  const u32 first = first_digit(name);
  if (name.find("Matrix") == std::string::npos) return first;
  const std::size_t at = name.find_first_of("0123456789");
  return first * (name[at + 1] == 'x' ? static_cast<u32>(name[at + 2] - '0') : first);
}

// Elements of each vector that the name of an op of the fixed vector family says. All of a packed one are in one word.
u32 elements_by_name(const std::string& name) {
  if (name.ends_with("uiv") && name.find('P') != std::string::npos && name[name.find('P') + 1] < ':') return 1;
  if (name.starts_with("glRect")) return 2;
  if (name == "glClipPlane" || name == "glViewportIndexedfv" || name == "glScissorIndexedv") return 4;
  if (name.find("Matrix") != std::string::npos) return 16;
  const u32 digit = first_digit(name);
  return digit ? digit : 1;  // glIndex, glEdgeFlag, glFogCoord
}

u32 last(const row& row) {
  return row.count - 1;
}

// The count stands before the values, and before the word that matrices have for their order.
u32 uniform_count_at(const row& row) {
  const bool is_matrix = std::string(row.name).find("Matrix") != std::string::npos;
  return last(row) - (is_matrix ? 2 : 1);
}

call_shape items(u32 count_at, u32 item_bytes, u32 data_at) {
  return {.what = reads::items, .count_at = count_at, .item_bytes = item_bytes, .data_at = data_at};
}

call_shape sized(u32 count_at, u32 data_at, bool unpacks) {
  return {.what = reads::sized, .count_at = count_at, .data_at = data_at, .unpacks = unpacks};
}

call_shape image_call(const row& row) {
  const std::string name = row.name;
  const int dimensions = name == "glDrawPixels" ? 2 : static_cast<int>(first_digit(name));
  u32 first_size = 3;
  if (name.starts_with("glTexSub") || name.starts_with("glTextureSub")) first_size = 2 + static_cast<u32>(dimensions);
  if (name == "glDrawPixels") first_size = 0;
  return {
      .what = reads::image, .count_at = first_size, .data_at = last(row), .dimensions = dimensions, .unpacks = true};
}

call_shape draw(reads what, u32 count_at, u32 data_at) {
  return {.what = what, .count_at = count_at, .data_at = data_at};
}

call_shape plain_shape(const row& row) {
  switch (row.op) {
    case glDrawPixels_op::op:
      return image_call(row);
    case glDrawArraysInstanced_op::op:
    case glDrawArraysInstancedBaseInstance_op::op:
    case glDrawArraysEXT_op::op:
      return draw(reads::array_draw, 1, 0);
    case glDrawElementsInstanced_op::op:
    case glDrawElementsBaseVertex_op::op:
    case glDrawElementsInstancedBaseVertex_op::op:
    case glDrawElementsInstancedBaseInstance_op::op:
    case glDrawElementsInstancedBaseVertexBaseInstance_op::op:
      return draw(reads::element_draw, 1, 3);
    case glDrawRangeElementsBaseVertex_op::op:
      return draw(reads::element_draw, 3, 5);
    default:
      return {.what = reads::some_bytes};
  }
}

call_shape own_shape(const row& row) {
  switch (row.op) {
    case glFenceSync_op::op:
    case glIsSync_op::op:
    case glDeleteSync_op::op:
    case glClientWaitSync_op::op:
    case glWaitSync_op::op:
    case glGetSynciv_op::op:
    case glGetBooleanv_op::op:
    case glGetDoublev_op::op:
    case glGetError_op::op:
    case glGetFloatv_op::op:
    case glGetInteger64v_op::op:
    case glGetIntegerv_op::op:
    case glGetString_op::op:
    case glGetStringi_op::op:
    case glGetQueryObjectiv_op::op:
    case glGetQueryObjectivARB_op::op:
    case glGetQueryObjecti64v_op::op:
    case glGetQueryObjecti64vEXT_op::op:
    case glGetQueryObjectuiv_op::op:
    case glGetQueryObjectuivARB_op::op:
    case glGetQueryObjectuivEXT_op::op:
    case glGetQueryObjectui64v_op::op:
    case glGetQueryObjectui64vEXT_op::op:
    case glFlushMappedBufferRange_op::op:
    case glFlushMappedNamedBufferRange_op::op:
    case glGetBufferPointerv_op::op:
    case glGetNamedBufferPointerv_op::op:
    case glMapBuffer_op::op:
    case glMapBufferRange_op::op:
    case glMapNamedBuffer_op::op:
    case glMapNamedBufferRange_op::op:
    case glUnmapBuffer_op::op:
    case glUnmapNamedBuffer_op::op:
      return {.what = reads::elsewhere};
    case glBindVertexBuffers_op::op:
    case glVertexArrayVertexBuffers_op::op:
      return {.what = reads::arrays, .count_at = row.count - 4};
    case glPolygonStipple_op::op:
      return {.what = reads::stipple, .data_at = 0, .unpacks = true};
    case glPixelMapfv_op::op:
    case glPixelMapuiv_op::op:
    case glPixelMapusv_op::op: {
      call_shape map = items(1, row.parameters[2].element_size, 2);
      map.unpacks = true;
      return map;
    }
    case glCallLists_op::op:
      return {.what = reads::lists, .count_at = 0, .data_at = 2};
    case glBufferData_op::op:
    case glNamedBufferData_op::op:
      return sized(1, 2, false);
    case glBufferSubData_op::op:
    case glNamedBufferSubData_op::op:
      return sized(2, 3, false);
    case glDeleteFramebuffers_op::op:
    case glDeleteBuffers_op::op:
    case glDeleteVertexArrays_op::op:
      return items(0, sizeof(GLuint), 1);
    case glDrawBuffers_op::op:
      return items(0, sizeof(GLenum), 1);
    case glBindAttribLocation_op::op:
      return {.what = reads::text, .data_at = 2};
    case glShaderSource_op::op:
    case glCreateShaderProgramv_op::op:
    case glTransformFeedbackVaryings_op::op:
    case glTransformFeedbackVaryingsEXT_op::op:
      return {.what = reads::source, .count_at = 1, .data_at = 2};
    case glUniformMatrix2x3fv_op::op:
      return items(1, 6 * sizeof(GLfloat), 3);
    case glDrawArrays_op::op:
      return draw(reads::array_draw, 1, 0);
    case glDrawElements_op::op:
      return draw(reads::element_draw, 1, 3);
    case glDrawRangeElements_op::op:
      return draw(reads::element_draw, 3, 5);
    case glArrayElement_op::op:
    case glArrayElementEXT_op::op:
      return draw(reads::array_element, 0, 0);
    case glBeginQueryARB_op::op:
    case glBeginQueryEXT_op::op:
    case glBeginQueryIndexed_op::op:
    case glBeginQuery_op::op:
    case glBindBuffer_op::op:
    case glBindFramebuffer_op::op:
    case glBlitFramebuffer_op::op:
    case glBindVertexArray_op::op:
    case glBindVertexBuffer_op::op:
    case glClientActiveTexture_op::op:
    case glColorPointerEXT_op::op:
    case glColorPointer_op::op:
    case glCopyPixels_op::op:
    case glCopyTexImage1D_op::op:
    case glCopyTexImage2D_op::op:
    case glCopyTexSubImage1D_op::op:
    case glCopyTexSubImage2D_op::op:
    case glCopyTexSubImage3D_op::op:
    case glCreateProgram_op::op:
    case glCreateShader_op::op:
    case glDisableClientState_op::op:
    case glDisableVertexArrayAttrib_op::op:
    case glDisableVertexAttribArray_op::op:
    case glDispatchComputeIndirect_op::op:
    case glDrawArraysIndirect_op::op:
    case glDrawElementsIndirect_op::op:
    case glEdgeFlagPointerEXT_op::op:
    case glEdgeFlagPointer_op::op:
    case glEnableClientState_op::op:
    case glEnableVertexArrayAttrib_op::op:
    case glEnableVertexAttribArray_op::op:
    case glEndQueryARB_op::op:
    case glEndQueryEXT_op::op:
    case glEndQueryIndexed_op::op:
    case glEndQuery_op::op:
    case glFlush_op::op:
    case glFogCoordPointer_op::op:
    case glGetBufferSubData_op::op:
    case glGetCompressedTexImage_op::op:
    case glGetCompressedTextureImage_op::op:
    case glGetCompressedTextureSubImage_op::op:
    case glGetGraphicsResetStatus_op::op:
    case glGetTexImage_op::op:
    case glGetTextureImage_op::op:
    case glGetTextureSubImage_op::op:
    case glGetnCompressedTexImage_op::op:
    case glGetnTexImage_op::op:
    case glIndexPointerEXT_op::op:
    case glIndexPointer_op::op:
    case glInterleavedArrays_op::op:
    case glMultiDrawArraysIndirectCount_op::op:
    case glMultiDrawArraysIndirect_op::op:
    case glMultiDrawArrays_op::op:
    case glMultiDrawElementsBaseVertex_op::op:
    case glMultiDrawElementsIndirectCount_op::op:
    case glMultiDrawElementsIndirect_op::op:
    case glMultiDrawElements_op::op:
    case glNormalPointerEXT_op::op:
    case glNormalPointer_op::op:
    case glPixelStoref_op::op:
    case glPixelStorei_op::op:
    case glQueryCounter_op::op:
    case glPopClientAttrib_op::op:
    case glPushClientAttrib_op::op:
    case glReadPixels_op::op:
    case glSecondaryColorPointer_op::op:
    case glTexCoordPointerEXT_op::op:
    case glTexCoordPointer_op::op:
    case glVertexArrayAttribBinding_op::op:
    case glVertexArrayAttribFormat_op::op:
    case glVertexArrayAttribIFormat_op::op:
    case glVertexArrayAttribLFormat_op::op:
    case glVertexArrayBindingDivisor_op::op:
    case glVertexArrayElementBuffer_op::op:
    case glVertexArrayVertexBuffer_op::op:
    case glVertexAttribBinding_op::op:
    case glVertexAttribDivisorARB_op::op:
    case glVertexAttribDivisor_op::op:
    case glVertexAttribFormat_op::op:
    case glVertexAttribIFormat_op::op:
    case glVertexAttribIPointer_op::op:
    case glVertexAttribLFormat_op::op:
    case glVertexAttribLPointer_op::op:
    case glVertexAttribPointer_op::op:
    case glVertexBindingDivisor_op::op:
    case glVertexPointerEXT_op::op:
    case glVertexPointer_op::op:
      return {.what = reads::nothing};
    default:
      break;
  }
  const call_shape as_plain = plain_shape(row);
  return as_plain.what == reads::some_bytes ? call_shape{.what = reads::unknown} : as_plain;
}

// Arrays of the wide ops, of as many items as the count says; uniforms and viewports have several elements in each.
call_shape items_shape(const row& row) {
  switch (row.op) {
    case glUniformSubroutinesuiv_op::op:
    case glInvalidateFramebuffer_op::op:
    case glInvalidateNamedFramebufferData_op::op:
    case glNamedFramebufferDrawBuffers_op::op:
    case glBindBuffersBase_op::op:
    case glBindTextures_op::op:
    case glBindSamplers_op::op:
    case glBindImageTextures_op::op:
      return items(last(row) - 1, sizeof(GLuint), last(row));
    case glInvalidateSubFramebuffer_op::op:
    case glInvalidateNamedFramebufferSubData_op::op:
      return items(1, sizeof(GLenum), 2);
    case glDepthRangeArrayv_op::op:
      return items(1, 2 * sizeof(GLdouble), 2);
    case glViewportArrayv_op::op:
    case glScissorArrayv_op::op:
      return items(1, 4 * sizeof(GLfloat), 2);
    default:
      break;
  }
  const std::string name = row.name;
  if (name.starts_with("glDelete")) return items(0, sizeof(GLuint), 1);
  if (name.find("Uniform") == std::string::npos) return {.what = reads::unknown};
  return items(uniform_count_at(row), components_by_name(name) * row.parameters[last(row)].element_size, last(row));
}

u32 count_of_arrays(const row& row) {
  return row.op == glShaderBinary_op::op ? 0 : 2;
}

call_shape make_shape(const row& row) {
  switch (row.threaded) {
    case family::plain:
      return plain_shape(row);
    case family::query:
      return {.what = reads::some_bytes};
    case family::vector:
      return {.what = reads::vectors, .item_bytes = elements_by_name(row.name)};
    case family::parameters:
      return {.what = reads::parameters, .count_at = row.count - 2, .data_at = last(row)};
    case family::names:
      return items(0, sizeof(GLuint), 1);
    case family::uniform:
      return items(uniform_count_at(row), components_by_name(row.name) * u32{sizeof(GLfloat)}, last(row));
    case family::items:
      return items_shape(row);
    case family::text:
      return {.what = reads::text, .data_at = last(row)};
    case family::texel:
      return {.what = reads::texel, .count_at = row.count - 3, .data_at = last(row)};
    case family::arrays:
      return {.what = reads::arrays, .count_at = count_of_arrays(row)};
    case family::app_only:
    case family::create:
    case family::none:
      return {.what = reads::nothing};
    case family::image:
      return image_call(row);
    case family::compressed:
      return sized(row.count - 2, last(row), true);
    case family::own:
      return own_shape(row);
    case family::alias:
      return {};
  }
  return {};
}

// A name of the same function reads the same.
std::array<call_shape, gl_all_count> make_shapes() {
  std::array<call_shape, gl_all_count> shapes;
  for (const row& row : every()) {
    shapes[static_cast<std::size_t>(row.op)] = make_shape(row.base >= 0 ? of(row.base) : row);
  }
  return shapes;
}

struct pname_values {
  parameter_set set;
  GLenum first, last;
  u32 values;
};

constexpr pname_values pnames[] = {
    {parameter_set::light, GL_AMBIENT, GL_POSITION, 4},
    {parameter_set::light, GL_SPOT_DIRECTION, GL_SPOT_DIRECTION, 3},
    {parameter_set::light, GL_SPOT_EXPONENT, GL_QUADRATIC_ATTENUATION, 1},
    {parameter_set::light_model, GL_LIGHT_MODEL_LOCAL_VIEWER, GL_LIGHT_MODEL_TWO_SIDE, 1},
    {parameter_set::light_model, GL_LIGHT_MODEL_AMBIENT, GL_LIGHT_MODEL_AMBIENT, 4},
    {parameter_set::material, GL_AMBIENT, GL_SPECULAR, 4},
    {parameter_set::material, GL_EMISSION, GL_EMISSION, 4},
    {parameter_set::material, GL_AMBIENT_AND_DIFFUSE, GL_AMBIENT_AND_DIFFUSE, 4},
    {parameter_set::material, GL_SHININESS, GL_SHININESS, 1},
    {parameter_set::material, GL_COLOR_INDEXES, GL_COLOR_INDEXES, 3},
    {parameter_set::tex_gen, GL_TEXTURE_GEN_MODE, GL_TEXTURE_GEN_MODE, 1},
    {parameter_set::tex_gen, GL_OBJECT_PLANE, GL_EYE_PLANE, 4},
    {parameter_set::tex_env, GL_TEXTURE_ENV_COLOR, GL_TEXTURE_ENV_COLOR, 4},
    {parameter_set::tex_env, GL_TEXTURE_ENV, GL_TEXTURE_ENV, 4},
    {parameter_set::tex, GL_TEXTURE_BORDER_COLOR, GL_TEXTURE_BORDER_COLOR, 4},
    {parameter_set::tex, GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_T, 1},
    {parameter_set::tex, GL_TEXTURE_PRIORITY, GL_TEXTURE_PRIORITY, 1},
    {parameter_set::tex, GL_TEXTURE_WRAP_R, GL_TEXTURE_WRAP_R, 1},
    {parameter_set::tex, GL_TEXTURE_COMPARE_FAIL_VALUE_ARB, GL_TEXTURE_COMPARE_FAIL_VALUE_ARB, 1},
    {parameter_set::tex, GL_TEXTURE_MIN_LOD, GL_TEXTURE_MAX_LEVEL, 1},
    {parameter_set::tex, GL_GENERATE_MIPMAP, GL_GENERATE_MIPMAP, 1},
    {parameter_set::tex, GL_TEXTURE_MAX_ANISOTROPY, GL_TEXTURE_MAX_ANISOTROPY, 1},
    {parameter_set::tex, GL_TEXTURE_LOD_BIAS, GL_TEXTURE_LOD_BIAS, 1},
    {parameter_set::tex, GL_DEPTH_TEXTURE_MODE, GL_TEXTURE_COMPARE_FUNC, 1},
    {parameter_set::fog, GL_FOG_INDEX, GL_FOG_MODE, 1},
    {parameter_set::fog, GL_FOG_COLOR, GL_FOG_COLOR, 4},
    {parameter_set::point, GL_POINT_SIZE_MIN, GL_POINT_FADE_THRESHOLD_SIZE, 1},
    {parameter_set::point, GL_POINT_SPRITE_COORD_ORIGIN, GL_POINT_SPRITE_COORD_ORIGIN, 1},
    {parameter_set::point, GL_POINT_DISTANCE_ATTENUATION, GL_POINT_DISTANCE_ATTENUATION, 3},
    {parameter_set::patch, GL_PATCH_DEFAULT_INNER_LEVEL, GL_PATCH_DEFAULT_INNER_LEVEL, 2},
    {parameter_set::patch, GL_PATCH_DEFAULT_OUTER_LEVEL, GL_PATCH_DEFAULT_OUTER_LEVEL, 4}};

}  // namespace

const call_shape& shape_of(int op) {
  static const std::array<call_shape, gl_all_count> shapes = make_shapes();
  return shapes[static_cast<std::size_t>(op)];
}

std::vector<std::string> ops_without_shape() {
  std::vector<std::string> names;
  for (const row& row : every()) {
    if (shape_of(row.op).what == reads::unknown) names.push_back(row.name);
  }
  return names;
}

u32 values_of(parameter_set set, GLenum pname) {
  for (const pname_values& one : pnames) {
    if (one.set == set && pname >= one.first && pname <= one.last) return one.values;
  }
  return 0;
}

parameter_set set_of(const row& row) {
  const std::string name = row.name;
  if (name.starts_with("glLightModel")) return parameter_set::light_model;
  if (name.starts_with("glLight")) return parameter_set::light;
  if (name.starts_with("glMaterial")) return parameter_set::material;
  if (name.starts_with("glTexGen")) return parameter_set::tex_gen;
  if (name.starts_with("glTexEnv")) return parameter_set::tex_env;
  if (name.starts_with("glTexParameter")) return parameter_set::tex;
  if (name.starts_with("glFog")) return parameter_set::fog;
  if (name.starts_with("glPatch")) return parameter_set::patch;
  return parameter_set::point;
}

}  // namespace ops
