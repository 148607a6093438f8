// The encoder families: which op belongs to which, and what is peculiar to them.
#include <algorithm>
#include <cstring>
#include <set>

#include "pipeline/push.h"
#include "startup/config/options.h"
#include "support/call_shapes.h"
#include "support/expected_figures.h"
#include "support/threaded_call.h"
#include "wgl/records/glrc.h"

namespace {

struct range {
  int first;
  int last;
};

const std::set<int> queries = {glGetPolygonStipple_op::op,
                               glGetClipPlane_op::op,
                               glIsEnabled_op::op,
                               glGetBooleanv_op::op,
                               glGetDoublev_op::op,
                               glGetFloatv_op::op,
                               glGetIntegerv_op::op,
                               glGetError_op::op,
                               glGetString_op::op,
                               glIsList_op::op,
                               glGenLists_op::op,
                               glGetPointerv_op::op,
                               glGetLightfv_op::op,
                               glGetLightiv_op::op,
                               glGetMaterialfv_op::op,
                               glGetMaterialiv_op::op,
                               glGetPixelMapfv_op::op,
                               glGetPixelMapuiv_op::op,
                               glGetPixelMapusv_op::op,
                               glGetTexGendv_op::op,
                               glGetTexGenfv_op::op,
                               glGetTexGeniv_op::op,
                               glGetTexEnvfv_op::op,
                               glGetTexEnviv_op::op,
                               glGetTexParameterfv_op::op,
                               glGetTexParameteriv_op::op,
                               glGetTexLevelParameterfv_op::op,
                               glGetTexLevelParameteriv_op::op,
                               glGetTexImage_op::op,
                               glGenTextures_op::op,
                               glIsTexture_op::op,
                               glGetMapdv_op::op,
                               glGetMapfv_op::op,
                               glGetMapiv_op::op,
                               glGetColorTable_op::op,
                               glGetColorTableParameterfv_op::op,
                               glGetColorTableParameteriv_op::op,
                               glGetConvolutionFilter_op::op,
                               glGetConvolutionParameterfv_op::op,
                               glGetConvolutionParameteriv_op::op,
                               glGetSeparableFilter_op::op,
                               glGetHistogram_op::op,
                               glGetHistogramParameterfv_op::op,
                               glGetHistogramParameteriv_op::op,
                               glGetMinmax_op::op,
                               glGetMinmaxParameterfv_op::op,
                               glGetMinmaxParameteriv_op::op,
                               glGetCompressedTexImage_op::op,
                               glGenQueries_op::op,
                               glIsQuery_op::op,
                               glGetQueryiv_op::op,
                               glGetQueryObjectiv_op::op,
                               glGetQueryObjectuiv_op::op,
                               glGenBuffers_op::op,
                               glIsBuffer_op::op,
                               glGetBufferParameteriv_op::op,
                               glGetBufferPointerv_op::op,
                               glGetActiveAttrib_op::op,
                               glGetActiveUniform_op::op,
                               glGetAttachedShaders_op::op,
                               glGetAttribLocation_op::op,
                               glGetProgramiv_op::op,
                               glGetProgramInfoLog_op::op,
                               glGetShaderiv_op::op,
                               glGetShaderInfoLog_op::op,
                               glGetShaderSource_op::op,
                               glGetUniformLocation_op::op,
                               glGetUniformfv_op::op,
                               glGetUniformiv_op::op,
                               glGetVertexAttribdv_op::op,
                               glGetVertexAttribfv_op::op,
                               glGetVertexAttribiv_op::op,
                               glGetVertexAttribPointerv_op::op,
                               glIsProgram_op::op,
                               glIsShader_op::op,
                               glGetBooleani_v_op::op,
                               glGetIntegeri_v_op::op,
                               glIsEnabledi_op::op,
                               glGetTransformFeedbackVarying_op::op,
                               glGetVertexAttribIiv_op::op,
                               glGetVertexAttribIuiv_op::op,
                               glGetUniformuiv_op::op,
                               glGetFragDataLocation_op::op,
                               glGetTexParameterIiv_op::op,
                               glGetTexParameterIuiv_op::op,
                               glGetStringi_op::op,
                               glGetInteger64i_v_op::op,
                               glGetBufferParameteri64v_op::op,
                               glGenProgramsARB_op::op,
                               glGetProgramEnvParameterdvARB_op::op,
                               glGetProgramEnvParameterfvARB_op::op,
                               glGetProgramLocalParameterdvARB_op::op,
                               glGetProgramLocalParameterfvARB_op::op,
                               glGetProgramivARB_op::op,
                               glGetProgramStringARB_op::op,
                               glIsProgramARB_op::op,
                               glGenQueriesARB_op::op,
                               glIsQueryARB_op::op,
                               glGetQueryivARB_op::op,
                               glGetQueryObjectivARB_op::op,
                               glGetQueryObjectuivARB_op::op,
                               glGetHandleARB_op::op,
                               glGetObjectParameterfvARB_op::op,
                               glGetObjectParameterivARB_op::op,
                               glGetInfoLogARB_op::op,
                               glIsRenderbuffer_op::op,
                               glGenRenderbuffers_op::op,
                               glGetRenderbufferParameteriv_op::op,
                               glIsFramebuffer_op::op,
                               glGenFramebuffers_op::op,
                               glCheckFramebufferStatus_op::op,
                               glGetFramebufferAttachmentParameteriv_op::op,
                               glGenerateMipmap_op::op,
                               glGenVertexArrays_op::op,
                               glIsVertexArray_op::op,
                               glGetUniformIndices_op::op,
                               glGetActiveUniformsiv_op::op,
                               glGetActiveUniformName_op::op,
                               glGetUniformBlockIndex_op::op,
                               glGetActiveUniformBlockiv_op::op,
                               glGetActiveUniformBlockName_op::op,
                               glGetQueryObjecti64v_op::op,
                               glGetQueryObjectui64v_op::op,
                               glGetProgramBinary_op::op,
                               glGetHistogramEXT_op::op,
                               glGetHistogramParameterfvEXT_op::op,
                               glGetHistogramParameterivEXT_op::op,
                               glGetMinmaxEXT_op::op,
                               glGetMinmaxParameterfvEXT_op::op,
                               glGetMinmaxParameterivEXT_op::op,
                               glGenTexturesEXT_op::op,
                               glIsTextureEXT_op::op,
                               glGetPointervEXT_op::op,
                               glGetColorTableEXT_op::op,
                               glGetColorTableParameterivEXT_op::op,
                               glGetColorTableParameterfvEXT_op::op,
                               glGenVertexShadersEXT_op::op,
                               glGenSymbolsEXT_op::op,
                               glIsVariantEnabledEXT_op::op,
                               glGetVariantBooleanvEXT_op::op,
                               glGetVariantIntegervEXT_op::op,
                               glGetVariantFloatvEXT_op::op,
                               glGetVariantPointervEXT_op::op,
                               glGetInvariantBooleanvEXT_op::op,
                               glGetInvariantIntegervEXT_op::op,
                               glGetInvariantFloatvEXT_op::op,
                               glGetLocalConstantBooleanvEXT_op::op,
                               glGetLocalConstantIntegervEXT_op::op,
                               glGetLocalConstantFloatvEXT_op::op,
                               glGetQueryObjecti64vEXT_op::op,
                               glGetQueryObjectui64vEXT_op::op,
                               glGetUniformuivEXT_op::op,
                               glGetFragDataLocationEXT_op::op,
                               glGetBooleanIndexedvEXT_op::op,
                               glGetIntegerIndexedvEXT_op::op,
                               glIsEnabledIndexedEXT_op::op,
                               glGetUniformBufferSizeEXT_op::op,
                               glGetUniformOffsetEXT_op::op,
                               glGetTexParameterIivEXT_op::op,
                               glGetTexParameterIuivEXT_op::op,
                               glGetTransformFeedbackVaryingEXT_op::op,
                               glGenQueriesEXT_op::op,
                               glIsQueryEXT_op::op,
                               glGetQueryivEXT_op::op,
                               glGetQueryObjectuivEXT_op::op};

constexpr range forwarders[] = {{glActiveTextureARB_op::op, glGetCompressedTexImageARB_op::op},
                                {glWindowPos2dARB_op::op, glDisableVertexAttribArrayARB_op::op},
                                {glGetVertexAttribdvARB_op::op, glGetVertexAttribPointervARB_op::op},
                                {glBindBufferARB_op::op, glGetBufferPointervARB_op::op},
                                {glCreateShaderObjectARB_op::op, glUniformMatrix4fvARB_op::op},
                                {glGetAttachedObjectsARB_op::op, glGetAttribLocationARB_op::op},
                                {glIsRenderbufferEXT_op::op, glGenerateMipmapEXT_op::op}};

bool is_forwarder(int op) {
  return std::ranges::any_of(forwarders, [=](const range& one) { return one.first <= op && op <= one.last; });
}

const std::set<int> draws = {glArrayElement_op::op, glDrawArrays_op::op, glDrawElements_op::op,
                             glDrawRangeElements_op::op};
const std::set<int> setters = {glEnableClientState_op::op,
                               glDisableClientState_op::op,
                               glVertexPointer_op::op,
                               glNormalPointer_op::op,
                               glColorPointer_op::op,
                               glIndexPointer_op::op,
                               glTexCoordPointer_op::op,
                               glEdgeFlagPointer_op::op,
                               glPixelStoref_op::op,
                               glPixelStorei_op::op,
                               glClientActiveTexture_op::op,
                               glFogCoordPointer_op::op,
                               glSecondaryColorPointer_op::op,
                               glBindBuffer_op::op,
                               glDisableVertexAttribArray_op::op,
                               glEnableVertexAttribArray_op::op,
                               glVertexAttribPointer_op::op,
                               glVertexAttribIPointer_op::op,
                               glBindFramebuffer_op::op};
const std::set<int> copies = {glCopyPixels_op::op,        glCopyTexImage1D_op::op,    glCopyTexImage2D_op::op,
                              glCopyTexSubImage1D_op::op, glCopyTexSubImage2D_op::op, glCopyTexSubImage3D_op::op};
const std::set<int> workers_only = {glReadPixels_op::op, glGetBufferSubData_op::op};
const std::set<int> in_record = {glDrawBuffers_op::op, glBindAttribLocation_op::op};
const std::set<int> own_blobs = {glPolygonStipple_op::op, glPixelMapfv_op::op,   glPixelMapuiv_op::op,
                                 glPixelMapusv_op::op,    glCallLists_op::op,    glBufferData_op::op,
                                 glBufferSubData_op::op,  glShaderSource_op::op, glUniformMatrix2x3fv_op::op};
const std::set<int> own_plain = {glCreateProgram_op::op, glCreateShader_op::op};

int count_family(ops::family family) {
  return static_cast<int>(std::ranges::count(ops::all(), family, &ops::row::threaded));
}

int count_plain(bool sync) {
  return static_cast<int>(std::ranges::count_if(
      ops::all(), [=](const ops::row& row) { return row.threaded == ops::family::plain && row.sync == sync; }));
}

TEST(threaded_families_test, the_ops_divide_into_twelve_families) {
  EXPECT_EQ(count_plain(false) + static_cast<int>(own_plain.size()), figures::plain_asynchronous);
  EXPECT_EQ(count_plain(true), figures::plain_synchronous);
  EXPECT_EQ(count_family(ops::family::vector), figures::fixed_vectors);
  EXPECT_EQ(count_family(ops::family::parameters), figures::sized_vectors);
  EXPECT_EQ(std::ssize(in_record), figures::arrays_in_record);
  const int blobs = count_family(ops::family::names) + count_family(ops::family::uniform) +
                    count_family(ops::family::image) + count_family(ops::family::compressed);
  EXPECT_EQ(blobs + static_cast<int>(own_blobs.size()), figures::blobs);
  EXPECT_EQ(std::ssize(draws), figures::draws);
  EXPECT_EQ(std::ssize(setters), figures::setters);
  EXPECT_EQ(count_family(ops::family::query), figures::queries);
  EXPECT_EQ(std::ssize(copies), figures::copies);
  EXPECT_EQ(std::ssize(workers_only), figures::for_workers_only);
  EXPECT_EQ(count_family(ops::family::alias), figures::forwarders);
}

TEST(threaded_families_test, ops_with_a_form_of_their_own_are_those_named_here) {
  std::set<int> named;
  for (const std::set<int>* one : {&draws, &setters, &copies, &workers_only, &in_record, &own_blobs, &own_plain}) {
    named.insert(one->begin(), one->end());
  }
  std::set<int> own;
  for (const ops::row& row : ops::all()) {
    if (row.threaded == ops::family::own) own.insert(row.op);
  }
  EXPECT_EQ(own, named);
}

TEST(threaded_families_test, what_ops_with_a_form_of_their_own_read_is_known) {
  EXPECT_EQ(ops::ops_without_shape(), std::vector<std::string>());
}

TEST(threaded_families_test, queries_and_forwarders_are_those_of_the_list) {
  for (const ops::row& row : ops::all()) {
    EXPECT_EQ(row.threaded == ops::family::query, queries.contains(row.op)) << row.name;
    EXPECT_EQ(row.threaded == ops::family::alias, is_forwarder(row.op)) << row.name;
  }
}

TEST(threaded_families_test, an_asynchronous_plain_op_has_no_pointer) {
  for (const ops::row& row : ops::all()) {
    if (row.threaded != ops::family::plain || row.sync) continue;
    for (u32 i = 0; i < row.count; ++i) EXPECT_FALSE(row.parameters[i].is_pointer) << row.name;
  }
}

// ---- values and vectors in the record ----

struct threaded_record_test : library::process_test {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
  }
};

