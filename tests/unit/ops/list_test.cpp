// The op list: numbers, names, synchronous ops, aliases.
#include <gtest/gtest.h>

#include <string>

#include "support/expected_figures.h"
#include "support/library.h"

namespace {

struct numbered_name {
  int op;
  const char* name;
};

// Every tenth op's name, as fixed for all who record or replay commands.
constexpr numbered_name fixed_names[] = {{0, "glClearIndex"},
                                         {10, "glPointSize"},
                                         {20, "glClipPlane"},
                                         {30, "glGetDoublev"},
                                         {40, "glFinish"},
                                         {50, "glOrtho"},
                                         {60, "glRotated"},
                                         {70, "glEndList"},
                                         {80, "glVertex3d"},
                                         {90, "glVertex2iv"},
                                         {100, "glNormal3b"},
                                         {110, "glIndexd"},
                                         {120, "glColor3b"},
                                         {130, "glColor4f"},
                                         {140, "glColor3sv"},
                                         {150, "glColor4uiv"},
                                         {160, "glTexCoord3d"},
                                         {170, "glTexCoord1iv"},
                                         {180, "glTexCoord4dv"},
                                         {190, "glRasterPos3i"},
                                         {200, "glRasterPos3dv"},
                                         {210, "glRecti"},
                                         {220, "glTexCoordPointer"},
                                         {230, "glLightfv"},
                                         {240, "glMaterialfv"},
                                         {250, "glPixelMapfv"},
                                         {260, "glStencilFunc"},
                                         {270, "glGetTexGendv"},
                                         {280, "glTexParameteri"},
                                         {290, "glGenTextures"},
                                         {300, "glCopyTexSubImage1D"},
                                         {310, "glEvalCoord1f"},
                                         {320, "glMapGrid2f"},
                                         {330, "glPassThrough"},
                                         {340, "glTexSubImage3D"},
                                         {350, "glCopyColorSubTable"},
                                         {360, "glGetConvolutionParameterfv"},
                                         {370, "glHistogram"},
                                         {380, "glCompressedTexSubImage2D"},
                                         {390, "glMultiTexCoord1s"},
                                         {400, "glMultiTexCoord3d"},
                                         {410, "glMultiTexCoord4f"},
                                         {420, "glBlendFuncSeparate"},
                                         {430, "glFogCoorddv"},
                                         {440, "glSecondaryColor3s"},
                                         {450, "glWindowPos2dv"},
                                         {460, "glWindowPos3fv"},
                                         {470, "glGetQueryiv"},
                                         {480, "glMapBuffer"},
                                         {490, "glBindAttribLocation"},
                                         {500, "glGetActiveUniform"},
                                         {510, "glGetUniformiv"},
                                         {520, "glUniform1f"},
                                         {530, "glUniform3fv"},
                                         {540, "glVertexAttrib1d"},
                                         {550, "glVertexAttrib2s"},
                                         {560, "glVertexAttrib4Nsv"},
                                         {570, "glVertexAttrib4iv"},
                                         {580, "glUniformMatrix4x2fv"},
                                         {590, "glEndTransformFeedback"},
                                         {600, "glGetVertexAttribIuiv"},
                                         {610, "glVertexAttribI2iv"},
                                         {620, "glVertexAttribI4usv"},
                                         {630, "glUniform3uiv"},
                                         {640, "glGetStringi"},
                                         {650, "glBlendEquationi"},
                                         {660, "glMultiTexCoord1iARB"},
                                         {670, "glMultiTexCoord2sARB"},
                                         {680, "glMultiTexCoord4dARB"},
                                         {690, "glMultTransposeMatrixfARB"},
                                         {700, "glPointParameterfARB"},
                                         {710, "glWeightPointerARB"},
                                         {720, "glWindowPos2fvARB"},
                                         {730, "glWindowPos3ivARB"},
                                         {740, "glVertexAttrib2dvARB"},
                                         {750, "glVertexAttrib3svARB"},
                                         {760, "glVertexAttrib4dvARB"},
                                         {770, "glEnableVertexAttribArrayARB"},
                                         {780, "glProgramLocalParameter4dARB"},
                                         {790, "glGetVertexAttribdvARB"},
                                         {800, "glBufferSubDataARB"},
                                         {810, "glEndQueryARB"},
                                         {820, "glCreateProgramObjectARB"},
                                         {830, "glUniform2iARB"},
                                         {840, "glUniform4ivARB"},
                                         {850, "glGetUniformfvARB"},
                                         {860, "glIsRenderbuffer"},
                                         {870, "glCheckFramebufferStatus"},
                                         {880, "glProgramParameteriARB"},
                                         {890, "glGenVertexArrays"},
                                         {900, "glDrawElementsBaseVertex"},
                                         {910, "glProgramParameteri"},
                                         {920, "glCopyTexSubImage2DEXT"},
                                         {930, "glResetHistogramEXT"},
                                         {940, "glDrawArraysEXT"},
                                         {950, "glColorSubTableEXT"},
                                         {960, "glSecondaryColor3bvEXT"},
                                         {970, "glSecondaryColor3ubvEXT"},
                                         {980, "glFogCoorddEXT"},
                                         {990, "glDeleteVertexShaderEXT"},
                                         {1000, "glSetLocalConstantEXT"},
                                         {1010, "glEnableVariantClientStateEXT"},
                                         {1020, "glGetVariantFloatvEXT"},
                                         {1030, "glBlendEquationSeparateEXT"},
                                         {1040, "glGenFramebuffersEXT"},
                                         {1050, "glRenderbufferStorageMultisampleEXT"},
                                         {1060, "glUniform2uiEXT"},
                                         {1070, "glColorMaskIndexedEXT"},
                                         {1080, "glTexParameterIuivEXT"},
                                         {1090, "glTransformFeedbackVaryingsEXT"},
                                         {1100, "glViewportOffsetZ4"}};

TEST(op_list_test, names_stand_at_their_numbers) {
  for (const numbered_name& fixed : fixed_names) EXPECT_STREQ(__osw_gl_names[fixed.op], fixed.name) << fixed.op;
  EXPECT_STREQ(__osw_gl_names[1101], "glDrawableSizeZ4");
  EXPECT_STREQ(__osw_wgl_names[0], "wglChoosePixelFormat");
  EXPECT_STREQ(__osw_wgl_names[13], "wglMakeCurrent");
  EXPECT_STREQ(__osw_wgl_names[24], "wglUseFontOutlinesW");
  EXPECT_STREQ(__osw_wgl_names[43], "wglCreateContextAttribsARB");
  EXPECT_STREQ(__osw_wgl_names[62], "wglGetGLContextZ4");
}

TEST(op_list_test, the_lists_have_the_ops_of_the_design) {
  EXPECT_EQ(gl_op_count, figures::gl_ops);
  EXPECT_EQ(wgl_op_count, figures::wgl_ops);
}

bool is_asynchronous(int op) {
  for (const figures::op_range& range : figures::asynchronous_ranges) {
    if (op >= range.first && op <= range.last) return true;
  }
  return false;
}

using sync_test = library::process_test;

TEST_F(sync_test, flags_are_those_of_the_list) {
  library::start();
  int synchronous = 0;
  for (int op = 0; op < gl_op_count; ++op) {
    EXPECT_EQ(__osw_gl_sync_flags[op], is_asynchronous(op) ? 0u : 1u) << __osw_gl_names[op];
    synchronous += static_cast<int>(__osw_gl_sync_flags[op]);
  }
  EXPECT_EQ(synchronous, figures::synchronous_gl_ops);
  EXPECT_EQ(gl_op_count - synchronous, figures::asynchronous_gl_ops);
}

TEST_F(sync_test, five_wgl_ops_are_asynchronous) {
  library::start();
  int asynchronous_ops = 0;
  for (int op = 0; op < wgl_op_count; ++op) {
    const bool asynchronous_op = op == wglSwapBuffers_op::op || op == wglSwapLayerBuffers_op::op ||
                                 op == wglBindTexImageARB_op::op || op == wglReleaseTexImageARB_op::op ||
                                 op == wglSwapIntervalEXT_op::op;
    EXPECT_EQ(__osw_wgl_sync_flags[op], asynchronous_op ? 0u : 1u) << __osw_wgl_names[op];
    asynchronous_ops += asynchronous_op;
  }
  EXPECT_EQ(asynchronous_ops, figures::asynchronous_wgl_ops);
}

// Op by op: a label exactly where the flag is set, made of the function's name.
void check_labels(const u32* flags, const char* const* labels, const char* const* names, int count, int labelled) {
  int found = 0;
  for (int op = 0; op < count; ++op) {
    ASSERT_EQ(labels[op] != nullptr, flags[op] != 0) << names[op];
    if (labels[op] == nullptr) continue;
    ++found;
    EXPECT_EQ(labels[op], "__osw_" + std::string(names[op]) + "_op");
  }
  EXPECT_EQ(found, labelled);
}

TEST_F(sync_test, an_op_has_a_label_exactly_when_it_is_synchronous) {
  library::start();
  check_labels(__osw_gl_sync_flags, __osw_gl_op_names, __osw_gl_names, gl_op_count, figures::synchronous_gl_ops);
  check_labels(__osw_wgl_sync_flags, __osw_wgl_op_names, __osw_wgl_names, wgl_op_count, figures::synchronous_wgl_ops);
  EXPECT_EQ(__osw_gl_sync_filled, 1u);
  EXPECT_EQ(__osw_wgl_sync_filled, 1u);
}

TEST(op_list_test, tables_are_zero_before_attach) {
  for (int op = 0; op < gl_op_count; ++op) {
    EXPECT_EQ(__osw_gl_sync_flags[op], 0u);
    EXPECT_EQ(__osw_gl_op_names[op], nullptr);
    EXPECT_EQ(__osw_sys_gl[op], nullptr);
    for (const __osw_proc* table :
         {__osw_gl_table_nocontext, __osw_gl_table_seq, __osw_gl_table_mt, __osw_gl_table_pass}) {
      EXPECT_EQ(table[op], nullptr);
    }
  }
}

TEST_F(sync_test, every_slot_of_the_six_tables_is_filled) {
  library::start();
  for (int op = 0; op < gl_op_count; ++op) {
    for (const __osw_proc* table :
         {__osw_gl_table_nocontext, __osw_gl_table_seq, __osw_gl_table_mt, __osw_gl_table_pass}) {
      EXPECT_NE(table[op], nullptr) << __osw_gl_names[op];
    }
  }
  for (int op = 0; op < wgl_op_count; ++op) {
    EXPECT_NE(__osw_wgl_table_main[op], nullptr) << __osw_wgl_names[op];
    EXPECT_NE(__osw_wgl_table_pass[op], nullptr) << __osw_wgl_names[op];
  }
}

struct alias_range {
  int first, base, count;
};

// The ops that stand for another one under an ARB or EXT name.
constexpr alias_range aliases[] = {{glActiveTextureARB_op::op, glActiveTexture_op::op, 1},
                                   {glClientActiveTextureARB_op::op, glClientActiveTexture_op::op, 37},
                                   {glSampleCoverageARB_op::op, glSampleCoverage_op::op, 8},
                                   {glPointParameterfARB_op::op, glPointParameterf_op::op, 2},
                                   {glWindowPos2dARB_op::op, glWindowPos2d_op::op, 16},
                                   {glVertexAttrib1dARB_op::op, glVertexAttrib1d_op::op, 37},
                                   {glEnableVertexAttribArrayARB_op::op, glEnableVertexAttribArray_op::op, 1},
                                   {glDisableVertexAttribArrayARB_op::op, glDisableVertexAttribArray_op::op, 1},
                                   {glGetVertexAttribdvARB_op::op, glGetVertexAttribdv_op::op, 4},
                                   {glBindBufferARB_op::op, glBindBuffer_op::op, 11},
                                   {glGenQueriesARB_op::op, glGenQueries_op::op, 8},
                                   {glCreateShaderObjectARB_op::op, glCreateShader_op::op, 1},
                                   {glShaderSourceARB_op::op, glShaderSource_op::op, 1},
                                   {glCompileShaderARB_op::op, glCompileShader_op::op, 2},
                                   {glAttachObjectARB_op::op, glAttachShader_op::op, 1},
                                   {glLinkProgramARB_op::op, glLinkProgram_op::op, 1},
                                   {glUseProgramObjectARB_op::op, glUseProgram_op::op, 1},
                                   {glValidateProgramARB_op::op, glValidateProgram_op::op, 1},
                                   {glUniform1fARB_op::op, glUniform1f_op::op, 19},
                                   {glGetAttachedObjectsARB_op::op, glGetAttachedShaders_op::op, 1},
                                   {glGetUniformLocationARB_op::op, glGetUniformLocation_op::op, 1},
                                   {glGetActiveUniformARB_op::op, glGetActiveUniform_op::op, 1},
                                   {glGetUniformfvARB_op::op, glGetUniformfv_op::op, 2},
                                   {glGetShaderSourceARB_op::op, glGetShaderSource_op::op, 1},
                                   {glBindAttribLocationARB_op::op, glBindAttribLocation_op::op, 1},
                                   {glGetActiveAttribARB_op::op, glGetActiveAttrib_op::op, 1},
                                   {glGetAttribLocationARB_op::op, glGetAttribLocation_op::op, 1},
                                   {glDrawBuffersARB_op::op, glDrawBuffers_op::op, 1},
                                   {glClampColorARB_op::op, glClampColor_op::op, 1},
                                   {glDrawArraysInstancedARB_op::op, glDrawArraysInstanced_op::op, 2},
                                   {glProgramParameteriARB_op::op, glProgramParameteri_op::op, 1},
                                   {glFramebufferTextureARB_op::op, glFramebufferTexture_op::op, 1},
                                   {glFramebufferTextureLayerARB_op::op, glFramebufferTextureLayer_op::op, 1},
                                   {glTexBufferARB_op::op, glTexBuffer_op::op, 1},
                                   {glBlendColorEXT_op::op, glBlendColor_op::op, 1},
                                   {glPolygonOffsetEXT_op::op, glPolygonOffset_op::op, 1},
                                   {glTexImage3DEXT_op::op, glTexImage3D_op::op, 2},
                                   {glTexSubImage1DEXT_op::op, glTexSubImage1D_op::op, 6},
                                   {glCopyTexSubImage3DEXT_op::op, glCopyTexSubImage3D_op::op, 1},
                                   {glGetHistogramEXT_op::op, glGetHistogram_op::op, 10},
                                   {glAreTexturesResidentEXT_op::op, glAreTexturesResident_op::op, 1},
                                   {glBindTextureEXT_op::op, glBindTexture_op::op, 1},
                                   {glDeleteTexturesEXT_op::op, glDeleteTextures_op::op, 1},
                                   {glGenTexturesEXT_op::op, glGenTextures_op::op, 1},
                                   {glIsTextureEXT_op::op, glIsTexture_op::op, 1},
                                   {glPrioritizeTexturesEXT_op::op, glPrioritizeTextures_op::op, 1},
                                   {glBlendEquationEXT_op::op, glBlendEquation_op::op, 1},
                                   {glPointParameterfEXT_op::op, glPointParameterf_op::op, 2},
                                   {glColorSubTableEXT_op::op, glColorSubTable_op::op, 2},
                                   {glColorTableEXT_op::op, glColorTable_op::op, 1},
                                   {glGetColorTableEXT_op::op, glGetColorTable_op::op, 1},
                                   {glGetColorTableParameterivEXT_op::op, glGetColorTableParameteriv_op::op, 1},
                                   {glGetColorTableParameterfvEXT_op::op, glGetColorTableParameterfv_op::op, 1},
                                   {glDrawRangeElementsEXT_op::op, glDrawRangeElements_op::op, 1},
                                   {glSecondaryColor3bEXT_op::op, glSecondaryColor3b_op::op, 17},
                                   {glMultiDrawArraysEXT_op::op, glMultiDrawArrays_op::op, 2},
                                   {glFogCoordfEXT_op::op, glFogCoordf_op::op, 5},
                                   {glBlendFuncSeparateEXT_op::op, glBlendFuncSeparate_op::op, 1},
                                   {glBlendEquationSeparateEXT_op::op, glBlendEquationSeparate_op::op, 1},
                                   {glIsRenderbufferEXT_op::op, glIsRenderbuffer_op::op, 17},
                                   {glBlitFramebufferEXT_op::op, glBlitFramebuffer_op::op, 2},
                                   {glGetQueryObjecti64vEXT_op::op, glGetQueryObjecti64v_op::op, 2},
                                   {glProgramParameteriEXT_op::op, glProgramParameteri_op::op, 1},
                                   {glGetUniformuivEXT_op::op, glGetUniformuiv_op::op, 11},
                                   {glDrawArraysInstancedEXT_op::op, glDrawArraysInstanced_op::op, 3},
                                   {glTexParameterIivEXT_op::op, glTexParameterIiv_op::op, 4},
                                   {glBeginTransformFeedbackEXT_op::op, glBeginTransformFeedback_op::op, 3},
                                   {glBindBufferBaseEXT_op::op, glBindBufferBase_op::op, 3},
                                   {glIsQueryEXT_op::op, glIsQuery_op::op, 1}};

// The op whose body an op borrows, -1 for none, as the list has it.
template <class Op>
int base_of() {
  if constexpr (std::is_same_v<typename Op::base, none_op> || std::is_same_v<typename Op::base, driver_op>) {
    return -1;
  } else {
    return Op::base::op;
  }
}

TEST(op_list_test, aliases_name_their_base) {
  int bases[gl_op_count];
  for_each_gl_op([&]<class Op>() { bases[Op::op] = base_of<Op>(); });
  int expected[gl_op_count];
  std::fill_n(expected, gl_op_count, -1);
  int count = 0;
  for (const alias_range& range : aliases) {
    for (int i = 0; i < range.count; ++i) expected[range.first + i] = range.base + i;
    count += range.count;
  }
  EXPECT_EQ(count, figures::aliases);
  for (int op = 0; op < gl_op_count; ++op) EXPECT_EQ(bases[op], expected[op]) << __osw_gl_names[op];
}

}  // namespace
