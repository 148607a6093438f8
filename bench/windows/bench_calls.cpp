// What a call costs the thread that makes it, in a Windows program:
//
//   bench_calls WAY PARTS
//
// WAY is host (the library below the driver), direct (the driver's own entry), or else any word for calls of
// opengl32.dll. Which path those take is up to the options; PARTS says over how many parts the window is to be spanned,
// 0 for none, and a program that is not is an error. One line a call, as Google Benchmark's in the form csv: label and
// "_least", repetitions, nanoseconds that pass, nanoseconds that the thread is busy, unit.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "batches.h"
#include "calls.h"
#include "switches.h"

namespace {

HMODULE library;

// An entry that the library does not export is asked for by name.
__osw_proc library_entry(int, const char* name) {
  if (FARPROC exported = GetProcAddress(library, name)) return reinterpret_cast<__osw_proc>(exported);
  const FARPROC lookup = GetProcAddress(library, "wglGetProcAddress");
  auto* by_name = reinterpret_cast<wglGetProcAddress_op::type*>(reinterpret_cast<__osw_proc>(lookup));
  return reinterpret_cast<__osw_proc>(by_name(name));
}

const route through = {library_entry};
setting_memory memory;

figures measure_nothing() {
  constexpr int batch = 1000000;
  return measure_batches(batch, [](stopwatch* watch) {
    start(watch);
    repeat_nothing(batch);
    stop(watch);
  });
}

// A stream goes on for about this long between two looks at the clock.
constexpr double stretch = 2e7;

int stream_batch(const measured_call& call, __osw_proc entry) {
  int batch = 100;
  stopwatch watch = {};
  while (watch.passed < stretch && batch < 10000000) {
    watch = {};
    batch *= 2;
    start(&watch);
    call.repeat(entry, static_cast<u64>(batch), &memory);
    stop(&watch);
  }
  return batch;
}

figures measure(const measured_call& call) {
  memory.through = &through;
  call.around->begin(through, &memory);
  wait_for_parts(through);
  const __osw_proc entry = through.entry(call.op, call.name);
  const int batch = call.burst ? call.burst : stream_batch(call, entry);
  const figures found = measure_batches(batch, [&](stopwatch* watch) {
    start(watch);
    call.repeat(entry, static_cast<u64>(batch), &memory);
    stop(watch);
    if (call.burst) wait_for_parts(through);
  });
  call.around->end(through, &memory);
  wait_for_parts(through);
  return found;
}

void print(const char* label, const figures& found) {
  printf("\"%s_least\",%d,%.4g,%.4g,ns\n", label, repetitions, found.passed, found.busy);
  fflush(stdout);
}

BOOL CALLBACK count_part(HWND hwnd, LPARAM count) {
  char name[64] = {};
  GetClassNameA(hwnd, name, sizeof name);
  if (strcmp(name, "__osw_child_window") == 0) ++*reinterpret_cast<int*>(count);
  return TRUE;
}

int parts_of(HWND window) {
  int count = 0;
  EnumChildWindows(window, count_part, reinterpret_cast<LPARAM>(&count));
  return count;
}

// A window over the whole desktop, with a context current.
HWND open_window() {
  WNDCLASSA described = {};
  described.style = CS_OWNDC;
  described.lpfnWndProc = DefWindowProcA;
  described.hInstance = GetModuleHandleA(nullptr);
  described.lpszClassName = "bench_calls";
  RegisterClassA(&described);
  const HWND window = CreateWindowA("bench_calls", "", WS_POPUP | WS_CLIPCHILDREN | WS_CLIPSIBLINGS | WS_VISIBLE, 0, 0,
                                    GetSystemMetrics(SM_CXVIRTUALSCREEN), GetSystemMetrics(SM_CYVIRTUALSCREEN), nullptr,
                                    nullptr, described.hInstance, nullptr);
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.cColorBits = 24;
  wanted.cDepthBits = 24;
  const HDC dc = GetDC(window);
  const int format = ChoosePixelFormat(dc, &wanted);
  if (!window || !format || !SetPixelFormat(dc, format, &wanted)) return nullptr;
  const HGLRC context = wglCreateContext(dc);
  return context && wglMakeCurrent(dc, context) ? window : nullptr;
}

HMODULE library_of(const char* way) {
  if (strcmp(way, "host") == 0) return GetModuleHandleA("opengl32host.dll");
  if (strcmp(way, "direct") == 0) return GetModuleHandleA("opengl32sys.dll");
  return GetModuleHandleA("opengl32.dll");
}

int fail(const char* why) {
  fprintf(stderr, "bench_calls: %s\n", why);
  return 1;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) {
    fail("takes a way and a number of parts");
    return 2;
  }
  const HWND window = open_window();
  if (!window) return fail("no window with OpenGL could be opened");
  // The driver makes its host's context current with the first call that needs it.
  glFinish();
  library = library_of(words[1]);
  if (!library) return fail("the library of that way is not loaded");
  if (parts_of(window) != atoi(words[2])) return fail("the window is not spanned over so many parts");

  print("nothing", measure_nothing());
  for (int i = 0; i < measured_call_count; ++i) {
    const measured_call& call = measured_calls[i];
    // Not every mode has every call.
    if (library_entry(call.op, call.name)) print(call.label, measure(call));
  }
  if (strcmp(words[1], "direct") == 0) {
    switch_figures found;
    if (!measure_switches(through, wglGetCurrentDC(), wglGetCurrentContext(), &found)) {
      return fail("contexts cannot be switched as they should");
    }
    print("switch", found.noted);
    print("switch, Enable", found.called);
  }
  wglMakeCurrent(nullptr, nullptr);
  return 0;
}
