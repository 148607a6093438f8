// Starting the pipeline: threads or memory that cannot be had, part counts without parts.
#include "pipeline/cmd_queue.h"
#include "platform/faults.h"
#include "startup/config/monitors.h"
#include "startup/thread_life.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

struct start_test : pipeline_test {};
struct start_part_test : pipeline_test, testing::WithParamInterface<int> {};
struct no_part_test : pipeline_test, testing::WithParamInterface<int> {};

BOOL bind(const library::rendering& opened) {
  return osw_wglMakeCurrent(opened.window.hdc, opened.context);
}

// What every part gets of a pipeline that works, and the application's own context does not.
void expect_working(const library::rendering& opened) {
  EXPECT_EQ(state()->mode, mode_threaded);
  empty_list();
  driver::clear_calls();
  push_hints(3);
  empty_list();
  for (const HGLRC child : opened.children) EXPECT_EQ(driver::gl_calls_in(child), hints(3));
  EXPECT_TRUE(driver::gl_calls_in(opened.context).empty());
}

// Runs `work` on a thread of the application and checks what it has left.
void expect_nothing_left(const std::function<void()>& work) {
  const library::app_thread_pointer thread = library::start_thread();
  allocation::watch();
  library::run(thread, work);
  library::end_thread(thread);
  EXPECT_TRUE(platform::wait_for_live_threads(0)) << "threads that do not end";
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
  EXPECT_EQ(platform::leaks(true), std::vector<std::string>());
}

void expect_box(int parts, int call) {
  const std::vector<platform::message_box> boxes = platform::message_boxes();
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0].text, call <= parts ? "Creating child thread failed!" : "Creating swap thread failed!");
  EXPECT_EQ(boxes[0].caption, "OSW Error");
  EXPECT_EQ(boxes[0].owner, nullptr);
  EXPECT_EQ(boxes[0].type, 0u);
  platform::clear_message_boxes();
}

// A first binding for which the n-th thread cannot be made. The system's binding stands, and nothing else.
library::rendering bind_without_thread(int call) {
  const library::rendering opened = open_rendering();
  platform::fail_call("CreateThread", call);
  EXPECT_TRUE(bind(opened));
  expect_box(__osw_part_count, call);
  EXPECT_EQ(state()->mode, mode_no_context);
  EXPECT_EQ(state()->has_context, 0);
  EXPECT_EQ(TlsGetValue(__osw_ctrl_slot), nullptr);
  osw_glHint(GL_FOG_HINT, 0);
  EXPECT_EQ(osw_glGetError(), 0u);
  return opened;
}

TEST_P(start_part_test, half_started_threads_end_with_their_issuing_thread) {
  expects_message_boxes = true;
  library::start({.parts = GetParam()});
  for (int call = 1; call <= GetParam() + 1; ++call) {
    SCOPED_TRACE(call);
    expect_nothing_left([call] { stop_rendering(bind_without_thread(call)); });
  }
  EXPECT_TRUE(driver::calls_of<glHint_op>().empty());
}

TEST_P(start_part_test, half_started_threads_end_also_while_still_bound) {
  expects_message_boxes = true;
  library::start({.parts = GetParam()});
  for (int call = 1; call <= GetParam() + 1; ++call) {
    SCOPED_TRACE(call);
    expect_nothing_left([call] { DestroyWindow(bind_without_thread(call).window.hwnd); });
  }
}

TEST_P(start_part_test, the_next_binding_takes_half_started_threads_up) {
  expects_message_boxes = true;
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  for (int call = 1; call <= GetParam() + 1; ++call) {
    SCOPED_TRACE(call);
    expect_nothing_left([call] {
      const int before = platform::call_count("CreateThread");
      const library::rendering opened = bind_without_thread(call);
      EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
      EXPECT_TRUE(bind(opened));
      EXPECT_EQ(platform::call_count("CreateThread") - before, GetParam() + 2) << "threads beyond the failed one";
      EXPECT_NE(TlsGetValue(__osw_ctrl_slot), nullptr);
      expect_working(opened);
      stop_rendering(opened);
    });
    EXPECT_TRUE(platform::message_boxes().empty());
  }
}

TEST_P(start_part_test, threads_that_fail_one_by_one_are_made_in_the_end) {
  expects_message_boxes = true;
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  expect_nothing_left([] {
    const library::rendering opened = bind_without_thread(1);
    for (int made = 1; made <= GetParam(); ++made) {
      platform::fail_call("CreateThread", 2);
      EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
      EXPECT_TRUE(bind(opened));
      expect_box(GetParam(), made + 1);
    }
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    EXPECT_TRUE(bind(opened));
    expect_working(opened);
    stop_rendering(opened);
  });
}

