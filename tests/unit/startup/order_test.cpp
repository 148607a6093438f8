// The order of the steps in which the library comes up and goes down: as far as they call the platform, by its calls;
// else by standing in front of the functions that take them (`--wrap` in tests/unit/CMakeLists.txt).
#include <algorithm>
#include <cstdio>
#include <map>

#include "dispatch/bypass.h"
#include "dispatch/thread_state.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "startup/config/process_identity.h"
#include "support/issuing.h"
#include "support/library.h"
#include "wgl/child_windows.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

using step_list = std::vector<std::string>;

// What has been noted by the thread that notes, which is the one that set it.
struct {
  DWORD thread_id = 0;
  step_list steps;
  std::function<void(const __osw_thread_state*)> before_unlisting;
} noted;

bool is_noting_thread() {
  return noted.thread_id == GetCurrentThreadId();
}

void note(const std::string& step) {
  if (!is_noting_thread()) return;
  if (noted.steps.empty() || noted.steps.back() != step) noted.steps.push_back(step);
}

}  // namespace

#define NOTED_FILL(function, mangled)  \
  extern "C" void __real_##mangled();  \
  extern "C" void __wrap_##mangled() { \
    note(function);                    \
    __real_##mangled();                \
  }
NOTED_FILL("table wgl main", _Z25__osw_fill_wgl_table_mainv)
NOTED_FILL("table wgl pass", _Z25__osw_fill_wgl_table_passv)
NOTED_FILL("table no context", _Z29__osw_fill_gl_table_nocontextv)
NOTED_FILL("table sequential", _Z23__osw_fill_gl_table_seqv)
NOTED_FILL("table threaded", _Z22__osw_fill_gl_table_mtv)
NOTED_FILL("table pass", _Z24__osw_fill_gl_table_passv)
NOTED_FILL("wgl flags", _Z19__osw_fill_wgl_syncv)
NOTED_FILL("GL flags", _Z18__osw_fill_gl_syncv)

extern "C" FILE* __real_fopen(const char* path, const char* mode);
extern "C" FILE* __wrap_fopen(const char* path, const char* mode) {
  note("list");
  return __real_fopen(path, mode);
}

extern "C" void __real__Z25__osw_unlist_thread_statePK18__osw_thread_state(const __osw_thread_state* state);
extern "C" void __wrap__Z25__osw_unlist_thread_statePK18__osw_thread_state(const __osw_thread_state* state) {
  if (is_noting_thread() && noted.before_unlisting) noted.before_unlisting(state);
  __real__Z25__osw_unlist_thread_statePK18__osw_thread_state(state);
}

extern "C" void __real__Z21__osw_print_sync_infoPK18__osw_thread_state(const __osw_thread_state* state);
extern "C" void __wrap__Z21__osw_print_sync_infoPK18__osw_thread_state(const __osw_thread_state* state) {
  note("statistics");
  __real__Z21__osw_print_sync_infoPK18__osw_thread_state(state);
}

