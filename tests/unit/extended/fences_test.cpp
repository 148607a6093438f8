// Fences: one sync object per part behind each handle, and the worst answer of all.
#include "extended/fences.h"

#include <atomic>
#include <set>
#include <thread>

#include "support/issuing.h"
#include "support/received.h"

namespace {

using namespace issuing;

GLsync sync_number(u64 number) {
  return reinterpret_cast<GLsync>(number);
}

constexpr int part_count = 3;
constexpr u64 app_sync = 0xA00;

u64 part_sync(int part) {
  return 0xB00 + static_cast<u64>(part);
}

struct fence_test : pipeline_test {
  void start(library::path way, bool query_on_app_thread = true) {
    library::start({.parts = part_count, .way = way, .query_on_app_thread = query_on_app_thread, .extended = true});
    rendered = library::start_rendering();
    driver::set_result_in(rendered.context, driver::op_space::gl, glFenceSync_op::op, app_sync);
    for (int part = 0; part < part_count; ++part) {
      driver::set_result_in(child(part), driver::op_space::gl, glFenceSync_op::op, part_sync(part));
    }
    if (way == library::path::threaded) empty_list();
    driver::clear_calls();
  }

  HGLRC child(int part) const { return rendered.children.at(static_cast<std::size_t>(part)); }

  // What each part answers to a wait.
  void answer(std::array<GLenum, part_count> answers) const {
    for (int part = 0; part < part_count; ++part) {
      driver::set_result_in(child(part), driver::op_space::gl, glClientWaitSync_op::op,
                            answers[static_cast<std::size_t>(part)]);
    }
  }

  // What each part says its sync object's status is.
  void tell_status(std::array<GLint, part_count> values) const {
    driver::on_call<glGetSynciv_op>([this, values](driver::live_call& call) {
      for (int part = 0; part < part_count; ++part) {
        if (call.what.context != child(part)) continue;
        *reinterpret_cast<GLint*>(call.what.arguments[4]) = values[static_cast<std::size_t>(part)];
      }
    });
  }

  void expect_part(int part, const std::vector<driver::call>& expected) const {
    EXPECT_EQ(library::part_calls(rendered, part), expected) << "part " << part;
  }

  std::vector<driver::call> app_calls() const {
    std::vector<driver::call> found;
    for (const driver::call& call : driver::calls()) {
      if (call.space == driver::op_space::gl && call.context == rendered.context) found.push_back(call);
    }
    return found;
  }

  library::rendering rendered;
};

using driver::expect;

struct both_paths_test : fence_test, testing::WithParamInterface<library::path> {
  void SetUp() override { start(GetParam()); }
  static void finish() {
    if (GetParam() == library::path::threaded) empty_list();
  }
};

TEST_P(both_paths_test, each_part_makes_waits_for_and_deletes_its_own) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  ASSERT_NE(fence, nullptr);
  EXPECT_NE(fence, sync_number(app_sync));
  EXPECT_TRUE(osw_glIsSync(fence));
  osw_glWaitSync(fence, 0, GL_TIMEOUT_IGNORED);
  answer({GL_ALREADY_SIGNALED, GL_ALREADY_SIGNALED, GL_ALREADY_SIGNALED});
  EXPECT_EQ(osw_glClientWaitSync(fence, GL_SYNC_FLUSH_COMMANDS_BIT, 5000), GLenum{GL_ALREADY_SIGNALED});
  osw_glDeleteSync(fence);
  EXPECT_FALSE(osw_glIsSync(fence));
  finish();
  for (int part = 0; part < part_count; ++part) {
    GLsync own = sync_number(part_sync(part));
    expect_part(part, {expect<glFenceSync_op>(GL_SYNC_GPU_COMMANDS_COMPLETE, 0u),
                       expect<glWaitSync_op>(own, 0u, GLuint64{GL_TIMEOUT_IGNORED}),
                       expect<glClientWaitSync_op>(own, GL_SYNC_FLUSH_COMMANDS_BIT, GLuint64{5000}),
                       expect<glDeleteSync_op>(own)});
  }
}