TEST_P(start_part_test, a_start_without_memory_leaves_nothing) {
  expects_message_boxes = true;
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  int calls = 0;
  expect_nothing_left([&calls] {
    const library::rendering opened = open_rendering();
    allocation::fail_call(0);
    EXPECT_TRUE(bind(opened));
    calls = allocation::calls();
    stop_rendering(opened);
  });
  // The queue, its two lists, the threads' arguments and the record of them all, beside what the window takes.
  ASSERT_GE(calls, 3 + GetParam() + 2);
  for (int call = 1; call <= calls; ++call) {
    for (const bool onwards : {false, true}) {
      SCOPED_TRACE(testing::Message() << "call " << call << (onwards ? " and all later ones" : ""));
      expect_nothing_left([call, onwards] {
        const library::rendering opened = open_rendering();
        allocation::fail_call(call, onwards);
        bind(opened);
        allocation::stop_failing();
        stop_rendering(opened);
      });
    }
  }
}

TEST_P(start_part_test, a_start_without_memory_is_made_up_by_the_next) {
  expects_message_boxes = true;
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  const int calls = 3 + GetParam() + 2 + 1;
  for (int call = 1; call <= calls; ++call) {
    SCOPED_TRACE(call);
    expect_nothing_left([call] {
      const library::rendering opened = open_rendering();
      allocation::fail_call(call);
      const BOOL bound = bind(opened);
      allocation::stop_failing();
      EXPECT_TRUE(bound);
      EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
      EXPECT_TRUE(bind(opened));
      expect_working(opened);
      stop_rendering(opened);
    });
  }
}

INSTANTIATE_TEST_SUITE_P(parts, start_part_test, testing::Values(1, 2, 4, 16));

TEST_F(start_test, without_memory_for_the_record_of_the_threads_they_run) {
  library::start({.query_on_app_thread = false});
  expect_nothing_left([] {
    __osw_thread_state* own = __osw_fetch_thread_state();
    ASSERT_EQ(__osw_create_cmd_queue(own), 1u);
    allocation::fail_call(4);
    EXPECT_EQ(__osw_start_threads(GetCurrentThread()), 1u);
    EXPECT_EQ(allocation::calls(), 4);
    allocation::stop_failing();
    EXPECT_EQ(TlsGetValue(__osw_ctrl_slot), nullptr);
    push_hints(0);
    __osw_send_sync_cmd(own);
    EXPECT_EQ(queue()->send_sync_count, 1u);
    EXPECT_EQ(__osw_start_threads(GetCurrentThread()), 1u);
    EXPECT_NE(TlsGetValue(__osw_ctrl_slot), nullptr);
    EXPECT_EQ(platform::call_count("CreateThread"), 3);
  });
}

TEST_F(start_test, threads_are_started_once) {
  library::start({.parts = 4});
  expect_nothing_left([] {
    const library::rendering opened = open_rendering();
    EXPECT_TRUE(bind(opened));
    EXPECT_EQ(platform::call_count("CreateThread"), 5);
    const __osw_cmd_queue* const first = queue();
    for (int round = 0; round < 3; ++round) {
      EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
      EXPECT_TRUE(bind(opened));
    }
    EXPECT_EQ(platform::call_count("CreateThread"), 5);
    EXPECT_EQ(queue(), first) << "the queue does not outlive a release";
    stop_rendering(opened);
  });
}

__osw_worker_arg* new_arg() {
  return static_cast<__osw_worker_arg*>(calloc(1, sizeof(__osw_worker_arg)));
}

bool is_live(const void* block) {
  return allocation::is_live(reinterpret_cast<std::uintptr_t>(block));
}

TEST_F(start_test, arguments_take_the_first_free_place_and_are_freed_by_name) {
  library::start();
  allocation::watch();
  __osw_worker_arg* const args[] = {new_arg(), new_arg(), new_arg()};
  for (__osw_worker_arg* arg : args) __osw_register_worker_arg(arg);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(__osw_worker_arg_list[i], args[i]);
  __osw_unregister_worker_arg(args[1]);
  EXPECT_EQ(__osw_worker_arg_list[1], nullptr);
  EXPECT_FALSE(is_live(args[1]));
  __osw_worker_arg* const stranger = new_arg();
  __osw_unregister_worker_arg(stranger);
  EXPECT_TRUE(is_live(stranger)) << "an argument that is not listed was freed";
  __osw_register_worker_arg(stranger);
  EXPECT_EQ(__osw_worker_arg_list[1], stranger);
  for (__osw_worker_arg* arg : {args[0], stranger, args[2]}) __osw_unregister_worker_arg(arg);
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
}

