// The loaded library and the loader lock, other libraries, the process's identity, the debugger and message boxes.
#include "platform/process.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <map>

#include "platform/desktop.h"
#include "state.h"

namespace platform {

int open_thread_handles();

namespace {

struct {
  std::mutex lock;
  std::condition_variable changed;
  const thread_record* owner = nullptr;
  int depth = 0;
} loader;

library_hooks current_hooks;
std::atomic<bool> attached{false};
std::atomic<bool> pinned{false};
std::function<void()> after_end;

BOOL call_library(DWORD reason, LPVOID reserved) {
  if (current_hooks.dll_main == nullptr) return TRUE;
  return current_hooks.dll_main(current_hooks.module, reason, reserved);
}

struct other_library {
  FARPROC (*lookup)(const char*) = nullptr;
  int loads = 0;
  bool there = false;
};

struct name_order {
  bool operator()(const std::string& first, const std::string& second) const {
    return _stricmp(first.c_str(), second.c_str()) < 0;
  }
};

std::mutex lock;
std::map<std::string, other_library, name_order> libraries;
std::string executable;
DWORD process_id;
std::map<std::string, std::string, name_order> environment;
std::vector<debug_text> debug_texts;
std::vector<message_box> boxes;

constexpr char default_executable[] = "C:\\Programs\\app.exe";
constexpr DWORD default_process_id = 4711;

}  // namespace

loader_scope::loader_scope() {
  thread_record& me = self();
  std::unique_lock guard(loader.lock);
  const blocked_scope blocked("loader lock");
  loader.changed.wait(guard, [&] { return loader.owner == nullptr || loader.owner == &me || me.killed.load(); });
  if (me.killed.load()) throw thread_killed{};
  loader.owner = &me;
  ++loader.depth;
}

loader_scope::~loader_scope() {
  const std::lock_guard guard(loader.lock);
  if (--loader.depth > 0) return;
  loader.owner = nullptr;
  loader.changed.notify_all();
}

const library_hooks& hooks() {
  return current_hooks;
}

void set_library_hooks(const library_hooks& new_hooks) {
  current_hooks = new_hooks;
}

void wake_loader_waiters() {
  const std::lock_guard guard(loader.lock);
  loader.changed.notify_all();
}

void tell_library(DWORD reason) {
  const loader_scope scope;
  if (attached.load()) call_library(reason, nullptr);
}

BOOL attach_process() {
  const loader_scope scope;
  attached.store(true);
  return call_library(DLL_PROCESS_ATTACH, nullptr);
}

BOOL detach_process() {
  const loader_scope scope;
  if (pinned.load()) return TRUE;
  const BOOL result = call_library(DLL_PROCESS_DETACH, nullptr);
  attached.store(false);
  return result;
}

BOOL exit_process(DWORD exit_code) {
  const loader_scope scope;
  if (!kill_other_threads(exit_code)) misuse("exit of a process with a thread that cannot be ended");
  char process_ends;
  const BOOL result = call_library(DLL_PROCESS_DETACH, &process_ends);
  keep_window_properties();
  attached.store(false);
  return result;
}

bool process_attached() {
  return attached.load();
}

void after_thread_end(std::function<void()> work) {
  after_end = std::move(work);
}

void run_after_thread_end() {
  if (after_end) after_end();
}

void provide_library(const std::string& name, FARPROC (*lookup)(const char*)) {
  const std::lock_guard guard(lock);
  libraries[name].lookup = lookup;
  libraries[name].there = true;
}

void withdraw_library(const std::string& name) {
  const std::lock_guard guard(lock);
  libraries[name].there = false;
}

int load_count(const std::string& name) {
  const std::lock_guard guard(lock);
  const auto found = libraries.find(name);
  return found == libraries.end() ? 0 : found->second.loads;
}

void set_executable(const std::string& path) {
  const std::lock_guard guard(lock);
  executable = path;
}

void set_process_id(DWORD id) {
  const std::lock_guard guard(lock);
  process_id = id;
}

void set_environment_variable(const std::string& name, const std::string& value) {
  const std::lock_guard guard(lock);
  environment[name] = value;
}

std::vector<debug_text> debug_output() {
  const std::lock_guard guard(lock);
  return debug_texts;
}

void clear_debug_output() {
  const std::lock_guard guard(lock);
  debug_texts.clear();
}

std::vector<message_box> message_boxes() {
  const std::lock_guard guard(lock);
  return boxes;
}

void clear_message_boxes() {
  const std::lock_guard guard(lock);
  boxes.clear();
}

std::vector<std::string> leaks(bool handles) {
  std::vector<std::string> found;
  for (const window_facts& facts : windows()) found.push_back("window of class " + facts.class_name);
  for (int i = open_device_contexts(); i > 0; --i) found.emplace_back("device context");
  for (int i = handles ? open_thread_handles() : 0; i > 0; --i) found.emplace_back("thread handle");
  for (int i = open_registry_keys(); i > 0; --i) found.emplace_back("registry key");
  return found;
}

void reset_process() {
  attached.store(false);
  pinned.store(false);
  after_end = nullptr;
  current_hooks = {};
  const std::lock_guard guard(lock);
  libraries.clear();
  executable = default_executable;
  process_id = default_process_id;
  environment.clear();
  debug_texts.clear();
  boxes.clear();
}

void reset() {
  end_threads();
  reset_process();
  reset_registry();
  reset_monitors();
  reset_positions();
  reset_device_contexts();
  reset_windows();
  reset_messages();
  reset_threads();
  reset_locks();
  reset_faults();
}

}  // namespace platform