TEST_P(both_paths_test, the_worst_answer_wins) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  const struct {
    std::array<GLenum, part_count> parts;
    GLenum joined;
  } cases[] = {{{GL_ALREADY_SIGNALED, GL_CONDITION_SATISFIED, GL_ALREADY_SIGNALED}, GL_CONDITION_SATISFIED},
               {{GL_CONDITION_SATISFIED, GL_ALREADY_SIGNALED, GL_TIMEOUT_EXPIRED}, GL_TIMEOUT_EXPIRED},
               {{GL_TIMEOUT_EXPIRED, GL_WAIT_FAILED, GL_ALREADY_SIGNALED}, GL_WAIT_FAILED},
               {{GL_WAIT_FAILED, GL_ALREADY_SIGNALED, GL_TIMEOUT_EXPIRED}, GL_WAIT_FAILED}};
  for (const auto& one : cases) {
    answer(one.parts);
    EXPECT_EQ(osw_glClientWaitSync(fence, 0, 10), one.joined);
  }
}

TEST_P(both_paths_test, it_is_signalled_when_all_parts_are) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  GLint status = 0;
  GLsizei length = 0;
  tell_status({GL_SIGNALED, GL_SIGNALED, GL_SIGNALED});
  osw_glGetSynciv(fence, GL_SYNC_STATUS, 1, &length, &status);
  EXPECT_EQ(status, GL_SIGNALED);
  EXPECT_EQ(length, 1);
  tell_status({GL_SIGNALED, GL_SIGNALED, GL_UNSIGNALED});
  osw_glGetSynciv(fence, GL_SYNC_STATUS, 1, nullptr, &status);
  EXPECT_EQ(status, GL_UNSIGNALED);
}

TEST_P(both_paths_test, what_is_no_fence_gets_gl_s_own_error) {
  GLsync deleted = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  osw_glDeleteSync(deleted);
  finish();
  const u64 foreign[] = {0, 1, 0x7FFF, 0xDEADBEEF, ~u64{0}, reinterpret_cast<u64>(deleted)};
  for (const u64 bits : foreign) {
    driver::clear_calls();
    driver::set_result<glClientWaitSync_op>(GL_WAIT_FAILED);
    answer({GL_WAIT_FAILED, GL_WAIT_FAILED, GL_WAIT_FAILED});
    GLsync fence = sync_number(bits);
    EXPECT_FALSE(osw_glIsSync(fence));
    EXPECT_EQ(osw_glClientWaitSync(fence, 0, 10), GLenum{GL_WAIT_FAILED});
    osw_glWaitSync(fence, 0, GL_TIMEOUT_IGNORED);
    GLint value = 7;
    osw_glGetSynciv(fence, GL_SYNC_STATUS, 1, nullptr, &value);
    EXPECT_EQ(value, 7);
    osw_glDeleteSync(fence);
    finish();
    // Whoever is asked is asked of null, which is no sync object either.
    for (const driver::call& call : driver::calls()) {
      if (call.space == driver::op_space::gl) {
        EXPECT_EQ(call.arguments[0], 0u) << bits;
      }
    }
  }
}

TEST_P(both_paths_test, deleting_null_is_nothing) {
  osw_glDeleteSync(nullptr);
  finish();
  EXPECT_TRUE(driver::calls_of<glGetSynciv_op>().empty());
  EXPECT_TRUE(driver::calls_of<glDeleteSync_op>().empty());
}

TEST_P(both_paths_test, handles_are_not_used_again_soon) {
  std::set<GLsync> seen;
  for (int i = 0; i < 5000; ++i) {
    GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    EXPECT_TRUE(seen.insert(fence).second);
    osw_glDeleteSync(fence);
  }
  EXPECT_TRUE(library::reports().empty());
}

INSTANTIATE_TEST_SUITE_P(paths, both_paths_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });

// ---- threaded ----

TEST_F(fence_test, making_one_waits_for_nobody) {
  start(library::path::threaded);
  const u32 filled = *queue()->fill_count;
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  osw_glWaitSync(fence, 0, GL_TIMEOUT_IGNORED);
  osw_glDeleteSync(fence);
  EXPECT_EQ(*queue()->fill_count, filled + 3);
}