// A thread that was ended in the middle of its work holds a use of its queue, and of the state behind that.
TEST_F(start_test, the_end_of_the_process_gives_back_what_ended_threads_held) {
  library::start();
  allocation::watch();
  __osw_thread_state* ended = __osw_get_thread_state();
  ASSERT_TRUE(__osw_create_cmd_queue(ended));
  for (int i = 0; i < 2; ++i) {
    __osw_retain_queue(ended->cmd_queue);
    __osw_worker_arg* arg = new_arg();
    arg->state = ended;
    __osw_register_worker_arg(arg);
  }
  __osw_destroy_thread_state(ended);
  EXPECT_TRUE(is_live(ended)) << "freed under threads that may use it";
  EXPECT_TRUE(platform::exit_process());
  EXPECT_EQ(allocation::live_blocks(), 0);
  allocation::stop_watching();
}

TEST_F(start_test, an_argument_without_a_place_is_left_alone) {
  library::start();
  __osw_worker_arg filler{};
  for (__osw_worker_arg*& slot : __osw_worker_arg_list) slot = &filler;
  allocation::watch();
  __osw_worker_arg* const late = new_arg();
  __osw_register_worker_arg(late);
  for (const __osw_worker_arg* slot : __osw_worker_arg_list) EXPECT_EQ(slot, &filler);
  __osw_unregister_worker_arg(late);
  EXPECT_TRUE(is_live(late));
  free(late);
  allocation::stop_watching();
  for (__osw_worker_arg*& slot : __osw_worker_arg_list) slot = nullptr;
}

// More than fits two lists, synchronous commands and blobs.
void draw_for_nobody() {
  for (u32 round = 0; round < 3; ++round) {
    push_hints(4999);
    const u64 slots[] = {0, reinterpret_cast<u64>(malloc(16))};
    __osw_push_gl_cmd(state(), glHint_op::op, 2, slots, 1u << 1);
  }
  EXPECT_EQ(queue()->full_count, 3u);
  EXPECT_EQ(*queue()->fill_count, 0u);
  push_hints(3);
  __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
  EXPECT_EQ(*queue()->fill_count, 0u);
  EXPECT_EQ(queue()->gl_sync_count[glGetError_op::op], 1u);
  push_hints(2);
  __osw_send_sync_cmd(state());
  osw_glFlush();
  osw_glGetError();
  push_hints(7);
}

void start_without_parts(int count) {
  library::prepare({.parts = 1,
                    .query_on_app_thread = false,
                    .options = {{"OSW_DW_SplitOneMonitor", 1}, {"OSW_DW_SplitParts", static_cast<DWORD>(count)}}});
  ASSERT_TRUE(platform::attach_process());
  ASSERT_EQ(__osw_part_count, count);
}

TEST_P(no_part_test, nobody_waits_and_nothing_leaks) {
  start_without_parts(GetParam());
  expect_nothing_left([] {
    const library::rendering opened = open_rendering();
    EXPECT_TRUE(bind(opened));
    ASSERT_NE(queue(), nullptr);
    EXPECT_EQ(queue()->worker_bits, 0u);
    EXPECT_EQ(queue()->all_bits, 0x80000000u);
    EXPECT_EQ(platform::call_count("CreateThread"), 1) << "the swap thread alone";
    draw_for_nobody();
    EXPECT_TRUE(osw_wglSwapBuffers(opened.window.hdc));
    push_hints(4);
    stop_rendering(opened);
    push_hints(4);
  });
  EXPECT_TRUE(driver::calls_of<glHint_op>().empty());
}

TEST_P(no_part_test, the_process_ends_too) {
  start_without_parts(GetParam());
  const library::rendering opened = open_rendering();
  EXPECT_TRUE(bind(opened));
  draw_for_nobody();
  DestroyWindow(opened.window.hwnd);
  EXPECT_TRUE(platform::exit_process());
}

TEST_P(no_part_test, a_reported_list_is_dropped) {
  start_without_parts(GetParam());
  const library::rendering opened = open_rendering();
  EXPECT_TRUE(bind(opened));
  const auto expect_dropped_by = [](void (*report)(__osw_thread_state*)) {
    push_hints(2);
    EXPECT_EQ(*queue()->fill_count, 2u);
    report(state());
    EXPECT_EQ(*queue()->fill_count, 0u);
    EXPECT_EQ(queue()->report, list_kept);
  };
  expect_dropped_by(finish_list);
  expect_dropped_by(offer_list);
  stop_rendering(opened);
  EXPECT_TRUE(driver::calls_of<glHint_op>().empty());
}

INSTANTIATE_TEST_SUITE_P(counts, no_part_test, testing::Values(0, -1, -5));

}  // namespace
