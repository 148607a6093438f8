// A million commands of all kinds in random order, with parts that are slowed down at random: each part receives
// exactly what the application has issued, in its order, and every result is that of its own command.
#include <cstring>
#include <random>
#include <thread>

#include "startup/config/monitors.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

constexpr u32 slow_hint = 0xFFFFFFF0;

// What the parts must have received, and what the issuing thread has seen go wrong.
struct load {
  std::mt19937 random;
  u64 digest = driver::empty_digest;
  u64 calls = 0;
  u32 syncs = 0;
  u32 type_3 = 0;
  u32 wrong_results = 0;
  u32 rarity = 0;  // one command in so many makes the issuing thread wait
};

// Found wrong by workers, inside the driver.
std::atomic<u32> wrong_bytes;

void expect_received(load& on, int op, const u64* slots, u32 count) {
  on.digest = driver::digest_after(on.digest, op, slots, count);
  ++on.calls;
}

void push(load& on, int op, std::initializer_list<u64> slots, u32 blob_mask = 0) {
  expect_received(on, op, slots.begin(), static_cast<u32>(slots.size()));
  __osw_push_gl_cmd(state(), op, static_cast<u32>(slots.size()), slots.begin(), blob_mask);
}

// glVertex3fv with its vector in the record itself.
void push_in_record(load& on) {
  const float seed = static_cast<float>(on.random() & 0xFFFF);
  const float vector[] = {seed, seed + 1, seed + 2};
  u64* const payload = &begin_cmd(state())->args[1];
  std::memcpy(payload, vector, sizeof vector);
  push(on, glVertex3fv_op::op, {reinterpret_cast<u64>(payload)});
}

void check_vector(driver::live_call& call) {
  float vector[3];
  std::memcpy(vector, reinterpret_cast<void*>(call.what.arguments[0]), sizeof vector);
  if (vector[1] != vector[0] + 1 || vector[2] != vector[0] + 2) ++wrong_bytes;
}

// glCallLists with its lists in a block: as many bytes as it says, each the last of their number.
void push_block(load& on) {
  const u64 bytes = 1 + on.random() % 700;
  void* const block = malloc(bytes);
  std::memset(block, static_cast<int>(bytes & 0xFF), bytes);
  push(on, glCallLists_op::op, {bytes, GL_UNSIGNED_BYTE, reinterpret_cast<u64>(block)}, 1u << 2);
}

void check_block(driver::live_call& call) {
  const u64 bytes = call.what.arguments[0];
  const u8* block = reinterpret_cast<const u8*>(call.what.arguments[2]);
  if (block[0] != static_cast<u8>(bytes) || block[bytes - 1] != static_cast<u8>(bytes)) ++wrong_bytes;
}

// glGetAttribLocation answers its program.
void push_synchronous(load& on) {
  const u32 program = static_cast<u32>(on.random());
  push(on, glGetAttribLocation_op::op, {program, 0});
  const u64 expected = static_cast<u64>(static_cast<std::int64_t>(static_cast<i32>(program)));
  on.wrong_results += relaxed_load(queue()->last_result) != expected;
  ++on.syncs;
}

void answer_program(driver::live_call& call) {
  call.answered = true;
  call.result = call.what.arguments[0];
}

void sleep_at_random(driver::live_call& call) {
  if (call.what.arguments[1] != slow_hint) return;
  thread_local std::minstd_rand random(call.what.thread_id);
  if (random() % 4 == 0) std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
}

void push_quiet(load& on) {
  const u32 kind = on.random() % 4096;
  if (kind < 4) {
    push(on, glHint_op::op, {GL_FOG_HINT, slow_hint});
  } else if (kind < 8) {
    const u64 interval[] = {kind};
    __osw_push_wgl_cmd(state(), wglSwapIntervalEXT_op::op, 1, interval, 0);
  } else if (kind < 40) {
    push_block(on);
  } else if (kind < 400) {
    push_in_record(on);
  } else {
    push(on, glColor4ub_op::op, {kind & 0xFF, kind >> 8, on.calls & 0xFF, on.calls >> 8 & 0xFF});
  }
}

