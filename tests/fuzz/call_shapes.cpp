// What each function reads of the application's memory.
#include <array>
#include <string>

#include "gl_context.h"
#include "support/threaded_call.h"

namespace fuzz {

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

u32 last(const ops::row& row) {
  return row.count - 1;
}

call_shape items(u32 count_at, u32 item_bytes, u32 data_at) {
  return {.what = reads::items, .count_at = count_at, .item_bytes = item_bytes, .data_at = data_at};
}

call_shape sized(u32 count_at, u32 data_at, bool unpacks) {
  return {.what = reads::sized, .count_at = count_at, .data_at = data_at, .unpacks = unpacks};
}

call_shape image_call(const ops::row& row) {
  const std::string name = row.name;
  const int dimensions = name == "glDrawPixels" ? 2 : static_cast<int>(first_digit(name));
  u32 first_size = 3;
  if (name.starts_with("glTexSub")) first_size = 2 + static_cast<u32>(dimensions);
  if (name == "glDrawPixels") first_size = 0;
  return {
      .what = reads::image, .count_at = first_size, .data_at = last(row), .dimensions = dimensions, .unpacks = true};
}

call_shape draw(reads what, u32 count_at, u32 data_at) {
  return {.what = what, .count_at = count_at, .data_at = data_at};
}

call_shape own_shape(const ops::row& row) {
  switch (row.op) {
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
      return sized(1, 2, false);
    case glBufferSubData_op::op:
      return sized(2, 3, false);
    case glDrawBuffers_op::op:
      return items(0, sizeof(GLenum), 1);
    case glBindAttribLocation_op::op:
      return {.what = reads::text, .data_at = 2};
    case glShaderSource_op::op:
      return {.what = reads::source, .data_at = 2};
    case glUniformMatrix2x3fv_op::op:
      return items(1, 6 * sizeof(GLfloat), 3);
    case glDrawArrays_op::op:
      return draw(reads::array_draw, 1, 0);
    case glDrawElements_op::op:
      return draw(reads::element_draw, 1, 3);
    case glDrawRangeElements_op::op:
      return draw(reads::element_draw, 3, 5);
    case glArrayElement_op::op:
      return draw(reads::array_element, 0, 0);
    default:
      return {};
  }
}

call_shape plain_shape(const ops::row& row) {
  switch (row.op) {
    case glDrawPixels_op::op:
      return image_call(row);
    case glDrawArraysInstanced_op::op:
    case glDrawArraysEXT_op::op:
      return draw(reads::array_draw, 1, 0);
    case glDrawElementsInstanced_op::op:
    case glDrawElementsBaseVertex_op::op:
    case glDrawElementsInstancedBaseVertex_op::op:
      return draw(reads::element_draw, 1, 3);
    case glDrawRangeElementsBaseVertex_op::op:
      return draw(reads::element_draw, 3, 5);
    default:
      return {.what = reads::some_bytes};
  }
}

call_shape make_shape(const ops::row& row) {
  switch (row.threaded) {
    case ops::family::plain:
      return plain_shape(row);
    case ops::family::query:
      return {.what = reads::some_bytes};
    case ops::family::vector:
      return {.what = reads::vectors, .item_bytes = threaded::elements_by_name(row.name)};
    case ops::family::parameters:
      return {.what = reads::parameters, .count_at = row.count - 2, .data_at = last(row)};
    case ops::family::names:
      return items(0, sizeof(GLuint), 1);
    case ops::family::uniform:
      return items(1, components_by_name(row.name) * u32{sizeof(GLfloat)}, last(row));
    case ops::family::image:
      return image_call(row);
    case ops::family::compressed:
      return sized(row.count - 2, last(row), true);
    case ops::family::own:
      return own_shape(row);
    case ops::family::alias:
      return {};
  }
  return {};
}

// A name of the same function reads the same.
std::array<call_shape, gl_op_count> make_shapes() {
  std::array<call_shape, gl_op_count> shapes;
  for (const ops::row& row : ops::all()) {
    shapes[static_cast<std::size_t>(row.op)] = make_shape(row.base >= 0 ? ops::of(row.base) : row);
  }
  return shapes;
}

struct pname_values {
  parameter_set set;
  GLenum first, last;
  u32 values;
};

constexpr pname_values pnames[] = {
    {parameter_set::light, 4608, 4611, 4},       {parameter_set::light, 4612, 4612, 3},
    {parameter_set::light, 4613, 4617, 1},       {parameter_set::light_model, 2897, 2898, 1},
    {parameter_set::light_model, 2899, 2899, 4}, {parameter_set::material, 4608, 4610, 4},
    {parameter_set::material, 5632, 5632, 4},    {parameter_set::material, 5634, 5634, 4},
    {parameter_set::material, 5633, 5633, 1},    {parameter_set::material, 5635, 5635, 3},
    {parameter_set::tex_gen, 9472, 9472, 1},     {parameter_set::tex_gen, 9473, 9474, 4},
    {parameter_set::tex_env, 8705, 8705, 4},     {parameter_set::tex_env, 8960, 8960, 4},
    {parameter_set::tex, 4100, 4100, 4},         {parameter_set::tex, 10240, 10243, 1},
    {parameter_set::tex, 32870, 32870, 1},       {parameter_set::tex, 32882, 32882, 1},
    {parameter_set::tex, 32959, 32959, 1},       {parameter_set::tex, 33082, 33085, 1},
    {parameter_set::tex, 33169, 33169, 1},       {parameter_set::tex, 34046, 34046, 1},
    {parameter_set::tex, 34049, 34049, 1},       {parameter_set::tex, 34891, 34893, 1},
    {parameter_set::fog, 2913, 2917, 1},         {parameter_set::fog, 2918, 2918, 4},
    {parameter_set::point, 33062, 33064, 1},     {parameter_set::point, 36000, 36000, 1},
    {parameter_set::point, 33065, 33065, 3}};

}  // namespace

const call_shape& shape_of(int op) {
  static const std::array<call_shape, gl_op_count> shapes = make_shapes();
  return shapes[static_cast<std::size_t>(op)];
}

u32 values_of(parameter_set set, GLenum pname) {
  for (const pname_values& one : pnames) {
    if (one.set == set && pname >= one.first && pname <= one.last) return one.values;
  }
  return 0;
}

parameter_set set_of(const ops::row& row) {
  const std::string name = row.name;
  if (name.starts_with("glLightModel")) return parameter_set::light_model;
  if (name.starts_with("glLight")) return parameter_set::light;
  if (name.starts_with("glMaterial")) return parameter_set::material;
  if (name.starts_with("glTexGen")) return parameter_set::tex_gen;
  if (name.starts_with("glTexEnv")) return parameter_set::tex_env;
  if (name.starts_with("glTexParameter")) return parameter_set::tex;
  if (name.starts_with("glFog")) return parameter_set::fog;
  return parameter_set::point;
}

image image_of(const call_shape& shape, const ops::row& row, const driver::argument_bits& arguments) {
  image named;
  i32* const sizes[] = {&named.width, &named.height, &named.depth};
  for (int i = 0; i < shape.dimensions; ++i)
    *sizes[i] = static_cast<i32>(arguments[shape.count_at + static_cast<u32>(i)]);
  named.dimensions = shape.dimensions;
  named.format = static_cast<GLenum>(arguments[row.count - 3]);
  named.type = static_cast<GLenum>(arguments[row.count - 2]);
  return named;
}

}  // namespace fuzz
