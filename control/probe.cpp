#include "probe.h"

#include <windows.h>

#include <cstdint>

#include "child.h"
#include "find_export.h"
#include "paths.h"
#include "text.h"

namespace {

constexpr const char* private_entries[] = {"wglFastSwitchContextZ4", "wglGetGLContextZ4", "glViewportOffsetZ4",
                                           "glDrawableSizeZ4"};

// Exit statuses of the trying process. The mark in the upper half is there so that no status of another making is taken
// for one of these. The low four bits have one bit for each private entry that is missing.
enum : DWORD {
  probe_mark = 0x6F730000,
  probe_missing_mask = 0xF,
  probe_not_loaded = probe_mark | 0x10,
  probe_no_context = probe_mark | 0x20,
  probe_crashed = probe_mark | 0x40,
};

constexpr DWORD probe_patience_ms = 20000;

using get_proc_address = PROC(WINAPI*)(const char*);

// The library's own functions, by which a context is made that has nothing to do with any other OpenGL library.
struct driver_functions {
  HGLRC(WINAPI* create_context)(HDC);
  BOOL(WINAPI* make_current)(HDC, HGLRC);
  BOOL(WINAPI* delete_context)(HGLRC);
  int(WINAPI* choose_pixel_format)(HDC, const PIXELFORMATDESCRIPTOR*);
  BOOL(WINAPI* set_pixel_format)(HDC, int, const PIXELFORMATDESCRIPTOR*);
  get_proc_address find_extension;
};

bool find_functions(HMODULE module, driver_functions* driver) {
  return find_export(module, "wglCreateContext", &driver->create_context) &&
         find_export(module, "wglMakeCurrent", &driver->make_current) &&
         find_export(module, "wglDeleteContext", &driver->delete_context) &&
         find_export(module, "wglChoosePixelFormat", &driver->choose_pixel_format) &&
         find_export(module, "wglSetPixelFormat", &driver->set_pixel_format) &&
         find_export(module, "wglGetProcAddress", &driver->find_extension);
}

DWORD missing_entries(HMODULE module, get_proc_address find_extension) {
  DWORD missing = 0;
  for (unsigned i = 0; i < std::size(private_entries); ++i) {
    if (GetProcAddress(module, private_entries[i])) continue;
    const intptr_t found = find_extension ? reinterpret_cast<intptr_t>(find_extension(private_entries[i])) : 0;
    // Drivers answer with these small numbers, too, when they do not know a name.
    if (found >= -1 && found <= 3) missing |= 1u << i;
  }
  return missing;
}

// Looks the entries up under a context, without which a driver need not answer.
DWORD probe_with_context(HMODULE module, const driver_functions& driver, HDC dc) {
  PIXELFORMATDESCRIPTOR format{};
  format.nSize = sizeof format;
  format.nVersion = 1;
  format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  format.iPixelType = PFD_TYPE_RGBA;
  format.cColorBits = 24;
  format.cDepthBits = 24;
  const int index = driver.choose_pixel_format(dc, &format);
  if (index <= 0 || !driver.set_pixel_format(dc, index, &format)) return probe_no_context;
  const HGLRC context = driver.create_context(dc);
  if (!context || !driver.make_current(dc, context)) return probe_no_context;
  const DWORD missing = missing_entries(module, driver.find_extension);
  driver.make_current(nullptr, nullptr);
  driver.delete_context(context);
  return probe_mark | missing;
}

LONG WINAPI end_after_crash(EXCEPTION_POINTERS*) {
  TerminateProcess(GetCurrentProcess(), probe_crashed);
  return EXCEPTION_EXECUTE_HANDLER;
}

std::wstring names_of(DWORD missing) {
  std::wstring names;
  for (unsigned i = 0; i < std::size(private_entries); ++i) {
    if (missing & (1u << i)) names += (names.empty() ? L"" : L", ") + from_utf8(private_entries[i]);
  }
  return names;
}

std::wstring answer_problem(const std::wstring& library, DWORD answer) {
  switch (answer) {
    case probe_not_loaded:
      return library +
             L" cannot be loaded; see that the libraries it needs are on this machine, the graphics driver first";
    case probe_no_context:
      return library + L" could not make an OpenGL context for a window; see that the graphics driver works";
    case probe_crashed:
      return library +
             L" crashed while it was tried; install the graphics driver anew, or put the library that came with "
             L"oswctl.exe there";
    case probe_mark:
      return L"";
    default:
      break;
  }
  if ((answer & ~probe_missing_mask) == probe_mark) {
    return library + L" does not offer " + names_of(answer & probe_missing_mask) +
           L"; put the library that came with oswctl.exe there, which does";
  }
  return library + L" ended the process that tried it; put the library that came with oswctl.exe there";
}

}  // namespace

int probe(const std::wstring& library) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(end_after_crash);
  const HMODULE module = LoadLibraryExW(full_path(library).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  driver_functions driver{};
  if (!module) return static_cast<int>(probe_not_loaded);
  if (missing_entries(module, nullptr) == 0) return static_cast<int>(probe_mark);
  if (!find_functions(module, &driver)) return static_cast<int>(probe_no_context);

  const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 16, 16, nullptr, nullptr, nullptr, nullptr);
  const HDC dc = window ? GetDC(window) : nullptr;
  return static_cast<int>(dc ? probe_with_context(module, driver, dc) : probe_no_context);
}

std::wstring probe_problem(const std::wstring& library) {
  const std::wstring own = own_path();
  const HANDLE process = start_child(own, join_arguments(own, {L"probe", library}), nullptr, 0);
  if (!process) return library + L" could not be tried: " + own + L" does not start" + system_reason(GetLastError());
  DWORD answer = 0;
  const bool has_ended = WaitForSingleObject(process, probe_patience_ms) == WAIT_OBJECT_0;
  if (!has_ended) TerminateProcess(process, 0);
  GetExitCodeProcess(process, &answer);
  CloseHandle(process);
  if (has_ended) return answer_problem(library, answer);
  return library + L" gave no answer for 20 seconds; see that the graphics driver works";
}