void hand_over_now(load& on) {
  switch (on.random() % 8) {
    case 0:
      __osw_send_sync_cmd(state());
      ++on.type_3;
      return;
    case 1:
      return finish_list(state());
    default:
      return push_synchronous(on);
  }
}

// Stretches in which hardly anything waits, so that lists become full, follow others in which much does.
void push_something(load& on, u32 number) {
  constexpr u32 rarities[] = {100, 3000, 40000};
  if (number % 20000 == 0) on.rarity = rarities[on.random() % std::size(rarities)];
  if (on.random() % on.rarity == 0) {
    hand_over_now(on);
  } else {
    push_quiet(on);
  }
}

void check(const load& on, const library::rendering& drawn) {
  __osw_send_sync_cmd(state());
  for (const HGLRC child : drawn.children) {
    EXPECT_EQ(driver::context(child).gl_calls, on.calls);
    EXPECT_EQ(driver::context(child).digest, on.digest);
  }
  EXPECT_EQ(driver::context(drawn.context).gl_calls, 0u);
  EXPECT_EQ(on.wrong_results, 0u);
  EXPECT_EQ(queue()->gl_sync_count[glGetAttribLocation_op::op], on.syncs);
  EXPECT_EQ(queue()->send_sync_count, on.type_3 + 2) << "those of the binding and of this check are two more";
}

library::rendering bind() {
  const library::rendering drawn = library::start_rendering();
  __osw_send_sync_cmd(state());
  return drawn;
}

void draw(const library::rendering& drawn, u32 commands, u32 seed) {
  load on;
  on.random.seed(seed);
  for (u32 number = 0; number < commands; ++number) push_something(on, number);
  check(on, drawn);
  EXPECT_GT(queue()->full_count, 0u);
  EXPECT_GT(on.syncs, 0u);
  DestroyWindow(drawn.window.hwnd);
}

struct load_test : pipeline_test, testing::WithParamInterface<int> {
  void begin(int parts) {
    library::start({.parts = parts, .query_on_app_thread = false});
    driver::record(driver::recording::digest);
    driver::on_call<glHint_op>(sleep_at_random);
    driver::on_call<glGetAttribLocation_op>(answer_program);
    driver::on_call<glVertex3fv_op>(check_vector);
    driver::on_call<glCallLists_op>(check_block);
    platform::set_spurious_wakes(5);
    allocation::watch();
  }
  void finish() {
    ASSERT_TRUE(platform::wait_for_live_threads(0));
    EXPECT_EQ(wrong_bytes.load(), 0u);
    allocation::stop_watching();
    EXPECT_EQ(allocation::live_blocks(), 0);
  }
};

// Each thread draws on its own; what their bindings have sent is forgotten before they start.
void draw_on_threads(u32 threads, u32 commands) {
  std::vector<library::app_thread_pointer> issuers(threads);
  std::vector<library::rendering> drawn(threads);
  for (u32 i = 0; i < threads; ++i) {
    issuers[i] = library::start_thread();
    library::run(issuers[i], [&, i] { drawn[i] = bind(); });
  }
  driver::clear_calls();
  for (u32 i = 0; i < threads; ++i) library::post(issuers[i], [&, i] { draw(drawn[i], commands, i + 1); });
  for (u32 i = 0; i < threads; ++i) library::wait(issuers[i]);
  for (u32 i = 0; i < threads; ++i) library::end_thread(issuers[i]);
}

TEST_P(load_test, a_million_commands) {
  begin(GetParam());
  draw_on_threads(1, 1000000);
  finish();
}

TEST_P(load_test, three_threads_at_once) {
  begin(GetParam());
  draw_on_threads(3, 60000);
  finish();
}

INSTANTIATE_TEST_SUITE_P(parts, load_test, testing::Values(1, 2, 4, 16));

}  // namespace
