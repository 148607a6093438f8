// Calls that the sequential path repeats on every part: what stands when the parts disagree.
#include "dispatch/thread_state.h"
#include "startup/config/monitors.h"
#include "support/sequential_steps.h"

namespace {

struct sequential_broadcast_test : library::process_test {};

TEST_F(sequential_broadcast_test, one_part_takes_a_switch_there_and_a_switch_back) {
  const library::rendering rendered = sequential::start({.parts = 1});
  osw_glClearColor(0, 0.5f, 1, 1);
  const std::vector<sequential::step> expected = {
      sequential::switch_to(rendered.children[0]),
      {rendered.children[0], driver::expect<glClearColor_op>(0, 0.5f, 1, 1)},
      sequential::switch_to(rendered.context)};
  EXPECT_EQ(sequential::steps(), expected);
}

TEST_F(sequential_broadcast_test, an_error_of_the_first_part_alone_is_lost) {
  const library::rendering rendered = sequential::start();
  driver::on_call<glGetError_op>([&](driver::live_call& live) {
    static bool pending = true;
    if (live.what.context == rendered.children[0] && pending) {
      live.result = GL_INVALID_ENUM;
      pending = false;
    }
  });
  EXPECT_EQ(osw_glGetError(), 0u);
  EXPECT_EQ(sequential::calls_in(rendered.children[0]).size(), 1u);
  driver::clear_calls();
  EXPECT_EQ(osw_glGetError(), 0u);
}

TEST_F(sequential_broadcast_test, the_last_part_writes_last) {
  const library::rendering rendered = sequential::start();
  driver::on_call<glGetIntegerv_op>([&](driver::live_call& live) {
    auto* viewport = reinterpret_cast<GLint*>(live.what.arguments[1]);
    const GLint offset = live.what.context == rendered.children[0] ? 10 : 20;
    for (GLint i = 0; i < 4; ++i) viewport[i] = offset + i;
  });
  GLint viewport[4] = {};
  osw_glGetIntegerv(GL_VIEWPORT, viewport);
  EXPECT_EQ(viewport[0], 20);
  EXPECT_EQ(viewport[3], 23);
}

TEST_F(sequential_broadcast_test, the_last_parts_names_stand) {
  const library::rendering rendered = sequential::start({.parts = 4});
  driver::on_call<glGenTextures_op>([&](driver::live_call& live) {
    auto* names = reinterpret_cast<GLuint*>(live.what.arguments[1]);
    for (std::size_t part = 0; part < 4; ++part) {
      if (live.what.context == rendered.children[part]) names[0] = static_cast<GLuint>(50 + part);
    }
  });
  GLuint name = 0;
  osw_glGenTextures(1, &name);
  EXPECT_EQ(name, 53u);
}

TEST_F(sequential_broadcast_test, an_alias_runs_its_own_entry_on_each_part) {
  const library::rendering rendered = sequential::start();
  osw_glActiveTextureARB(GL_TEXTURE1);
  osw_glActiveTexture(GL_TEXTURE2);
  std::vector<sequential::step> expected =
      sequential::on_each_part(rendered, {driver::expect<glActiveTextureARB_op>(GL_TEXTURE1)});
  sequential::append(&expected, sequential::on_each_part(rendered, {driver::expect<glActiveTexture_op>(GL_TEXTURE2)}));
  EXPECT_EQ(sequential::steps(), expected);
}

TEST_F(sequential_broadcast_test, an_alias_returns_the_last_parts_value) {
  const library::rendering rendered = sequential::start();
  driver::set_result_in<glIsBufferARB_op>(rendered.children[0], 1);
  driver::set_result_in<glIsBufferARB_op>(rendered.children[1], 0xFF02);
  EXPECT_EQ(osw_glIsBufferARB(5), 2);
}

TEST_F(sequential_broadcast_test, without_parts_there_is_the_switch_back_alone) {
  const library::rendering rendered = sequential::start();
  const i32 count = __osw_part_count;
  __osw_part_count = 0;
  driver::set_result<glGenLists_op>(9);
  EXPECT_EQ(osw_glGenLists(1), 0u);
  EXPECT_EQ(sequential::steps(), std::vector<sequential::step>{sequential::switch_to(rendered.context)});
  __osw_part_count = count;
}

TEST_F(sequential_broadcast_test, no_record_enters_the_list) {
  sequential::start();
  osw_glClear(GL_COLOR_BUFFER_BIT);
  osw_glFinish();
  osw_glFlush();
  for (const driver::call& call : driver::calls()) EXPECT_EQ(call.thread_id, GetCurrentThreadId());
}

TEST_F(sequential_broadcast_test, two_threads_repeat_their_calls_on_their_own_parts) {
  const library::rendering rendered = sequential::start();
  const library::app_thread_pointer other = library::start_thread();
  library::rendering theirs;
  const library::app_window window = library::open_window({200, 200, 500, 400});
  library::run(other, [&] { theirs = library::start_rendering_in(window); });
  driver::clear_calls();
  const auto draw = [](GLuint first) {
    for (GLuint i = 0; i < 300; ++i) {
      osw_glBindTexture(GL_TEXTURE_2D, first + i);
      osw_glActiveTextureARB(GL_TEXTURE0 + i);
    }
  };
  library::post(other, [&] { draw(5000); });
  draw(1000);
  library::wait(other);
  const auto check = [](const library::rendering& one, GLuint first) {
    std::vector<driver::call> expected;
    for (GLuint i = 0; i < 300; ++i) {
      expected.push_back(driver::expect<glBindTexture_op>(GL_TEXTURE_2D, first + i));
      expected.push_back(driver::expect<glActiveTextureARB_op>(GL_TEXTURE0 + i));
    }
    for (HGLRC child : one.children) EXPECT_EQ(sequential::calls_in(child), expected);
  };
  check(rendered, 1000);
  check(theirs, 5000);
  library::end_thread(other);
}

}  // namespace
