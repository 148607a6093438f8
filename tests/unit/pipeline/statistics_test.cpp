// The figures of why the issuing thread had to wait, line by line as the debugger gets them.
#include "pipeline/statistics.h"

#include "support/issuing.h"

namespace {

using namespace issuing;

constexpr char info[] = "OGLSPANWrapper Info: ";

struct statistics_test : pipeline_test {
  void begin(const library::process_setup& setup = {.query_on_app_thread = false}) {
    __osw_print_sync_info_enabled = 1;
    library::start(setup);
    rendered = library::start_rendering();
    platform::clear_debug_output();
  }
  void TearDown() override {
    __osw_print_sync_info_enabled = 0;
    __osw_print_sync_on_swap = 0;
    pipeline_test::TearDown();
  }
  library::rendering rendered;
};

std::string pointer_text(const void* value) {
  char text[20];
  std::snprintf(text, sizeof text, "%016lX", reinterpret_cast<unsigned long>(value));
  return text;
}

std::string header(DWORD thread_id, const library::rendering& of, int frames) {
  return std::string(info) + "sync info (thread id = " + std::to_string(thread_id) + ", hdc = 0x" +
         pointer_text(of.window.hdc) + ", hglrc = 0x" + pointer_text(of.context) + ", total " + std::to_string(frames) +
         " frames):\n";
}

std::string count_line(const std::string& label, u32 count) {
  return info + label + " sync num: " + std::to_string(count) + "\n";
}

std::string full_line(u32 count) {
  return std::string(info) + "cmd buffer full num: " + std::to_string(count) + " (cmd buf size = 5000)\n";
}

std::string total_line(int frames, u32 sync, u32 full) {
  return std::string(info) + "total frames " + std::to_string(frames) + ", api sync num: " + std::to_string(sync) +
         ", cmd full sync num: " + std::to_string(full) + "\n";
}

std::vector<std::string> printed() {
  platform::clear_debug_output();
  __osw_print_sync_info(state());
  return library::reports();
}

using lines = std::vector<std::string>;
using counts = std::vector<std::pair<std::string, u32>>;

// Everything that is printed of one binding.
lines figures(const std::string& first, int frames, const counts& of_ops, u32 of_sync_cmd, u32 full) {
  lines all = {first};
  u32 sum = of_sync_cmd;
  for (const auto& [label, count] : of_ops) {
    all.push_back(count_line(label, count));
    sum += count;
  }
  all.push_back(count_line("__osw_send_sync_cmd", of_sync_cmd));
  all.push_back(full_line(full));
  all.push_back(total_line(frames, sum, full));
  return all;
}

// What the start of a window's binding waits for: the binding itself, and the geometry that follows.
const counts of_binding = {
    {"__osw_wglMakeCurrent_op", 1}, {"__osw_glViewportOffsetZ4_op", 1}, {"__osw_glDrawableSizeZ4_op", 1}};

counts of_binding_and(const std::string& label, u32 count) {
  return {of_binding[0], {label, count}, of_binding[1], of_binding[2]};
}

TEST_F(statistics_test, both_switches_are_off_from_the_start) {
  EXPECT_EQ(__osw_print_sync_info_enabled, 0u);
  EXPECT_EQ(__osw_print_sync_on_swap, 0u);
  library::start({.query_on_app_thread = false});
  const library::rendering drawn = library::start_rendering();
  osw_glGetError();
  osw_wglSwapBuffers(drawn.window.hdc);
  osw_wglMakeCurrent(nullptr, nullptr);
  EXPECT_EQ(printed(), lines());
}

TEST_F(statistics_test, a_line_is_two_texts) {
  begin();
  printed();
  const std::vector<platform::debug_text> texts = platform::debug_output();
  ASSERT_EQ(texts.size(), 14u);
  for (std::size_t line = 0; line < texts.size(); line += 2) EXPECT_EQ(texts[line].text, info);
  EXPECT_EQ(texts[2].text + texts[3].text, count_line("__osw_wglMakeCurrent_op", 1));
}

TEST_F(statistics_test, a_binding_starts_with_its_own_make_current) {
  begin();
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 0), 0, of_binding, 0, 0));
}

TEST_F(statistics_test, with_no_sync_at_all_four_lines_remain) {
  begin();
  __osw_reset_sync_info(state());
  push_hints(10);
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 0), 0, {}, 0, 0));
}