__osw_cmd* next_record() {
  return __osw_next_cmd(__osw_fetch_thread_state()->cmd_queue);
}

constexpr u8 pattern = 0xA5;

// What an earlier use of the record may have left in the slots from `slot` on.
void soil_next_record(u32 slot) {
  std::memset(&next_record()->args[slot], pattern, (cmd_slots - slot) * sizeof(u64));
}

TEST_F(threaded_record_test, values_fill_whole_slots) {
  const __osw_cmd* record = next_record();
  osw_glVertex2s(-2, 3);
  EXPECT_EQ(record->args[0], 0xFFFFFFFFFFFFFFFEu);
  record = next_record();
  osw_glColor3b(-1, 127, -128);
  EXPECT_EQ(record->args[0], 0xFFFFFFFFFFFFFFFFu);
  EXPECT_EQ(record->args[2], 0xFFFFFFFFFFFFFF80u);
  record = next_record();
  osw_glColor3ub(255, 128, 1);
  EXPECT_EQ(record->args[0], 255u);
  record = next_record();
  osw_glColor3us(0xFFFF, 0x8000, 1);
  EXPECT_EQ(record->args[1], 0x8000u);
  record = next_record();
  osw_glVertex2i(-5, 5);
  EXPECT_EQ(record->args[0], 0xFFFFFFFFFFFFFFFBu);
  record = next_record();
  osw_glColor3ui(0xFFFFFFFF, 0, 0);
  EXPECT_EQ(record->args[0], 0xFFFFFFFFu);
  record = next_record();
  osw_glEnable(0x80000001);
  EXPECT_EQ(record->args[0], 0x80000001u);
  record = next_record();
  osw_glClearColor(-1.0f, 0.5f, 0, 1);
  EXPECT_EQ(record->args[0], 0xBF800000u);
  EXPECT_EQ(record->args[1], 0x3F000000u);
  record = next_record();
  osw_glTranslated(-1.0, 0, 0);
  EXPECT_EQ(record->args[0], 0xBFF0000000000000u);
  record = next_record();
  osw_glDepthMask(0xC1);
  EXPECT_EQ(record->args[0], 0xC1u);
}

