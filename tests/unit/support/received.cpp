#include "support/received.h"

#include <map>

#include "pipeline/push.h"

namespace received {

namespace {

struct context_log {
  calls logged;
  u64 answer = 0;
};

// The keys are set before a thread looks, so that a look-up orders nothing between threads.
std::map<HGLRC, context_log> logs;
std::vector<HGLRC> part_contexts;
HGLRC app_context = nullptr;
std::array<reader, gl_all_count> readers;

void note(driver::live_call& live) {
  if (live.what.space != driver::op_space::gl) return;
  const auto found = logs.find(live.what.context);
  if (found == logs.end()) return;
  context_log& log = found->second;
  const reader& reads = readers[static_cast<std::size_t>(live.what.op)];
  std::vector<u8> memory = reads ? reads(live.what, log.logged) : std::vector<u8>();
  log.logged.push_back({live.what, std::move(memory)});
  live.result = log.answer;
}

context_log& log_of_part(int part) {
  return logs.at(part_contexts.at(static_cast<std::size_t>(part)));
}

}  // namespace

void watch(const library::rendering& rendered) {
  wait_for_parts();
  app_context = rendered.context;
  part_contexts = rendered.children;
  logs[app_context];
  for (HGLRC context : part_contexts) logs[context];
  // Calls are kept here; the driver's own log would only grow.
  driver::record(driver::recording::digest);
  driver::on_every_call(note);
}

void read(int op, reader reads) {
  readers.at(static_cast<std::size_t>(op)) = std::move(reads);
}

reader bytes_at(u32 argument, std::size_t bytes) {
  return [=](const driver::call& now, const calls&) { return memory_at(now.arguments[argument], bytes); };
}

void forget_readers() {
  readers.fill(nullptr);
}

std::vector<u8> memory_at(u64 address, std::size_t bytes) {
  const auto* first = reinterpret_cast<const u8*>(address);
  return address ? std::vector<u8>(first, first + bytes) : std::vector<u8>();
}

void answer_app(u64 result) {
  logs.at(app_context).answer = result;
}

void answer_part(int part, u64 result) {
  log_of_part(part).answer = result;
}

void answer_parts(u64 result) {
  for (int part = 0; part < parts(); ++part) answer_part(part, result);
}

void clear() {
  for (auto& [context, log] : logs) log.logged.clear();
}

int parts() {
  return static_cast<int>(part_contexts.size());
}

const calls& of_app() {
  return logs.at(app_context).logged;
}

const calls& of_part(int part) {
  return log_of_part(part).logged;
}

std::vector<driver::call> without_memory(const calls& logged) {
  std::vector<driver::call> bare;
  for (const call& one : logged) bare.push_back(one.what);
  return bare;
}

void wait_for_parts() {
  __osw_send_sync_cmd(__osw_fetch_thread_state());
}

void expect_parts(const std::vector<driver::call>& expected) {
  wait_for_parts();
  ASSERT_GT(parts(), 0);
  for (int part = 0; part < parts(); ++part) EXPECT_EQ(without_memory(of_part(part)), expected) << "part " << part;
}

void expect_app(const std::vector<driver::call>& expected) {
  EXPECT_EQ(without_memory(of_app()), expected);
}

void for_each_part(const std::function<void(const calls& logged)>& look) {
  wait_for_parts();
  ASSERT_GT(parts(), 0);
  for (int part = 0; part < parts(); ++part) {
    SCOPED_TRACE(testing::Message() << "part " << part);
    look(of_part(part));
  }
}

}  // namespace received
