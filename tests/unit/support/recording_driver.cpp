#include "support/recording_driver.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <set>
#include <unordered_map>

#include "platform/process.h"
#include "support/driver_notes.h"
#include "support/expected_figures.h"

namespace driver {

namespace {

// ---- notes ----

// One per thread that has called, kept for good. A call is its sequence, its context, its op and count, its arguments.
// Its lock is for those who read while the thread, which may be about to end, still calls.
struct thread_log {
  DWORD thread_id;
  std::mutex lock;
  std::vector<u64> words;
  std::set<std::string> without_context;
  std::set<std::string> under_lock;
};

std::mutex logs_lock;
std::vector<std::unique_ptr<thread_log>> logs;
std::atomic<u64> next_sequence{0};
std::atomic<recording> mode{recording::log};

thread_log& own_log() {
  thread_local thread_log* log = nullptr;
  if (log == nullptr) {
    const std::lock_guard guard(logs_lock);
    log = logs.emplace_back(std::make_unique<thread_log>()).get();
    log->thread_id = GetCurrentThreadId();
  }
  return *log;
}

void note(op_space space, int op, const u64* arguments, u32 count) {
  thread_log& log = own_log();
  const std::lock_guard guard(log.lock);
  const bool is_gl = space == op_space::gl;
  if (is_gl && bound.switched_to < 0) log.without_context.insert(name_of(space, op));
  if (platform::locks_held() > 0) log.under_lock.insert(name_of(space, op));
  if (is_gl && bound.switched_to >= 0) {
    context_record& context = record_of(bound.switched_to);
    ++context.gl_calls;
    if (mode.load(std::memory_order_relaxed) == recording::digest) {
      context.digest = digest_after(context.digest, op, arguments, count);
    }
  }
  if (mode.load(std::memory_order_relaxed) != recording::log) return;
  log.words.push_back(next_sequence.fetch_add(1, std::memory_order_relaxed));
  log.words.push_back(bits_of(bound.switched_to < 0 ? nullptr : handle_of(bound.switched_to)));
  log.words.push_back(static_cast<u64>(op) | static_cast<u64>(count) << 32 | static_cast<u64>(is_gl) << 63);
  log.words.insert(log.words.end(), arguments, arguments + count);
}

void read_log(thread_log& log, std::vector<call>& out) {
  const std::lock_guard guard(log.lock);
  for (std::size_t at = 0; at < log.words.size();) {
    call one;
    one.sequence = log.words[at];
    one.thread_id = log.thread_id;
    one.context = reinterpret_cast<HGLRC>(log.words[at + 1]);
    const u64 packed = log.words[at + 2];
    one.space = packed >> 63 ? op_space::gl : op_space::wgl;
    one.op = static_cast<int>(packed & 0xFFFF);
    one.argument_count = static_cast<u32>(packed >> 32) & 0xFF;
    std::copy_n(log.words.begin() + static_cast<std::ptrdiff_t>(at + 3), one.argument_count, one.arguments.begin());
    out.push_back(one);
    at += 3 + one.argument_count;
  }
}

std::vector<std::string> names_in(std::set<std::string> thread_log::*names) {
  const std::lock_guard guard(logs_lock);
  std::set<std::string> found;
  for (const auto& log : logs) {
    const std::lock_guard log_guard(log->lock);
    found.insert(((*log).*names).begin(), ((*log).*names).end());
  }
  return {found.begin(), found.end()};
}

template <class Wanted>
std::vector<call> select(Wanted wanted) {
  std::vector<call> found = calls();
  std::erase_if(found, [&](const call& one) { return !wanted(one); });
  return found;
}

// ---- scripts ----

struct op_script {
  bool any = false;  // something below is set
  script run;
  bool has_result = false;
  u64 result = 0;
  std::map<HGLRC, u64> results_in;
  std::atomic<int> fails_in{0};  // calls, 0 for none
};

op_script gl_scripts[gl_all_count];
op_script wgl_scripts[wgl_op_count];
script every_call;

op_script& script_of(op_space space, int op) {
  return space == op_space::gl ? gl_scripts[op] : wgl_scripts[op];
}

bool reaches_failure(op_script& entry) {
  int before = entry.fails_in.load(std::memory_order_relaxed);
  while (before > 0 && !entry.fails_in.compare_exchange_weak(before, before - 1, std::memory_order_relaxed)) {
  }
  return before == 1;
}

void run_scripts(op_script& entry, live_call& live) {
  if (every_call) every_call(live);
  if (!entry.any || live.answered) return;
  if (entry.run) entry.run(live);
  if (live.answered) return;
  if (reaches_failure(entry)) {
    live.answered = true;
    live.result = 0;
  } else if (const auto found = entry.results_in.find(live.what.context); found != entry.results_in.end()) {
    live.answered = true;
    live.result = found->second;
  } else if (entry.has_result) {
    live.answered = true;
    live.result = entry.result;
  }
}

live_call live_of(op_space space, int op, const u64* arguments, u32 count) {
  live_call live;
  live.what.thread_id = GetCurrentThreadId();
  live.what.context = bound.switched_to < 0 ? nullptr : handle_of(bound.switched_to);
  live.what.space = space;
  live.what.op = op;
  live.what.argument_count = count;
  std::copy_n(arguments, count, live.what.arguments.begin());
  return live;
}

// Result: `answer`, unless the call makes a name.
u64 perform_gl(int op, const u64* arguments, u32 count, u64 answer) {
  if (bound.switched_to >= 0) perform_on_names(&record_of(bound.switched_to), op, arguments, count, &answer);
  return answer;
}

// What every entry comes down to.
u64 serve(op_space space, int op, const u64* arguments, u32 count) {
  if (mode.load(std::memory_order_relaxed) == recording::off) {
    return space == op_space::wgl ? perform(op, arguments) : 0;
  }
  note(space, op, arguments, count);
  op_script& entry = script_of(space, op);
  if (every_call || entry.any) {
    live_call live = live_of(space, op, arguments, count);
    run_scripts(entry, live);
    if (live.answered) return live.result;
    if (space == op_space::gl) return perform_gl(op, arguments, count, live.result);
  }
  return space == op_space::wgl ? perform(op, arguments) : perform_gl(op, arguments, count, 0);
}

// ---- entries ----

// Entries return a whole register whatever their op's result is, so that a test can put something above a narrow one.
template <class Op, class Type>
struct entry;
template <class Op, class Result, class... Parameters>
struct entry<Op, Result(Parameters...)> {
  static_assert(sizeof...(Parameters) <= most_arguments);
  static u64 serve_call(Parameters... parameters) {
    const u64 arguments[] = {bits_of(parameters)..., 0};
    return serve(space_of<Op>, Op::op, arguments, sizeof...(Parameters));
  }
};

template <class Op>
FARPROC entry_of() {
  // By way of the type that the compiler takes for a function of any signature.
  return reinterpret_cast<FARPROC>(reinterpret_cast<__osw_proc>(entry<Op, typename Op::type>::serve_call));
}

constexpr auto make_entry = []<class Op>() { return entry_of<Op>(); };
const auto gl_entries = gl_all_list::column<FARPROC>(make_entry);
const auto wgl_entries = wgl_op_list::column<FARPROC>(make_entry);

constexpr auto name_of_op = []<class Op>() { return Op::name; };
constexpr auto gl_names = gl_all_list::column<const char*>(name_of_op);
constexpr auto wgl_names = wgl_op_list::column<const char*>(name_of_op);

INT_PTR do_nothing() {
  return 0;
}

// ---- names ----

struct name_record {
  FARPROC entry = nullptr;
  bool is_gl = false;
  reach where = reach::nowhere;
  bool has_answer = false;
  INT_PTR answer = 0;
};
using name_table = std::unordered_map<std::string, name_record>;

name_table fresh_names() {
  name_table table;
  for (int op = 0; op < gl_all_count; ++op) {
    table[gl_names.of[op]] = {gl_entries.of[op], true, op < figures::exported_gl_ops ? reach::exported : reach::by_name,
                              false, 0};
  }
  for (int op = 0; op < wgl_op_count; ++op) {
    table[wgl_names.of[op]] = {wgl_entries.of[op], false,
                               op < figures::exported_wgl_ops ? reach::exported : reach::by_name, false, 0};
  }
  return table;
}

name_table names;
std::atomic<bool> nothing_kept{false};

FARPROC entry_at(const name_record& name) {
  return name.is_gl && nothing_kept.load() ? do_nothing : name.entry;
}

}  // namespace

bool operator==(const call& first, const call& second) {
  return first.space == second.space && first.op == second.op && first.argument_count == second.argument_count &&
         first.arguments == second.arguments;
}

std::ostream& operator<<(std::ostream& out, const call& shown) {
  out << name_of(shown.space, shown.op) << '(' << std::hex;
  for (u32 i = 0; i < shown.argument_count; ++i) out << (i == 0 ? "0x" : ", 0x") << shown.arguments[i];
  return out << std::dec << ')';
}

const char* name_of(op_space space, int op) {
  return space == op_space::gl ? gl_names.of[op] : wgl_names.of[op];
}

FARPROC export_of(const char* name) {
  const auto found = names.find(name);
  if (found == names.end()) return nullptr;
  const bool exported = found->second.where == reach::exported || found->second.where == reach::both;
  return exported ? entry_at(found->second) : nullptr;
}

FARPROC entry_by_name(const char* name) {
  if (bound.context < 0) return nullptr;
  const auto found = names.find(name);
  if (found == names.end()) return nullptr;
  if (found->second.has_answer) return reinterpret_cast<FARPROC>(found->second.answer);
  const bool known = found->second.where == reach::by_name || found->second.where == reach::both;
  return known ? entry_at(found->second) : nullptr;
}

void reset() {
  reset_contexts();
  reset_names();
  clear_scripts();
  clear_calls();
  names = fresh_names();
  record(recording::log);
  platform::provide_library("opengl32sys.dll", export_of);
}

void record(recording what) {
  mode.store(what);
  nothing_kept.store(what == recording::off);
}

void set_reach(const char* name, reach where) {
  names[name].where = where;
}

void set_answer(const char* name, INT_PTR answer) {
  names[name].has_answer = true;
  names[name].answer = answer;
}

std::vector<call> calls() {
  std::vector<call> all;
  const std::lock_guard guard(logs_lock);
  for (const auto& log : logs) read_log(*log, all);
  std::ranges::sort(all, {}, &call::sequence);
  return all;
}

std::vector<call> calls_in(HGLRC context) {
  return select([&](const call& one) { return one.context == context; });
}

std::vector<call> gl_calls_in(HGLRC context) {
  return select([&](const call& one) { return one.context == context && one.space == op_space::gl; });
}

std::vector<call> calls_of_thread(DWORD thread_id) {
  return select([&](const call& one) { return one.thread_id == thread_id; });
}

void clear_calls() {
  const std::lock_guard guard(logs_lock);
  for (const auto& log : logs) {
    const std::lock_guard log_guard(log->lock);
    log->words.clear();
    log->without_context.clear();
    log->under_lock.clear();
  }
  reset_digests();
}

std::vector<std::string> calls_without_context() {
  return names_in(&thread_log::without_context);
}

std::vector<std::string> calls_under_lock() {
  return names_in(&thread_log::under_lock);
}

u64 digest_after(u64 digest, int op, const u64* arguments, u32 argument_count) {
  constexpr u64 prime = 0x100000001B3u;
  digest = (digest ^ static_cast<u64>(op)) * prime;
  for (u32 i = 0; i < argument_count; ++i) {
    digest = (digest ^ arguments[i]) * prime;
    digest ^= digest >> 29;
  }
  return digest;
}

void on_call(op_space space, int op, script run) {
  script_of(space, op).run = std::move(run);
  script_of(space, op).any = true;
}

void on_every_call(script run) {
  every_call = std::move(run);
}

void set_result(op_space space, int op, u64 result) {
  op_script& entry = script_of(space, op);
  entry.any = entry.has_result = true;
  entry.result = result;
}

void set_result_in(HGLRC context, op_space space, int op, u64 result) {
  script_of(space, op).any = true;
  script_of(space, op).results_in[context] = result;
}

void fail_call(op_space space, int op, int n) {
  script_of(space, op).any = true;
  script_of(space, op).fails_in.store(n);
}

void clear_scripts() {
  const auto clear = [](op_script& entry) {
    entry.any = entry.has_result = false;
    entry.run = nullptr;
    entry.results_in.clear();
    entry.fails_in.store(0);
  };
  std::ranges::for_each(gl_scripts, clear);
  std::ranges::for_each(wgl_scripts, clear);
  every_call = nullptr;
}

}  // namespace driver
