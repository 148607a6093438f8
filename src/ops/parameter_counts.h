// How many values the pnames of the sized parameter calls take. Of those of gl_ops.inc it is 0 for any other pname:
// then no value reaches the workers through the vector form of the call. Their tables are narrow on purpose.
#pragma once

#include "ops/types.h"

constexpr u32 __osw_light_param_count(GLenum pname) {
  switch (pname) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_POSITION:
      return 4;
    case GL_SPOT_DIRECTION:
      return 3;
    case GL_SPOT_EXPONENT:
    case GL_SPOT_CUTOFF:
    case GL_CONSTANT_ATTENUATION:
    case GL_LINEAR_ATTENUATION:
    case GL_QUADRATIC_ATTENUATION:
      return 1;
    default:
      return 0;
  }
}

constexpr u32 __osw_light_model_param_count(GLenum pname) {
  switch (pname) {
    case GL_LIGHT_MODEL_LOCAL_VIEWER:
    case GL_LIGHT_MODEL_TWO_SIDE:
      return 1;
    case GL_LIGHT_MODEL_AMBIENT:
      return 4;
    default:
      return 0;
  }
}

constexpr u32 __osw_material_param_count(GLenum pname) {
  switch (pname) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_EMISSION:
    case GL_AMBIENT_AND_DIFFUSE:
      return 4;
    case GL_SHININESS:
      return 1;
    case GL_COLOR_INDEXES:
      return 3;
    default:
      return 0;
  }
}

constexpr u32 __osw_tex_gen_param_count(GLenum pname) {
  switch (pname) {
    case GL_TEXTURE_GEN_MODE:
      return 1;
    case GL_OBJECT_PLANE:
    case GL_EYE_PLANE:
      return 4;
    default:
      return 0;
  }
}

constexpr u32 __osw_tex_env_param_count(GLenum pname) {
  switch (pname) {
    case GL_TEXTURE_ENV_COLOR:
    case GL_TEXTURE_ENV:
      return 4;
    default:
      return 0;
  }
}

constexpr u32 __osw_tex_param_count(GLenum pname) {
  switch (pname) {
    case GL_TEXTURE_BORDER_COLOR:
      return 4;
    case GL_TEXTURE_MAG_FILTER:
    case GL_TEXTURE_MIN_FILTER:
    case GL_TEXTURE_WRAP_S:
    case GL_TEXTURE_WRAP_T:
    case GL_TEXTURE_PRIORITY:
    case GL_TEXTURE_WRAP_R:
    case GL_TEXTURE_COMPARE_FAIL_VALUE_ARB:
    case GL_TEXTURE_MIN_LOD:
    case GL_TEXTURE_MAX_LOD:
    case GL_TEXTURE_BASE_LEVEL:
    case GL_TEXTURE_MAX_LEVEL:
    case GL_GENERATE_MIPMAP:
    case GL_TEXTURE_MAX_ANISOTROPY_EXT:
    case GL_TEXTURE_LOD_BIAS:
    case GL_DEPTH_TEXTURE_MODE:
    case GL_TEXTURE_COMPARE_MODE:
    case GL_TEXTURE_COMPARE_FUNC:
      return 1;
    default:
      return 0;
  }
}

constexpr u32 __osw_fog_param_count(GLenum pname) {
  switch (pname) {
    case GL_FOG_INDEX:
    case GL_FOG_DENSITY:
    case GL_FOG_START:
    case GL_FOG_END:
    case GL_FOG_MODE:
      return 1;
    case GL_FOG_COLOR:
      return 4;
    default:
      return 0;
  }
}

constexpr u32 __osw_point_param_count(GLenum pname) {
  switch (pname) {
    case GL_POINT_SIZE_MIN:
    case GL_POINT_SIZE_MAX:
    case GL_POINT_FADE_THRESHOLD_SIZE:
    case GL_POINT_SPRITE_COORD_ORIGIN:
      return 1;
    case GL_POINT_DISTANCE_ATTENUATION:
      return 3;
    default:
      return 0;
  }
}

// The calls of gl_wide.inc and gl_changed.inc. Any pname that is not named here takes one value.
constexpr u32 texture_values(GLenum pname) {
  return pname == GL_TEXTURE_BORDER_COLOR || pname == GL_TEXTURE_SWIZZLE_RGBA ? 4 : 1;
}

constexpr u32 env_values(GLenum pname) {
  return pname == GL_TEXTURE_ENV_COLOR ? 4 : 1;
}

constexpr u32 light_model_values(GLenum pname) {
  return pname == GL_LIGHT_MODEL_AMBIENT ? 4 : 1;
}

constexpr u32 fog_values(GLenum pname) {
  return pname == GL_FOG_COLOR ? 4 : 1;
}

// Another pname of this one is none of GL's.
constexpr u32 patch_values(GLenum pname) {
  switch (pname) {
    case GL_PATCH_DEFAULT_OUTER_LEVEL:
      return 4;
    case GL_PATCH_DEFAULT_INNER_LEVEL:
      return 2;
    default:
      return 0;
  }
}

// Of the buffer of a framebuffer that is cleared.
constexpr u32 clear_values(GLenum buffer) {
  return buffer == GL_COLOR ? 4 : 1;
}
