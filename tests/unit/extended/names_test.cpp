// What makes names of objects: the program's and the parts' have to be the same, and nobody waits to see it.
#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

#include "pipeline/cmd_queue.h"
#include "support/allocation.h"
#include "support/op_rows.h"
#include "support/received.h"
#include "support/sequential_steps.h"

namespace {

constexpr u32 parts = 3;

struct names_test : library::process_test {
  void start(bool on_app_thread = true) {
    library::start({.parts = parts, .query_on_app_thread = on_app_thread, .extended = true});
    rendered = library::start_rendering();
    received::watch(rendered);
    driver::hand_out_names();
  }
  void start_sequential() {
    rendered = sequential::start({.parts = parts, .extended = true});
    driver::hand_out_names();
  }
  HGLRC part(std::size_t number) const { return rendered.children.at(number); }
  library::rendering rendered;
};

using strings = std::vector<std::string>;
using names = std::vector<GLuint>;

strings warning_of(const char* function, int part) {
  return {std::string("OGLSPANWrapper Warning: ") + function + " has made other names on part " + std::to_string(part) +
          " than the program got.\n"};
}

strings error_of(const char* function) {
  return {std::string("OGLSPANWrapper Error: no memory for the data of ") + function + "\n"};
}

std::vector<ops::row> all_makers() {
  std::vector<ops::row> makers;
  std::ranges::copy_if(ops::all(), std::back_inserter(makers), ops::makes_names);
  return makers;
}

u32 waits(const __osw_cmd_queue* queue) {
  u32 sum = queue->send_sync_count;
  for (const u32 count : queue->gl_sync_count) sum += count;
  for (const u32 count : queue->wide_sync_count) sum += count;
  return sum;
}

// Calls with room for `count` names; those that return a name make one. Result: the names.
names call(const ops::row& row, GLsizei count) {
  driver::argument_bits arguments = {};
  if (row.result_size) return {static_cast<GLuint>(row.call(row.entry, arguments))};
  names made(static_cast<std::size_t>(count));
  arguments[row.count - 2] = static_cast<u64>(count);
  arguments[row.count - 1] = driver::bits_of(made.data());
  row.call(row.entry, arguments);
  const names result = made;
  // The program may do with its memory as it likes.
  std::ranges::fill(made, 77u);
  return result;
}

names from(GLuint first, std::size_t count) {
  names wanted(count);
  std::ranges::generate(wanted, [&] { return first++; });
  return wanted;
}

TEST_F(names_test, whatever_makes_names_is_known_to_do_so) {
  library::start({.extended = true});
  for (const ops::row& row : ops::all()) {
    const std::string name = row.name;
    const bool generates = name.starts_with("glGen") && !name.starts_with("glGenerate");
    // A list is made by glNewList under any name, and has handlers that wait for nothing as it is.
    const bool is_list = row.op == glGenLists_op::op;
    if (row.threaded == ops::family::none) continue;
    EXPECT_EQ(ops::makes_names(row), (generates && !is_list) || name.starts_with("glCreate")) << name;
  }
}

TEST_F(names_test, the_program_s_context_and_each_part_make_the_same_names_without_a_wait) {
  start();
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  GLuint first = 1;
  for (const ops::row& row : all_makers()) {
    SCOPED_TRACE(row.name);
    received::wait_for_parts();
    received::clear();
    const u32 waits_before = waits(queue), filled = *queue->fill_count;
    const names made = call(row, 3);
    EXPECT_EQ(made, from(first, row.result_size ? 1 : 3));
    first += static_cast<GLuint>(made.size());
    EXPECT_EQ(waits(queue), waits_before);
    EXPECT_EQ(*queue->fill_count, filled + 1);
    EXPECT_EQ(received::of_app().size(), 1u);
    received::for_each_part([](const received::calls& logged) { EXPECT_EQ(logged.size(), 1u); });
  }
  EXPECT_GT(first, 60u);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, a_part_that_makes_others_is_reported) {
  start();
  driver::skip_names(part(1), 5);
  EXPECT_EQ(call(ops::of(glGenVertexArrays_op::op), 2), names({1, 2}));
  received::wait_for_parts();
  EXPECT_EQ(library::reports(), warning_of("glGenVertexArrays", 1));
}

TEST_F(names_test, it_is_reported_once) {
  start();
  driver::skip_names(part(2), 1);
  call(ops::of(glCreateTextures_op::op), 2);
  call(ops::of(glGenSamplers_op::op), 2);
  call(ops::of(glCreateShader_op::op), 1);
  received::wait_for_parts();
  EXPECT_EQ(library::reports(), warning_of("glCreateTextures", 2));
}

TEST_F(names_test, a_name_that_is_returned_is_compared_too) {
  start();
  driver::skip_names(part(0), 1);
  EXPECT_EQ(osw_glCreateProgram(), 1u);
  received::wait_for_parts();
  EXPECT_EQ(library::reports(), warning_of("glCreateProgram", 0));
}

TEST_F(names_test, many_names_travel_in_blocks_that_the_last_worker_frees) {
  start();
  allocation::watch();
  EXPECT_EQ(call(ops::of(glCreateBuffers_op::op), 1000), from(1, 1000));
  received::wait_for_parts();
  EXPECT_TRUE(library::reports().empty());
  const std::vector<std::uintptr_t> freed = allocation::freed();
  allocation::stop_watching();
  EXPECT_GE(freed.size(), 2u);
  driver::skip_names(part(2), 1);
  EXPECT_EQ(call(ops::of(glCreateBuffers_op::op), 1000), from(1001, 1000));
  received::wait_for_parts();
  EXPECT_EQ(library::reports(), warning_of("glCreateBuffers", 2));
}

TEST_F(names_test, as_many_names_as_the_record_holds_and_one_more_are_made) {
  start();
  GLuint first = 1;
  for (const GLsizei count : {55, 56, 57, 58, 59, 60}) {
    EXPECT_EQ(call(ops::of(glGenTextures_op::op), count), from(first, static_cast<std::size_t>(count)));
    first += static_cast<GLuint>(count);
    received::wait_for_parts();
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, without_memory_for_one_of_the_blocks_no_part_gets_the_call) {
  start();
  for (const int failing : {1, 2}) {
    const GLuint first = failing == 1 ? 1 : 101;
    received::clear();
    // The program's own array is the first block.
    names made(100);
    allocation::fail_call(failing);
    osw_glGenBuffers(100, made.data());
    allocation::stop_failing();
    EXPECT_EQ(made, from(first, 100));
    received::expect_parts({});
  }
  EXPECT_EQ(library::reports(), strings({error_of("glGenBuffers")[0], error_of("glGenBuffers")[0]}));
}

// ---- other names than the program's ----

// No deletion undoes what these make.
bool can_be_mended(const ops::row& row) {
  return row.op != glGenVertexShadersEXT_op::op && row.op != glGenSymbolsEXT_op::op;
}

TEST_F(names_test, a_part_that_met_two_threads_in_the_other_order_makes_names_until_it_has_the_program_s) {
  start();
  driver::take_names(rendered.context, {1, 2});
  EXPECT_EQ(call(ops::of(glGenTextures_op::op), 3), names({3, 4, 5}));
  received::wait_for_parts();
  for (u32 i = 0; i < parts; ++i) EXPECT_EQ(driver::taken_names(part(i)), names({3, 4, 5}));
  // So the other thread's names are there for it.
  driver::free_names(rendered.context, {1, 2});
  EXPECT_EQ(call(ops::of(glGenTextures_op::op), 2), names({1, 2}));
  received::wait_for_parts();
  for (u32 i = 0; i < parts; ++i) EXPECT_EQ(driver::taken_names(part(i)), from(1, 5));
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, whatever_makes_names_is_mended) {
  start();
  driver::take_names(rendered.context, {1, 2});
  names all;
  for (const ops::row& row : all_makers()) {
    if (!can_be_mended(row)) continue;
    SCOPED_TRACE(row.name);
    const names made = call(row, 2);
    all.insert(all.end(), made.begin(), made.end());
    received::wait_for_parts();
    EXPECT_EQ(driver::taken_names(part(1)), all);
  }
  EXPECT_GT(all.size(), 40u);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, many_names_are_mended) {
  start();
  driver::take_names(rendered.context, from(1, 700));
  EXPECT_EQ(call(ops::of(glCreateVertexArrays_op::op), 5000), from(701, 5000));
  received::wait_for_parts();
  for (u32 i = 0; i < parts; ++i) EXPECT_EQ(driver::taken_names(part(i)), from(701, 5000));
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, names_that_another_thread_of_the_part_holds_are_waited_for) {
  start();
  driver::take_names(part(1), {1, 2});
  EXPECT_EQ(call(ops::of(glGenBuffers_op::op), 2), names({1, 2}));
  osw_glFlush();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  driver::free_names(part(1), {1, 2});
  received::wait_for_parts();
  EXPECT_EQ(driver::taken_names(part(1)), names({1, 2}));
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, the_same_names_in_another_order_are_the_program_s) {
  start();
  driver::on_call<glGenTextures_op>([this](driver::live_call& live) {
    if (live.what.context != part(2)) return;
    auto* made = reinterpret_cast<GLuint*>(live.what.arguments[1]);
    made[0] = 2;
    made[1] = 1;
    live.answered = true;
  });
  EXPECT_EQ(call(ops::of(glGenTextures_op::op), 2), names({1, 2}));
  received::wait_for_parts();
  EXPECT_EQ(received::of_part(2).size(), 1u);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, a_part_that_has_made_none_makes_no_more) {
  start();
  driver::set_result_in<glCreateProgram_op>(part(1), 0);
  EXPECT_EQ(osw_glCreateProgram(), 1u);
  received::wait_for_parts();
  EXPECT_EQ(received::of_part(1).size(), 1u);
  EXPECT_EQ(library::reports(), warning_of("glCreateProgram", 1));
}

TEST_F(names_test, what_could_not_be_mended_is_not_tried_again) {
  start();
  driver::skip_names(part(1), 5);
  call(ops::of(glGenTextures_op::op), 2);
  received::wait_for_parts();
  received::clear();
  call(ops::of(glGenTextures_op::op), 2);
  received::wait_for_parts();
  EXPECT_EQ(received::of_part(1).size(), 1u);
  EXPECT_EQ(library::reports(), warning_of("glGenTextures", 1));
}

TEST_F(names_test, without_memory_to_mend_them_they_are_reported) {
  start_sequential();
  driver::take_names(part(2), {1});
  allocation::fail_call(1);
  EXPECT_EQ(osw_glCreateProgram(), 2u);
  allocation::stop_failing();
  EXPECT_EQ(driver::taken_names(part(1)), names({1}));
  EXPECT_EQ(library::reports(), warning_of("glCreateProgram", 0));
}

TEST_F(names_test, one_part_after_the_other_the_names_of_the_last_one_are_those_of_all) {
  start_sequential();
  driver::take_names(part(2), {1, 2});
  for (const ops::row& row : all_makers()) {
    if (can_be_mended(row)) call(row, 2);
  }
  driver::free_names(part(2), {1, 2});
  EXPECT_GT(driver::taken_names(part(2)).size(), 40u);
  EXPECT_EQ(driver::taken_names(part(0)), driver::taken_names(part(2)));
  EXPECT_EQ(driver::taken_names(part(1)), driver::taken_names(part(2)));
  EXPECT_EQ(driver::current_binding().switched_to, rendered.context);
  EXPECT_TRUE(library::reports().empty());
}

struct names_option_test : names_test, testing::WithParamInterface<bool> {};

TEST_P(names_option_test, a_count_that_is_not_positive_is_left_to_gl) {
  start(GetParam());
  GLuint name = 7;
  for (const GLsizei count : {0, -1, -0x7FFFFFFF}) {
    received::clear();
    osw_glGenFramebuffers(count, &name);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(static_cast<GLsizei>(logged[0].what.arguments[0]), count);
    });
    EXPECT_EQ(name, 7u);
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_P(names_option_test, without_an_array_each_part_is_told_so) {
  start(GetParam());
  osw_glCreateTextures(GL_TEXTURE_2D, 100, nullptr);
  received::expect_parts({driver::expect<glCreateTextures_op>(GL_TEXTURE_2D, 100, nullptr)});
  EXPECT_TRUE(library::reports().empty());
}

// The scripted result stands for GL's refusal: nothing is written.
TEST_P(names_option_test, what_gl_refuses_to_make_is_neither_given_nor_compared) {
  start(GetParam());
  driver::set_result<glCreateQueries_op>(0);
  driver::skip_names(part(1), 5);
  for (const std::size_t count : {3u, 100u}) {
    names kept(count, 9);
    osw_glCreateQueries(GL_TEXTURE_2D, static_cast<GLsizei>(count), kept.data());
    received::wait_for_parts();
    EXPECT_EQ(kept, names(count, 9));
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_P(names_option_test, a_count_that_no_memory_can_hold_reaches_no_part) {
  start(GetParam());
  driver::set_result<glGenRenderbuffers_op>(0);
  GLuint name = 7;
  osw_glGenRenderbuffers(0x7FFFFFFF, &name);
  received::expect_parts({});
  EXPECT_EQ(name, 7u);
  EXPECT_EQ(library::reports(), error_of("glGenRenderbuffers"));
}

INSTANTIATE_TEST_SUITE_P(query_on_app_thread, names_option_test, testing::Bool());

TEST_F(names_test, without_a_context_that_follows_the_program_gets_the_last_part_s_names) {
  start(false);
  driver::skip_names(part(2), 10);
  EXPECT_EQ(call(ops::of(glGenQueries_op::op), 2), names({11, 12}));
  EXPECT_EQ(library::reports(), warning_of("glGenQueries", 0));
  EXPECT_EQ(osw_glCreateShader(GL_VERTEX_SHADER), 13u);
  EXPECT_EQ(call(ops::of(glCreateVertexArrays_op::op), 500), from(14, 500));
  EXPECT_TRUE(received::of_app().empty());
}

TEST_F(names_test, without_a_context_that_follows_equal_names_are_no_matter_of_a_report) {
  start(false);
  GLuint first = 1;
  for (const ops::row& row : all_makers()) {
    const names made = call(row, 40);
    EXPECT_EQ(made, from(first, made.size())) << row.name;
    first += static_cast<GLuint>(made.size());
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, one_part_after_the_other_makes_its_names_and_the_program_gets_the_last_ones) {
  start_sequential();
  GLuint first = 1;
  for (const ops::row& row : all_makers()) {
    SCOPED_TRACE(row.name);
    driver::clear_calls();
    const names made = call(row, 40);
    EXPECT_EQ(made, from(first, made.size()));
    first += static_cast<GLuint>(made.size());
    for (const HGLRC child : rendered.children) EXPECT_EQ(sequential::calls_in(child).size(), 1u);
    EXPECT_TRUE(sequential::calls_in(rendered.context).empty());
  }
  EXPECT_TRUE(library::reports().empty());
  driver::skip_names(part(2), 3);
  EXPECT_EQ(call(ops::of(glGenProgramPipelines_op::op), 1), names({first + 3}));
  EXPECT_EQ(call(ops::of(glCreateProgram_op::op), 1), names({first + 4}));
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(names_test, one_part_after_the_other_a_returned_name_is_compared) {
  start_sequential();
  driver::skip_names(part(1), 3);
  EXPECT_EQ(osw_glCreateShader(GL_VERTEX_SHADER), 1u);
  EXPECT_EQ(library::reports(), warning_of("glCreateShader", 1));
}

TEST_F(names_test, one_part_after_the_other_odd_counts_and_null_are_left_to_gl) {
  start_sequential();
  driver::clear_calls();
  GLuint name = 7;
  osw_glGenTextures(-5, &name);
  osw_glGenTextures(3, nullptr);
  for (const HGLRC child : rendered.children) {
    EXPECT_EQ(sequential::calls_in(child), (std::vector<driver::call>{driver::expect<glGenTextures_op>(-5, &name),
                                                                      driver::expect<glGenTextures_op>(3, nullptr)}));
  }
  driver::set_result<glGenTextures_op>(0);
  driver::clear_calls();
  osw_glGenTextures(0x7FFFFFFF, &name);
  EXPECT_EQ(name, 7u);
  for (const HGLRC child : rendered.children) EXPECT_TRUE(sequential::calls_in(child).empty());
  EXPECT_EQ(library::reports(), error_of("glGenTextures"));
}

}  // namespace