TEST_F(statistics_test, every_cause_has_its_line_in_op_order) {
  begin();
  for (int round = 0; round < 3; ++round) osw_glGetString(GL_VENDOR);
  for (int round = 0; round < 2; ++round) osw_glGetError();
  osw_glIsEnabled(GL_BLEND);
  osw_wglShareLists(rendered.context, rendered.context);
  for (int round = 0; round < 4; ++round) __osw_send_sync_cmd(state());
  push_hints(10000);
  osw_wglSwapBuffers(rendered.window.hdc);
  osw_wglSwapLayerBuffers(rendered.window.hdc, 1);
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 2), 2,
                               {{"__osw_wglMakeCurrent_op", 1},
                                {"__osw_wglShareLists_op", 1},
                                {"__osw_glIsEnabled_op", 1},
                                {"__osw_glGetError_op", 2},
                                {"__osw_glGetString_op", 3},
                                {"__osw_glViewportOffsetZ4_op", 1},
                                {"__osw_glDrawableSizeZ4_op", 1}},
                               4, 2));
}

TEST_F(statistics_test, sums_wrap_at_32_bits) {
  begin();
  __osw_reset_sync_info(state());
  queue()->gl_sync_count[glGetError_op::op] = 0xFFFFFFFF;
  queue()->wgl_sync_count[wglShareLists_op::op] = 3;
  EXPECT_EQ(printed().back(), total_line(0, 2, 0));
}

TEST_F(statistics_test, a_thread_without_a_queue_prints_nothing) {
  begin();
  platform::clear_debug_output();
  library::run_on_new_thread([] {
    osw_glGetError();
    __osw_print_sync_info(state());
  });
  EXPECT_EQ(library::reports(), lines());
}

TEST_F(statistics_test, a_new_binding_prints_the_old_one_s_figures_and_starts_over) {
  begin();
  osw_glGetError();
  push_hints(5000);
  osw_wglSwapBuffers(rendered.window.hdc);
  const lines ending =
      figures(header(GetCurrentThreadId(), rendered, 1), 1, of_binding_and("__osw_glGetError_op", 1), 0, 1);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(library::reports(), ending);
  // The release's own command stands in the figures that it starts.
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), {}, 0), 0, {of_binding[0]}, 0, 0));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 0), 0, of_binding, 0, 0));
}

TEST_F(statistics_test, a_repeated_binding_neither_prints_nor_resets) {
  begin();
  osw_glGetError();
  EXPECT_FALSE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(library::reports(), lines());
  EXPECT_EQ(queue()->gl_sync_count[glGetError_op::op], 1u);
}

TEST_F(statistics_test, the_end_of_a_thread_prints_without_the_exit_command) {
  begin();
  library::rendering drawn;
  DWORD thread_id = 0;
  library::run_on_new_thread([&] {
    thread_id = GetCurrentThreadId();
    drawn = library::start_rendering();
    osw_glGetError();
    DestroyWindow(drawn.window.hwnd);  // the one sync command
    platform::clear_debug_output();
    push_hints(1);
  });
  EXPECT_EQ(library::reports(),
            figures(header(thread_id, drawn, 0), 0, of_binding_and("__osw_glGetError_op", 1), 1, 0));
}

TEST_F(statistics_test, the_second_switch_prints_after_each_swap) {
  begin();
  __osw_print_sync_on_swap = 1;
  osw_wglSwapBuffers(rendered.window.hdc);
  EXPECT_EQ(library::reports(), figures(header(GetCurrentThreadId(), rendered, 1), 1, of_binding, 0, 0));
  platform::clear_debug_output();
  osw_wglSwapLayerBuffers(rendered.window.hdc, 0);
  EXPECT_EQ(library::reports().front(), header(GetCurrentThreadId(), rendered, 2));
  platform::clear_debug_output();
  __osw_print_sync_info_enabled = 0;
  osw_wglSwapBuffers(rendered.window.hdc);
  EXPECT_EQ(library::reports(), lines());
}

TEST_F(statistics_test, the_sequential_path_counts_frames_and_the_commands_that_still_travel) {
  begin({.way = library::path::sequential});
  osw_glGetError();
  osw_wglSwapBuffers(rendered.window.hdc);
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 1), 1, {of_binding[0]}, 0, 0));
}

TEST_F(statistics_test, teardown_of_a_context_is_a_sync_command) {
  begin();
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  EXPECT_TRUE(osw_wglDeleteContext(other));
  EXPECT_EQ(queue()->send_sync_count, 1u);
}

TEST_F(statistics_test, a_finished_list_is_counted_nowhere) {
  begin();
  osw_glFlush();
  finish_list(__osw_fetch_thread_state());
  EXPECT_EQ(printed(), figures(header(GetCurrentThreadId(), rendered, 0), 0, of_binding, 0, 0));
}

}  // namespace
