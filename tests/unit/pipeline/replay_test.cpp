// What replay makes of a GL command: which entry of the system is called, and what becomes of its result.
#include "pipeline/replay.h"

#include <array>
#include <climits>
#include <set>

#include "startup/config/monitors.h"
#include "support/allocation.h"
#include "support/expected_figures.h"
#include "support/issuing.h"
#include "support/result_widths.h"
#include "wgl/records/window_mapping.h"

namespace {

using namespace issuing;
using namespace result_widths;

// A system of its own, whose entries note that they were called and leave a whole register behind.
int calls_of_op[gl_op_count];
u64 answer;

template <int op>
u64 note_call() {
  ++calls_of_op[op];
  return answer;
}

using noting_call = u64 (*)();

template <int... ops>
std::array<noting_call, sizeof...(ops)> noting_calls(std::integer_sequence<int, ops...>) {
  return {note_call<ops>...};
}

const __osw_proc* system_entries() {
  static __osw_proc table[gl_op_count];
  const auto calls = noting_calls(std::make_integer_sequence<int, gl_op_count>());
  for (int op = 0; op < gl_op_count; ++op) table[op] = reinterpret_cast<__osw_proc>(calls[op]);
  return table;
}

u64 kept_of(const char* name, u64 returned) {
  if (is_among(name, bytes)) return returned & 0xFF;
  if (is_among(name, signed_words)) return static_cast<u64>(static_cast<std::int64_t>(static_cast<i32>(returned)));
  if (is_among(name, unsigned_words)) return returned & 0xFFFFFFFF;
  if (is_among(name, whole)) return returned;
  return 0;
}

// One command, replayed on this thread for part 0 of 1.
struct replayed {
  __osw_thread_state state{};
  __osw_cmd_queue queue{};
  __osw_cmd cmd{};
};

void replay(replayed& on, const __osw_proc* system) {
  on.cmd.type = __osw_cmd_gl;
  on.state.sys_gl = system;
  on.cmd.result = on.queue.last_result = 0x5555555555555555;
  __osw_replay_gl(&on.state, &on.queue, system, 0, &on.cmd);
}

struct replay_test : pipeline_test {
  void SetUp() override {
    fill_gl_cases();
    system = system_entries();
    __osw_part_count = 1;
  }
  const __osw_proc* system = nullptr;
};

void expect_called_alone(int op) {
  for (int other = 0; other < gl_op_count; ++other) EXPECT_EQ(calls_of_op[other], other == op) << other << ' ' << op;
  std::fill(std::begin(calls_of_op), std::end(calls_of_op), 0);
}

TEST_F(replay_test, the_widths_are_those_of_55_ops) {
  std::set<std::string> known(std::begin(__osw_gl_names), std::end(__osw_gl_names));
  int count = 0;
  const auto add = [&](const auto& group) {
    count += static_cast<int>(std::size(group));
    for (const std::string_view name : group) EXPECT_TRUE(known.contains(std::string(name))) << name;
  };
  add(bytes);
  add(signed_words);
  add(unsigned_words);
  add(whole);
  EXPECT_EQ(count, figures::gl_ops_with_result);
}

TEST_F(replay_test, each_op_calls_its_own_entry_and_keeps_its_result_s_width) {
  const auto on = std::make_unique<replayed>();
  for (const u64 returned : {0xFFFFFFFFFFFFFFFFul, 0x0123456789ABCDEFul, 0xFEDCBA9876543210ul, 0xABCDEF0080000000ul,
                             0x12345678FFFFFF00ul, 0ul}) {
    answer = returned;
    for (int op = 0; op < gl_op_count; ++op) {
      on->cmd.op = op;
      replay(*on, system);
      EXPECT_EQ(on->cmd.result, kept_of(__osw_gl_names[op], returned)) << __osw_gl_names[op];
      EXPECT_EQ(on->queue.last_result, on->cmd.result) << __osw_gl_names[op];
      // With an empty rectangle there is nothing to read.
      expect_called_alone(op == glReadPixels_op::op ? -1 : op);
    }
  }
}

TEST_F(replay_test, an_op_out_of_range_makes_no_call) {
  const auto on = std::make_unique<replayed>();
  answer = 9;
  for (const i32 op : {figures::gl_ops, figures::gl_ops + 1, -1, INT_MIN, INT_MAX}) {
    allocation::watch();
    void* const block = malloc(8);
    on->cmd.op = op;
    on->cmd.args[4] = reinterpret_cast<u64>(block);
    on->cmd.blob_mask = 1u << 4;
    on->cmd.blob_release_count = 0;
    replay(*on, system);
    EXPECT_EQ(allocation::freed(), std::vector{reinterpret_cast<std::uintptr_t>(block)});
    EXPECT_EQ(on->cmd.blob_mask, 0u);
    EXPECT_EQ(on->cmd.result, 0u);
    EXPECT_EQ(on->queue.last_result, 0u);
    expect_called_alone(-1);
    allocation::stop_watching();
  }
}

// ---- the exceptions, with entries that look at their arguments ----

struct pointer_call {
  GLuint id;
  GLenum name;
  void* values;
} seen_pointer;

void note_pointer(GLuint id, GLenum name, void* values) {
  seen_pointer = {id, name, values};
  *static_cast<u64*>(values) = 0x1234567890ABCDEF;
}

TEST_F(replay_test, one_query_s_value_lands_in_the_record) {
  u64 application = 7;
  const auto on = std::make_unique<replayed>();
  __osw_proc table[gl_op_count] = {};
  table[glGetQueryObjectui64v_op::op] = reinterpret_cast<__osw_proc>(note_pointer);
  on->cmd = {
      __osw_cmd_gl, glGetQueryObjectui64v_op::op, 0, 3, {5, GL_QUERY_RESULT, reinterpret_cast<u64>(&application)}};
  replay(*on, table);
  EXPECT_EQ(seen_pointer.id, 5u);
  EXPECT_EQ(seen_pointer.name, static_cast<GLenum>(GL_QUERY_RESULT));
  EXPECT_EQ(seen_pointer.values, &on->cmd.args[2]);
  EXPECT_EQ(on->cmd.args[2], 0x1234567890ABCDEFu);
  EXPECT_EQ(application, 7u);
  EXPECT_EQ(on->queue.last_result, 0u);
}

TEST_F(replay_test, its_siblings_write_to_the_application) {
  for (const int op :
       {+glGetQueryObjecti64v_op::op, +glGetQueryObjecti64vEXT_op::op, +glGetQueryObjectui64vEXT_op::op}) {
    u64 application = 7;
    const auto on = std::make_unique<replayed>();
    __osw_proc table[gl_op_count] = {};
    table[op] = reinterpret_cast<__osw_proc>(note_pointer);
    on->cmd = {__osw_cmd_gl, op, 0, 3, {5, GL_QUERY_RESULT, reinterpret_cast<u64>(&application)}};
    replay(*on, table);
    EXPECT_EQ(seen_pointer.values, &application);
    EXPECT_EQ(application, 0x1234567890ABCDEFu);
  }
}

std::pair<GLint, GLint> seen_pair;
void note_pair(GLint x, GLint y) {
  seen_pair = {x, y};
}

TEST_F(replay_test, an_offset_comes_from_the_part_s_window_at_replay) {
  const auto on = std::make_unique<replayed>();
  const auto mapping = std::make_unique<__osw_window_mapping>();
  __osw_proc table[gl_op_count] = {};
  table[glViewportOffsetZ4_op::op] = reinterpret_cast<__osw_proc>(note_pair);
  on->cmd = {__osw_cmd_gl, glViewportOffsetZ4_op::op, 0, 2, {111, 222}};
  replay(*on, table);
  EXPECT_EQ(seen_pair, std::pair(0, 0)) << "without a window";
  on->state.window_mapping = mapping.get();
  for (i32 part = 0; part < 16; ++part) {
    mapping->parts[part].viewport_offset_x = -100 - part;
    mapping->parts[part].viewport_offset_y = 100 * part;
    __osw_replay_gl(&on->state, &on->queue, table, part, &on->cmd);
    EXPECT_EQ(seen_pair, std::pair(-100 - part, 100 * part));
  }
}

TEST_F(replay_test, a_drawable_size_is_the_command_s_own) {
  const auto on = std::make_unique<replayed>();
  __osw_proc table[gl_op_count] = {};
  table[glDrawableSizeZ4_op::op] = reinterpret_cast<__osw_proc>(note_pair);
  on->cmd = {__osw_cmd_gl, glDrawableSizeZ4_op::op, 0, 2, {0xDEADBEEF00000280, 0xFFFFFFFF}};
  replay(*on, table);
  EXPECT_EQ(seen_pair, std::pair(640, -1));
}

// ---- through the whole pipeline ----

struct replay_road_test : pipeline_test {
  void begin(int parts = 2) {
    library::start({.parts = parts, .query_on_app_thread = false});
    rendered = library::start_rendering();
    empty_list();
    driver::clear_calls();
  }
  library::rendering rendered;
};

TEST_F(replay_road_test, garbage_above_a_byte_does_not_reach_the_result) {
  begin();
  driver::set_result<glIsEnabled_op>(0xDEADBEEFCAFEF001);
  const u64 slots[] = {GL_BLEND};
  __osw_push_gl_cmd(state(), glIsEnabled_op::op, 1, slots, 0);
  EXPECT_EQ(queue()->last_result, 1u);
  EXPECT_EQ(osw_glIsEnabled(GL_BLEND), 1);
  driver::set_result<glIsEnabled_op>(0xDEADBEEFCAFEF000);
  EXPECT_EQ(osw_glIsEnabled(GL_BLEND), 0);
}

TEST_F(replay_road_test, minus_one_is_extended_by_its_sign) {
  begin();
  driver::set_result<glGetAttribLocation_op>(0x00000000FFFFFFFF);
  EXPECT_EQ(osw_glGetAttribLocation(1, "name"), -1);
  EXPECT_EQ(queue()->last_result, 0xFFFFFFFFFFFFFFFFu);
  driver::set_result<glGetError_op>(0x00000000FFFFFFFF);
  EXPECT_EQ(osw_glGetError(), 0xFFFFFFFFu);
  EXPECT_EQ(queue()->last_result, 0x00000000FFFFFFFFu);
}

TEST_F(replay_road_test, a_pointer_keeps_all_its_bits) {
  begin();
  driver::set_result<glGetString_op>(0xFEDCBA9876543210);
  EXPECT_EQ(driver::bits_of(osw_glGetString(GL_VENDOR)), 0xFEDCBA9876543210u);
}

// The two parts meet at 960, inside the window: 260 columns are the first part's, 380 the second's.
TEST_F(replay_road_test, each_part_reads_its_share_into_the_one_buffer) {
  library::start({.query_on_app_thread = false});
  rendered = library::start_rendering({700, 100, 1340, 580});
  empty_list();
  driver::clear_calls();
  std::vector<u8> pixels(640 * 480 * 4);
  void* const buffer = pixels.data();
  const auto read = [&](int part) {
    std::vector<driver::call> calls = library::part_calls(rendered, part);
    std::erase_if(calls, [](const driver::call& one) { return one.op != glReadPixels_op::op; });
    return calls;
  };
  osw_glReadPixels(0, 0, 640, 480, GL_RGBA, GL_UNSIGNED_BYTE, buffer);
  EXPECT_EQ(read(0), std::vector{driver::expect<glReadPixels_op>(0, 0, 260, 480, GL_RGBA, GL_UNSIGNED_BYTE, buffer)});
  EXPECT_EQ(read(1), std::vector{driver::expect<glReadPixels_op>(0, 0, 380, 480, GL_RGBA, GL_UNSIGNED_BYTE, buffer)});
  driver::clear_calls();
  osw_glReadPixels(250, 30, 20, 40, GL_RGBA, GL_UNSIGNED_BYTE, buffer);
  EXPECT_EQ(read(0), std::vector{driver::expect<glReadPixels_op>(250, 30, 10, 40, GL_RGBA, GL_UNSIGNED_BYTE, buffer)});
  EXPECT_EQ(read(1), std::vector{driver::expect<glReadPixels_op>(0, 30, 10, 40, GL_RGBA, GL_UNSIGNED_BYTE, buffer)});
  driver::clear_calls();
  osw_glReadPixels(300, 0, 20, 30, GL_RGBA, GL_UNSIGNED_BYTE, buffer);
  EXPECT_TRUE(library::part_calls(rendered, 0).empty()) << "a part without a share was asked";
  EXPECT_EQ(read(1), std::vector{driver::expect<glReadPixels_op>(40, 0, 20, 30, GL_RGBA, GL_UNSIGNED_BYTE, buffer)});
}

TEST_F(replay_road_test, an_offset_is_read_when_the_part_replays_it) {
  library::start({.query_on_app_thread = false});
  const renderer held = start_renderer();
  driver::clear_calls();
  auto gate = std::make_shared<issuing::gate>();
  driver::on_call<glBegin_op>([gate](driver::live_call&) { pass(*gate); });
  library::post(held.thread, [] {
    const u64 slots[] = {0, 0};
    __osw_push_gl_cmd(state(), glBegin_op::op, 1, slots, 0);
    __osw_push_gl_cmd(state(), glViewportOffsetZ4_op::op, 2, slots, 0);
  });
  ASSERT_TRUE(wait_until_held(*gate, 2));
  for (int part = 0; part < 2; ++part) {
    __osw_child_part& child = held.state->window_mapping->parts[part];
    relaxed_store(child.viewport_offset_x, 10 + part);
    relaxed_store(child.viewport_offset_y, 20 + part);
  }
  open(*gate);
  library::wait(held.thread);
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(held.rendered, part).back(),
              driver::expect<glViewportOffsetZ4_op>(10 + part, 20 + part));
  }
  library::end_thread(held.thread);
}

TEST_F(replay_road_test, a_pbuffer_has_no_offset) {
  begin();
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(rendered.window.hdc, 1, 64, 32, nullptr);
  const HDC hdc = osw_wglGetPbufferDCARB(pbuffer);
  ASSERT_TRUE(osw_wglMakeCurrent(hdc, rendered.context));
  driver::clear_calls();
  const u64 arguments[] = {5, 6};
  __osw_push_gl_cmd(state(), glViewportOffsetZ4_op::op, 2, arguments, 0);
  empty_list();
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(rendered, part), std::vector{driver::expect<glViewportOffsetZ4_op>(0, 0)});
  }
  osw_wglMakeCurrent(nullptr, nullptr);
  EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer));
}

}  // namespace
