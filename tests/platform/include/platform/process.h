// The simulated process: its threads and their end, the library loaded into it, its registry, its executable's name,
// and what it wrote to the debugger or showed in message boxes.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace platform {

// Brings the whole simulation back to its start: waits for every thread that was made here to end, and forgets windows,
// monitors, registry, records, faults and hooks. Stops the program when a thread does not end.
void reset();

// What a test left behind: windows, device contexts, thread handles; one text each. Handles count only when
// `handles` is set.
std::vector<std::string> leaks(bool handles);

// ---- the library ----

// The entry points by which the platform calls the library. A null one is not called; gdi32's calls then go straight to
// the simulated device context.
struct library_hooks {
  HINSTANCE module = nullptr;
  BOOL (*dll_main)(HINSTANCE, DWORD, LPVOID) = nullptr;
  int (*choose_pixel_format)(HDC, const PIXELFORMATDESCRIPTOR*) = nullptr;
  int (*describe_pixel_format)(HDC, int, UINT, LPPIXELFORMATDESCRIPTOR) = nullptr;
  int (*get_pixel_format)(HDC) = nullptr;
  BOOL (*set_pixel_format)(HDC, int, const PIXELFORMATDESCRIPTOR*) = nullptr;
  BOOL (*swap_buffers)(HDC) = nullptr;
};
void set_library_hooks(const library_hooks& hooks);

// Calls DllMain with DLL_PROCESS_ATTACH under the loader lock. From then on each thread's start and end is told too.
BOOL attach_process();

// Unloads the library from a process that goes on: DLL_PROCESS_DETACH with a null third argument. A library that has
// pinned itself stays.
BOOL detach_process();

// Ends the process as the platform does: under the loader lock all other threads stop where they are, without a
// DLL_THREAD_DETACH and with the process's exit code, then DllMain is called with DLL_PROCESS_DETACH and a third
// argument that is not null. Sections in which they stop stay entered: who enters one then stops the program.
BOOL exit_process(DWORD exit_code = 1);

bool process_attached();

// What each thread of the application does after its DLL_THREAD_DETACH, as destructors of the program's do.
void after_thread_end(std::function<void()> work);

// ---- threads ----

// Starts a thread of the application, which tells the library its start and its end.
HANDLE start_thread(std::function<void()> work);

// Waits for a thread's end, its DLL_THREAD_DETACH included, and closes the handle. False when it does not end in time.
bool join(HANDLE thread, std::chrono::milliseconds patience = std::chrono::seconds(60));

// Ends all threads but the calling one, wherever they sleep or at their next call of the platform. False when one does
// not end within half a minute. Their exit code is the one given.
bool kill_other_threads(DWORD exit_code = 1);

// Lets the calling thread end here if it is being killed; for code that would otherwise not call the platform.
void kill_point();

// Threads that were made here and have not ended.
int live_threads();

// Waits until `count` or fewer threads are alive. False when they are not in time.
bool wait_for_live_threads(int count, std::chrono::milliseconds patience = std::chrono::seconds(60));

// What the thread waits in: "SleepConditionVariableCS", "EnterCriticalSection", "loader lock", "message"; or null.
const char* blocked_in(DWORD thread_id);

// Waits until the thread sleeps in SleepConditionVariableCS. False when it does not in time.
bool wait_until_asleep(DWORD thread_id, std::chrono::milliseconds patience = std::chrono::seconds(60));

// Prints where each thread waits and stops the program, unless the program ends or this is called again within the
// time. Zero switches it off.
void set_watchdog(std::chrono::seconds time);

// ---- locks ----

// Critical sections that the calling thread is in, entered twice counting twice.
int locks_held();

// The most that any thread was in at once since the last reset.
int most_locks_held();

// Critical sections that were made and not deleted.
int live_critical_sections();

// Makes each n-th SleepConditionVariableCS return at once without a wake; 0 switches it off.
void set_spurious_wakes(int n);

// Called by each thread that is about to enter a section, from now on; null for nothing. Any thread may set it.
using enter_hook = void (*)(const CRITICAL_SECTION* section);
void before_entering(enter_hook run);

// ---- the calling thread's slots ----

// Slots given out by TlsAlloc and not freed.
int live_tls_slots();

// ---- other libraries ----

// What LoadLibraryA finds under `name`, without regard to case; `lookup` answers GetProcAddress.
void provide_library(const std::string& name, FARPROC (*lookup)(const char* name));
void withdraw_library(const std::string& name);
int load_count(const std::string& name);

// ---- process identity ----

void set_executable(const std::string& path);
void set_process_id(DWORD id);

// Variables of the process's environment, whose names have no case; none until set.
void set_environment_variable(const std::string& name, const std::string& value);

// ---- reports ----

struct debug_text {
  DWORD thread_id;
  std::string text;
};
std::vector<debug_text> debug_output();
void clear_debug_output();

struct message_box {
  DWORD thread_id;
  HWND owner;
  std::string text;
  std::string caption;
  UINT type;
};
std::vector<message_box> message_boxes();
void clear_message_boxes();

// ---- registry ----

// Values under HKEY_LOCAL_MACHINE. Setting a value makes its key.
void set_registry_key(const std::string& path);
void set_registry_value(const std::string& path, const std::string& name, DWORD type, const std::vector<BYTE>& data);
void set_registry_number(const std::string& path, const std::string& name, DWORD value);
void remove_registry_value(const std::string& path, const std::string& name);

// Keys opened and not closed.
int open_registry_keys();

// The value names asked for, in order.
std::vector<std::string> registry_queries();

}  // namespace platform
