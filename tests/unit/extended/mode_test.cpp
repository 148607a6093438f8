// The switch of the extended mode, and what a process has by it: more ops in its tables, and more names.
#include <climits>

#include "ops/names.h"
#include "pipeline/replay.h"
#include "support/expected_figures.h"
#include "support/library.h"
#include "support/op_rows.h"

namespace {

struct mode_test : library::process_test {};

void start_with(const char* value) {
  library::prepare();
  if (value) platform::set_environment_variable("OSW_EXTENDED", value);
  platform::attach_process();
}

struct switch_test : mode_test, testing::WithParamInterface<std::pair<const char*, bool>> {};

TEST_P(switch_test, a_number_other_than_0_switches_it_on) {
  const auto [value, is_extended] = GetParam();
  start_with(value);
  EXPECT_EQ(gl_ops_in_use, is_extended ? gl_all_count : gl_op_count);
  EXPECT_TRUE(library::reports().empty());
}

INSTANTIATE_TEST_SUITE_P(values, switch_test,
                         testing::Values(std::pair("1", true), std::pair(" 17 ", true), std::pair("4294967295", true),
                                         std::pair("0", false), std::pair("00", false), std::pair("", false),
                                         std::pair<const char*, bool>(nullptr, false)));

TEST_F(mode_test, what_is_no_number_is_reported_and_leaves_the_basic_mode) {
  start_with("yes");
  EXPECT_EQ(gl_ops_in_use, gl_op_count);
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Warning: The environment variable OSW_EXTENDED is no decimal "
                                     "number of 32 bits and is ignored.\n"});
}

TEST_F(mode_test, it_is_read_once) {
  start_with("0");
  platform::set_environment_variable("OSW_EXTENDED", "1");
  library::start_rendering();
  EXPECT_EQ(gl_ops_in_use, gl_op_count);
  EXPECT_EQ(osw_wglGetProcAddress("glTexStorage2D"), nullptr);
}

constexpr const __osw_proc* tables[] = {__osw_gl_table_nocontext, __osw_gl_table_seq, __osw_gl_table_mt,
                                        __osw_gl_table_pass};