TEST_F(threaded_record_test, a_null_vector_becomes_a_zeroed_first_slot) {
  soil_next_record(1);
  received::read(glVertex3fv_op::op, [](const driver::call& now, const received::calls&) {
    return received::memory_at(now.arguments[0], 12);
  });
  const __osw_cmd* record = next_record();
  osw_glVertex3fv(nullptr);
  // The slots after the first keep what they had.
  const std::vector<u8> expected = {0, 0, 0, 0, 0, 0, 0, 0, pattern, pattern, pattern, pattern};
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].what.arguments[0], driver::bits_of(&record->args[1]));
    EXPECT_EQ(logged[0].memory, expected);
  });
  received::expect_app({driver::expect<glVertex3fv_op>(nullptr)});
}

TEST_F(threaded_record_test, vectors_copy_their_own_bytes_and_no_more) {
  for (const ops::row& row : ops::all()) {
    if (row.threaded != ops::family::vector) continue;
    SCOPED_TRACE(row.name);
    threaded::prepared_call call = threaded::prepare(row);
    soil_next_record(row.count);
    const __osw_cmd* record = next_record();
    row.call(row.entry, call.arguments);
    for (const threaded::payload& payload : call.payloads) {
      const auto* copy = reinterpret_cast<const u8*>(&record->args[payload.record_slot]);
      EXPECT_TRUE(std::equal(payload.bytes.begin(), payload.bytes.end(), copy));
      // A second vector stands two slots on, also where a first is longer than that.
      const bool is_last = &payload == &call.payloads.back();
      if (is_last) {
        EXPECT_EQ(copy[payload.bytes.size()], pattern);
      }
    }
    received::wait_for_parts();
  }
}

