#include "probe.h"

#include <GL/gl.h>
#include <psapi.h>

#include <cstdint>
#include <cstring>

#include "driver/part_window.h"
#include "find_export.h"
#include "paths.h"
#include "text.h"
#include "trial_picture.h"

namespace {

constexpr char driver_mark[] = "opengl32sys: ";
constexpr int most_reports = 50;

using get_proc_address = PROC(WINAPI*)(const char*);

// The library's own functions, by which a context is made that has nothing to do with any other OpenGL library.
struct wgl_functions {
  HGLRC(WINAPI* create_context)(HDC);
  BOOL(WINAPI* make_current)(HDC, HGLRC);
  BOOL(WINAPI* delete_context)(HGLRC);
  int(WINAPI* choose_pixel_format)(HDC, const PIXELFORMATDESCRIPTOR*);
  BOOL(WINAPI* set_pixel_format)(HDC, int, const PIXELFORMATDESCRIPTOR*);
  get_proc_address find_extension;
};

struct trial {
  HMODULE driver, drawing;  // what draws is the driver, or the wrapper over it
  HWND window;
};

bool find_wgl(HMODULE module, wgl_functions* wgl) {
  return find_export(module, "wglCreateContext", &wgl->create_context) &&
         find_export(module, "wglMakeCurrent", &wgl->make_current) &&
         find_export(module, "wglDeleteContext", &wgl->delete_context) &&
         find_export(module, "wglChoosePixelFormat", &wgl->choose_pixel_format) &&
         find_export(module, "wglSetPixelFormat", &wgl->set_pixel_format) &&
         find_export(module, "wglGetProcAddress", &wgl->find_extension);
}

void tell(const wchar_t* what, const std::wstring& text) {
  say(std::wstring(what) + L" " + text);
}

DWORD missing_entries(HMODULE module, get_proc_address find_extension) {
  DWORD missing = 0;
  for (unsigned i = 0; i < std::size(private_entries); ++i) {
    if (GetProcAddress(module, private_entries[i])) continue;
    const intptr_t found = reinterpret_cast<intptr_t>(find_extension(private_entries[i]));
    // Drivers answer with these small numbers, too, when they do not know a name.
    if (found >= -1 && found <= 3) missing |= 1u << i;
  }
  return missing;
}

void tell_string(HMODULE library, const wchar_t* what, GLenum name) {
  const GLubyte*(APIENTRY * get_string)(GLenum);
  const GLubyte* text = find_export(library, "glGetString", &get_string) ? get_string(name) : nullptr;
  if (text) tell(what, from_ansi(reinterpret_cast<const char*>(text)));
}

// What has OpenGL in this process and is none of the libraries that are tried.
void tell_host(const trial& tried) {
  HMODULE modules[1024];
  DWORD size = 0;
  if (!K32EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size)) return;
  for (size_t i = 0; i < size / sizeof(HMODULE) && i < std::size(modules); ++i) {
    if (modules[i] == tried.driver || modules[i] == tried.drawing) continue;
    if (!GetProcAddress(modules[i], "wglCreateContext")) continue;
    tell(told_host, path_of_module(modules[i]));
  }
}

BOOL CALLBACK count_part(HWND window, LPARAM count) {
  *reinterpret_cast<int*>(count) += is_part_window(window);
  return TRUE;
}

void tell_parts(HWND window) {
  int count = 0;
  EnumChildWindows(window, count_part, reinterpret_cast<LPARAM>(&count));
  if (count > 0) tell(told_parts, std::to_wstring(count));
}

// Under the context. The private entries are looked up there, too, for a driver need not answer without one.
DWORD draw_and_tell(const trial& tried, const wgl_functions& wgl) {
  const bool has_wrapper = tried.drawing != tried.driver;
  const DWORD missing = has_wrapper ? 0 : missing_entries(tried.driver, wgl.find_extension);
  tell_string(tried.drawing, told_version, GL_VERSION);
  tell_string(tried.drawing, told_renderer, GL_RENDERER);
  tell_host(tried);
  tell_parts(tried.window);
  if ((missing & ~missing_switch) != 0) return probe_mark | missing;
  switch (draw_trial_picture(tried.drawing)) {
    case trial_outcome::right:
      return probe_mark | missing;
    case trial_outcome::wrong:
      return probe_wrong_picture;
    case trial_outcome::no_functions:
      break;
  }
  return probe_no_functions;
}

DWORD draw_in_window(const trial& tried, const wgl_functions& wgl, HDC dc) {
  PIXELFORMATDESCRIPTOR format{};
  format.nSize = sizeof format;
  format.nVersion = 1;
  format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  format.iPixelType = PFD_TYPE_RGBA;
  format.cColorBits = 24;
  format.cDepthBits = 24;
  const int index = wgl.choose_pixel_format(dc, &format);
  if (index <= 0 || !wgl.set_pixel_format(dc, index, &format)) return probe_no_context;
  const HGLRC context = wgl.create_context(dc);
  if (!context || !wgl.make_current(dc, context)) return probe_no_context;
  const DWORD status = draw_and_tell(tried, wgl);
  wgl.make_current(nullptr, nullptr);
  wgl.delete_context(context);
  return status;
}

LONG WINAPI end_after_crash(EXCEPTION_POINTERS*) {
  TerminateProcess(GetCurrentProcess(), probe_crashed);
  return EXCEPTION_EXECUTE_HANDLER;
}

// What a library tells the debugger comes by here, with its length and its text. What the driver tells is handed on, as
// far as there is room for it.
LONG WINAPI hand_report_on(EXCEPTION_POINTERS* raised) {
  static LONG count;
  const EXCEPTION_RECORD& record = *raised->ExceptionRecord;
  if (record.ExceptionCode != DBG_PRINTEXCEPTION_C || record.NumberParameters < 2) return EXCEPTION_CONTINUE_SEARCH;
  const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
  const size_t mark_length = sizeof driver_mark - 1;
  if (strncmp(text, driver_mark, mark_length) != 0) return EXCEPTION_CONTINUE_SEARCH;
  const std::string report(text + mark_length, strcspn(text + mark_length, "\r\n"));
  if (InterlockedIncrement(&count) <= most_reports) tell(told_report, from_ansi(report));
  return EXCEPTION_CONTINUE_SEARCH;
}

HMODULE load(const std::wstring& path) {
  return LoadLibraryExW(full_path(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace

int probe(const std::wstring& driver, const std::wstring& wrapper) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(end_after_crash);
  AddVectoredExceptionHandler(1, hand_report_on);
  trial tried{};
  wgl_functions wgl{};
  // The driver first: the wrapper asks for it by its name alone, and takes the one that is there.
  tried.driver = load(driver);
  tried.drawing = wrapper.empty() ? tried.driver : load(wrapper);
  if (!tried.driver || !tried.drawing) return static_cast<int>(probe_not_loaded);
  if (!find_wgl(tried.drawing, &wgl)) return static_cast<int>(probe_no_functions);
  tried.window =
      CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, trial_size, trial_size, nullptr, nullptr, nullptr, nullptr);
  const HDC dc = tried.window ? GetDC(tried.window) : nullptr;
  return static_cast<int>(dc ? draw_in_window(tried, wgl, dc) : probe_no_context);
}
