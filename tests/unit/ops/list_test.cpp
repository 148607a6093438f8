// The op list: numbers, names, synchronous ops, aliases.
#include <gtest/gtest.h>

#include <string>

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

struct op_range {
  int first, last;
};

// All asynchronous GL ops.
constexpr op_range asynchronous[] = {
    {0, 15},    {17, 20},   {22, 25},   {27, 28},   {33, 36},   {40, 65},   {67, 67},   {69, 221},  {223, 225},
    {227, 231}, {234, 241}, {244, 252}, {260, 269}, {273, 276}, {279, 282}, {287, 288}, {291, 292}, {296, 297},
    {325, 328}, {336, 340}, {374, 381}, {383, 420}, {423, 464}, {466, 466}, {468, 469}, {473, 474}, {477, 478},
    {484, 498}, {517, 582}, {795, 796}, {799, 800}, {861, 862}, {864, 864}, {867, 868}, {871, 874}, {876, 879}};

bool is_asynchronous(int op) {
  for (const op_range& range : asynchronous) {
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
  EXPECT_EQ(synchronous, 641);
  EXPECT_EQ(gl_op_count - synchronous, 461);
}

TEST_F(sync_test, five_wgl_ops_are_asynchronous) {
  library::start();
  for (int op = 0; op < wgl_op_count; ++op) {
    const bool asynchronous_op = op == 18 || op == 19 || op == 40 || op == 41 || op == 59;
    EXPECT_EQ(__osw_wgl_sync_flags[op], asynchronous_op ? 0u : 1u) << __osw_wgl_names[op];
  }
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
  check_labels(__osw_gl_sync_flags, __osw_gl_op_names, __osw_gl_names, gl_op_count, 641);
  check_labels(__osw_wgl_sync_flags, __osw_wgl_op_names, __osw_wgl_names, wgl_op_count, 58);
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
constexpr alias_range aliases[] = {
    {654, 374, 1},   {655, 383, 37}, {692, 375, 8},  {700, 423, 2},   {717, 449, 16}, {733, 540, 37}, {770, 498, 1},
    {771, 497, 1},   {790, 511, 4},  {795, 473, 11}, {806, 465, 8},   {817, 493, 1},  {818, 518, 1},  {819, 491, 2},
    {821, 489, 1},   {822, 517, 1},  {823, 519, 1},  {824, 539, 1},   {825, 520, 19}, {847, 501, 1},  {848, 508, 1},
    {849, 500, 1},   {850, 509, 2},  {852, 507, 1},  {853, 490, 1},   {854, 499, 1},  {855, 502, 1},  {856, 485, 1},
    {857, 595, 1},   {858, 641, 2},  {880, 910, 1},  {881, 647, 1},   {882, 879, 1},  {887, 643, 1},  {911, 336, 1},
    {912, 14, 1},    {913, 339, 2},  {915, 296, 6},  {921, 341, 1},   {922, 364, 10}, {932, 294, 1},  {933, 292, 1},
    {934, 291, 1},   {935, 290, 1},  {936, 295, 1},  {937, 293, 1},   {947, 337, 1},  {948, 423, 2},  {950, 349, 2},
    {952, 342, 1},   {953, 346, 1},  {954, 348, 1},  {955, 347, 1},   {958, 338, 1},  {959, 432, 17}, {976, 421, 2},
    {978, 427, 5},   {983, 420, 1},  {1030, 484, 1}, {1031, 860, 17}, {1049, 877, 2}, {1051, 906, 2}, {1055, 910, 1},
    {1056, 621, 11}, {1067, 641, 3}, {1079, 632, 4}, {1085, 589, 3},  {1089, 592, 3}, {1095, 467, 1}};

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
#define GL_OP(number, function, result, parameters, arguments, sync_mode, threaded, alias_of) \
  bases[number] = base_of<function##_op>();
#include "ops/gl_ops.inc"
#undef GL_OP
  int expected[gl_op_count];
  std::fill_n(expected, gl_op_count, -1);
  int count = 0;
  for (const alias_range& range : aliases) {
    for (int i = 0; i < range.count; ++i) expected[range.first + i] = range.base + i;
    count += range.count;
  }
  EXPECT_EQ(count, 280);
  for (int op = 0; op < gl_op_count; ++op) EXPECT_EQ(bases[op], expected[op]) << __osw_gl_names[op];
}

}  // namespace
