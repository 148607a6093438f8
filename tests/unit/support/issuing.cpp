#include "support/issuing.h"

#include <thread>

#include "startup/config/monitors.h"
#include "wgl/records/window_mapping.h"

namespace issuing {

namespace {

bool wait_until(const std::function<bool()>& reached) {
  const auto due = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!reached()) {
    if (std::chrono::steady_clock::now() > due) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

u32 load_under(CRITICAL_SECTION* lock, const u32& mask) {
  EnterCriticalSection(lock);
  const u32 value = mask;
  LeaveCriticalSection(lock);
  return value;
}

}  // namespace

void pipeline_test::TearDown() {
  std::vector<void*> mappings;
  for (const platform::window_facts& window : platform::windows()) {
    if (void* mapping = GetPropA(window.hwnd, mapping_property)) mappings.push_back(mapping);
  }
  if (platform::process_attached()) platform::exit_process();
  for (void* mapping : mappings) free(mapping);
  process_test::TearDown();
}

__osw_thread_state* state() {
  return static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
}

__osw_cmd_queue* queue() {
  return state()->cmd_queue;
}

void empty_list() {
  __osw_send_sync_cmd(state());
}

void push_hints(u32 count, u32 first) {
  for (u32 i = 0; i < count; ++i) {
    const u64 slots[] = {GL_FOG_HINT, first + i};
    __osw_push_gl_cmd(state(), glHint_op::op, 2, slots, 0);
  }
}

std::vector<driver::call> hints(u32 count, u32 first) {
  std::vector<driver::call> expected;
  for (u32 i = 0; i < count; ++i) expected.push_back(driver::expect<glHint_op>(GL_FOG_HINT, first + i));
  return expected;
}

masks masks_of(__osw_cmd_queue* queue) {
  return {load_under(&queue->start_lock, queue->start_mask), load_under(&queue->done_lock, queue->done_mask),
          load_under(&queue->sync_lock, queue->sync_mask), load_under(&queue->done_lock, queue->exit_mask)};
}

bool wait_for_masks(__osw_cmd_queue* queue, const std::function<bool(const masks&)>& reached) {
  return wait_until([&] { return reached(masks_of(queue)); });
}

bool wait_for_idle_workers() {
  const u32 all = queue()->worker_bits;
  return wait_for_masks(queue(), [all](const masks& now) { return now.done == all && (now.start & all) == all; });
}

void pass(gate& held) {
  std::unique_lock guard(held.lock);
  ++held.inside;
  held.changed.notify_all();
  while (!held.is_open) {
    guard.unlock();
    platform::kill_point();
    guard.lock();
    if (!held.is_open) held.changed.wait_for(guard, std::chrono::milliseconds(2));
  }
  --held.inside;
}

void open(gate& held) {
  const std::lock_guard guard(held.lock);
  held.is_open = true;
  held.changed.notify_all();
}

bool wait_until_held(gate& held, int threads) {
  return wait_until([&] {
    const std::lock_guard guard(held.lock);
    return held.inside >= threads;
  });
}

renderer start_renderer() {
  renderer started;
  started.thread = library::start_thread();
  library::run(started.thread, [&started] {
    started.rendered = library::start_rendering();
    started.state = state();
    started.queue = queue();
    for (int part = 0; part < __osw_part_count; ++part) {
      started.worker_ids.push_back(started.state->started.worker_thread_id[part]);
    }
    empty_list();
  });
  return started;
}

library::rendering open_rendering() {
  library::rendering opened;
  opened.window = library::open_window();
  opened.context = osw_wglCreateContext(opened.window.hdc);
  opened.children = driver::contexts_made_after(opened.context, __osw_part_count);
  return opened;
}

void stop_rendering(const library::rendering& rendered) {
  osw_wglMakeCurrent(nullptr, nullptr);
  osw_wglDeleteContext(rendered.context);
  DestroyWindow(rendered.window.hwnd);
}

}  // namespace issuing
