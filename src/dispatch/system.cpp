#include "dispatch/system.h"

#include <atomic>

#include "dispatch/report.h"
#include "ops/names.h"
#include "ops/relaxed.h"

CRITICAL_SECTION __osw_wgl_bind_lock;
CRITICAL_SECTION __osw_gl_bind_lock;
u32 __osw_wgl_bound_done;
u32 __osw_gl_bound_done;

namespace {

std::atomic<bool> in_use;

constexpr char library_name[] = "opengl32sys.dll";
constexpr char lookup_name[] = "wglGetProcAddress";

struct system_library {
  HMODULE module;
  wglGetProcAddress_op::type* lookup;
};

constexpr int required_wgl_ops[] = {
    wglCopyContext_op::op,       wglCreateContext_op::op,   wglCreateLayerContext_op::op, wglDeleteContext_op::op,
    wglGetCurrentContext_op::op, wglGetCurrentDC_op::op,    wglGetProcAddress_op::op,     wglMakeCurrent_op::op,
    wglShareLists_op::op,        wglUseFontBitmapsA_op::op, wglUseFontBitmapsW_op::op,
};

system_library load_system_library() {
  system_library library{};
  library.module = LoadLibraryA(library_name);
  if (!library.module) __osw_report(severity_error, "cannot load %s\n", library_name);
  if (library.module) {
    library.lookup = reinterpret_cast<wglGetProcAddress_op::type*>(
        reinterpret_cast<__osw_proc>(GetProcAddress(library.module, lookup_name)));
  }
  if (!library.lookup) __osw_report(severity_error, "cannot find function %s in %s\n", lookup_name, library_name);
  return library;
}

__osw_proc find(const system_library& library, const char* name) {
  if (!library.module) return nullptr;
  if (auto exported = reinterpret_cast<__osw_proc>(GetProcAddress(library.module, name))) return exported;
  return library.lookup ? known_entry(library.lookup(name)) : nullptr;
}

// Until the first make-current each new thread's binding empties the wgl table and fills it again. Who calls through it
// meanwhile and finds nothing waits for the lock.
void fill(const system_library& library, const char* const* names, __osw_proc* table, int count) {
  for (int op = 0; op < count; ++op) relaxed_store(table[op], __osw_proc{});
  for (int op = 0; op < count; ++op) relaxed_store(table[op], find(library, names[op]));
}

void warn_of_missing(const char* const* names, const __osw_proc* table, int count) {
  for (int op = 0; op < count; ++op) {
    if (!table[op]) __osw_report(severity_warning, "cannot get function %s's address.\n", names[op]);
  }
}

bool is_set(u32& flag) {
  return std::atomic_ref<u32>(flag).load(std::memory_order_acquire) != 0;
}

void set(u32& flag) {
  std::atomic_ref<u32>(flag).store(1, std::memory_order_release);
}

void bind_wgl_locked(i32 first_use) {
  const system_library library = load_system_library();
  fill(library, __osw_wgl_names, __osw_sys_wgl, wgl_op_count);
  for (int op : required_wgl_ops) {
    if (__osw_sys_wgl[op]) continue;
    __osw_report(severity_error, "cannot find function %s in %s\n, it MUST exist", __osw_wgl_names[op], library_name);
  }
  if (first_use) return;
  warn_of_missing(__osw_wgl_names, __osw_sys_wgl, wgl_op_count);
  set(__osw_wgl_bound_done);
}

// What is left to do for a thread that is in the lock.
void bind_wgl_and_leave(i32 first_use) {
  if (!is_set(__osw_wgl_bound_done)) bind_wgl_locked(first_use);
  LeaveCriticalSection(&__osw_wgl_bind_lock);
}

void bind_gl_locked() {
  const system_library library = load_system_library();
  fill(library, __osw_gl_names, __osw_sys_gl, gl_ops_in_use);
  warn_of_missing(__osw_gl_names, __osw_sys_gl, gl_ops_in_use);
  set(__osw_gl_bound_done);
}

void bind_missing(__osw_proc& slot, u32& bound_done, __osw_proc entry) {
  if (is_set(bound_done) && !relaxed_load(slot)) relaxed_store(slot, entry);
}

}  // namespace

void __osw_bind_wgl(i32 first_use) {
  if (is_set(__osw_wgl_bound_done)) return;
  in_use.store(true, std::memory_order_relaxed);
  EnterCriticalSection(&__osw_wgl_bind_lock);
  bind_wgl_and_leave(first_use);
}

__osw_proc await_wgl_entry(const __osw_proc* table, int op) {
  if (is_set(__osw_wgl_bound_done)) return relaxed_load(table[op]);
  EnterCriticalSection(&__osw_wgl_bind_lock);
  __osw_proc entry = relaxed_load(table[op]);
  LeaveCriticalSection(&__osw_wgl_bind_lock);
  return entry;
}

void bind_wgl_unless_busy(i32 first_use) {
  if (is_set(__osw_wgl_bound_done)) return;
  if (TryEnterCriticalSection(&__osw_wgl_bind_lock)) bind_wgl_and_leave(first_use);
}

bool is_library_in_use() {
  return in_use.load(std::memory_order_relaxed);
}

void __osw_bind_gl() {
  if (is_set(__osw_gl_bound_done)) return;
  EnterCriticalSection(&__osw_gl_bind_lock);
  if (!is_set(__osw_gl_bound_done)) bind_gl_locked();
  LeaveCriticalSection(&__osw_gl_bind_lock);
}

void bind_missing_wgl(int op, __osw_proc entry) {
  bind_missing(__osw_sys_wgl[op], __osw_wgl_bound_done, entry);
}

void bind_missing_gl(int op, __osw_proc entry) {
  bind_missing(__osw_sys_gl[op], __osw_gl_bound_done, entry);
}