namespace {

struct order_test : issuing::pipeline_test {
  void TearDown() override {
    noted = {};
    issuing::pipeline_test::TearDown();
  }
};

// The lock that nothing enters has no name outside its file: it is the one that is made next after the arguments'.
ULONG_PTR spare_lock = 0;

std::string lock_name(ULONG_PTR address) {
  static const std::map<const CRITICAL_SECTION*, std::string> names = {
      {&__osw_wgl_bind_lock, "wgl binding"}, {&__osw_gl_bind_lock, "GL binding"}, {&__osw_thread_state_lock, "states"},
      {&__osw_worker_arg_lock, "arguments"}, {&__osw_mapping_lock, "mappings"},   {&__osw_class_lock, "classes"},
      {&__osw_pbuffer_lock, "pbuffers"},     {&__osw_glrc_lock, "contexts"}};
  const auto found = names.find(reinterpret_cast<const CRITICAL_SECTION*>(address));
  if (found != names.end()) return found->second;
  return address == spare_lock ? "spare" : "queue";
}

void note_attach_call(const std::string& function, ULONG_PTR object) {
  static const std::map<std::string, std::string> steps = {{"RegOpenKeyA", "options"},
                                                           {"TlsAlloc", "slots"},
                                                           {"EnumDisplayMonitors", "monitors"},
                                                           {"GetModuleFileNameA", "identity"}};
  const auto step = steps.find(function);
  if (step != steps.end()) note(step->second);
  if (function != "InitializeCriticalSection") return;
  if (noted.steps.back() == "lock arguments") spare_lock = object;
  note("lock " + lock_name(object));
}

void note_detach_call(const std::string& function, ULONG_PTR object) {
  if (function == "GetExitCodeThread") note("threads end");
  if (function == "TlsFree") note("slot " + std::to_string(object));
  if (function == "DeleteCriticalSection" && lock_name(object) != "queue") note("lock " + lock_name(object));
}

void note_this_thread(const platform::call_listener& listener) {
  noted.thread_id = GetCurrentThreadId();
  platform::on_each_call(listener);
}

TEST_F(order_test, a_process_attaches_step_by_step) {
  library::prepare({.parts = 4});
  note_this_thread([](const std::string& function, ULONG_PTR object) {
    const step_list before = noted.steps;
    note_attach_call(function, object);
    if (noted.steps == before) return;
    // What each step leaves is there before the next.
    if (noted.steps.back() == "slots") {
      EXPECT_EQ(OSW_DW_SplitOneMonitor, 1u);
    }
    if (noted.steps.back() == "identity") {
      EXPECT_EQ(__osw_part_count, 4);
    }
    if (noted.steps.back() == "lock pbuffers") {
      EXPECT_EQ(__osw_enable_wrapper_bypass, 0u);
    }
  });
  EXPECT_EQ(platform::attach_process(), TRUE);
  const step_list expected = {
      "options",        "slots",          "lock wgl binding", "lock GL binding",  "lock states",    "lock arguments",
      "lock spare",     "lock mappings",  "lock classes",     "monitors",         "identity",       "list",
      "table wgl main", "table wgl pass", "table no context", "table sequential", "table threaded", "table pass",
      "lock pbuffers",  "lock contexts",  "wgl flags",        "GL flags"};
  EXPECT_EQ(noted.steps, expected);
  // The platform gives its slots out in rising order.
  EXPECT_LT(__osw_state_slot, __osw_ctrl_slot);
}

TEST_F(order_test, attach_waits_for_the_option_between_the_options_and_the_slots) {
  library::prepare();
  platform::set_registry_number(library::registry_path, "OSW_DW_DeadLoopWhenLoadDll", 1);
  std::vector<std::string> asked_before;
  note_this_thread([&](const std::string& function, ULONG_PTR) {
    if (platform::call_count("RegOpenKeyA") == 100) {
      platform::set_registry_number(library::registry_path, "OSW_DW_DeadLoopWhenLoadDll", 0);
    }
    if (function == "TlsAlloc" && asked_before.empty()) asked_before = platform::registry_queries();
  });
  EXPECT_EQ(platform::attach_process(), TRUE);
  EXPECT_EQ(asked_before, platform::registry_queries());
  ASSERT_GT(asked_before.size(), 90u);
  EXPECT_EQ(std::count(asked_before.begin(), asked_before.end(), "OSW_DW_UseAppThreadToQueryState"), 1);
  EXPECT_EQ(std::count(asked_before.end() - 80, asked_before.end(), "OSW_DW_DeadLoopWhenLoadDll"), 80);
}

// Whether the queue's workers have taken the exit command.
bool have_left(__osw_cmd_queue* queue) {
  return issuing::masks_of(queue).exit == queue->worker_bits;
}

TEST_F(order_test, a_thread_s_own_threads_leave_before_its_state_goes) {
  library::start({.parts = 4});
  platform::after_thread_end([] {
    if (!is_noting_thread()) return;
    EXPECT_EQ(TlsGetValue(__osw_ctrl_slot), nullptr);
    platform::on_each_call(nullptr);
  });
  library::run_on_new_thread([] {
    library::start_rendering();
    osw_glFlush();
    __osw_thread_state* const own = issuing::state();
    note_this_thread([own](const std::string& function, ULONG_PTR object) {
      if (function == "GetExitCodeThread") {
        EXPECT_FALSE(have_left(own->cmd_queue));
      }
      note_detach_call(function, object);
    });
    noted.before_unlisting = [own](const __osw_thread_state* state) {
      if (state != own) return;
      note("unlisted");
      EXPECT_TRUE(have_left(state->cmd_queue));
      EXPECT_EQ(TlsGetValue(__osw_state_slot), state);
      EXPECT_NE(TlsGetValue(__osw_ctrl_slot), nullptr);
    };
  });
  ASSERT_TRUE(platform::wait_for_live_threads(0)) << "its workers, which read what is noted";
  EXPECT_EQ(noted.steps, (step_list{"threads end", "unlisted", "statistics"}));
}

TEST_F(order_test, a_process_detaches_step_by_step) {
  library::prepare();
  note_this_thread(note_attach_call);
  EXPECT_EQ(platform::attach_process(), TRUE);
  platform::on_each_call(nullptr);
  library::start_rendering();
  osw_glFlush();
  const issuing::renderer other = issuing::start_renderer();
  noted.steps.clear();
  note_this_thread([](const std::string& function, ULONG_PTR object) {
    if (function == "DeleteCriticalSection" && lock_name(object) == "contexts") {
      EXPECT_EQ(library::listed_arguments(), 6);
    }
    note_detach_call(function, object);
  });
  noted.before_unlisting = [&](const __osw_thread_state* state) {
    note(state == other.state ? "other state" : "own state");
    EXPECT_EQ(library::listed_arguments(), state == other.state ? 0 : 6);
  };
  EXPECT_EQ(platform::exit_process(), TRUE);
  const step_list expected = {"own state",
                              "statistics",
                              "lock pbuffers",
                              "lock contexts",
                              "other state",
                              "statistics",
                              "slot " + std::to_string(__osw_state_slot),
                              "slot " + std::to_string(__osw_ctrl_slot),
                              "lock spare",
                              "lock wgl binding",
                              "lock GL binding",
                              "lock states",
                              "lock arguments",
                              "lock mappings",
                              "lock classes"};
  EXPECT_EQ(noted.steps, expected);
}

}  // namespace