using namespace platform;

extern "C" HMODULE LoadLibraryA(LPCSTR name) {
  if (ordered_to_fail("LoadLibraryA")) return nullptr;
  const loader_scope scope;
  const std::lock_guard guard(lock);
  const auto found = libraries.find(name);
  if (found == libraries.end() || !found->second.there) {
    self().last_error = ERROR_MOD_NOT_FOUND;
    return nullptr;
  }
  ++found->second.loads;
  return reinterpret_cast<HMODULE>(&found->second);
}

extern "C" FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  if (ordered_to_fail("GetProcAddress")) return nullptr;
  const loader_scope scope;
  std::unique_lock guard(lock);
  FARPROC (*lookup)(const char*) = nullptr;
  for (auto& [library_name, library] : libraries) {
    if (reinterpret_cast<HMODULE>(&library) == module) lookup = library.lookup;
  }
  guard.unlock();
  FARPROC result = lookup == nullptr ? nullptr : lookup(name);
  if (result == nullptr) SetLastError(lookup == nullptr ? ERROR_MOD_NOT_FOUND : ERROR_PROC_NOT_FOUND);
  return result;
}

extern "C" BOOL GetModuleHandleExA(DWORD flags, LPCSTR, HMODULE* module) {
  if (flags != (GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN)) {
    misuse("GetModuleHandleExA with flags that the simulation does not know");
  }
  if (ordered_to_fail("GetModuleHandleExA")) return FALSE;
  pinned.store(true);
  *module = hooks().module;
  return TRUE;
}

extern "C" DWORD GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size) {
  if (ordered_to_fail("GetModuleFileNameA")) return 0;
  std::unique_lock guard(lock);
  const std::string path = module == nullptr ? executable : "C:\\Programs\\opengl32.dll";
  guard.unlock();
  if (size == 0) return 0;
  const DWORD length = std::min<DWORD>(static_cast<DWORD>(path.size()), size - 1);
  std::memcpy(buffer, path.data(), length);
  buffer[length] = '\0';
  if (length == path.size()) return length;
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return size;
}

extern "C" DWORD GetCurrentProcessId() {
  const std::lock_guard guard(lock);
  return process_id;
}

extern "C" DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size) {
  if (ordered_to_fail("GetEnvironmentVariableA")) return 0;
  const std::lock_guard guard(lock);
  const auto found = environment.find(name);
  if (found == environment.end()) {
    SetLastError(ERROR_ENVVAR_NOT_FOUND);
    return 0;
  }
  // Without room for the zero at its end, nothing is written and the size that would do is the result.
  const DWORD length = static_cast<DWORD>(found->second.size());
  if (length >= size) return length + 1;
  std::memcpy(buffer, found->second.c_str(), length + 1);
  return length;
}

extern "C" void OutputDebugStringA(LPCSTR text) {
  const DWORD thread = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  debug_texts.push_back({thread, text});
}

extern "C" int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  const DWORD thread = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  boxes.push_back({thread, owner, text, caption, type});
  return IDOK;
}