TEST_F(threaded_record_test, rectangles_have_their_second_vector_in_the_fifth_slot) {
  const GLshort low[] = {-1, 2};
  const GLshort high[] = {3, -4};
  const __osw_cmd* record = next_record();
  osw_glRectsv(low, high);
  EXPECT_EQ(record->args[0], driver::bits_of(&record->args[2]));
  EXPECT_EQ(record->args[1], driver::bits_of(&record->args[4]));
  EXPECT_EQ(std::memcmp(&record->args[2], low, sizeof low), 0);
  EXPECT_EQ(std::memcmp(&record->args[4], high, sizeof high), 0);
}

// ---- vectors whose length the pname says ----

struct count_of_pname {
  GLenum pname;
  u32 count;
};

struct counted_ops {
  std::vector<int> ops;
  std::vector<count_of_pname> counts;
};

const counted_ops counted[] = {
    {{glLightfv_op::op, glLightiv_op::op},
     {{GL_AMBIENT, 4},
      {GL_DIFFUSE, 4},
      {GL_SPECULAR, 4},
      {GL_POSITION, 4},
      {GL_SPOT_DIRECTION, 3},
      {GL_SPOT_EXPONENT, 1},
      {GL_SPOT_CUTOFF, 1},
      {GL_CONSTANT_ATTENUATION, 1},
      {GL_LINEAR_ATTENUATION, 1},
      {GL_QUADRATIC_ATTENUATION, 1},
      {GL_AMBIENT - 1, 0},
      {GL_QUADRATIC_ATTENUATION + 1, 0}}},
    {{glLightModelfv_op::op, glLightModeliv_op::op},
     {{GL_LIGHT_MODEL_LOCAL_VIEWER, 1},
      {GL_LIGHT_MODEL_TWO_SIDE, 1},
      {GL_LIGHT_MODEL_AMBIENT, 4},
      {GL_LIGHT_MODEL_AMBIENT + 1, 0},
      {GL_LIGHT_MODEL_COLOR_CONTROL, 0}}},
    {{glMaterialfv_op::op, glMaterialiv_op::op},
     {{GL_AMBIENT, 4},
      {GL_DIFFUSE, 4},
      {GL_SPECULAR, 4},
      {GL_EMISSION, 4},
      {GL_AMBIENT_AND_DIFFUSE, 4},
      {GL_SHININESS, 1},
      {GL_COLOR_INDEXES, 3},
      {GL_POSITION, 0},
      {GL_COLOR_INDEXES + 1, 0}}},
    {{glTexGenfv_op::op, glTexGeniv_op::op, glTexGendv_op::op},
     {{GL_TEXTURE_GEN_MODE, 1}, {GL_OBJECT_PLANE, 4}, {GL_EYE_PLANE, 4}, {GL_EYE_PLANE + 1, 0}}},
    {{glTexEnvfv_op::op, glTexEnviv_op::op},
     {{GL_TEXTURE_ENV_COLOR, 4}, {GL_TEXTURE_ENV, 4}, {GL_TEXTURE_ENV_MODE, 0}}},
    {{glTexParameterfv_op::op, glTexParameteriv_op::op},
     {{GL_TEXTURE_BORDER_COLOR, 4},   {GL_TEXTURE_MAG_FILTER, 1},
      {GL_TEXTURE_MIN_FILTER, 1},     {GL_TEXTURE_WRAP_S, 1},
      {GL_TEXTURE_WRAP_T, 1},         {GL_TEXTURE_PRIORITY, 1},
      {GL_TEXTURE_WRAP_R, 1},         {GL_TEXTURE_COMPARE_FAIL_VALUE_ARB, 1},
      {GL_TEXTURE_MIN_LOD, 1},        {GL_TEXTURE_MAX_LOD, 1},
      {GL_TEXTURE_BASE_LEVEL, 1},     {GL_TEXTURE_MAX_LEVEL, 1},
      {GL_GENERATE_MIPMAP, 1},        {GL_TEXTURE_MAX_ANISOTROPY, 1},
      {GL_TEXTURE_LOD_BIAS, 1},       {GL_DEPTH_TEXTURE_MODE, 1},
      {GL_TEXTURE_COMPARE_MODE, 1},   {GL_TEXTURE_COMPARE_FUNC, 1},
      {GL_TEXTURE_MAG_FILTER - 1, 0}, {GL_TEXTURE_WRAP_T + 1, 0},
      {GL_DEPTH_TEXTURE_MODE - 1, 0}, {GL_TEXTURE_COMPARE_FUNC + 1, 0}}},
    {{glFogfv_op::op, glFogiv_op::op},
     {{GL_FOG_INDEX, 1},
      {GL_FOG_DENSITY, 1},
      {GL_FOG_START, 1},
      {GL_FOG_END, 1},
      {GL_FOG_MODE, 1},
      {GL_FOG_COLOR, 4},
      {GL_FOG_INDEX - 1, 0},
      {GL_FOG_COORD_SRC, 0}}},
    {{glPointParameterfv_op::op, glPointParameteriv_op::op},
     {{GL_POINT_SIZE_MIN, 1},
      {GL_POINT_SIZE_MAX, 1},
      {GL_POINT_FADE_THRESHOLD_SIZE, 1},
      {GL_POINT_SPRITE_COORD_ORIGIN, 1},
      {GL_POINT_DISTANCE_ATTENUATION, 3},
      {GL_POINT_SIZE_MIN - 1, 0}}},
};