TEST_F(mode_test, the_basic_mode_knows_nothing_beyond_its_ops) {
  library::start();
  library::start_rendering();
  for (int op = gl_op_count; op < gl_all_count; ++op) {
    const char* const name = __osw_gl_names[op];
    for (const __osw_proc* table : tables) EXPECT_EQ(table[op], nullptr) << name;
    EXPECT_EQ(__osw_sys_gl[op], nullptr) << name;
    EXPECT_EQ(__osw_gl_sync_flags[op], 0u) << name;
    EXPECT_EQ(__osw_gl_op_names[op], nullptr) << name;
    EXPECT_EQ(osw_wglGetProcAddress(name), nullptr) << name;
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(mode_test, each_table_of_the_extended_mode_is_full) {
  library::start({.extended = true});
  library::start_rendering();
  for (int op = 0; op < gl_all_count; ++op) {
    for (const __osw_proc* table : tables) EXPECT_NE(table[op], nullptr) << __osw_gl_names[op];
    EXPECT_NE(__osw_sys_gl[op], nullptr) << __osw_gl_names[op];
    EXPECT_EQ(__osw_gl_op_names[op] != nullptr, __osw_gl_sync_flags[op] != 0) << __osw_gl_names[op];
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(mode_test, the_wide_ops_stand_behind_those_of_the_basic_mode) {
  EXPECT_EQ(gl_all_count, figures::gl_ops + figures::wide_gl_ops);
  EXPECT_STREQ(__osw_gl_names[1102], "glFenceSync");
  EXPECT_STREQ(__osw_gl_names[1482], "glPolygonOffsetClamp");
}

TEST_F(mode_test, what_the_system_lacks_is_warned_of_for_all_ops_in_use) {
  library::prepare({.extended = true});
  driver::set_reach("glTexStorage2D", driver::reach::nowhere);
  platform::attach_process();
  library::start_rendering();
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Warning: cannot get function glTexStorage2D's address.\n"});
  EXPECT_EQ(osw_wglGetProcAddress("glTexStorage2D"), nullptr);
}

TEST_F(mode_test, a_synchronous_op_beyond_the_basic_ones_is_counted_behind_the_queue) {
  library::start({.query_on_app_thread = false, .extended = true});
  library::start_rendering();
  __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  const u32 behind = queue->wide_sync_count[glIsSampler_op::op - gl_op_count];
  const u32 before = queue->gl_sync_count[gl_op_count - 1];
  osw_glIsSampler(3);
  EXPECT_EQ(queue->wide_sync_count[glIsSampler_op::op - gl_op_count], behind + 1);
  EXPECT_EQ(queue->gl_sync_count[gl_op_count - 1], before);
}

// Nor does one of an op that is the application's context's alone, of which there are no commands.
TEST_F(mode_test, an_op_beyond_those_in_use_makes_no_call) {
  for (const i32 op : {i32{glPopDebugGroup_op::op}, i32{gl_all_count}, INT_MAX, -1}) {
    const auto queue = std::make_unique<__osw_cmd_queue>();
    __osw_cmd cmd{.type = __osw_cmd_gl, .op = op, .result = 5};
    gl_ops_in_use = gl_all_count;
    fill_gl_cases();
    __osw_replay_gl(nullptr, queue.get(), nullptr, 0, &cmd);
    EXPECT_EQ(cmd.result, 0u) << op;
  }
}

TEST_F(mode_test, a_bypassed_process_gets_the_system_s_own_entries) {
  library::start({.active = false, .extended = true});
  library::start_rendering();
  for (const char* name : {"glFenceSync", "glTexStorage2D", "glBlendColor"}) {
    EXPECT_EQ(reinterpret_cast<__osw_proc>(osw_wglGetProcAddress(name)), __osw_sys_gl[find_gl_op(name, gl_all_count)]);
  }
}

// ---- names ----

struct name_test : library::process_test {
  void SetUp() override {
    library::start({.extended = true});
    rendered = library::start_rendering();
  }
  library::rendering rendered;
};

// Functions without handlers, which do not exist for a program yet. Each is to leave.
constexpr const char* absent_names[] = {"glBufferStorage",
                                        "glNamedBufferStorage",
                                        "glBlitNamedFramebuffer",
                                        "glCopyTextureSubImage1D",
                                        "glCopyTextureSubImage2D",
                                        "glCopyTextureSubImage3D",
                                        "glGetQueryBufferObjecti64v",
                                        "glGetQueryBufferObjectiv",
                                        "glGetQueryBufferObjectui64v",
                                        "glGetQueryBufferObjectuiv",
                                        "glReadnPixels"};

TEST_F(name_test, a_function_is_found_exactly_when_it_has_handlers) {
  std::vector<std::string> absent;
  for (int op = gl_op_count; op < gl_all_count; ++op) {
    const auto found = reinterpret_cast<__osw_proc>(osw_wglGetProcAddress(__osw_gl_names[op]));
    if (!found) {
      absent.push_back(__osw_gl_names[op]);
    } else {
      EXPECT_EQ(found, __osw_gl_entries[op]) << __osw_gl_names[op];
    }
  }
  EXPECT_EQ(absent, std::vector<std::string>(std::begin(absent_names), std::end(absent_names)));
  EXPECT_EQ(static_cast<int>(absent.size()), figures::wide_gl_ops_without_handlers);
}

TEST_F(name_test, a_function_that_the_system_lacks_does_not_exist) {
  driver::set_reach("glDispatchCompute", driver::reach::nowhere);
  EXPECT_EQ(osw_wglGetProcAddress("glDispatchCompute"), nullptr);
  EXPECT_EQ(osw_wglGetProcAddress("glNoSuch"), nullptr);
}

struct other_name {
  const char* name;
  int op;
};

#define GL_ALIAS(name, function) {#name, function##_op::op},
constexpr other_name other_names[] = {
#include "ops/gl_aliases.inc"
};
#undef GL_ALIAS

TEST_F(name_test, another_name_of_a_function_gives_the_function) {
  for (const other_name& other : other_names) {
    EXPECT_EQ(osw_wglGetProcAddress(other.name), nullptr) << other.name << ", which the system lacks";
    driver::set_answer(other.name, 0x123456);
    const bool exists = ops::of(other.op).threaded != ops::family::none;
    EXPECT_EQ(reinterpret_cast<__osw_proc>(osw_wglGetProcAddress(other.name)),
              exists ? __osw_gl_entries[other.op] : nullptr)
        << other.name;
  }
}

// The driver's entry of another function stands for the one that it has by that name alone.
TEST_F(mode_test, a_function_that_the_system_has_by_another_name_alone_is_called_there) {
  library::prepare({.extended = true});
  driver::set_reach("glPolygonOffsetClamp", driver::reach::nowhere);
  platform::attach_process();
  const library::rendering rendered = library::start_rendering();
  EXPECT_EQ(osw_wglGetProcAddress("glPolygonOffsetClamp"), nullptr);
  driver::set_reach("glWindowPos3f", driver::reach::exported);
  driver::set_answer("glPolygonOffsetClampEXT", reinterpret_cast<INT_PTR>(driver::export_of("glWindowPos3f")));
  ASSERT_EQ(reinterpret_cast<__osw_proc>(osw_wglGetProcAddress("glPolygonOffsetClampEXT")),
            reinterpret_cast<__osw_proc>(osw_glPolygonOffsetClamp));
  library::finish();
  driver::clear_calls();
  osw_glPolygonOffsetClamp(1, 2, 3);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(rendered, part),
              std::vector<driver::call>{driver::expect<glWindowPos3f_op>(1.0f, 2.0f, 3.0f)});
  }
}

TEST_F(mode_test, another_name_of_a_function_is_hidden_in_the_basic_mode) {
  library::start();
  library::start_rendering();
  for (const other_name& other : other_names) {
    driver::set_answer(other.name, 0x123456);
    EXPECT_EQ(osw_wglGetProcAddress(other.name), nullptr) << other.name;
  }
}

}  // namespace
