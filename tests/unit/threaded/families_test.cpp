// The encoder families: which op belongs to which, and what is peculiar to them.
#include <algorithm>
#include <cstring>
#include <set>

#include "pipeline/push.h"
#include "startup/options.h"
#include "support/threaded_call.h"
#include "wgl/glrc.h"

namespace {

struct range {
  int first;
  int last;
};

constexpr range queries[] = {
    {16, 16},     {21, 21},     {26, 26},     {29, 32},     {38, 39},     {66, 66},     {68, 68},     {222, 222},
    {232, 233},   {242, 243},   {253, 255},   {270, 272},   {277, 278},   {283, 286},   {289, 290},   {295, 295},
    {306, 308},   {346, 348},   {359, 362},   {364, 369},   {382, 382},   {465, 465},   {467, 467},   {470, 472},
    {475, 476},   {482, 483},   {499, 516},   {584, 585},   {588, 588},   {594, 594},   {599, 600},   {621, 621},
    {623, 623},   {634, 635},   {640, 640},   {645, 646},   {775, 775},   {784, 789},   {794, 794},   {806, 806},
    {808, 808},   {811, 813},   {815, 815},   {844, 846},   {860, 860},   {863, 863},   {865, 866},   {869, 870},
    {875, 876},   {890, 897},   {906, 908},   {922, 927},   {935, 936},   {942, 942},   {953, 955},   {989, 989},
    {998, 998},   {1017, 1027}, {1051, 1052}, {1056, 1056}, {1058, 1058}, {1071, 1072}, {1075, 1075}, {1077, 1078},
    {1081, 1082}, {1091, 1091}, {1093, 1093}, {1095, 1095}, {1098, 1099}};

constexpr range forwarders[] = {{654, 699}, {717, 771}, {790, 793}, {795, 805}, {817, 843}, {847, 855}, {1031, 1047}};

bool is_in(const auto& ranges, int op) {
  return std::ranges::any_of(ranges, [=](const range& one) { return one.first <= op && op <= one.last; });
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
const std::set<int> own_plain = {glFinish_op::op, glFlush_op::op, glCreateProgram_op::op, glCreateShader_op::op};

int count_family(ops::family family) {
  return static_cast<int>(std::ranges::count(ops::all(), family, &ops::row::threaded));
}

int count_plain(bool sync) {
  return static_cast<int>(std::ranges::count_if(
      ops::all(), [=](const ops::row& row) { return row.threaded == ops::family::plain && row.sync == sync; }));
}

TEST(threaded_families_test, the_ops_divide_into_twelve_families) {
  EXPECT_EQ(count_plain(false) + static_cast<int>(own_plain.size()), 236);
  EXPECT_EQ(count_plain(true), 303);
  EXPECT_EQ(count_family(ops::family::vector), 137);
  EXPECT_EQ(count_family(ops::family::parameters), 17);
  EXPECT_EQ(in_record.size(), 2u);
  const int blobs = count_family(ops::family::names) + count_family(ops::family::uniform) +
                    count_family(ops::family::image) + count_family(ops::family::compressed);
  EXPECT_EQ(blobs + static_cast<int>(own_blobs.size()), 42);
  EXPECT_EQ(draws.size(), 4u);
  EXPECT_EQ(setters.size(), 19u);
  EXPECT_EQ(count_family(ops::family::query), 165);
  EXPECT_EQ(copies.size(), 6u);
  EXPECT_EQ(workers_only.size(), 2u);
  EXPECT_EQ(count_family(ops::family::alias), 169);
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

TEST(threaded_families_test, queries_and_forwarders_are_those_of_the_list) {
  for (const ops::row& row : ops::all()) {
    EXPECT_EQ(row.threaded == ops::family::query, is_in(queries, row.op)) << row.name;
    EXPECT_EQ(row.threaded == ops::family::alias, is_in(forwarders, row.op)) << row.name;
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
     {{4608, 4},
      {4609, 4},
      {4610, 4},
      {4611, 4},
      {4612, 3},
      {4613, 1},
      {4614, 1},
      {4615, 1},
      {4616, 1},
      {4617, 1},
      {4607, 0},
      {4618, 0}}},
    {{glLightModelfv_op::op, glLightModeliv_op::op}, {{2897, 1}, {2898, 1}, {2899, 4}, {2900, 0}, {33272, 0}}},
    {{glMaterialfv_op::op, glMaterialiv_op::op},
     {{4608, 4}, {4609, 4}, {4610, 4}, {5632, 4}, {5634, 4}, {5633, 1}, {5635, 3}, {4611, 0}, {5636, 0}}},
    {{glTexGenfv_op::op, glTexGeniv_op::op, glTexGendv_op::op}, {{9472, 1}, {9473, 4}, {9474, 4}, {9475, 0}}},
    {{glTexEnvfv_op::op, glTexEnviv_op::op}, {{8705, 4}, {8960, 4}, {8704, 0}}},
    {{glTexParameterfv_op::op, glTexParameteriv_op::op},
     {{4100, 4},  {10240, 1}, {10241, 1}, {10242, 1}, {10243, 1}, {32870, 1}, {32882, 1}, {32959, 1},
      {33082, 1}, {33083, 1}, {33084, 1}, {33085, 1}, {33169, 1}, {34046, 1}, {34049, 1}, {34891, 1},
      {34892, 1}, {34893, 1}, {10239, 0}, {10244, 0}, {34890, 0}, {34894, 0}}},
    {{glFogfv_op::op, glFogiv_op::op},
     {{2913, 1}, {2914, 1}, {2915, 1}, {2916, 1}, {2917, 1}, {2918, 4}, {2912, 0}, {33872, 0}}},
    {{glPointParameterfv_op::op, glPointParameteriv_op::op},
     {{33062, 1}, {33063, 1}, {33064, 1}, {36000, 1}, {33065, 3}, {33061, 0}}},
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
  EXPECT_EQ(seen.size(), 17u);
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
  EXPECT_EQ(record->op, 473);
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