void check_counted(const ops::row& row, const count_of_pname& counts) {
  SCOPED_TRACE(testing::Message() << row.name << ' ' << counts.pname);
  const std::size_t bytes = std::size_t{counts.count} * row.parameters[row.count - 1].element_size;
  threaded::prepared_call call = threaded::prepare(row);
  call.payloads.clear();
  const std::vector<u8> memory = threaded::point_at_memory(&call, row.count - 1, bytes);
  if (bytes == 0) call.arguments[row.count - 1] = driver::bits_of(&counts);
  call.arguments[row.count - 2] = counts.pname;
  // One element more than there is would show.
  std::vector<u8> expected = memory;
  expected.resize(bytes + 8, pattern);
  received::clear();
  received::read(row.op, [&](const driver::call& now, const received::calls&) {
    const bool is_app = now.arguments[row.count - 1] == call.arguments[row.count - 1];
    return received::memory_at(now.arguments[row.count - 1], is_app ? bytes : bytes + 8);
  });
  soil_next_record(row.count);
  const __osw_cmd* record = next_record();
  row.call(row.entry, call.arguments);
  std::ranges::fill(call.memory.back(), 0xEE);
  driver::argument_bits arguments = call.arguments;
  arguments[row.count - 1] = driver::bits_of(&record->args[row.count]);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].what, ops::noted(row, arguments));
    EXPECT_EQ(logged[0].memory, expected);
  });
}

