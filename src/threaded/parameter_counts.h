// How many values the pnames of the sized parameter calls take. 0 for any other pname: then no value reaches the
// workers through the vector form of the call. The tables are narrow on purpose.
#pragma once

#include "ops/ops.h"

u32 __osw_light_param_count(GLenum pname);
u32 __osw_light_model_param_count(GLenum pname);
u32 __osw_material_param_count(GLenum pname);
u32 __osw_tex_gen_param_count(GLenum pname);
u32 __osw_tex_env_param_count(GLenum pname);
u32 __osw_tex_param_count(GLenum pname);
u32 __osw_fog_param_count(GLenum pname);
u32 __osw_point_param_count(GLenum pname);

// The count by the op list's word for the table.
template <parameter_set set>
inline u32 __osw_param_count(GLenum pname) {
  switch (set) {
    case parameter_set::light:
      return __osw_light_param_count(pname);
    case parameter_set::light_model:
      return __osw_light_model_param_count(pname);
    case parameter_set::material:
      return __osw_material_param_count(pname);
    case parameter_set::tex_gen:
      return __osw_tex_gen_param_count(pname);
    case parameter_set::tex_env:
      return __osw_tex_env_param_count(pname);
    case parameter_set::tex:
      return __osw_tex_param_count(pname);
    case parameter_set::fog:
      return __osw_fog_param_count(pname);
    case parameter_set::point:
      return __osw_point_param_count(pname);
  }
  return 0;
}