TEST_F(fence_test, the_own_context_has_the_errors) {
  start(library::path::threaded);
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  driver::set_result_in(rendered.context, driver::op_space::gl, glClientWaitSync_op::op, GL_WAIT_FAILED);
  EXPECT_EQ(osw_glClientWaitSync(fence, 0x8000, 10), GLenum{GL_WAIT_FAILED});
  osw_glDeleteSync(fence);
  empty_list();
  GLsync app = sync_number(app_sync);
  EXPECT_EQ(app_calls(), (std::vector<driver::call>{expect<glFenceSync_op>(GL_SYNC_GPU_COMMANDS_COMPLETE, 0u),
                                                    expect<glClientWaitSync_op>(app, 0x8000u, GLuint64{0}),
                                                    expect<glDeleteSync_op>(app)}));
  EXPECT_EQ(driver::calls_of<glClientWaitSync_op>().size(), 1u) << "a part was asked";
  driver::set_result_in(rendered.context, driver::op_space::gl, glFenceSync_op::op, 0);
  EXPECT_EQ(osw_glFenceSync(0, 0), nullptr);
}

TEST_F(fence_test, without_an_own_context_that_follows_the_parts_answer) {
  start(library::path::threaded, false);
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  tell_status({GL_SYNC_FENCE, 0, 0});
  GLint type = 0;
  osw_glGetSynciv(fence, GL_OBJECT_TYPE, 1, nullptr, &type);
  EXPECT_EQ(type, GL_SYNC_FENCE);
  answer({GL_ALREADY_SIGNALED, GL_CONDITION_SATISFIED, GL_ALREADY_SIGNALED});
  EXPECT_EQ(osw_glClientWaitSync(fence, 0, 10), GLenum{GL_CONDITION_SATISFIED});
  EXPECT_TRUE(app_calls().empty());
}

// A thread that waits for a fence of another, whose list has not been handed over.
struct other_thread_test : fence_test {
  void SetUp() override {
    start(library::path::threaded);
    waiting = start_renderer();
    driver::set_result_in(waiting.rendered.context, driver::op_space::gl, glFenceSync_op::op, app_sync);
  }
  renderer waiting;
};

TEST_F(other_thread_test, a_wait_ends_when_the_other_thread_hands_its_list_over) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  for (const HGLRC context : waiting.rendered.children) {
    driver::set_result_in(context, driver::op_space::gl, glClientWaitSync_op::op, GL_CONDITION_SATISFIED);
  }
  std::atomic<GLenum> answered = 0;
  library::post(waiting.thread, [&] { answered = osw_glClientWaitSync(fence, 0, GL_TIMEOUT_IGNORED); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(answered.load(), 0u) << "it did not wait";
  osw_glFlush();
  library::wait(waiting.thread);
  EXPECT_EQ(answered.load(), GLenum{GL_CONDITION_SATISFIED});
}

TEST_F(other_thread_test, a_wait_ends_when_its_time_is_over) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  library::run(waiting.thread, [&] {
    EXPECT_EQ(osw_glClientWaitSync(fence, 0, 20'000'000), GLenum{GL_TIMEOUT_EXPIRED});
    GLint status = 0;
    osw_glGetSynciv(fence, GL_SYNC_STATUS, 1, nullptr, &status);
    EXPECT_EQ(status, GL_UNSIGNALED);
  });
}

TEST_F(other_thread_test, what_another_thread_deletes_before_it_is_made_is_deleted_when_it_is_made) {
  GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
  library::run(waiting.thread, [&] {
    osw_glDeleteSync(fence);
    empty_list();
  });
  EXPECT_TRUE(library::part_calls(rendered, 0).empty());
  empty_list();
  for (int part = 0; part < part_count; ++part) {
    expect_part(part, {expect<glFenceSync_op>(GL_SYNC_GPU_COMMANDS_COMPLETE, 0u),
                       expect<glDeleteSync_op>(sync_number(part_sync(part)))});
  }
}

TEST_F(other_thread_test, fences_of_many_threads_do_not_meet) {
  const auto work = [] {
    for (int i = 0; i < 300; ++i) {
      GLsync fence = osw_glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
      EXPECT_TRUE(osw_glIsSync(fence));
      if (i % 10 == 0) osw_glClientWaitSync(fence, 0, 10);
      osw_glDeleteSync(fence);
      EXPECT_FALSE(osw_glIsSync(fence));
    }
    empty_list();
  };
  library::post(waiting.thread, work);
  work();
  library::wait(waiting.thread);
  EXPECT_TRUE(library::reports().empty());
}

}  // namespace
