#include "argument_memory.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

struct pname_values {
  const char* calls;  // what the functions' names begin with; the first row that fits is the one
  GLenum pname;
  u32 values;
};

constexpr pname_values table[] = {{"glLightModel", GL_LIGHT_MODEL_AMBIENT, 4},
                                  {"glLightModel", GL_LIGHT_MODEL_LOCAL_VIEWER, 1},
                                  {"glLightModel", GL_LIGHT_MODEL_TWO_SIDE, 1},
                                  {"glLightModel", GL_LIGHT_MODEL_COLOR_CONTROL, 1},
                                  {"glLight", GL_AMBIENT, 4},
                                  {"glLight", GL_DIFFUSE, 4},
                                  {"glLight", GL_SPECULAR, 4},
                                  {"glLight", GL_POSITION, 4},
                                  {"glLight", GL_SPOT_DIRECTION, 3},
                                  {"glLight", GL_SPOT_EXPONENT, 1},
                                  {"glLight", GL_SPOT_CUTOFF, 1},
                                  {"glLight", GL_QUADRATIC_ATTENUATION, 1},
                                  {"glMaterial", GL_AMBIENT, 4},
                                  {"glMaterial", GL_DIFFUSE, 4},
                                  {"glMaterial", GL_SPECULAR, 4},
                                  {"glMaterial", GL_EMISSION, 4},
                                  {"glMaterial", GL_AMBIENT_AND_DIFFUSE, 4},
                                  {"glMaterial", GL_SHININESS, 1},
                                  {"glMaterial", GL_COLOR_INDEXES, 3},
                                  {"glTexGen", GL_TEXTURE_GEN_MODE, 1},
                                  {"glTexGen", GL_OBJECT_PLANE, 4},
                                  {"glTexGen", GL_EYE_PLANE, 4},
                                  {"glTexEnv", GL_TEXTURE_ENV_COLOR, 4},
                                  {"glTexEnv", GL_TEXTURE_ENV_MODE, 1},
                                  {"glTexEnv", GL_COMBINE_RGB, 1},
                                  {"glTexEnv", GL_RGB_SCALE, 1},
                                  {"glTexEnv", GL_TEXTURE_LOD_BIAS, 1},
                                  {"glTexEnv", GL_COORD_REPLACE, 1},
                                  {"glTex", GL_TEXTURE_BORDER_COLOR, 4},
                                  {"glTex", GL_TEXTURE_SWIZZLE_RGBA, 4},
                                  {"glTex", GL_TEXTURE_SWIZZLE_R, 1},
                                  {"glTex", GL_TEXTURE_MIN_FILTER, 1},
                                  {"glTex", GL_TEXTURE_WRAP_R, 1},
                                  {"glTex", GL_TEXTURE_MAX_LEVEL, 1},
                                  {"glTex", GL_TEXTURE_COMPARE_MODE, 1},
                                  {"glTex", GL_TEXTURE_MAX_ANISOTROPY, 1},
                                  {"glTex", GL_DEPTH_STENCIL_TEXTURE_MODE, 1},
                                  {"glSampler", GL_TEXTURE_BORDER_COLOR, 4},
                                  {"glSampler", GL_TEXTURE_WRAP_S, 1},
                                  {"glSampler", GL_TEXTURE_MIN_LOD, 1},
                                  {"glFog", GL_FOG_COLOR, 4},
                                  {"glFog", GL_FOG_MODE, 1},
                                  {"glFog", GL_FOG_DENSITY, 1},
                                  {"glFog", GL_FOG_COORD_SRC, 1},
                                  {"glPoint", GL_POINT_DISTANCE_ATTENUATION, 3},
                                  {"glPoint", GL_POINT_SIZE_MIN, 1},
                                  {"glPoint", GL_POINT_FADE_THRESHOLD_SIZE, 1},
                                  {"glPoint", GL_POINT_SPRITE_COORD_ORIGIN, 1},
                                  {"glPatch", GL_PATCH_DEFAULT_OUTER_LEVEL, 4},
                                  {"glPatch", GL_PATCH_DEFAULT_INNER_LEVEL, 2},
                                  {"glClear", GL_COLOR, 4},
                                  {"glClear", GL_DEPTH, 1},
                                  {"glClear", GL_STENCIL, 1}};