TEST_F(threaded_record_test, sized_vectors_copy_what_their_pname_takes) {
  std::set<int> seen;
  for (const counted_ops& one : counted) {
    for (int op : one.ops) {
      seen.insert(op);
      for (const count_of_pname& counts : one.counts) check_counted(ops::of(op), counts);
    }
  }
  EXPECT_EQ(std::ssize(seen), figures::sized_vectors);
}

TEST_F(threaded_record_test, a_null_sized_vector_becomes_a_zeroed_slot) {
  soil_next_record(3);
  const __osw_cmd* record = next_record();
  osw_glLightfv(GL_LIGHT0, GL_POSITION, nullptr);
  EXPECT_EQ(record->args[3], 0u);
  EXPECT_EQ(record->args[2], driver::bits_of(&record->args[3]));
}

TEST_F(threaded_record_test, the_payload_of_the_record_that_fills_the_list_is_kept) {
  received::read(glVertex3fv_op::op, received::bytes_at(0, 12));
  GLfloat vertex[3] = {};
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  for (u32 i = *queue->fill_count; i < cmd_list_limit; ++i) {
    vertex[0] = static_cast<GLfloat>(i);
    vertex[2] = static_cast<GLfloat>(i) * 2;
    osw_glVertex3fv(vertex);
  }
  EXPECT_EQ(queue->full_count, 1u);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_FALSE(logged.empty());
    for (const received::call& one : logged) {
      GLfloat got[3];
      std::memcpy(got, one.memory.data(), sizeof got);
      EXPECT_EQ(got[2], got[0] * 2);
    }
    GLfloat last[3];
    std::memcpy(last, logged.back().memory.data(), sizeof last);
    EXPECT_EQ(last[0], static_cast<GLfloat>(cmd_list_limit - 1));
  });
}

