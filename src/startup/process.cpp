// The life of the process that has loaded the library. Nothing includes what is here: it stands above everything.
#include <cstdlib>
#include <cstring>

#include "dispatch/bypass.h"
#include "dispatch/made_names.h"
#include "dispatch/no_context.h"
#include "dispatch/pass_through.h"
#include "dispatch/process_end.h"
#include "dispatch/system.h"
#include "extended/fences.h"
#include "pipeline/replay.h"
#include "pipeline/threads.h"
#include "sequential/sequential_table.h"
#include "startup/config/app_list.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "startup/config/process_identity.h"
#include "startup/config/shared.h"
#include "startup/thread_life.h"
#include "threaded/threaded_table.h"
#include "wgl/child_windows.h"
#include "wgl/main_table.h"
#include "wgl/records/buffer_maps.h"
#include "wgl/records/glrc.h"
#include "wgl/records/known_buffers.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// Kept for the place that it holds in the order of start and end; nothing enters it.
CRITICAL_SECTION spare_lock;

// How a developer stops a process at load: nothing but a debugger gets out.
void stop_for_debugger() {
  const char* wanted = getenv("Z4OSW_DEBUG_BREAK");
  if (!wanted || atoi(wanted) == 0) return;
  volatile bool stopped = true;
  while (stopped) {
  }
}

// The extended mode is for this process alone, and for its whole life.
void choose_mode() {
  u32 wanted = 0;
  if (!read_option_variable("OSW_EXTENDED", &wanted) || !wanted) return;
  gl_ops_in_use = gl_all_count;
  make_fence_lock();
  make_names_lock();
  make_buffer_map_lock();
  make_known_buffers_lock();
}

void make_locks() {
  InitializeCriticalSection(&__osw_wgl_bind_lock);
  InitializeCriticalSection(&__osw_gl_bind_lock);
  InitializeCriticalSection(&__osw_thread_state_lock);
  InitializeCriticalSection(&__osw_worker_arg_lock);
  InitializeCriticalSection(&spare_lock);
  InitializeCriticalSection(&__osw_mapping_lock);
  InitializeCriticalSection(&__osw_class_lock);
}

void identify_process() {
  __osw_process_id = GetCurrentProcessId();
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, sizeof path);
  path[sizeof path - 1] = 0;
  const char* last = strrchr(path, '\\');
  strcpy(__osw_app_exe_name, last ? last + 1 : path);
  __osw_app_special_window = _stricmp(__osw_app_exe_name, "SLDWORKS.exe") == 0 ? 0 : -1;
}

void decide_bypass() {
  __osw_enable_wrapper_bypass = 1;
  if (__osw_shared.enable && __osw_app_in_list(__osw_shared.list_path, __osw_app_exe_name)) {
    __osw_enable_wrapper_bypass = 0;
  }
}

void fill_tables() {
  __osw_fill_wgl_table_main();
  __osw_fill_wgl_table_pass();
  __osw_fill_gl_table_nocontext();
  __osw_fill_gl_table_seq();
  __osw_fill_gl_table_mt();
  __osw_fill_gl_table_pass();
  fill_gl_cases();
  fill_wgl_cases();
}

// The system library is not loaded here but at the first thread state.
void attach_process() {
  stop_for_debugger();
  __osw_read_options();
  __osw_debug_spin();
  choose_mode();
  __osw_state_slot = TlsAlloc();
  __osw_ctrl_slot = TlsAlloc();
  make_locks();
  __osw_enumerate_monitors();
  identify_process();
  decide_bypass();
  fill_tables();
  InitializeCriticalSection(&__osw_pbuffer_lock);
  InitializeCriticalSection(&__osw_glrc_lock);
  if (!__osw_wgl_sync_filled) __osw_fill_wgl_sync();
  if (!__osw_gl_sync_filled) __osw_fill_gl_sync();
}

// States of threads that have not detached, none of which runs any more. A library that is unloaded has none with
// threads of its own: from the first binding on it stays loaded.
void destroy_thread_states() {
  for (__osw_thread_state*& slot : __osw_thread_state_list) {
    if (__osw_thread_state* state = slot) __osw_end_thread_state(state);
    slot = nullptr;
  }
}

void detach_process(bool ends) {
  process_ends = ends;
  __osw_detach_thread();
  DeleteCriticalSection(&__osw_pbuffer_lock);
  DeleteCriticalSection(&__osw_glrc_lock);
  if (ends) __osw_release_for_ended_threads();
  destroy_thread_states();
  TlsFree(__osw_state_slot);
  TlsFree(__osw_ctrl_slot);
  DeleteCriticalSection(&spare_lock);
  DeleteCriticalSection(&__osw_wgl_bind_lock);
  DeleteCriticalSection(&__osw_gl_bind_lock);
  DeleteCriticalSection(&__osw_thread_state_lock);
  DeleteCriticalSection(&__osw_worker_arg_lock);
  DeleteCriticalSection(&__osw_mapping_lock);
  DeleteCriticalSection(&__osw_class_lock);
  if (gl_ops_in_use > gl_op_count) {
    // What is mapped at the process's end a thread that is no more may have been noting.
    if (!ends) {
      free_buffer_maps();
      forget_known_buffers();
    }
    delete_fence_lock();
    delete_names_lock();
    delete_buffer_map_lock();
    delete_known_buffers_lock();
  }
}

}  // namespace

// The system's entry, with the loader lock held. Result: always TRUE, so that a program starts whatever fails here.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID ending) {
  relaxed_store(__osw_hinstance, module);
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      attach_process();
      break;
    case DLL_THREAD_DETACH:
      __osw_detach_thread();
      break;
    case DLL_PROCESS_DETACH:
      detach_process(ending != nullptr);
      break;
    default:
      break;  // a thread's state is made at its first use
  }
  return TRUE;
}