// The longest beginning decides: glTexEnv is not glTex.
const char* calls_of(const ops::row& row) {
  const std::string name = row.name;
  for (const pname_values& one : table) {
    if (name.starts_with(one.calls)) return one.calls;
  }
  return "";
}

bool is_text(const ops::row& row, u32 at) {
  return row.op == glSpecializeShader_op::op && at == 1;
}

}  // namespace

GLenum pname_for(const ops::row& row, u32 choice) {
  const char* calls = calls_of(row);
  u32 found = 0;
  for (const pname_values& one : table) found += !std::strcmp(one.calls, calls);
  if (!found || choice % 16 == 15) return 0x1234;
  choice %= found;
  for (const pname_values& one : table) {
    if (std::strcmp(one.calls, calls) || choice-- != 0) continue;
    return one.pname;
  }
  return 0;
}

u32 place_of_pname(const ops::row& row) {
  return row.count - (std::string(row.name).starts_with("glClear") ? 3 : 2);
}

// Any pname of some of them takes a value, so that they look like calls of a fixed number.
bool takes_pname(const ops::row& row) {
  const reads what = shape_of(row.op).what;
  const std::string name = row.name;
  constexpr const char* calls[] = {"glClearBuffer",
                                   "glClearNamedFramebuffer",
                                   "glSamplerParameter",
                                   "glTextureParameter",
                                   "glTexParameter",
                                   "glTexEnv",
                                   "glLightModel",
                                   "glFogfv",
                                   "glFogiv"};
  const bool is_listed = std::ranges::any_of(calls, [&](const char* begin) { return name.starts_with(begin); });
  return what == reads::parameters || (what == reads::vectors && is_listed);
}

u32 values_by_pname(const ops::row& row, arguments_of a) {
  const char* calls = calls_of(row);
  for (const pname_values& one : table) {
    if (!std::strcmp(one.calls, calls) && one.pname == static_cast<GLenum>(a[place_of_pname(row)])) return one.values;
  }
  return 0;
}

u64 bytes_of_array(const ops::row& row, u32 at, arguments_of a) {
  if (is_text(row, at)) return a[at] ? std::strlen(reinterpret_cast<const char*>(a[at])) + 1 : 0;
  u32 count_at = shape_of(row.op).count_at;
  if (row.op == glShaderBinary_op::op && at == 3) count_at = 4;
  const auto count = static_cast<i32>(a[count_at]);
  return count > 0 ? static_cast<u64>(count) * row.parameters[at].element_size : 0;
}

u64 bytes_of_texel(const ops::row& row, arguments_of a) {
  const image one{.format = static_cast<GLenum>(a[row.count - 3]), .type = static_cast<GLenum>(a[row.count - 2])};
  return lay_out(one, {}).pixel;
}

bool digest_of_arguments(const ops::row& row, arguments_of a, u64* digest) {
  const u32 last = row.count - 1;
  const auto add = [&](u32 at, u64 bytes) {
    if (a[at] >= lowest_address && bytes) *digest = mixed_bytes(*digest, reinterpret_cast<const void*>(a[at]), bytes);
  };
  if (takes_pname(row)) return add(last, u64{values_by_pname(row, a)} * row.parameters[last].element_size), true;
  switch (shape_of(row.op).what) {
    case reads::texel:
      return add(last, bytes_of_texel(row, a)), true;
    case reads::arrays:
      for (u32 i = 0; i < row.count; ++i) {
        if (row.parameters[i].is_pointer) add(i, bytes_of_array(row, i, a));
      }
      return true;
    default:
      return false;
  }
}

}  // namespace fuzz