// ---- the two other calls with data in the record ----

TEST_F(threaded_record_test, draw_buffers_go_behind_the_parameters_and_beyond_60_to_a_block) {
  for (const u32 count : {0u, 1u, 60u, 61u, 200u}) {
    SCOPED_TRACE(count);
    std::vector<GLenum> buffers(count + 1);
    for (u32 i = 0; i < count; ++i) buffers[i] = GL_COLOR_ATTACHMENT0 + i;
    buffers.resize(count);
    std::vector<u8> expected(count * sizeof(GLenum));
    if (count) std::memcpy(expected.data(), buffers.data(), expected.size());
    received::clear();
    received::read(glDrawBuffers_op::op, received::bytes_at(1, expected.size()));
    const __osw_cmd* record = next_record();
    osw_glDrawBuffers(static_cast<GLsizei>(count), buffers.data());
    EXPECT_EQ(record->blob_mask, count > 60 ? 1u << 2 : 0u);
    std::ranges::fill(buffers, 0u);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].memory, expected);
      EXPECT_EQ(logged[0].what.arguments[0], count);
      if (count && count <= 60) {
        EXPECT_EQ(logged[0].what.arguments[1], driver::bits_of(&record->args[2]));
      }
    });
  }
}

TEST_F(threaded_record_test, null_draw_buffers_become_a_zeroed_slot) {
  soil_next_record(2);
  const __osw_cmd* record = next_record();
  osw_glDrawBuffers(3, nullptr);
  EXPECT_EQ(record->args[2], 0u);
  EXPECT_EQ(record->args[1], driver::bits_of(&record->args[2]));
}

TEST_F(threaded_record_test, attribute_names_go_behind_the_parameters_and_beyond_231_to_a_block) {
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{5}, std::size_t{231}, std::size_t{232}, std::size_t{999}}) {
    SCOPED_TRACE(length);
    std::string name(length, 'n');
    std::vector<u8> expected(length + 1);
    std::memcpy(expected.data(), name.c_str(), length + 1);
    received::clear();
    received::read(glBindAttribLocation_op::op, received::bytes_at(2, length + 1));
    const __osw_cmd* record = next_record();
    osw_glBindAttribLocation(7, 8, name.c_str());
    EXPECT_EQ(record->blob_mask, length > 231 ? 1u << 3 : 0u);
    std::ranges::fill(name, 'x');
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].memory, expected);
    });
  }
}

// ---- results, waits, forwarders ----

TEST_F(threaded_record_test, finish_and_flush_wait_for_no_part) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  osw_glFinish();
  osw_glFlush();
  EXPECT_EQ(*queue->fill_count, 2u);
  for (int part = 0; part < received::parts(); ++part) EXPECT_TRUE(received::of_part(part).empty());
  received::expect_app({driver::expect<glFinish_op>(), driver::expect<glFlush_op>()});
  received::expect_parts({driver::expect<glFinish_op>(), driver::expect<glFlush_op>()});
}

TEST_F(threaded_record_test, a_forwarder_sends_the_op_of_the_shorter_name) {
  const __osw_cmd* record = next_record();
  osw_glBindBufferARB(GL_ARRAY_BUFFER, 12);
  EXPECT_EQ(record->op, glBindBuffer_op::op);
  received::expect_parts({driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, 12)});
  received::expect_app({driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, 12)});
}

TEST_F(threaded_record_test, a_name_that_is_no_forwarder_sends_its_own_op_and_waits) {
  const GLubyte pixels[12] = {};
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  osw_glTexImage3DEXT(GL_TEXTURE_3D, 0, GL_RGB, 1, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels);
  EXPECT_EQ(queue->gl_sync_count[glTexImage3DEXT_op::op], 1u);
  received::expect_parts(
      {driver::expect<glTexImage3DEXT_op>(GL_TEXTURE_3D, 0, GL_RGB, 1, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels)});
}

TEST_F(threaded_record_test, state_changing_results_are_those_of_the_own_context) {
  received::answer_app(0x1234);
  received::answer_parts(0x9999);
  EXPECT_EQ(osw_glRenderMode(GL_FEEDBACK), 0x1234);
  EXPECT_EQ(osw_glCreateProgram(), 0x1234u);
  EXPECT_EQ(osw_glCreateShader(GL_VERTEX_SHADER), 0x1234u);
  received::expect_parts({driver::expect<glRenderMode_op>(GL_FEEDBACK), driver::expect<glCreateProgram_op>(),
                          driver::expect<glCreateShader_op>(GL_VERTEX_SHADER)});
}

TEST_F(threaded_record_test, creating_with_the_option_on_waits_for_nobody) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  const u32 waits = queue->send_sync_count;
  osw_glCreateShader(GL_VERTEX_SHADER);
  osw_glCreateProgram();
  EXPECT_EQ(*queue->fill_count, 2u);
  EXPECT_EQ(queue->send_sync_count, waits);
}

TEST_F(threaded_record_test, creating_with_the_option_off_waits_for_the_parts_handle) {
  OSW_DW_UseAppThreadToQueryState = 0;
  received::answer_app(0x1111);
  received::answer_parts(0xABCDEF0100000077);
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  const u32 waits = queue->send_sync_count;
  EXPECT_EQ(osw_glCreateShader(GL_VERTEX_SHADER), 0x77u);
  EXPECT_EQ(osw_glCreateProgram(), 0x77u);
  EXPECT_EQ(queue->send_sync_count, waits + 2);
  received::expect_app({});
}

TEST_F(threaded_record_test, the_private_ops_wait_for_the_parts) {
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  const u32 waits = queue->gl_sync_count[glDrawableSizeZ4_op::op];
  osw_glDrawableSizeZ4(11, 12);
  EXPECT_EQ(queue->gl_sync_count[glDrawableSizeZ4_op::op], waits + 1);
  received::expect_app({driver::expect<glDrawableSizeZ4_op>(11, 12)});
  received::expect_parts({driver::expect<glDrawableSizeZ4_op>(11, 12)});
}

}  // namespace
